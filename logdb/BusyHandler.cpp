// BusyHandler.cpp - waiting for a database lock in random slices.
#include "logdb/BusyHandler.h"

#include <chrono>
#include <cstdint>
#include <random>
#include <thread>

#include "platform/Clock.h"
#include "platform/ProcessEnd.h"

namespace Drive::SQLiteDB {
namespace {

constexpr int kMaxInvocations = 100;
// With the other threads of the process gone the lock is another process's, which works on.
constexpr int kMaxInvocationsAlone = 10;

std::chrono::milliseconds RandomSlice() {
  // Two threads need different slices, nothing more: the address of a thread's own generator seeds it.
  thread_local std::minstd_rand generator;
  thread_local bool isSeeded = false;
  if (!isSeeded) {
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    generator.seed(static_cast<unsigned>(ticks) ^
                   static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&generator) >> 4U));
    isSeeded = true;
  }
  return std::chrono::milliseconds(10 * (generator() % 10 + 1));
}

}  // namespace

int WaitForDatabaseLock(void* /*connection*/, int invocations) {
  using Platform::ProcessEnd;
  try {
    const bool isEnding = Platform::CurrentClock().WaitFor(RandomSlice(), ProcessEnd::Signal());
    if (isEnding) {
      const bool isAlone = ProcessEnd::OtherThreadsAreGone();
      if (isAlone ? invocations >= kMaxInvocationsAlone : ProcessEnd::PatienceLeft().count() <= 0) return 0;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return invocations < kMaxInvocations ? 1 : 0;
  } catch (...) {
    return 0;  // no exception may pass through SQLite
  }
}

}  // namespace Drive::SQLiteDB
