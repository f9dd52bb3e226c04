// ReadSyncConfigFile.h - where the client keeps its configuration, and the names it fixes.
#pragma once

#include <string>

namespace Drive {

// Key of the client's version in its configuration file.
inline constexpr const char* PC_VERSION_KEY = "PcVersion";
// Folder of the client inside the user's application data.
inline constexpr const wchar_t* APP_NAME = L"TalvikCloud";
// File name of the log database of the signed-in user.
inline constexpr const wchar_t* LOG_DB_NAME = L"TalvikLogDB";

namespace ReadSyncConfigFile {

class ReadSyncConfigFileIf {
 public:
  // Full path of the configuration file: "SyncConfig.ini" in the client's roaming application data.
  static std::wstring GetConfigFilePath();
};

}  // namespace ReadSyncConfigFile
}  // namespace Drive
