// LogSQLiteDB.cpp - the database file: folder, creation, size limit, tables.
#include "logdb/LogSQLiteDB.h"

#include <cstdint>

#include "client/common/FileHepler.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/Guarded.h"
#include "drivelog/BiDataBase.h"
#include "logdb/Connection.h"
#include "logdb/PendingMessages.h"
#include "logdb/UserLogRow.h"
#include "platform/EndingLock.h"
#include "platform/System.h"

namespace Drive::SQLiteDB {
namespace {

constexpr std::uint64_t kMaxFileBytes = 524288000;

constexpr const char* kInitLocation = "Drive::SQLiteDB::LogSQLiteDB::InitDataBase";
constexpr const char* kCreateDbLocation = "Drive::SQLiteDB::LogSQLiteDB::CreateDb";
constexpr const char* kCreateTablesLocation = "Drive::SQLiteDB::LogSQLiteDB::CreateTables";

void Print(int level, int line, const std::string& text) {
  CommLog::GetInstance().PrintLog(level, line, kInitLocation, text);
}

// Deletes the file with its write-ahead log, whose pages belong to it alone.
bool DeleteDatabaseFile(const std::wstring& path) {
  if (!FileHepler::DeleteLocalFile(path)) return false;
  FileHepler::DeleteLocalFile(path + L"-wal");
  FileHepler::DeleteLocalFile(path + L"-shm");
  return true;
}

}  // namespace

LogSQLiteDB& LogSQLiteDB::GetInstance() {
  static LogSQLiteDB& instance = *new LogSQLiteDB;
  return instance;
}

bool LogSQLiteDB::InitDataBase(const std::wstring& fileName) {
  return Guarded(kInitLocation, [&] {
    const std::wstring folder = g_dbFullPath.Get();
    if (!FileHepler::CheckFileExist(folder) && Platform::CurrentSystem().CreateDirectoryLevels(folder) != 0) {
      Print(LogLevel::kSync, __LINE__, "Create database directory failed");
      return false;
    }

    const bool ok = Guarded(kInitLocation, [&] { return PrepareFile(folder, fileName); });
    if (!ok) Print(LogLevel::kError, __LINE__, "Init database failed.");
    RegisterOperations();
    Print(LogLevel::kInfo, __LINE__, "BI Call Back Database Success");
    return ok;
  });
}

bool LogSQLiteDB::PrepareFile(const std::wstring& folder, const std::wstring& fileName) {
  ForgetCounts();
  const std::string path = g_logDbFullPathWithName.Get();
  const std::wstring widePath = TypeConvert::UTF8ToUnicode(path);
  bool ok = true;
  if (!FileHepler::CheckFileExist(folder + Platform::kPathSeparator + fileName)) ok = CreateDb(path);

  const std::uint64_t size = FileHepler::GetLocalFileSize(widePath);
  Print(LogLevel::kInfo, __LINE__, path);
  Print(LogLevel::kInfo, __LINE__, "filesize =" + std::to_string(size));
  if (size > kMaxFileBytes && DeleteDatabaseFile(widePath)) {
    Print(LogLevel::kInfo, __LINE__, "delete " + path + "success");
    ok = CreateDb(path) && ok;
  }

  return ok && CreateTables();
}

void LogSQLiteDB::ForgetCounts() {
  const auto lock = Platform::LockUnlessEnding(m_mutex);
  if (!lock.owns_lock()) return;
  for (Table& table : m_tables) table.cap.Forget();
}

void LogSQLiteDB::RegisterOperations() {
  Bilog::BiDataBase::GetInstance().setInsertUserLogBatchCallbackFunc(
      [this](std::vector<Bilog::UserLog>& batch, bool uba) { InsertUserLogBatch(batch, uba); });
  Bilog::BiDataBase::GetInstance().setDeleteUserLogWithIdCallbackFunc(
      [this](int firstId, int lastId, int maintenance, bool uba) {
        DeleteUserLogWithId(firstId, lastId, maintenance, uba);
      });
  Bilog::BiDataBase::GetInstance().setDeleteAllOperationLogUserLogCallbackFunc(
      [this](bool uba, int maintenance) { DeleteAllOperationLogUserLog(uba, maintenance); });
  Bilog::BiDataBase::GetInstance().setGetUserLogListCallbackFunc(
      [this](int count, int maintenance, bool uba) { return GetUserLogList(count, maintenance, uba); });
}

bool LogSQLiteDB::CreateDb(const std::string& path) {
  return Guarded(kCreateDbLocation, [&] {
    PendingMessages messages;
    return CreateDb(path, messages);
  });
}

bool LogSQLiteDB::CreateDb(const std::string& path, PendingMessages& messages) {
  sqlite3* raw = nullptr;
  int code = sqlite3_open_v2(path.c_str(), &raw,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  const ConnectionHandle connection(raw);
  if (code != SQLITE_OK) {
    messages.Error(__LINE__, kCreateDbLocation,
                   "Create sync database failed,error code is ." + std::to_string(code));
    return false;
  }
  // The mode stays in the file. A database that cannot have it is accepted as it is.
  code = sqlite3_exec(connection.get(), "PRAGMA journal_mode=WAL;", nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    messages.Error(__LINE__, kCreateDbLocation,
                   "Set WAL failed,error code is " + std::to_string(code) +
                       ",reason:" + sqlite3_errmsg(connection.get()));
  }
  return true;
}

bool LogSQLiteDB::CreateTables() {
  return Guarded(kCreateTablesLocation, [] {
    PendingMessages messages;
    Connection connection(Connection::Access::kReadWrite, messages);
    const int userLog = connection.Execute(CreateTableSql(kUserLogTable));
    const int ubaUserLog = connection.Execute(CreateTableSql(kUbaUserLogTable));
    return userLog == SQLITE_OK && ubaUserLog == SQLITE_OK;
  });
}

bool LogSQLiteDB::RestoreMissingFile(PendingMessages& messages) {
  const std::string path = g_logDbFullPathWithName.Get();
  if (path.empty() || FileHepler::GetLocalFileSize(TypeConvert::UTF8ToUnicode(path)) > 0) return true;

  const std::wstring folder = g_dbFullPath.Get();
  if (!FileHepler::CheckFileExist(folder)) Platform::CurrentSystem().CreateDirectoryLevels(folder);
  return CreateDb(path, messages);
}

}  // namespace Drive::SQLiteDB
