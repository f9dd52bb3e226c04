// EndToEndExitTest.cpp - a host may return from main at any moment, and must be gone soon and in good order.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "collector/Collector.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

// How often each way of ending is tried: a few times in a normal run, as often as DRIVELOG_EXIT_RUNS says in
// a long one.
int Runs() {
  const char* runs = std::getenv("DRIVELOG_EXIT_RUNS");
  return runs == nullptr ? 8 : std::atoi(runs);
}

// Operation records in the database somewhere below `folder`; -1 when there is none.
int CountOperationRows(const std::filesystem::path& folder) {
  int rows = -1;
  for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
    if (file.path().filename() == "userLogDB") {
      sqlite3* database = nullptr;
      sqlite3_stmt* count = nullptr;
      EXPECT_EQ(SQLITE_OK, sqlite3_open(file.path().u8string().c_str(), &database));
      sqlite3_prepare_v2(database, "SELECT count(*) FROM T_UserLog WHERE IsMaintenanceLog = 0", -1, &count,
                         nullptr);
      rows = sqlite3_step(count) == SQLITE_ROW ? sqlite3_column_int(count, 0) : rows;
      sqlite3_finalize(count);
      sqlite3_close(database);
    }
  }
  return rows;
}

class ExitTest : public testing::TestWithParam<std::string> {};

TEST_P(ExitTest, EndsWithinTwoSecondsWithoutACrashAndWithWhatWasQueued) {
  const Testing::TempFolder folder;
  Collection::Collector::Options options;
  options.dataFolder = folder.Path() / "collector";
  options.database = ":memory:";
  Collection::Collector collector(options);
  Collection::Fault hang;
  hang.delay = std::chrono::seconds(30);
  hang.count = 0;
  collector.InjectFault(hang);

  for (int run = 0; run < Runs(); ++run) {
    const std::string runFolder = folder.Narrow("run" + std::to_string(run));
    const std::string command = std::string(EXIT_WHILE_RUNNING) + " " + GetParam() + " " + runFolder + " " +
                                collector.Url() + " " + collector.CaPath() + " " +
                                std::to_string(run * 3 % 40);
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    const std::chrono::nanoseconds ended(std::chrono::steady_clock::now().time_since_epoch());
    std::int64_t returned = 0;
    std::ifstream(std::filesystem::u8path(runFolder) / "returned") >> returned;
    EXPECT_LT(ended - std::chrono::nanoseconds(returned), std::chrono::seconds(2)) << command;
    if (GetParam().rfind("queued-", 0) == 0) {
      ASSERT_EQ(CountOperationRows(std::filesystem::u8path(runFolder)), 1000) << command;
    }
    std::filesystem::remove_all(std::filesystem::u8path(runFolder));
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, ExitTest,
                         testing::Values("idle", "upload", "insert", "record", "queued-bi",
                                         "queued-operation", "queued-unstarted", "queued-inner"));

}  // namespace
}  // namespace Drive
