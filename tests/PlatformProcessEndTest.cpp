// PlatformProcessEndTest.cpp - the announcement of the end, in processes of their own: it cannot be taken
// back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "platform/ProcessEnd.h"

namespace Drive::Platform {
namespace {

using namespace std::chrono_literals;

TEST(ProcessEndTest, WakesEveryPauseAndLimitsPatience) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto endWhileAThreadPauses = [] {
    const bool isQuietBefore =
        !ProcessEnd::HasBegun() && !ProcessEnd::Signal().IsRaised() && ProcessEnd::PatienceLeft() == 1500ms;
    bool isWoken = false;
    std::thread pausing([&isWoken] { isWoken = CurrentClock().WaitFor(1h, ProcessEnd::Signal()); });
    ProcessEnd::Begin();
    pausing.join();
    const auto left = ProcessEnd::PatienceLeft();
    const WakeSignal never;
    SystemClock().WaitFor(2ms, never);
    ProcessEnd::Begin();  // the first call counts
    const auto later = ProcessEnd::PatienceLeft();
    const bool isEnding = ProcessEnd::HasBegun() && isWoken && later < left && later >= 0ms;
    std::exit(isQuietBefore && isEnding ? 0 : 1);
  };
  EXPECT_EXIT(endWhileAThreadPauses(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive::Platform
