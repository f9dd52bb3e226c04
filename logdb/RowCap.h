// RowCap.h - tells whether a table has reached its row cap, without counting its rows each time.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <optional>
#include <string>

namespace Drive::SQLiteDB {

// Gives the answer that counting all rows would give. Two facts spare the counting: a table holds at most
// largest - smallest Id + 1 rows, and since a count it has grown by at most as much as its largest Id has
// (AUTOINCREMENT never reuses one). Only tables whose ids have many gaps are counted, once in a while.
//
// Surprises: a count is trusted for no more than a tenth of the cap, and not after ids have gone backwards: a
//            file exchanged from outside is to be noticed.
// Thread-safety: one object serves one table, under its owner's lock.
class RowCap {
 public:
  // Whether the table holds `cap` rows or more; nothing when it cannot be read.
  std::optional<bool> IsReached(sqlite3* connection, const std::string& table, std::int64_t cap);

  // To be called when rows were deleted or the file is another.
  void Forget() { m_counted.reset(); }

 private:
  struct Counted {
    std::int64_t rows;
    std::int64_t firstId;
    std::int64_t lastId;
  };
  std::optional<Counted> m_counted;
};

}  // namespace Drive::SQLiteDB
