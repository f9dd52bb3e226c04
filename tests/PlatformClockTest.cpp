// PlatformClockTest.cpp - waking, the system's clock, and the manual clock that other tests rely on.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/Clock.h"
#include "tests/support/ManualClock.h"

namespace Drive::Platform {
namespace {

using namespace std::chrono_literals;

// Threads that note the time after each of their periods, until the test ends.
class PeriodicThreads {
 public:
  ~PeriodicThreads() {
    m_stop.Raise();
    for (std::thread& thread : m_threads) {
      thread.join();
    }
  }

  void Start(const std::string& name, std::chrono::milliseconds period) {
    const std::int64_t start = CurrentClock().NowMilliseconds();
    m_threads.emplace_back([this, name, period, start] {
      while (!CurrentClock().WaitFor(period, m_stop)) {
        const std::int64_t now = CurrentClock().NowMilliseconds() - start;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_notes.push_back(name + std::to_string(now));
      }
    });
  }

  std::vector<std::string> Notes() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_notes;
  }

 private:
  WakeSignal m_stop;
  mutable std::mutex m_mutex;  // guards m_notes
  std::vector<std::string> m_notes;
  std::vector<std::thread> m_threads;
};

TEST(ManualClockTest, RunsEveryDeadlineInOrderBeforeAdvanceReturns) {
  Testing::ManualClock clock;
  PeriodicThreads threads;
  threads.Start("a", 3000ms);
  threads.Start("b", 5000ms);
  clock.WaitForWaiters(2);

  clock.Advance(2999ms);
  EXPECT_TRUE(threads.Notes().empty());
  clock.Advance(1ms);
  EXPECT_EQ(threads.Notes(), std::vector<std::string>({"a3000"}));
  clock.Advance(7000ms);
  EXPECT_EQ(threads.Notes(), std::vector<std::string>({"a3000", "b5000", "a6000", "a9000", "b10000"}));
}

TEST(ManualClockTest, GoesOnWhenAWokenThreadHasEnded) {
  Testing::ManualClock clock;
  bool isRun = false;  // Advance returns behind the end of the thread that writes it
  std::thread thread([&isRun] {
    const WakeSignal never;
    CurrentClock().WaitFor(1000ms, never);
    isRun = true;
  });
  clock.WaitForWaiters(1);

  clock.Advance(1000ms);
  EXPECT_TRUE(isRun);
  thread.join();
}

TEST(ManualClockTest, ASignalEndsAWaitWhileTimeStandsStill) {
  Testing::ManualClock clock;
  const std::int64_t start = clock.NowMilliseconds();
  WakeSignal wake;
  bool isWoken = false;
  std::thread thread([&] { isWoken = CurrentClock().WaitFor(1000ms, wake); });
  clock.WaitForWaiters(1);
  wake.Raise();
  thread.join();

  EXPECT_TRUE(isWoken);
  EXPECT_EQ(clock.NowMilliseconds(), start);
  EXPECT_TRUE(clock.WaitFor(1h, wake)) << "a raised signal stays raised";
  clock.Advance(1h);  // nobody waits any more
}

TEST(ManualClockTest, TellsTheCalendar) {
  struct {
    std::chrono::hours advance;
    int year, month, day, hour;
  } const rows[] = {{0h, 2024, 3, 5, 7},
                    {17h, 2024, 3, 6, 0},
                    {24h * 299, 2024, 12, 30, 0},
                    {24h * 2, 2025, 1, 1, 0},
                    {24h * 59, 2025, 3, 1, 0}};
  Testing::ManualClock clock;
  for (const auto& row : rows) {
    clock.Advance(row.advance);
    const LocalTime now = clock.NowLocal();
    EXPECT_EQ(now.year, row.year);
    EXPECT_EQ(now.month, row.month);
    EXPECT_EQ(now.day, row.day) << row.year << "-" << row.month;
    EXPECT_EQ(now.hour, row.hour);
    EXPECT_EQ(now.minute, 8);
    EXPECT_EQ(now.second, 9);
    EXPECT_EQ(now.millisecond, 45);
  }
}

TEST(SystemClockTest, LocalTimeAndMillisecondsAreTheSameMoment) {
  ASSERT_EQ(&CurrentClock(), &SystemClock());
  const std::int64_t before = SystemClock().NowMilliseconds();
  const LocalTime local = SystemClock().NowLocal();
  const std::int64_t after = SystemClock().NowMilliseconds();

  std::tm broken{};
  broken.tm_year = local.year - 1900;
  broken.tm_mon = local.month - 1;
  broken.tm_mday = local.day;
  broken.tm_hour = local.hour;
  broken.tm_min = local.minute;
  broken.tm_sec = local.second;
  broken.tm_isdst = -1;
  const std::int64_t moment = static_cast<std::int64_t>(std::mktime(&broken)) * 1000 + local.millisecond;
  EXPECT_LE(before, moment);
  EXPECT_LE(moment, after);
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
