// UserLogRow.h - a record as a row: the tables' columns, and moving records in and out of them.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "drivelog/UserLog.h"
#include "logdb/SqliteHandles.h"

namespace Drive::SQLiteDB {

inline constexpr const char* kUserLogTable = "T_UserLog";
inline constexpr const char* kUbaUserLogTable = "T_UBAUserLog";

inline const char* TableOf(bool uba) { return uba ? kUbaUserLogTable : kUserLogTable; }

std::string CreateTableSql(const char* table);
std::string InsertSql(const char* table);

// Binds records to the insert statement, one after the other.
//
// Ownership: SQLite reads the texts from this object, so it must live until the last step is done.
class RowBinder {
 public:
  // SQLite's result code; SQLite's text of a failure is still that of the failure.
  int Bind(sqlite3_stmt* insert, const Bilog::UserLog& record);

 private:
  static constexpr std::size_t kTexts = 17;
  std::array<std::u16string, kTexts> m_texts;
};

// What a record takes in memory, about, in bytes.
std::size_t MemoryBytes(const Bilog::UserLog& record);

// The record in the row that the select statement stands on. Values of any type are taken as SQLite converts
// them; NULL gives an empty text or 0.
Bilog::UserLog ReadRow(sqlite3_stmt* select);

}  // namespace Drive::SQLiteDB
