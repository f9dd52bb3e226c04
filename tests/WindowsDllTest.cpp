// WindowsDllTest.cpp - the DLL in a host's process: its end, and its unloading.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/System.h"
#include "tests/LogDbFixture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

// The folder of the user's database; the DLL in another process cannot be given a folder of the test's.
std::filesystem::path FolderOf(const std::wstring& fileName) {
  const std::filesystem::path roaming = Platform::RealSystem().RoamingAppDataFolder();
  for (const auto& entry : std::filesystem::recursive_directory_iterator(roaming / "TalvikCloud")) {
    if (entry.path().filename() == fileName) return entry.path().parent_path();
  }
  return {};
}

// Runs the host again and again; `sql` asks the database that each run leaves.
void RunHosts(int runs, const char* mode, const char* sql, const char* answer) {
  const TempFolder folder;
  for (int run = 0; run < runs; ++run) {
    const std::vector<std::string> arguments{std::to_string(run), folder.Narrow("moment"), mode};
    ASSERT_LT(TimeToEnd(DLL_HOST, arguments, folder.Path() / "moment"), std::chrono::seconds(2)) << run;
    const std::wstring fileName = std::to_wstring(run) + L"-\u7528\u6237\U0001F600LogDB";
    const std::filesystem::path database = FolderOf(fileName);
    ASSERT_FALSE(database.empty()) << run;
    EXPECT_EQ(OtherConnection((database / fileName).u8string()).Run(sql), answer) << run;
    std::filesystem::remove_all(database);
  }
}

TEST(DllTest, SavesEveryQueuedRecordAndEndsWithinTwoSeconds) {
  RunHosts(50, "queued", "SELECT count(*) FROM T_UserLog", "1000");
}

TEST(DllTest, EndsInGoodOrderWhateverItsThreadsHaveLocked) {
  RunHosts(30, "busy", "PRAGMA integrity_check", "ok");
}

TEST(DllTest, StaysLoadedWhileItsThreadsRun) { EXPECT_EQ(ChildProcess(DLL_UNLOAD, {}).Wait(), 0); }

}  // namespace
}  // namespace Drive::Testing
