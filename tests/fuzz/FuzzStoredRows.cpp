// FuzzStoredRows.cpp - rows with values of any type in any column are read, delivered and deleted.
//
// Input: channel, then for each column of a row the kind of its value and the value.
#include <sqlite3.h>

#include "client/common/SharedGlobals.h"
#include "logdb/LogSQLiteDB.h"
#include "logdb/SqliteHandles.h"
#include "logdb/UserLogRow.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

namespace {

constexpr int kLastColumn = 23;  // IsMaintenanceLog

struct Database {
  TempFolder folder;
  SQLiteDB::LogSQLiteDB& log = SQLiteDB::LogSQLiteDB::GetInstance();

  Database() {
    g_dbFullPath = folder.Wide("db");
    g_logDbFullPathWithName = folder.Narrow("db/Log.db");
    Promise(log.InitDataBase(L"Log.db"), "no database");
  }
  SQLiteDB::ConnectionHandle Open() const {
    sqlite3* handle = nullptr;
    Promise(sqlite3_open(folder.Narrow("db/Log.db").c_str(), &handle) == SQLITE_OK, "no connection");
    return SQLiteDB::ConnectionHandle(handle);
  }
};

SQLiteDB::StatementHandle Prepare(sqlite3* connection, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  Promise(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK, sql);
  return SQLiteDB::StatementHandle(statement);
}

void BindAny(sqlite3_stmt* insert, int column, FuzzInput& input) {
  const int kind = input.Byte() % 6;
  if (kind == 1) sqlite3_bind_int64(insert, column, input.Number<std::int64_t>());
  if (kind == 2) sqlite3_bind_double(insert, column, input.Number<double>());
  if (kind < 3) return;  // the rest of them stay NULL
  const std::string bytes = input.Part();
  const int size = static_cast<int>(bytes.size());
  if (kind == 3) sqlite3_bind_blob(insert, column, bytes.data(), size, SQLITE_TRANSIENT);
  if (kind == 4) sqlite3_bind_text(insert, column, bytes.data(), size, SQLITE_TRANSIENT);
  if (kind == 5) sqlite3_bind_text16(insert, column, bytes.data(), size / 2 * 2, SQLITE_TRANSIENT);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Database database;
  FuzzInput input(data, size);
  const Collection::Channel channel = Collection::kChannels[input.Byte() % Collection::kChannels.size()];
  const bool isUba = channel == Collection::Channel::kUba;
  const int maintenance = channel == Collection::Channel::kMaintenance ? 1 : 0;
  {
    const auto connection = database.Open();
    sqlite3_exec(connection.get(), "PRAGMA synchronous = OFF; BEGIN", nullptr, nullptr, nullptr);
    const auto insert = Prepare(connection.get(), SQLiteDB::InsertSql(SQLiteDB::TableOf(isUba)));
    do {
      for (int column = 1; column < kLastColumn; ++column) BindAny(insert.get(), column, input);
      sqlite3_bind_int(insert.get(), kLastColumn, maintenance);
      Promise(sqlite3_step(insert.get()) == SQLITE_DONE, "no row");
      sqlite3_reset(insert.get());
      sqlite3_clear_bindings(insert.get());
    } while (!input.IsEmpty());
    sqlite3_exec(connection.get(), "COMMIT", nullptr, nullptr, nullptr);
    const auto count =
        Prepare(connection.get(), std::string("SELECT count(*) FROM ") + SQLiteDB::TableOf(isUba));
    sqlite3_step(count.get());
    const auto records = database.log.GetUserLogList(1000000, maintenance, isUba);
    Promise(records.size() == static_cast<std::size_t>(sqlite3_column_int(count.get(), 0)), "not all rows");
    PromiseDelivery(channel, records);
    database.log.DeleteUserLogWithId(records.front().get_Id(), records.back().get_Id(), maintenance, isUba);
  }
  Promise(database.log.GetUserLogList(1, maintenance, isUba).empty(), "a row stays");
  return 0;
}

}  // namespace Drive::Testing
