// ManualClock.cpp - moves the time and follows the threads that this wakes.
#include "tests/support/ManualClock.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <ctime>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Drive::Testing {

namespace {

using std::chrono::milliseconds;

constexpr std::int64_t kStartMilliseconds = 1'709'622'489'045;
constexpr std::chrono::seconds kRealTimeLimit{30};

struct Waiter {
  std::thread::id thread;
  milliseconds deadline;
  const Platform::WakeSignal* wake;
  std::atomic<bool> isDue{false};

  // Neither woken by the time nor by its signal.
  bool IsWaiting() const { return !isDue && !wake->IsRaised(); }
};

}  // namespace

struct ManualClock::State {
  mutable std::mutex mutex;  // guards what follows
  mutable std::condition_variable changed;
  milliseconds now{0};  // since the start
  std::list<Waiter> waiters;
  // Woken by the time and expected to wait again, unless their signal is raised; that may have gone since.
  std::map<std::thread::id, const Platform::WakeSignal*> awake;

  void WaitUntil(std::unique_lock<std::mutex>& lock, const char* subject,
                 const std::function<bool()>& condition) const {
    if (!changed.wait_for(lock, kRealTimeLimit, condition)) {
      throw std::runtime_error(std::string("ManualClock: 30 s passed before ") + subject);
    }
  }

  // Goes to the next moment at which something is to happen, and wakes the threads that waited for it. Their
  // signals live: no waiter leaves while the mutex is held.
  void GoOn(milliseconds target) {
    now = target;
    for (const Waiter& waiter : waiters) {
      if (waiter.IsWaiting()) now = std::min(now, waiter.deadline);
    }
    for (Waiter& waiter : waiters) {
      if (waiter.IsWaiting() && waiter.deadline <= now) {
        waiter.isDue = true;
        awake[waiter.thread] = waiter.wake;
        waiter.wake->Poke();
      }
    }
  }
};

ManualClock::State& ManualClock::NewState() {
  static auto& states = *new std::list<State>;
  return states.emplace_back();
}

ManualClock::ManualClock() : m_state(NewState()) { Platform::InstallClock(this); }

ManualClock::~ManualClock() { Platform::InstallClock(nullptr); }

std::int64_t ManualClock::NowMilliseconds() const {
  const std::lock_guard<std::mutex> lock(m_state.mutex);
  return kStartMilliseconds + m_state.now.count();
}

Platform::LocalTime ManualClock::NowLocal() const {
  const std::lock_guard<std::mutex> lock(m_state.mutex);  // guards what gmtime returns as well
  const std::int64_t now = kStartMilliseconds + m_state.now.count();
  const auto seconds = static_cast<std::time_t>(now / 1000);
  const std::tm& utc = *std::gmtime(&seconds);
  return {utc.tm_year + 1900,          utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
          static_cast<int>(now % 1000)};
}

bool ManualClock::WaitFor(milliseconds duration, const Platform::WakeSignal& wake) {
  if (duration <= milliseconds::zero()) {
    return wake.IsRaised();
  }
  State& state = m_state;
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto thread = std::this_thread::get_id();
  const auto self = state.waiters.emplace(state.waiters.end());
  self->thread = thread;
  self->deadline = state.now + std::min(duration, milliseconds(std::chrono::hours(24 * 365)));
  self->wake = &wake;
  state.awake.erase(thread);
  state.changed.notify_all();
  lock.unlock();
  const bool isRaised = wake.WaitUntil([self] { return self->isDue.load(); });
  lock.lock();
  state.waiters.erase(self);
  return isRaised;
}

void ManualClock::OnRaise(const Platform::WakeSignal& wake) {
  State& state = m_state;
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (auto thread = state.awake.begin(); thread != state.awake.end();) {
    thread = thread->second == &wake ? state.awake.erase(thread) : std::next(thread);
  }
  state.changed.notify_all();
}

void ManualClock::Leave() {
  const std::lock_guard<std::mutex> lock(m_state.mutex);
  m_state.awake.erase(std::this_thread::get_id());
  m_state.changed.notify_all();
}

void ManualClock::Advance(milliseconds duration) {
  State& state = m_state;
  std::unique_lock<std::mutex> lock(state.mutex);
  const milliseconds target = state.now + duration;
  do {
    state.GoOn(target);
    state.WaitUntil(lock, "every woken thread waited again or was told to end",
                    [&] { return state.awake.empty(); });
  } while (state.now < target);
}

void ManualClock::WaitForWaiters(std::size_t count) const {
  const State& state = m_state;
  std::unique_lock<std::mutex> lock(state.mutex);
  state.WaitUntil(lock, "enough threads waited", [&] {
    const auto isWaiting = [](const Waiter& waiter) { return waiter.IsWaiting(); };
    return static_cast<std::size_t>(std::count_if(state.waiters.begin(), state.waiters.end(), isWaiting)) >=
           count;
  });
}

}  // namespace Drive::Testing
