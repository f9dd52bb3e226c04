// RecordQueue.h - records on their way from the host's threads to the database.
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::Bilog {

// First in, first out.
//
// Surprises: when the process ends and a thread that is gone holds the lock, what cannot be reached is given
//            up: a record that is pushed then is lost, and nothing is popped.
// Thread-safety: every operation may be called from any thread.
class RecordQueue {
 public:
  void Push(UserLog record);
  std::size_t Size() const;

  // The oldest records, at most `limit` of them.
  std::vector<UserLog> Pop(std::size_t limit);

 private:
  mutable std::mutex m_mutex;     // guards m_records
  std::deque<UserLog> m_records;  // oldest first
};

}  // namespace Drive::Bilog
