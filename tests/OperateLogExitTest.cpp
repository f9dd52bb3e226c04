// OperateLogExitTest.cpp - records that are queued when the host returns from main are saved.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/TempFolder.h"

namespace Drive::OperateLog {
namespace {

constexpr int kRuns = 50;  // of each order

// Rows of T_UserLog in the database somewhere below `folder`; -1 when there is none.
int CountRows(const std::filesystem::path& folder) {
  int rows = -1;
  for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
    if (file.path().filename() == "userLogDB") {
      sqlite3* database = nullptr;
      EXPECT_EQ(SQLITE_OK, sqlite3_open(file.path().u8string().c_str(), &database));
      sqlite3_exec(
          database, "SELECT count(*) FROM T_UserLog",
          [](void* result, int, char** values, char**) {
            *static_cast<int*>(result) = std::atoi(values[0]);
            return 0;
          },
          &rows, nullptr);
      sqlite3_close(database);
    }
  }
  return rows;
}

class QueuedExitTest : public testing::TestWithParam<const char*> {};

TEST_P(QueuedExitTest, SavesEveryQueuedRecord) {
  const Testing::TempFolder folder;
  for (int run = 0; run < kRuns; ++run) {
    const std::filesystem::path data = folder.Path() / std::to_string(run);
    std::filesystem::create_directories(data);
    const std::string command =
        std::string("\"") + EXIT_WITH_QUEUED_RECORDS + "\" \"" + data.u8string() + "\" " + GetParam();
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    ASSERT_EQ(CountRows(data), 1000) << command;
  }
}

INSTANTIATE_TEST_SUITE_P(Orders, QueuedExitTest, testing::Values("bi", "operation", "idle", "inner"),
                         [](const auto& order) { return std::string(order.param); });

}  // namespace
}  // namespace Drive::OperateLog
