// LogRecordOperations.cpp - appending, reading and deleting records.
#include <algorithm>
#include <string>

#include "commlog/Guarded.h"
#include "logdb/Connection.h"
#include "logdb/LogSQLiteDB.h"
#include "logdb/UserLogRow.h"
#include "model/LogSettings.h"
#include "platform/EndingLock.h"

namespace Drive::SQLiteDB {
namespace {

using Bilog::UserLog;

constexpr const char* kInsertLocation = "Drive::SQLiteDB::LogSQLiteDB::InsertUserLogBatch";
constexpr const char* kGetListLocation = "Drive::SQLiteDB::LogSQLiteDB::GetUserLogList";
constexpr const char* kDeleteWithIdLocation = "Drive::SQLiteDB::LogSQLiteDB::DeleteUserLogWithId";
constexpr const char* kDeleteAllLocation = "Drive::SQLiteDB::LogSQLiteDB::DeleteAllOperationLogUserLog";
constexpr const char* kDeleteTablesLocation = "Drive::SQLiteDB::LogSQLiteDB::DeleteFromAllTables";
constexpr const char* kCheckDbSizeLocation = "Drive::SQLiteDB::LogSQLiteDB::CheckDbSize";

// Runs `operation` under the lock of the record operations. While the process ends the lock may stay out of
// reach. Not even a thread that the system has ended is passed over then: it may have held locks of SQLite's
// own as well, and waiting for those would never end.
template <typename Operation>
void GuardedAndLocked(const char* location, std::mutex& mutex, PendingMessages& messages,
                      const Operation& operation) {
  Guarded(location, [&] {
    const auto lock = Platform::LockUnlessEnding(mutex);
    if (lock.owns_lock()) {
      operation();
    } else {
      messages.Error(__LINE__, location, "given up at the end of the process: the database is in use");
    }
  });
}

std::string FailureText(const char* operation, int code, const Connection& connection) {
  return std::string(operation) + " failed,error code is " + std::to_string(code) +
         ",reason:" + connection.Reason();
}

// Whether a failed insert is the fault of the record, so that the next one may succeed.
bool IsRecordError(int code) {
  return code == SQLITE_TOOBIG || code == SQLITE_CONSTRAINT || code == SQLITE_MISMATCH ||
         code == SQLITE_RANGE;
}

// Appends records one by one through one prepared statement.
class Inserter {
 public:
  Inserter(Connection& connection, const char* table) : m_connection(connection) {
    const std::string sql = InsertSql(table);
    m_insert = connection.Prepare(sql);
    if (m_insert != nullptr) return;
    // A file without our tables gets them in the transaction under way.
    for (const char* each : {kUserLogTable, kUbaUserLogTable}) {
      if (connection.Execute(CreateTableSql(each)) != SQLITE_OK) return;
    }
    m_insert = connection.Prepare(sql);
    if (m_insert == nullptr) ReportFailure(sqlite3_errcode(connection.Handle()));
  }

  bool IsReady() const { return m_insert != nullptr; }

  // False when the database, not the record, is the reason of a failure. Every failure is reported.
  bool Append(const UserLog& record) {
    int code = m_row.Bind(m_insert.get(), record);
    if (code == SQLITE_OK) code = sqlite3_step(m_insert.get());
    if (code != SQLITE_DONE) ReportFailure(code);
    sqlite3_reset(m_insert.get());
    // A trigger can refuse a record and end the whole transaction.
    return code == SQLITE_DONE || (IsRecordError(code) && !m_connection.IsAutoCommit());
  }

 private:
  void ReportFailure(int code) {
    m_connection.Messages().Error(__LINE__, kInsertLocation,
                                  FailureText("InsertUserLogBatch", code, m_connection));
  }

