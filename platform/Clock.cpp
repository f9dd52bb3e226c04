// Clock.cpp - waking threads, and the clock in force.
#include "platform/Clock.h"

#include <algorithm>
#include <atomic>

#include "platform/ProcessEnd.h"

namespace Drive::Platform {

namespace {

// Keeps "now + limit" inside the range of every clock.
constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24 * 365);

std::atomic<Clock*> installedClock{nullptr};

}  // namespace

void WakeSignal::Raise() {
  // With the other threads gone nobody is left to wake, and the mutexes may have been theirs.
  const bool hasListeners = !ProcessEnd::OtherThreadsAreGone();
  if (hasListeners) {
    CurrentClock().OnRaise(*this);
  }
  m_raised = true;
  if (hasListeners) {
    Poke();
  }
}

bool WakeSignal::IsRaised() const { return m_raised; }

bool WakeSignal::WaitFor(std::chrono::milliseconds limit) const {
  if (m_raised || limit <= std::chrono::milliseconds::zero()) {
    return m_raised;
  }
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, std::min(limit, kLongestWait), [this] { return m_raised.load(); });
}

bool WakeSignal::WaitUntil(const std::function<bool()>& done) const {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_changed.wait(lock, [&] { return m_raised || done(); });
  return m_raised;
}

void WakeSignal::Poke() const {
  {
    // A waiter that has looked and does not sleep yet holds the mutex; without this it would miss the call.
    const std::lock_guard<std::mutex> lock(m_mutex);
  }
  m_changed.notify_all();
}

Clock& CurrentClock() {
  Clock* const installed = installedClock;
  return installed == nullptr ? SystemClock() : *installed;
}

void InstallClock(Clock* clock) { installedClock = clock; }

}  // namespace Drive::Platform
