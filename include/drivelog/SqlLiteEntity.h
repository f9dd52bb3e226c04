// SqlLiteEntity.h - one row of a query as named values, for clients.
#pragma once

#include <map>
#include <string>

#include "drivelog/Export.h"

struct sqlite3_value;

namespace Drive::SQLiteDB {

// One SQLite value with its type code. The library itself does not use it.
//
// Ownership: owns a duplicate of the value it was made from; a copy owns another.
// Thread-safety: that of a plain value.
class DRIVELOG_API LogSqlLiteValue {
 public:
  // No value; its type code is that of NULL.
  LogSqlLiteValue();

  // Duplicates `value`, which stays the caller's. A null pointer gives no value, and so does a lack of
  // memory.
  explicit LogSqlLiteValue(const sqlite3_value* value);

  LogSqlLiteValue(const LogSqlLiteValue& other);
  LogSqlLiteValue& operator=(const LogSqlLiteValue& other);
  ~LogSqlLiteValue();

  // The owned value, for SQLite's sqlite3_value_ functions; null when there is none.
  sqlite3_value* Value() const { return m_value; }

  // SQLite's type code: 1 integer, 2 float, 3 text, 4 blob, 5 NULL.
  int Type() const { return m_type; }

 private:
  sqlite3_value* m_value;
  int m_type;
};

// One row: values by column name. The case of ASCII letters in names does not count. The library itself does
// not use it.
//
// Thread-safety: that of a plain value.
class DRIVELOG_API SqlLiteEntity {
 public:
  SqlLiteEntity();
  SqlLiteEntity(const SqlLiteEntity& other);
  SqlLiteEntity& operator=(const SqlLiteEntity& other);
  ~SqlLiteEntity();

  // Stores a duplicate of `value`, in place of what the name held.
  void SetValue(std::wstring name, const LogSqlLiteValue& value);

  // A duplicate of the value. Throws TalvikSyncFileException when there is no such name.
  LogSqlLiteValue GetValue(const std::wstring& name) const;

 private:
  std::map<std::wstring, LogSqlLiteValue> m_values;  // by folded name
};

}  // namespace Drive::SQLiteDB
