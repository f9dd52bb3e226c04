// SeparateThreadTimer.h - runs a task periodically on a thread of its own.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

namespace Drive::Bilog {

// Calls a task once per period, until stopped. The period counts from the end of one run to the start of the
// next, so runs never overlap; the first comes one period after the start.
//
// Surprises: a stop wakes the sleep, and the task runs a last time before the thread ends. A start during a
//            stop is not lost: the new thread waits for the old one to end.
// Thread-safety: every operation may be called from any thread; Stop from the task itself does not wait.
// Ownership:     the thread shares the run's state, and owns copies of the task and of `hurry`.
// Lifetime:      once Stop has returned, the task does not run any more; only when the process ends does Stop
//                give up waiting, so the task must own what it touches.
class SeparateThreadTimer {
 public:
  SeparateThreadTimer() = default;
  ~SeparateThreadTimer();
  SeparateThreadTimer(const SeparateThreadTimer&) = delete;
  SeparateThreadTimer& operator=(const SeparateThreadTimer&) = delete;

  // Does nothing while a thread runs. A period of 0 or less is taken as 10 s. Stop calls `hurry` before it
  // waits, on its own thread, so that a task that waits for something else ends soon.
  void Start(
      std::chrono::milliseconds period, std::function<void()> task, std::function<void()> hurry = [] {});

  // Returns at once when no thread runs or another stop is under way.
  void Stop();

 private:
  struct Run;
  static void Loop(const std::shared_ptr<Run>& run);
  static void WaitForEnd(const Run& run);

  std::mutex m_mutex;          // guards m_run
  std::shared_ptr<Run> m_run;  // the last one started; shared with its thread
};

}  // namespace Drive::Bilog
