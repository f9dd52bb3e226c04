// OtherConnection.h - another user of a database file.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

#include "logdb/SqliteHandles.h"

namespace Drive::Testing {

// Throws std::runtime_error where SQLite reports an error.
class OtherConnection {
 public:
  explicit OtherConnection(const std::string& path) {
    sqlite3* handle = nullptr;
    const int code = sqlite3_open(path.c_str(), &handle);
    m_handle.reset(handle);
    if (code != SQLITE_OK) throw std::runtime_error(path + ": " + sqlite3_errmsg(handle));
    Run("PRAGMA synchronous = OFF");
  }

  sqlite3* Handle() const { return m_handle.get(); }

  // The columns of the first row as text, such as "1|a"; "" without one.
  std::string Run(const std::string& sql) const {
    std::string text;
    const auto append = [](void* result, int columns, char** values, char**) {
      for (int i = 0; i < columns; ++i) {
        static_cast<std::string*>(result)->append(i > 0 ? "|" : "").append(values[i] ? values[i] : "");
      }
      return 1;
    };
    const int code = sqlite3_exec(Handle(), sql.c_str(), append, &text, nullptr);
    if (code != SQLITE_OK && code != SQLITE_ABORT) {
      throw std::runtime_error(sql + ": " + sqlite3_errmsg(Handle()));
    }
    return text;
  }

 private:
  SQLiteDB::ConnectionHandle m_handle;
};

}  // namespace Drive::Testing
