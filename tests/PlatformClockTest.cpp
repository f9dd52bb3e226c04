// PlatformClockTest.cpp - waking and waiting on the system's clock.
#include <gtest/gtest.h>

#include <thread>

#include "platform/Clock.h"

namespace Drive::Platform {
namespace {

using namespace std::chrono_literals;

TEST(SystemClockTest, WaitsForDurationsOfAnySize) {
  WakeSignal wake;
  for (const auto duration : {std::chrono::milliseconds::min(), -1ms, 0ms, 1ms}) {
    EXPECT_FALSE(SystemClock().WaitFor(duration, wake));
  }
  std::thread raiser([&wake] { wake.Raise(); });
  EXPECT_TRUE(SystemClock().WaitFor(std::chrono::milliseconds::max(), wake));
  raiser.join();
}

}  // namespace
}  // namespace Drive::Platform
