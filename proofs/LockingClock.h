// LockingClock.h - the manual clock of a simulation in which the database is locked now and then.
#pragma once

#include <chrono>
#include <mutex>

#include "logdb/SqliteHandles.h"
#include "tests/support/ManualClock.h"

namespace Drive::Testing {

// The manual clock, on which waiting for a locked database takes no time for anybody else: another connection
// holds the write lock, and lets go when it has been waited for long enough.
class LockingClock final : public Platform::Clock {
 public:
  LockingClock() { Platform::InstallClock(this); }
  LockingClock(const LockingClock&) = delete;
  LockingClock& operator=(const LockingClock&) = delete;

  std::int64_t NowMilliseconds() const override { return manual.NowMilliseconds(); }
  Platform::LocalTime NowLocal() const override { return manual.NowLocal(); }
  void OnRaise(const Platform::WakeSignal& wake) override { manual.OnRaise(wake); }
  bool WaitFor(std::chrono::milliseconds duration, const Platform::WakeSignal& wake) override;

  void HoldDatabase(std::chrono::milliseconds patience);
  void LetGo();

  ManualClock manual;

 private:
  std::mutex m_mutex;  // guards what follows
  SQLiteDB::ConnectionHandle m_holder;
  std::chrono::milliseconds m_patience{0};  // for which the holder is still to be waited for
};

}  // namespace Drive::Testing
