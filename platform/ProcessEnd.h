// ProcessEnd.h - whether the process has begun to end, for everything that would otherwise make it wait.
#pragma once

#include <chrono>

#include "platform/Clock.h"

namespace Drive::Platform {

// The library's singletons announce the end of the process from their destructors; from then on pauses end
// at once, transfers are aborted and nobody waits for another thread for long.
//
// Thread-safety: every operation may be called from any thread.
class ProcessEnd {
 public:
  // Announces the end. The first call counts.
  static void Begin();
  static bool HasBegun();

  // Raised by Begin; pauses wait on it.
  static const WakeSignal& Signal();

  // How much longer anybody may wait for another thread, counted from Begin (1500 ms in all, never negative).
  static std::chrono::milliseconds PatienceLeft();

  // True when the system has already ended all other threads, as Windows does before it unloads a library:
  // whatever they were to do will not be done, and what they locked stays locked.
  static bool OtherThreadsAreGone();
};

}  // namespace Drive::Platform
