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
  const std::filesystem::path path = folder.Path() / L"one" / L"zw\u00F6lf" / L"\u4E09";
  const System& system = RealSystem();

  EXPECT_EQ(system.CreateDirectoryLevels(path.wstring()), 0);
  EXPECT_TRUE(std::filesystem::is_directory(path));
  EXPECT_NE(system.CreateDirectoryLevels(path.wstring()), 0) << "an existing folder is a failure as well";

  std::ofstream(folder.Path() / "file") << "x";
  EXPECT_NE(system.CreateDirectoryLevels(folder.Wide("file")), 0);
  EXPECT_NE(system.CreateDirectoryLevels((folder.Path() / "file" / "below").wstring()), 0);
  EXPECT_NE(system.CreateDirectoryLevels(L""), 0);
}

TEST(SystemTest, FoldersCanBeComposed) {
  const System& system = RealSystem();
  for (const std::wstring& folder :
       {system.RoamingAppDataFolder(), system.LocalAppDataFolder(), system.ProgramFilesFolder()}) {
    ASSERT_FALSE(folder.empty());
    EXPECT_TRUE(std::filesystem::path(folder).is_absolute());
    EXPECT_NE(folder.back(), *kPathSeparator);
  }
}

TEST(SystemTest, EndpointsOfDifferentNamesDiffer) {
  EXPECT_EQ(LocalEndpoint("TalvikCloud"), LocalEndpoint("TalvikCloud"));
  EXPECT_NE(LocalEndpoint("a"), LocalEndpoint("A"));
  EXPECT_NE(LocalEndpoint("a/b"), LocalEndpoint("a%2Fb"));
}

}  // namespace
}  // namespace Drive::Platform
