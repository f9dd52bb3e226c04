// EndingLock.h - taking a lock that a thread may hold for ever once the process ends.
#pragma once

#include <chrono>
#include <mutex>
#include <thread>

#include "platform/ProcessEnd.h"

namespace Drive::Platform {

// Locks `mutex`. Once the process ends it waits only as long as anybody may, and not at all when the other
// threads are gone: what one of them had locked stays locked. The caller then looks at owns_lock().
template <template <typename> class Lock = std::unique_lock, typename Mutex>
Lock<Mutex> LockUnlessEnding(Mutex& mutex) {
  if (!ProcessEnd::HasBegun()) return Lock<Mutex>(mutex);

  constexpr std::chrono::milliseconds kPollInterval(5);
  Lock<Mutex> lock(mutex, std::try_to_lock);
  while (!lock.owns_lock() && !ProcessEnd::OtherThreadsAreGone() && ProcessEnd::PatienceLeft().count() > 0) {
    std::this_thread::sleep_for(kPollInterval);
    static_cast<void>(lock.try_lock());
  }
  return lock;
}

}  // namespace Drive::Platform
