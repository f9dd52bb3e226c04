// SqliteHandles.h - owners of SQLite's two C handles.
#pragma once

#include <sqlite3.h>

#include <memory>

namespace Drive::SQLiteDB {

// SQLite defers the closing for as long as a statement is left, so a statement never holds a dead connection.
struct ConnectionCloser {
  void operator()(sqlite3* connection) const noexcept { sqlite3_close_v2(connection); }
};
using ConnectionHandle = std::unique_ptr<sqlite3, ConnectionCloser>;

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

}  // namespace Drive::SQLiteDB
