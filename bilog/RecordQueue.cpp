// RecordQueue.cpp - records on their way from the host's threads to the database.
#include "bilog/RecordQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/EndingLock.h"

namespace Drive::Bilog {

void RecordQueue::Push(UserLog record) {
  const auto lock = Platform::LockUnlessEnding(m_mutex);
  if (lock.owns_lock()) {
    m_records.push_back(std::move(record));
  }
}

std::size_t RecordQueue::Size() const {
  const auto lock = Platform::LockUnlessEnding(m_mutex);
  return lock.owns_lock() ? m_records.size() : 0;
}

std::vector<UserLog> RecordQueue::Pop(std::size_t limit) {
  const auto lock = Platform::LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) {
    return {};
  }
  const auto begin = m_records.begin();
  const auto end = begin + static_cast<std::ptrdiff_t>(std::min(limit, m_records.size()));
  std::vector<UserLog> oldest(std::make_move_iterator(begin), std::make_move_iterator(end));
  m_records.erase(begin, end);
  return oldest;
}

}  // namespace Drive::Bilog
