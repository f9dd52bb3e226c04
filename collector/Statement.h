// Statement.h - one SQLite statement of the collector, bound, stepped and read in order.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace Drive::Collection {

// Thread-safety: none. Lifetime: must not outlive the connection.
class Statement {
 public:
  Statement(sqlite3* connection, const char* sql) : m_connection(connection) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr);
    m_statement.reset(statement);
    Check(result == SQLITE_OK);
  }

  Statement& Bind(std::int64_t value) {
    Check(sqlite3_bind_int64(m_statement.get(), ++m_bound, value) == SQLITE_OK);
    return *this;
  }
  Statement& Bind(const std::string& value) {
    Check(sqlite3_bind_text64(m_statement.get(), ++m_bound, value.data(), value.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8) == SQLITE_OK);
    return *this;
  }

  // Whether there is a row.
  bool Step() {
    const int result = sqlite3_step(m_statement.get());
    Check(result == SQLITE_ROW || result == SQLITE_DONE);
    return result == SQLITE_ROW;
  }

  std::int64_t Integer(int column) const { return sqlite3_column_int64(m_statement.get(), column); }
  std::string Text(int column) const {
    const auto text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement.get(), column));
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return text == nullptr ? std::string() : std::string(text, static_cast<std::size_t>(size));
  }

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
  };

  void Check(bool done) const {
    if (!done) {
      throw std::runtime_error(std::string("the collector's database: ") + sqlite3_errmsg(m_connection));
    }
  }

  sqlite3* m_connection;  // borrowed
  std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
  int m_bound = 0;
};

}  // namespace Drive::Collection
