// EndingLock.h - taking a lock that a thread may hold for ever once the process ends.
#pragma once

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>

#include "platform/ProcessEnd.h"

namespace Drive::Platform {

// Locks `mutex`. Once the process ends it waits only as long as anybody may, or 50 ms when that is over, and
// not at all when the other threads are gone: what one of them had locked stays locked. The caller looks at
// owns_lock().
template <template <typename> class Lock = std::unique_lock, typename Mutex>
Lock<Mutex> LockUnlessEnding(Mutex& mutex) {
  // Another library's exit handlers may come by here before anybody has announced the end.
  if (!ProcessEnd::HasBegun() && !ProcessEnd::OtherThreadsAreGone()) {
    return Lock<Mutex>(mutex);
  }

  using std::chrono::milliseconds;
  const auto patience = std::max(ProcessEnd::PatienceLeft(), milliseconds(50));
  const auto end = std::chrono::steady_clock::now() + patience;
  Lock<Mutex> lock(mutex, std::try_to_lock);
  while (!lock.owns_lock() && !ProcessEnd::OtherThreadsAreGone() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(milliseconds(1));
    static_cast<void>(lock.try_lock());
  }
  return lock;
}

}  // namespace Drive::Platform
