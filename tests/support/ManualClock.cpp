// ManualClock.cpp - moves the time and follows the threads that this wakes.
#include "tests/support/ManualClock.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <list>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

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
  bool isBeingPoked = false;  // the thread must not leave yet: its signal is in use

  // Neither woken by the time nor by its signal.
  bool IsWaiting() const { return !isDue && !wake->IsRaised(); }
};

}  // namespace

struct ManualClock::State {
  mutable std::mutex mutex;  // guards what follows
  mutable std::condition_variable changed;
  milliseconds now{0};  // since the start
  std::list<Waiter> waiters;
  std::set<std::thread::id> awake;  // woken by the time, and neither waiting again nor ended

  void WaitUntil(std::unique_lock<std::mutex>& lock, const char* subject,
                 const std::function<bool()>& condition) const {
    if (!changed.wait_for(lock, kRealTimeLimit, condition)) {
      throw std::runtime_error(std::string("ManualClock: 30 s passed before ") + subject);
    }
  }

  void MarkEnded(std::thread::id thread) {
    const std::lock_guard<std::mutex> lock(mutex);
    awake.erase(thread);
    changed.notify_all();
  }

  std::vector<Waiter*> TakeDue() {
    std::vector<Waiter*> due;
    for (Waiter& waiter : waiters) {
      if (waiter.deadline <= now && waiter.IsWaiting()) {
        waiter.isDue = true;
        waiter.isBeingPoked = true;
        awake.insert(waiter.thread);
        due.push_back(&waiter);
      }
    }
    return due;
  }

  // The next moment at which something is to happen.
  milliseconds NextStop(milliseconds target) const {
    milliseconds next = target;
    for (const Waiter& waiter : waiters) {
      if (waiter.IsWaiting()) {
        next = std::min(next, waiter.deadline);
      }
    }
    return next;
  }
};

namespace {

// Tells the clock on which a thread waited last that the thread has ended.
template <typename State>
struct ThreadEndGuard {
  ~ThreadEndGuard() {
    if (state != nullptr) {
      state->MarkEnded(std::this_thread::get_id());
    }
  }
  std::shared_ptr<State> state;
};

}  // namespace

ManualClock::ManualClock() : m_state(std::make_shared<State>()) { Platform::InstallClock(this); }

ManualClock::~ManualClock() { Platform::InstallClock(nullptr); }

std::int64_t ManualClock::NowMilliseconds() const {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  return kStartMilliseconds + m_state->now.count();
}

Platform::LocalTime ManualClock::NowLocal() const {
  constexpr std::int64_t kMillisecondsInDay = 24 * 60 * 60 * 1000;
  const std::int64_t now = NowMilliseconds();
  const std::int64_t inDay = now % kMillisecondsInDay;
  Platform::LocalTime local;
  // Days to civil date, by eras of 400 years that begin on 1 March.
  const std::int64_t days = now / kMillisecondsInDay + 719468;
  const std::int64_t era = days / 146097;
  const std::int64_t dayOfEra = days % 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  local.day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
  local.month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  local.year = static_cast<int>(yearOfEra + era * 400 + (local.month <= 2 ? 1 : 0));
  local.hour = static_cast<int>(inDay / 3'600'000);
  local.minute = static_cast<int>(inDay / 60'000 % 60);
  local.second = static_cast<int>(inDay / 1000 % 60);
  local.millisecond = static_cast<int>(inDay % 1000);
  return local;
}

bool ManualClock::WaitFor(milliseconds duration, const Platform::WakeSignal& wake) {
  if (duration <= milliseconds::zero()) {
    return wake.IsRaised();
  }
  thread_local ThreadEndGuard<State> guard;
  guard.state = m_state;

  State& state = *m_state;
  const auto thread = std::this_thread::get_id();
  std::list<Waiter>::iterator self;
  {
    const std::lock_guard<std::mutex> lock(state.mutex);
    self = state.waiters.emplace(state.waiters.end());
    self->thread = thread;
    self->deadline = state.now + std::min(duration, milliseconds(std::chrono::hours(24 * 365)));
    self->wake = &wake;
    state.awake.erase(thread);
    state.changed.notify_all();
  }
  const bool isRaised = wake.WaitUntil([self] { return self->isDue.load(); });

  std::unique_lock<std::mutex> lock(state.mutex);
  state.changed.wait(lock, [self] { return !self->isBeingPoked; });
  state.waiters.erase(self);
  return isRaised;
}

void ManualClock::Advance(milliseconds duration) {
  State& state = *m_state;
  std::unique_lock<std::mutex> lock(state.mutex);
  const milliseconds target = state.now + duration;
  for (bool isThere = false; !isThere;) {
    state.now = state.NextStop(target);
    isThere = state.now == target;
    const std::vector<Waiter*> due = state.TakeDue();
    lock.unlock();
    for (const Waiter* waiter : due) {
      waiter->wake->Poke();
    }
    lock.lock();
    for (Waiter* waiter : due) {
      waiter->isBeingPoked = false;
    }
    state.changed.notify_all();
    state.WaitUntil(lock, "every woken thread waited again or ended", [&] { return state.awake.empty(); });
  }
}

void ManualClock::WaitForWaiters(std::size_t count) const {
  const State& state = *m_state;
  std::unique_lock<std::mutex> lock(state.mutex);
  state.WaitUntil(lock, "enough threads waited", [&] {
    const auto isWaiting = [](const Waiter& waiter) { return waiter.IsWaiting(); };
    return static_cast<std::size_t>(std::count_if(state.waiters.begin(), state.waiters.end(), isWaiting)) >=
           count;
  });
}

}  // namespace Drive::Testing
