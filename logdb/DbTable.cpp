// DbTable.cpp - copying and numbering of table descriptions.
#include "drivelog/DbTable.h"

namespace Drive::Common::Model {

DbColumn::DbColumn() = default;
DbColumn::DbColumn(const DbColumn& other) = default;
DbColumn::DbColumn(DbColumn&& other) noexcept = default;
DbColumn& DbColumn::operator=(const DbColumn& other) = default;
DbColumn& DbColumn::operator=(DbColumn&& other) noexcept = default;
DbColumn::~DbColumn() = default;

DbTable::DbTable() = default;
DbTable::DbTable(const DbTable& other) = default;
DbTable::DbTable(DbTable&& other) noexcept = default;
DbTable& DbTable::operator=(const DbTable& other) = default;
DbTable& DbTable::operator=(DbTable&& other) noexcept = default;
DbTable::~DbTable() = default;

void DbTable::addColumn(DbColumn& column) {
  column.ordinal = static_cast<int>(columns.size());
  columns.push_back(column);
}

DbTables::DbTables() = default;
DbTables::DbTables(const DbTables& other) = default;
DbTables& DbTables::operator=(const DbTables& other) = default;
DbTables::~DbTables() = default;

}  // namespace Drive::Common::Model
