// EndToEndExitTest.cpp - a host may return from main at any moment, and must be gone soon and in good order.
#include <gtest/gtest.h>

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

class ExitTest : public testing::TestWithParam<const char*> {};

TEST_P(ExitTest, EndsWithinTwoSecondsAndWithoutACrash) {
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
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, ExitTest, testing::Values("idle", "upload", "insert"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
}  // namespace Drive
