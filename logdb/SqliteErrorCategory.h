// SqliteErrorCategory.h - SQLite's result codes as std::error_code values.
#pragma once

#include <string>
#include <system_error>

namespace Drive::SQLiteDB {

// Names SQLite's result codes and gives their texts.
class SqliteErrorCategory : public std::error_category {
 public:
  // The one instance; never destroyed.
  static const SqliteErrorCategory& GetInstance();

  const char* name() const noexcept override;
  std::string message(int code) const override;
};

}  // namespace Drive::SQLiteDB
