// BiLogTimerThreadTest.cpp - the periodic thread: its period, its stop, and the races of start and stop.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "bilog/SeparateThreadTimer.h"
#include "tests/support/ManualClock.h"

namespace Drive::Bilog {
namespace {

using std::chrono::milliseconds;

class TimerThreadTest : public testing::Test {
 protected:
  void Start(milliseconds period) {
    m_timer.Start(
        period,
        [this] {
          if (++m_runs == 2) {
            throw std::runtime_error("broken");  // the timer goes on
          }
        },
        [this] { ++m_hurried; });
    m_clock.WaitForWaiters(1);
  }

  Testing::ManualClock m_clock;
  std::atomic<int> m_runs{0};
  std::atomic<int> m_hurried{0};
  SeparateThreadTimer m_timer;
};

TEST_F(TimerThreadTest, RunsOncePerPeriodAndALastTimeWhenStopped) {
  const struct {
    int start;
    int period;
  } kCases[] = {{5000, 5000}, {0, 10000}, {-1, 10000}};
  for (const auto& each : kCases) {
    m_runs = 0;
    Start(milliseconds(each.start));
    m_timer.Start(milliseconds(10), [this] { m_runs = 1000; });  // ignored
    m_clock.Advance(milliseconds(each.period - 1));
    EXPECT_EQ(m_runs, 0);
    m_clock.Advance(milliseconds(1));
    EXPECT_EQ(m_runs, 1);
    m_clock.Advance(milliseconds(3 * each.period));
    EXPECT_EQ(m_runs, 4);
    m_timer.Stop();
    m_timer.Stop();
    m_clock.Advance(milliseconds(50000));
    EXPECT_EQ(m_runs, 5);
  }
  EXPECT_EQ(m_hurried, 3);
}

TEST_F(TimerThreadTest, KeepsAStartThatComesDuringAStop) {
  std::atomic<bool> entered{false};
  std::atomic<bool> release{false};
  m_timer.Start(milliseconds(5000), [&] {
    entered = true;
    while (!release) {
      std::this_thread::yield();
    }
  });
  std::thread stopper([this] { m_timer.Stop(); });
  while (!entered) {
    std::this_thread::yield();
  }
  m_timer.Start(milliseconds(1000), [this] { ++m_runs; });  // the old thread is still in its last run
  EXPECT_EQ(m_runs, 0);
  release = true;
  stopper.join();
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(1000));
  EXPECT_EQ(m_runs, 1);
}

}  // namespace
}  // namespace Drive::Bilog
