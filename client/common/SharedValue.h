// SharedValue.h - a process-wide value that any thread may read and replace.
#pragma once

#include <mutex>
#include <utility>

namespace Drive {

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

  // A default value until the first Set.
  T Get() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_value == nullptr ? T{} : *m_value;
  }

  void Set(T value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_value == nullptr) {
      m_value = new T(std::move(value));
    } else {
      *m_value = std::move(value);
    }
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
