// BiLogTimerThreadTest.cpp - the periodic thread: its period, its stop, and the races of start and stop.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "bilog/SeparateThreadTimer.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/ManualClock.h"

namespace Drive::Bilog {
namespace {

using std::chrono::milliseconds;

class TimerThreadTest : public testing::Test {
 protected:
  std::function<void()> Count() {
    return [this] { ++m_runs; };
  }

  Testing::ManualClock m_clock;
  std::atomic<int> m_runs{0};
};

TEST_F(TimerThreadTest, RunsOncePerPeriodAndFirstAfterOne) {
  SeparateThreadTimer timer;
  timer.Start(milliseconds(5000), Count());
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(4999));
  EXPECT_EQ(m_runs, 0);
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(m_runs, 1);
  m_clock.Advance(milliseconds(15000));
  EXPECT_EQ(m_runs, 4);
}

TEST_F(TimerThreadTest, TakesTenSecondsForAPeriodOfNothing) {
  SeparateThreadTimer timer;
  timer.Start(milliseconds(-1), Count());
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(9999));
  EXPECT_EQ(m_runs, 0);
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(m_runs, 1);
}

TEST_F(TimerThreadTest, RunsALastTimeWhenStoppedAndNotAgain) {
  SeparateThreadTimer timer;
  std::atomic<int> hurried{0};
  timer.Start(milliseconds(5000), Count(), [&hurried] { ++hurried; });
  m_clock.WaitForWaiters(1);
  timer.Stop();
  EXPECT_EQ(m_runs, 1);
  EXPECT_EQ(hurried, 1);
  timer.Stop();
  m_clock.Advance(milliseconds(20000));
  EXPECT_EQ(m_runs, 1);
}

TEST_F(TimerThreadTest, IgnoresASecondStart) {
  SeparateThreadTimer timer;
  std::atomic<int> others{0};
  timer.Start(milliseconds(5000), Count());
  timer.Start(milliseconds(1000), [&others] { ++others; });
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(5000));
  EXPECT_EQ(m_runs, 1);
  EXPECT_EQ(others, 0);
}

TEST_F(TimerThreadTest, StartsAgainAfterAStop) {
  SeparateThreadTimer timer;
  for (int round = 1; round <= 3; ++round) {
    timer.Start(milliseconds(5000), Count());
    m_clock.WaitForWaiters(1);
    timer.Stop();
    EXPECT_EQ(m_runs, round);
  }
}

TEST_F(TimerThreadTest, KeepsAStartThatComesDuringAStop) {
  SeparateThreadTimer timer;
  std::atomic<bool> entered{false};
  std::atomic<bool> release{false};
  timer.Start(milliseconds(5000), [&] {
    entered = true;
    while (!release) {
      std::this_thread::yield();
    }
  });
  m_clock.WaitForWaiters(1);
  std::thread stopper([&timer] { timer.Stop(); });
  while (!entered) {
    std::this_thread::yield();
  }
  timer.Start(milliseconds(1000), Count());  // the old thread is still in its last run
  EXPECT_EQ(m_runs, 0);
  release = true;
  stopper.join();
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(1000));
  EXPECT_EQ(m_runs, 1);
}

TEST_F(TimerThreadTest, StopFromTheTaskItselfDoesNotWait) {
  SeparateThreadTimer timer;
  timer.Start(milliseconds(1000), [&] {
    ++m_runs;
    timer.Stop();
  });
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(10000));
  EXPECT_EQ(m_runs, 1);
}

TEST_F(TimerThreadTest, GoesOnAfterATaskThatThrows) {
  Testing::CapturedLog log;
  SeparateThreadTimer timer;
  timer.Start(milliseconds(1000), [this] {
    if (++m_runs == 1) {
      throw std::runtime_error("broken");
    }
  });
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(3000));
  EXPECT_EQ(m_runs, 3);
  EXPECT_EQ(log.Count("task failed: broken"), 1u);
}

TEST_F(TimerThreadTest, SurvivesStartsAndStopsFromManyThreads) {
  SeparateThreadTimer timer;
  std::atomic<int> inTask{0};
  std::atomic<bool> overlapped{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) {
        timer.Start(milliseconds(1000), [&] {
          overlapped = overlapped || ++inTask > 1;
          --inTask;
        });
        timer.Stop();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  timer.Stop();
  EXPECT_FALSE(overlapped);
  timer.Start(milliseconds(1000), Count());
  m_clock.WaitForWaiters(1);
  m_clock.Advance(milliseconds(1000));
  EXPECT_EQ(m_runs, 1);
}

}  // namespace
}  // namespace Drive::Bilog
