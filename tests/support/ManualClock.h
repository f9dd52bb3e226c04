// ManualClock.h - a clock that stands still until the test moves it.
#pragma once

#include <chrono>
#include <cstddef>

#include "platform/Clock.h"

namespace Drive::Testing {

// Replaces the system's clock while it lives. Starts at 2024-03-05 07:08:09.045 UTC, which is its local time
// as well.
//
// Thread-safety: threads under test call the Clock's operations; the test's own thread calls the others.
// Lifetime:      every thread that waits on it must have been woken for good before it is destroyed.
class ManualClock final : public Platform::Clock {
 public:
  ManualClock();
  ~ManualClock() override;
  ManualClock(const ManualClock&) = delete;
  ManualClock& operator=(const ManualClock&) = delete;

  std::int64_t NowMilliseconds() const override;
  Platform::LocalTime NowLocal() const override;
  bool WaitFor(std::chrono::milliseconds duration, const Platform::WakeSignal& wake) override;
  void OnRaise(const Platform::WakeSignal& wake) override;

  // Says that the calling thread will not wait any more. For threads of a test's own, which end without a
  // signal of theirs.
  void Leave();

  // Moves the time from deadline to deadline. At each one it wakes the threads that waited for it, and goes
  // on when every one of them waits on the clock again, has left, or has had its signal raised. Throws
  // std::runtime_error when they take longer than 30 s of real time.
  void Advance(std::chrono::milliseconds duration);

  // Returns when at least `count` threads wait on the clock; throws std::runtime_error after 30 s of real
  // time.
  void WaitForWaiters(std::size_t count) const;

 private:
  struct State;
  static State& NewState();

  State& m_state;  // never destroyed: a stopped thread may come back after the clock is gone
};

}  // namespace Drive::Testing
