// PlatformSystemTest.cpp - what the real system answers, as far as it is the same everywhere.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/System.h"
#include "tests/support/TempFolder.h"

namespace Drive::Platform {
namespace {

TEST(SystemTest, CreatesEveryMissingLevelAndRefusesWhatIsThere) {
  const Testing::TempFolder folder;
  const std::wstring path = folder.Wide("one/zw\xC3\xB6lf/\xE4\xB8\x89");
  const System& system = RealSystem();
  EXPECT_EQ(system.CreateDirectoryLevels(path), 0);
  EXPECT_TRUE(
      std::filesystem::is_directory(std::filesystem::u8path(folder.Narrow("one/zw\xC3\xB6lf/\xE4\xB8\x89"))));
  EXPECT_NE(system.CreateDirectoryLevels(path), 0) << "an existing folder is a failure as well";
  std::ofstream(folder.Path() / "file") << "x";
  EXPECT_NE(system.CreateDirectoryLevels(folder.Wide("file/below")), 0);
  EXPECT_NE(system.CreateDirectoryLevels(L""), 0);
}

}  // namespace
}  // namespace Drive::Platform
