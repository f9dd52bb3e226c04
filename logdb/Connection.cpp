// Connection.cpp - opening, closing, running statements and transactions.
#include "logdb/Connection.h"

#include <chrono>
#include <system_error>

#include "client/common/SharedGlobals.h"
#include "logdb/BusyHandler.h"
#include "logdb/SqliteErrorCategory.h"
#include "platform/Clock.h"
#include "platform/ProcessEnd.h"

namespace Drive::SQLiteDB {
namespace {

constexpr const char* kConnectLocation = "Drive::SQLiteDB::LogSQLiteDB::_connectDb";
constexpr const char* kConnectReadonlyLocation = "Drive::SQLiteDB::LogSQLiteDB::_connectDbReadonly";
constexpr const char* kCloseLocation = "Drive::SQLiteDB::LogSQLiteDB::_closeDb";
constexpr const char* kExecuteLocation = "Drive::SQLiteDB::LogSQLiteDB::_executeNoQuerySqlCmd";
constexpr const char* kBeginLocation = "Drive::SQLiteDB::LogSQLiteDB::_beginTransaction";
constexpr const char* kCommitLocation = "Drive::SQLiteDB::LogSQLiteDB::_commitTransaction";

constexpr int kMaxPauses = 2;
constexpr std::chrono::milliseconds kPause(10000);

// Runs one statement of a transaction; false after a failure, which is reported.
bool RunTransactionStatement(Connection& connection, const char* sql, const char* location) {
  const StatementHandle statement = connection.Prepare(sql);
  if (statement != nullptr && sqlite3_step(statement.get()) == SQLITE_DONE) return true;
  const std::system_error error(sqlite3_errcode(connection.Handle()), SqliteErrorCategory::GetInstance(),
                                connection.Reason());
  connection.Messages().Error(__LINE__, location, error.what());
  return false;
}

}  // namespace

Connection::Connection(Access access, PendingMessages& messages) : m_messages(messages) {
  const bool isReadOnly = access == Access::kReadOnly;
  const char* location = isReadOnly ? kConnectReadonlyLocation : kConnectLocation;
  const std::string path = g_logDbFullPathWithName.Get();

  int code = SQLITE_CANTOPEN;
  if (!path.empty()) {  // an empty name would open a private database that is gone with the connection
    sqlite3* handle = nullptr;
    code = sqlite3_open_v2(path.c_str(), &handle,
                           (isReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE) | SQLITE_OPEN_NOMUTEX,
                           nullptr);
    m_handle.reset(handle);
  }
  if (code != SQLITE_OK) {
    const std::string reason = m_handle != nullptr ? Reason() : sqlite3_errstr(code);
    m_messages.Error(__LINE__, location,
                     "Open database failed,error code is " + std::to_string(code) + ",reason:" + reason);
    return;
  }
  m_isOpen = true;

  code = sqlite3_busy_handler(Handle(), WaitForDatabaseLock, Handle());
  if (code != SQLITE_OK) {
    m_messages.Error(__LINE__, location,
                     "Set busy handler error,error code is " + std::to_string(code) + ",reason:" + Reason());
  }
}

Connection::~Connection() {
  if (m_handle == nullptr) return;
  const int code = sqlite3_close_v2(m_handle.release());
  if (code != SQLITE_OK) {
    try {
      m_messages.Error(__LINE__, kCloseLocation,
                       "Close database failed,error code is " + std::to_string(code));
    } catch (...) {
      // Only for lack of memory.
    }
  }
}

bool Connection::IsAutoCommit() const { return sqlite3_get_autocommit(Handle()) != 0; }

std::string Connection::Reason() const { return sqlite3_errmsg(Handle()); }

int Connection::Execute(const std::string& sql) {
  if (m_handle == nullptr) return SQLITE_ERROR;  // meant to say nothing: the opening has reported

  const auto run = [&] { return sqlite3_exec(Handle(), sql.c_str(), nullptr, nullptr, nullptr); };
  int code = run();
  for (int pauses = 0; code == SQLITE_BUSY && pauses < kMaxPauses; ++pauses) {
    if (Platform::ProcessEnd::HasBegun()) break;
    code = run();
    if (code != SQLITE_BUSY) break;
    // The pause behind the last run is meant: a caller that tries again at once would meet the same lock.
    Platform::CurrentClock().WaitFor(kPause, Platform::ProcessEnd::Signal());
  }
  if (code != SQLITE_OK) {
    m_messages.Error(
        __LINE__, kExecuteLocation,
        "_executeNoQuerySqlCmd failed,error code is " + std::to_string(code) + ",reason:" + Reason());
  }
  return code;
}

StatementHandle Connection::Prepare(const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(Handle(), sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
  return StatementHandle(statement);
}

Transaction::Transaction(Connection& connection, Kind kind)
    : m_connection(connection),
      m_hasBegun(RunTransactionStatement(
          connection, kind == Kind::kImmediate ? "BEGIN IMMEDIATE" : "BEGIN TRANSACTION", kBeginLocation)) {}

Transaction::~Transaction() {
  // Some failures have rolled everything back already.
  if (m_connection.Handle() == nullptr || m_connection.IsAutoCommit()) return;
  sqlite3_exec(m_connection.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

bool Transaction::Commit() { return RunTransactionStatement(m_connection, "COMMIT", kCommitLocation); }

}  // namespace Drive::SQLiteDB
