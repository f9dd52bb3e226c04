// IniFileHelper.h - reads and writes the client's settings files.
#pragma once

#include <memory>
#include <string>

namespace Drive {

// One INI file, read when the object is made. Byte-order mark and CR LF are fine; values are UTF-8.
//
// A key is found in whatever section it stands, or in none; with several, the first in the file counts.
// A missing or unreadable file has no keys.
// Thread-safety: one object belongs to one thread.
class IniFileHelper {
 public:
  explicit IniFileHelper(const std::wstring& path);
  ~IniFileHelper();

  // The value of the key, compared without regard to the case of ASCII letters; empty when there is none.
  std::string ReadIniValueByKeyTypeString(const std::string& key) const;

  // Puts the key, outside any section if it is new, and writes the file. False, and the file as it was, when
  // it cannot be written, when the value could not be read back (a line break in it, a blank at an end), or
  // when another key would be read differently, which can only happen where one stands in the file several
  // times.
  bool WriteIniValue(const std::string& key, const std::string& value);

 private:
  struct File;
  std::unique_ptr<File> m_file;
};

}  // namespace Drive