  Connection& m_connection;
  RowBinder m_row;
  StatementHandle m_insert;
};

// Runs one deleting statement in a transaction of its own.
void DeleteRows(const std::string& sql, const char* operation, const char* location,
                PendingMessages& messages) {
  Connection connection(Connection::Access::kReadWrite, messages);
  Transaction transaction(connection, Transaction::Kind::kDeferred);
  const int code = connection.Execute(sql);
  if (code != SQLITE_OK) messages.Error(__LINE__, location, FailureText(operation, code, connection));
  transaction.Commit();
}

}  // namespace

void LogSQLiteDB::InsertUserLogBatch(std::vector<UserLog>& batch, bool uba) {
  PendingMessages messages;
  KeptRecords& kept = TableFor(uba).kept;
  KeptRecords::Moment begun = kept.Now();
  bool isStored = false;
  GuardedAndLocked(kInsertLocation, m_mutex, messages, [&] {
    begun = kept.Now();
    isStored = StoreBatch(batch, uba, messages);
  });
  if (isStored) return;

  Guarded(kInsertLocation, [&] {
    const std::size_t dropped = kept.Keep(batch, begun);
    if (dropped > 0) {
      messages.Error(__LINE__, kInsertLocation,
                     "InsertUserLogBatch dropped " + std::to_string(dropped) +
                         " records: too many wait for the database");
    }
  });
}

bool LogSQLiteDB::StoreBatch(const std::vector<UserLog>& batch, bool uba, PendingMessages& messages) {
  if (!RestoreMissingFile(messages)) return false;
  Connection connection(Connection::Access::kReadWrite, messages);
  if (!connection.IsOpen()) return false;
  Transaction transaction(connection, Transaction::Kind::kImmediate);
  if (!transaction.HasBegun()) return false;
  Inserter inserter(connection, TableOf(uba));
  if (!inserter.IsReady()) return false;

  CheckDbSize(connection, uba);
  // A cut that fails, which it has reported, may have ended the transaction.
  if (connection.IsAutoCommit()) return false;

  // Read behind the beginning: what a deletion discards now, it also waits to delete from the table.
  KeptRecords& kept = TableFor(uba).kept;
  const KeptRecords::Snapshot waiting = kept.All();
  const bool isAppended =
      std::all_of(waiting.records.begin(), waiting.records.end(),
                  [&](const auto& record) { return inserter.Append(*record); }) &&
      std::all_of(batch.begin(), batch.end(), [&](const UserLog& record) { return inserter.Append(record); });
  if (!isAppended || !transaction.Commit()) return false;

  if (!waiting.records.empty()) {
    kept.Release(waiting);
    messages.Info(__LINE__, kInsertLocation,
                  "InsertUserLogBatch stored " + std::to_string(waiting.records.size()) +
                      " records that had waited for the database");
  }
  return true;
}

void LogSQLiteDB::CheckDbSize(Connection& connection, bool uba) {
  const int cap = Bilog::LogSettings::GetInstance().GetLogDbSize();
  const int chunk = cap / 10;
  if (chunk < 1) return;  // meant: a cap below 10 cuts nothing

  const std::string table = TableOf(uba);
  RowCap& rowCap = TableFor(uba).cap;
  const std::optional<bool> isReached = rowCap.IsReached(connection.Handle(), table, cap);
  if (!isReached.has_value()) {
    connection.Messages().Error(__LINE__, kCheckDbSizeLocation, "SELECT Id FROM " + table + " exc error!");
    return;
  }
  if (!*isReached) return;
  rowCap.Forget();
  connection.Execute("delete from " + table + " where Id in(select Id from " + table + " limit 0," +
                     std::to_string(chunk) + ")");
}

std::vector<UserLog> LogSQLiteDB::GetUserLogList(int count, int maintenance, bool uba) {
  std::vector<UserLog> records;
  PendingMessages messages;
  GuardedAndLocked(kGetListLocation, m_mutex, messages, [&] {
    Connection connection(Connection::Access::kReadOnly, messages);
    Transaction transaction(connection, Transaction::Kind::kDeferred);
    // SQLite takes a limit below 0 for none.
    const std::string sql = std::string("SELECT * FROM ") + TableOf(uba) +
                            " WHERE  IsMaintenanceLog = " + std::to_string(maintenance) +
                            " order by Id Asc limit " + std::to_string(std::max(count, 0));
    {
      const StatementHandle select = connection.Prepare(sql);
      // Meant to say nothing when it fails: the list ends early.
      while (select != nullptr && sqlite3_step(select.get()) == SQLITE_ROW) {
        records.push_back(ReadRow(select.get()));
      }
    }
    transaction.Commit();
  });
  return records;
}

void LogSQLiteDB::DeleteUserLogWithId(int firstId, int lastId, int maintenance, bool uba) {
  PendingMessages messages;
  GuardedAndLocked(kDeleteWithIdLocation, m_mutex, messages, [&] {
    DeleteRows(std::string("delete from ") + TableOf(uba) +
                   " where IsMaintenanceLog = " + std::to_string(maintenance) + " And id between " +
                   std::to_string(firstId) + " and " + std::to_string(lastId),
               "DeleteUserLogWithId", kDeleteWithIdLocation, messages);
  });
}

void LogSQLiteDB::DeleteAllOperationLogUserLog(bool uba, int maintenance) {
  PendingMessages messages;
  GuardedAndLocked(kDeleteAllLocation, m_mutex, messages, [&] {
    TableFor(uba).kept.Discard(maintenance);
    DeleteRows(std::string("delete from ") + TableOf(uba) +
                   " where IsMaintenanceLog = " + std::to_string(maintenance),
               "DeleteAllOperationLogUserLog", kDeleteAllLocation, messages);
  });
}

void LogSQLiteDB::DeleteFromAllTables() {
  // Without the lock and without a transaction: meant, see the class.
  Guarded(kDeleteTablesLocation, [this] {
    PendingMessages messages;
    for (Table& table : m_tables) table.kept.DiscardAll();
    Connection connection(Connection::Access::kReadWrite, messages);
    connection.Execute("DELETE FROM T_UBAUserLog;DELETE FROM T_UserLog;");
  });
}

void LogSQLiteDB::StoreKeptRecords() {
  std::vector<UserLog> nothing;
  for (const bool uba : {false, true}) {
    if (!TableFor(uba).kept.IsEmpty()) InsertUserLogBatch(nothing, uba);
  }
}

}  // namespace Drive::SQLiteDB
