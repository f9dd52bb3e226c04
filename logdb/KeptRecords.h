// KeptRecords.h - records that the database could not take, waiting in memory for the next insert.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::SQLiteDB {

// Holds the records of one table, oldest first, up to two bounds, then the oldest go; a record that is above
// a bound by itself goes instead of the others.
//
// Surprises: records stay here while an insert of them is under way, and go only when it is committed, so
//            that a deletion meets them at any moment. Records of an insert that a deletion overtook are not
//            kept at all.
// Thread-safety: every operation may be called from any thread; none enters the database.
class KeptRecords {
 public:
  static constexpr std::size_t kMaxRecords = 10000;
  static constexpr std::size_t kMaxBytes = 64U * 1024U * 1024U;  // of memory, about

  // A moment in the order of deletions.
  using Moment = std::uint64_t;

  // What an insert takes along. Shared with this object, so that copying the list copies no record.
  struct Snapshot {
    std::vector<std::shared_ptr<const Bilog::UserLog>> records;
    std::uint64_t end = 0;  // for Release
  };

  Moment Now() const;

  // Keeps `batch`, but for records whose channel was deleted after `since`. Returns how many records were
  // dropped, of these or of older ones.
  std::size_t Keep(const std::vector<Bilog::UserLog>& batch, Moment since);

  Snapshot All() const;
  bool IsEmpty() const;

  // Lets go of what a snapshot held, since it is stored.
  void Release(const Snapshot& stored);

  // Follow a deletion in the table: of one channel, of everything.
  void Discard(int maintenance);
  void DiscardAll();

 private:
  struct Kept {
    std::uint64_t number;
    std::size_t bytes;
    std::shared_ptr<const Bilog::UserLog> record;
  };

  // Drops the oldest that are above the bounds. Returns how many.
  std::size_t DropExcess();

  mutable std::mutex m_mutex;  // guards what follows
  std::deque<Kept> m_kept;     // by ascending number
  std::uint64_t m_nextNumber = 0;
  Moment m_now = 0;
  Moment m_lastDiscardOfAll = 0;
  std::map<int, Moment> m_lastDiscard;  // by channel
};

}  // namespace Drive::SQLiteDB
