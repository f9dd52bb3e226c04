// RowCap.cpp - bounds and counts of a table's rows.
#include "logdb/RowCap.h"

#include <limits>

#include "logdb/SqliteHandles.h"

namespace Drive::SQLiteDB {
namespace {

// Runs a query of one row; the statement stands on it, and is empty after a failure.
StatementHandle FirstRow(sqlite3* connection, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v2(connection, sql.c_str(), static_cast<int>(sql.size()), &raw, nullptr);
  StatementHandle statement(raw);
  if (statement == nullptr || sqlite3_step(statement.get()) != SQLITE_ROW) return nullptr;
  return statement;
}

// to - from, for any two ids with from <= to; the largest number when it does not fit.
std::int64_t Distance(std::int64_t from, std::int64_t to) {
  const std::uint64_t distance = static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from);
  constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return static_cast<std::int64_t>(distance < kLargest ? distance : kLargest);
}

}  // namespace

std::optional<bool> RowCap::IsReached(sqlite3* connection, const std::string& table, std::int64_t cap) {
  // Two subqueries: each is answered by one end of the b-tree, both in one query would read all rows.
  const StatementHandle ends =
      FirstRow(connection, "SELECT (SELECT min(Id) FROM " + table + "),(SELECT max(Id) FROM " + table + ")");
  if (ends == nullptr) return std::nullopt;
  if (sqlite3_column_type(ends.get(), 0) == SQLITE_NULL) return cap <= 0;
  const std::int64_t firstId = sqlite3_column_int64(ends.get(), 0);
  const std::int64_t lastId = sqlite3_column_int64(ends.get(), 1);
  if (Distance(firstId, lastId) < cap - 1) return false;

  if (m_counted.has_value() && firstId >= m_counted->firstId && lastId >= m_counted->lastId) {
    const std::int64_t growth = Distance(m_counted->lastId, lastId);
    if (growth <= cap / 10 && m_counted->rows < cap - growth) return false;
  }

  const StatementHandle count = FirstRow(connection, "SELECT count(*) FROM " + table);
  if (count == nullptr) return std::nullopt;
  m_counted = Counted{sqlite3_column_int64(count.get(), 0), firstId, lastId};
  return m_counted->rows >= cap;
}

}  // namespace Drive::SQLiteDB
