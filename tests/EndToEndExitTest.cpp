// EndToEndExitTest.cpp - a host may return from main at any moment, and must be gone soon and in good order.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/ChildProcess.h"
#include "tests/support/OtherConnection.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

// How often each way of ending is tried: a few times in a normal run, as often as DRIVELOG_EXIT_RUNS says in
// a long one.
int Runs() {
  const char* runs = std::getenv("DRIVELOG_EXIT_RUNS");
  return runs == nullptr ? 8 : std::atoi(runs);
}

std::string CountOperationRows(const std::filesystem::path& folder) {
  for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
    if (file.path().filename() == "userLogDB") {
      return Testing::OtherConnection(file.path().u8string())
          .Run("SELECT count(*) FROM T_UserLog WHERE IsMaintenanceLog = 0");
    }
  }
  return "no database";
}

class ExitTest : public testing::TestWithParam<std::string> {};

TEST_P(ExitTest, EndsWithinTwoSecondsWithoutACrashAndWithWhatWasQueued) {
  const Testing::TempFolder folder;
  Collection::Collector collector(Testing::CollectorIn(folder.Path()));
  Collection::Fault hang;
  hang.delay = std::chrono::seconds(30);
  hang.count = 0;
  collector.InjectFault(hang);

  for (int run = 0; run < Runs(); ++run) {
    const std::filesystem::path runFolder = folder.Path() / "run";
    Testing::WriteSettings(runFolder / "local", collector.Url(), collector.Url());
    SCOPED_TRACE(run);
    ASSERT_LT(Testing::TimeToEnd(
                  EXIT_WHILE_RUNNING,
                  {GetParam(), runFolder.u8string(), collector.CaPath(), std::to_string(run * 3 % 40)},
                  runFolder / "returned"),
              std::chrono::seconds(2));
    if (GetParam().rfind("queued-", 0) == 0) {
      ASSERT_EQ(CountOperationRows(runFolder), "1000");
    }
    std::filesystem::remove_all(runFolder);
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, ExitTest,
                         testing::Values("idle", "upload", "insert", "record", "queued-bi",
                                         "queued-operation", "queued-unstarted", "queued-inner"));

}  // namespace
}  // namespace Drive
