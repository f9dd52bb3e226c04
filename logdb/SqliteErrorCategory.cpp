// SqliteErrorCategory.cpp - texts of SQLite's result codes.
#include "logdb/SqliteErrorCategory.h"

#include <sqlite3.h>

namespace Drive::SQLiteDB {

const SqliteErrorCategory& SqliteErrorCategory::GetInstance() {
  static const SqliteErrorCategory& instance = *new SqliteErrorCategory;
  return instance;
}

const char* SqliteErrorCategory::name() const noexcept { return "SQLite error"; }

std::string SqliteErrorCategory::message(int code) const { return sqlite3_errstr(code); }

}  // namespace Drive::SQLiteDB
