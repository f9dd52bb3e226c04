// LockingClock.cpp - holds the database's write lock until it has been waited for long enough.
#include "proofs/LockingClock.h"

#include <algorithm>

#include "platform/ProcessEnd.h"
#include "proofs/Ledger.h"

namespace Drive::Testing {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kSlice{100};  // the library's own are random, up to this long

}  // namespace

bool LockingClock::WaitFor(milliseconds duration, const Platform::WakeSignal& wake) {
  if (&wake != &Platform::ProcessEnd::Signal()) return manual.WaitFor(duration, wake);
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_patience -= std::max(duration, kSlice);
  if (m_patience <= milliseconds::zero()) m_holder.reset();
  return false;
}

void LockingClock::HoldDatabase(milliseconds patience) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_holder = OpenBesideTheLibrary();
  m_patience = patience;
  if (m_holder != nullptr) sqlite3_exec(m_holder.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
}

void LockingClock::LetGo() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_holder.reset();
}

}  // namespace Drive::Testing
