// SqlLiteEntity.cpp - duplicating SQLite values, and looking them up by name.
#include "drivelog/SqlLiteEntity.h"

#include <sqlite3.h>

#include <utility>

#include "drivelog/TalvikSyncFileException.h"

namespace Drive {

TalvikSyncFileException::TalvikSyncFileException(const std::string& message) : std::runtime_error(message) {}
TalvikSyncFileException::TalvikSyncFileException(const TalvikSyncFileException& other) noexcept = default;
TalvikSyncFileException& TalvikSyncFileException::operator=(const TalvikSyncFileException& other) noexcept =
    default;
TalvikSyncFileException::~TalvikSyncFileException() = default;

namespace SQLiteDB {
namespace {

// ASCII only: what the runtime's tolower does to other characters depends on the locale.
std::wstring Folded(std::wstring name) {
  for (wchar_t& character : name) {
    if (character >= L'A' && character <= L'Z') character = static_cast<wchar_t>(character - L'A' + L'a');
  }
  return name;
}

}  // namespace

LogSqlLiteValue::LogSqlLiteValue() : m_value(nullptr), m_type(SQLITE_NULL) {}

LogSqlLiteValue::LogSqlLiteValue(const sqlite3_value* value)
    : m_value(sqlite3_value_dup(value)),
      m_type(m_value != nullptr ? sqlite3_value_type(m_value) : SQLITE_NULL) {}

LogSqlLiteValue::LogSqlLiteValue(const LogSqlLiteValue& other) : LogSqlLiteValue(other.m_value) {}

LogSqlLiteValue& LogSqlLiteValue::operator=(const LogSqlLiteValue& other) {
  LogSqlLiteValue copy(other);
  std::swap(m_value, copy.m_value);
  std::swap(m_type, copy.m_type);
  return *this;
}

LogSqlLiteValue::~LogSqlLiteValue() { sqlite3_value_free(m_value); }

SqlLiteEntity::SqlLiteEntity() = default;
SqlLiteEntity::SqlLiteEntity(const SqlLiteEntity& other) = default;
SqlLiteEntity& SqlLiteEntity::operator=(const SqlLiteEntity& other) = default;
SqlLiteEntity::~SqlLiteEntity() = default;

void SqlLiteEntity::SetValue(std::wstring name, const LogSqlLiteValue& value) {
  m_values[Folded(std::move(name))] = value;
}

LogSqlLiteValue SqlLiteEntity::GetValue(const std::wstring& name) const {
  const auto found = m_values.find(Folded(name));
  if (found == m_values.end()) throw TalvikSyncFileException("The value of the field cannot be found!");
  return found->second;
}

}  // namespace SQLiteDB
}  // namespace Drive
