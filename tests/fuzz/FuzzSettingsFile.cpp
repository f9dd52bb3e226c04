// FuzzSettingsFile.cpp - a settings file of any bytes is read, and what is written to it is read back.
//
// Input: a value, ended by 0xFF, and the file.
#include <filesystem>
#include <fstream>

#include "client/common/IniFileHelper.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TempFolder folder;
  FuzzInput input(data, size);
  const std::string value = input.Part();
  std::ofstream(folder.Path() / "f.ini", std::ios::binary) << input.Rest();

  IniFileHelper before(folder.Wide("f.ini"));
  const std::string kept = before.ReadIniValueByKeyTypeString("UbaUri");
  before.ReadIniValueByKeyTypeString(value);
  if (before.WriteIniValue("BaseUri", value)) {
    Promise(before.ReadIniValueByKeyTypeString("BaseUri") == value, "another value in memory");
    const IniFileHelper after(folder.Wide("f.ini"));
    Promise(after.ReadIniValueByKeyTypeString("BaseUri") == value, "another value");
    Promise(after.ReadIniValueByKeyTypeString("UbaUri") == kept, "another key is changed");
  }
  return 0;
}

}  // namespace Drive::Testing
