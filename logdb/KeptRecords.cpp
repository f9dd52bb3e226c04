// KeptRecords.cpp - the bounded list of records that wait for the database.
#include "logdb/KeptRecords.h"

#include <algorithm>

#include "logdb/UserLogRow.h"
#include "platform/EndingLock.h"

namespace Drive::SQLiteDB {

using Platform::LockUnlessEnding;

KeptRecords::Moment KeptRecords::Now() const {
  const auto lock = LockUnlessEnding(m_mutex);
  return lock.owns_lock() ? m_now : 0;
}

std::size_t KeptRecords::Keep(const std::vector<Bilog::UserLog>& batch, Moment since) {
  const auto lock = LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) return batch.size();
  if (m_lastDiscardOfAll > since) return 0;

  std::size_t dropped = 0;
  for (const Bilog::UserLog& record : batch) {
    const auto discard = m_lastDiscard.find(record.get_IsMaintenanceLog());
    if (discard != m_lastDiscard.end() && discard->second > since) continue;
    const std::size_t bytes = MemoryBytes(record);
    if (bytes > kMaxBytes) {
      ++dropped;
      continue;
    }
    m_kept.push_back({m_nextNumber++, bytes, std::make_shared<const Bilog::UserLog>(record)});
  }
  return dropped + DropExcess();
}

std::size_t KeptRecords::DropExcess() {
  std::size_t records = 0;
  std::size_t bytes = 0;
  const auto newestToGo = std::find_if(m_kept.rbegin(), m_kept.rend(), [&](const Kept& kept) {
    bytes += kept.bytes;
    return ++records > kMaxRecords || bytes > kMaxBytes;
  });
  const auto excess = m_kept.rend() - newestToGo;
  m_kept.erase(m_kept.begin(), m_kept.begin() + excess);
  return static_cast<std::size_t>(excess);
}

KeptRecords::Snapshot KeptRecords::All() const {
  Snapshot snapshot;
  const auto lock = LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) return snapshot;
  snapshot.end = m_nextNumber;
  snapshot.records.reserve(m_kept.size());
  for (const Kept& kept : m_kept) snapshot.records.push_back(kept.record);
  return snapshot;
}

bool KeptRecords::IsEmpty() const {
  const auto lock = LockUnlessEnding(m_mutex);
  return !lock.owns_lock() || m_kept.empty();
}

void KeptRecords::Release(const Snapshot& stored) {
  const auto lock = LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) return;
  while (!m_kept.empty() && m_kept.front().number < stored.end) m_kept.pop_front();
}

void KeptRecords::Discard(int maintenance) {
  const auto lock = LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) return;
  m_lastDiscard[maintenance] = ++m_now;
  m_kept.erase(std::remove_if(m_kept.begin(), m_kept.end(),
                              [maintenance](const Kept& kept) {
                                return kept.record->get_IsMaintenanceLog() == maintenance;
                              }),
               m_kept.end());
}

void KeptRecords::DiscardAll() {
  const auto lock = LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) return;
  m_lastDiscardOfAll = ++m_now;
  m_kept.clear();
}

}  // namespace Drive::SQLiteDB
