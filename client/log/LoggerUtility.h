// LoggerUtility.h - names and places that the client's loggers share.
#pragma once

#include <map>
#include <string>

namespace Drive {

// Thread-safety: every operation may be called from any thread.
class LoggerUtility {
 public:
  // The user's local application-data folder, without a trailing separator.
  static std::wstring GetLocalAppDataPath();

  // Name of the upload type of an event code; the code in decimal when the table lacks it.
  static std::string GetUplogType(int code);

  // Replaces the table of upload-type names.
  static void SetUplogTypes(std::map<int, std::string> names);
};

}  // namespace Drive
