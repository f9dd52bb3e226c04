// WindowsSystemTest.cpp - answers of the real Windows, and database paths that only there are special.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "platform/System.h"
#include "tests/LogDbFixture.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

TEST(WindowsSystemTest, TellsTheVersionThatThePublicCallHides) {
  RTL_OSVERSIONINFOW truth{};
  truth.dwOSVersionInfoSize = sizeof(truth);
  const auto getVersion = reinterpret_cast<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
  ASSERT_EQ(getVersion(&truth), 0);
  const auto version = Platform::RealSystem().Version();
  ASSERT_TRUE(version.has_value());
  EXPECT_EQ(version->major, truth.dwMajorVersion);
  EXPECT_EQ(version->build, truth.dwBuildNumber);
}

TEST(WindowsSystemTest, AShortPathNamesTheSameFolder) {
  const TempFolder folder;
  const std::wstring path = folder.Wide("a long name, with \xE5\x9B\xBE and \xF0\x9F\x98\x80");
  const Platform::System& system = Platform::RealSystem();
  EXPECT_EQ(system.CreateDirectoryLevels(path), 0);
  EXPECT_TRUE(std::filesystem::equivalent(system.ShortPath(path), path));
  EXPECT_EQ(system.ShortPath(path + L"\\missing"), path + L"\\missing");
  EXPECT_EQ(system.CreateDirectoryLevels(path), ERROR_ALREADY_EXISTS);
}

class WindowsPathTest : public LogDbTest {};

TEST_F(WindowsPathTest, ADatabaseBelowAVeryLongPathWorksOrIsReported) {
  std::string folder = "db";
  for (int level = 0; level < 4; ++level) folder += "/" + std::string(80, 'x') + "\xF0\x9F\x98\x80";
  g_dbFullPath = m_folder.Wide(folder);
  g_logDbFullPathWithName = m_folder.Narrow(folder + "/Log.db");

  if (!Database().InitDataBase(L"Log.db")) {
    EXPECT_GE(m_log.Count("Create database directory failed") + m_log.Count("Init database failed."), 1U);
    return;
  }
  Insert({Record(L"a"), Record(L"b")});
  EXPECT_EQ(Database().GetUserLogList(10, 0, false).size(), 2U);
}

}  // namespace
}  // namespace Drive::Testing
