// Clock.h - the time, and waiting for it, behind one seam that tests can replace.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace Drive::Platform {

// A broken-down local time.
struct LocalTime {
  int year = 1970;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

// A flag that one thread raises and others wait for. It stays raised.
//
// Thread-safety: every operation may be called from any thread.
class WakeSignal {
 public:
  // Tells the clock in force first.
  void Raise();
  bool IsRaised() const;

  // Blocks until the signal is raised, or for `limit` of real time; true when it is raised.
  bool WaitFor(std::chrono::milliseconds limit) const;

  // Blocks until the signal is raised or `done` holds; `done` is looked at again after every Poke.
  // For clocks; true when the signal is raised.
  bool WaitUntil(const std::function<bool()>& done) const;
  void Poke() const;

 private:
  std::atomic<bool> m_raised{false};
  mutable std::mutex m_mutex;  // guards nothing but the moment between a waiter's look and its sleep
  mutable std::condition_variable m_changed;
};

// Tells the time and lets a thread wait for it.
//
// Thread-safety: every operation may be called from any thread.
class Clock {
 public:
  virtual ~Clock() = default;

  // Milliseconds since 1970-01-01 UTC.
  virtual std::int64_t NowMilliseconds() const = 0;
  virtual LocalTime NowLocal() const = 0;

  // Waits until `duration` has passed or `wake` is raised; true when it was raised. A duration of 0 or less
  // only looks at the signal.
  virtual bool WaitFor(std::chrono::milliseconds duration, const WakeSignal& wake) = 0;

  // Told before `wake` is raised, so that a clock need not expect its waiter again.
  virtual void OnRaise(const WakeSignal& /*wake*/) {}
};

// The clock in force: the system's, unless a test installed its own.
Clock& CurrentClock();

// Puts `clock` in force, or the system's again (nullptr). For tests, while no thread of the library runs.
void InstallClock(Clock* clock);

// The system's clock.
Clock& SystemClock();

}  // namespace Drive::Platform
