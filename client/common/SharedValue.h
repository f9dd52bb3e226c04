// SharedValue.h - a process-wide value that any thread may read and replace.
#pragma once

#include <cstdint>
#include <mutex>
#include <utility>

namespace Drive {

// Locks the mutex of a shared value. Once the process ends this can fail, since a thread that the system has
// ended may hold it for ever: look at owns_lock().
std::unique_lock<std::mutex> LockSharedValue(std::mutex& mutex);

// How often process-wide values have changed. Who reads this number before the values may keep what it made
// of them for as long as the number stays.
std::uint64_t SharedValueChanges();
void CountSharedValueChange();  // behind the change

// Holds one value; copies go in and out under a lock.
//
// Surprises: the value is never destroyed, since detached threads read such values until the process is gone.
//            Meant for namespace-scope objects only: it is constant-initialised, so it can be used before
//            main, in any order.
// Thread-safety: every operation may be called from any thread.
template <typename T>
class SharedValue {
 public:
  constexpr SharedValue() = default;
  SharedValue(const SharedValue&) = delete;
  SharedValue& operator=(const SharedValue&) = delete;

  // A default value until the first Set, or when the lock cannot be taken at the end of the process.
  T Get() const {
    const auto lock = LockSharedValue(m_mutex);
    return !lock.owns_lock() || m_value == nullptr ? T{} : *m_value;
  }

  void Set(T value) {
    const auto lock = LockSharedValue(m_mutex);
    if (!lock.owns_lock()) return;
    if (m_value == nullptr) {
      m_value = new T(std::move(value));
    } else if (*m_value != value) {
      *m_value = std::move(value);
    } else {
      return;
    }
    CountSharedValueChange();
  }

  SharedValue& operator=(T value) {
    Set(std::move(value));
    return *this;
  }
  operator T() const { return Get(); }

 private:
  mutable std::mutex m_mutex;  // guards *m_value
  T* m_value = nullptr;
};

}  // namespace Drive
