// DbTable.h - description of a database table, for clients.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "drivelog/Export.h"

namespace Drive::Common::Model {

// One column. The library gives no meaning to anything but the ordinal. Thread-safety: that of a plain value.
class DRIVELOG_API DbColumn {
 public:
  DbColumn();
  DbColumn(const DbColumn& other);
  DbColumn(DbColumn&& other) noexcept;
  DbColumn& operator=(const DbColumn& other);
  DbColumn& operator=(DbColumn&& other) noexcept;
  ~DbColumn();

  int ordinal = 0;  // assigned by DbTable::addColumn
  std::wstring name;
  std::wstring type;
  bool isNotNull = false;
  std::wstring defaultValue;
  std::int16_t size = 0;
  bool isPrimaryKey = false;
};

// One table: its name and its columns in order. Thread-safety: that of a plain value.
class DRIVELOG_API DbTable {
 public:
  DbTable();
  DbTable(const DbTable& other);
  DbTable(DbTable&& other) noexcept;
  DbTable& operator=(const DbTable& other);
  DbTable& operator=(DbTable&& other) noexcept;
  ~DbTable();

  // Numbers `column` with the number of columns so far, and appends a copy of it.
  void addColumn(DbColumn& column);

  std::wstring name;
  std::list<DbColumn> columns;
};

// Several tables. Thread-safety: that of a plain value.
class DRIVELOG_API DbTables {
 public:
  DbTables();
  DbTables(const DbTables& other);
  DbTables& operator=(const DbTables& other);
  ~DbTables();

  std::list<DbTable> tables;
};

}  // namespace Drive::Common::Model
