// PlatformClockTest.cpp - waking, the system's clock, and the manual clock that other tests rely on.
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/Clock.h"
#include "tests/support/ManualClock.h"

namespace Drive::Platform {
namespace {

using namespace std::chrono_literals;
using Notes = std::vector<std::string>;

TEST(ManualClockTest, RunsEveryDeadlineInOrderBeforeAdvanceReturns) {
  Testing::ManualClock clock;
  const std::int64_t start = clock.NowMilliseconds();
  WakeSignal stop;
  std::mutex mutex;  // guards notes
  Notes notes;
  const auto noteEvery = [&](const std::string& name, std::chrono::milliseconds period) {
    while (!CurrentClock().WaitFor(period, stop)) {
      const std::lock_guard<std::mutex> lock(mutex);
      notes.push_back(name + std::to_string(clock.NowMilliseconds() - start));
    }
  };
  std::thread threads[] = {std::thread(noteEvery, "a", 3000ms), std::thread(noteEvery, "b", 5000ms),
                           // Advance returns behind the leaving of a thread that waits no more.
                           std::thread([&] {
                             CurrentClock().WaitFor(4000ms, stop);
                             const std::lock_guard<std::mutex> lock(mutex);
                             notes.push_back("end");
                             clock.Leave();
                           })};
  clock.WaitForWaiters(3);

  clock.Advance(2999ms);
  EXPECT_EQ(notes, Notes());
  clock.Advance(1ms);
  EXPECT_EQ(notes, Notes({"a3000"}));
  clock.Advance(7000ms);
  EXPECT_EQ(notes, Notes({"a3000", "end", "b5000", "a6000", "a9000", "b10000"}));

  stop.Raise();  // ends the waits while the time stands still
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(clock.NowMilliseconds(), start + 10000);
  EXPECT_TRUE(clock.WaitFor(1h, stop)) << "a raised signal stays raised";
}

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
