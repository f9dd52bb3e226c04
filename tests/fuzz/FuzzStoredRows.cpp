// FuzzStoredRows.cpp - rows with values of any type in any column are read, delivered and deleted.
//
// Input: channel, then for each column of a row the kind of its value and the value.
#include "client/common/SharedGlobals.h"
#include "logdb/LogSQLiteDB.h"
#include "logdb/UserLogRow.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/OtherConnection.h"
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
};

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
    const OtherConnection connection(database.folder.Narrow("db/Log.db"));
    connection.Run("BEGIN");
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection.Handle(), SQLiteDB::InsertSql(SQLiteDB::TableOf(isUba)).c_str(), -1,
                       &statement, nullptr);
    const SQLiteDB::StatementHandle insert(statement);
    do {
      for (int column = 1; column < kLastColumn; ++column) BindAny(insert.get(), column, input);
      sqlite3_bind_int(insert.get(), kLastColumn, maintenance);
      Promise(sqlite3_step(insert.get()) == SQLITE_DONE, "no row");
      sqlite3_reset(insert.get());
      sqlite3_clear_bindings(insert.get());
    } while (!input.IsEmpty());
    connection.Run("COMMIT");
    const std::string count = connection.Run(std::string("SELECT count(*) FROM ") + SQLiteDB::TableOf(isUba));
    const auto records = database.log.GetUserLogList(1000000, maintenance, isUba);
    Promise(std::to_string(records.size()) == count, "not all rows");
    PromiseDelivery(channel, records);
    database.log.DeleteUserLogWithId(records.front().get_Id(), records.back().get_Id(), maintenance, isUba);
  }
  Promise(database.log.GetUserLogList(1, maintenance, isUba).empty(), "a row stays");
  return 0;
}

}  // namespace Drive::Testing
