// Database.cpp - a log database in a folder of its own, and records to store.
#include "bench/Database.h"

#include <cstdlib>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "logdb/LogSQLiteDB.h"

namespace Drive::Bench {

Database::Database() : m_path(m_folder.Narrow("LogDB")) {
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
  Use();
  if (!SQLiteDB::LogSQLiteDB::GetInstance().InitDataBase(L"LogDB")) std::abort();
}

Database::~Database() { Bilog::BiDataBase::GetInstance() = Bilog::BiDataBase(); }

void Database::Use() const {
  g_dbFullPath = TypeConvert::UTF8ToUnicode(m_folder.Path().u8string());
  g_logDbFullPathWithName = m_path;
}

SQLiteDB::ConnectionHandle Database::Open() const {
  sqlite3* raw = nullptr;
  if (sqlite3_open(m_path.c_str(), &raw) != SQLITE_OK) std::abort();
  sqlite3_busy_timeout(raw, 10000);  // the library's threads may be storing
  return SQLiteDB::ConnectionHandle(raw);
}

void Database::Execute(const std::string& sql) const {
  const SQLiteDB::ConnectionHandle connection = Open();
  if (sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
}

std::int64_t Database::Rows() const {
  const SQLiteDB::ConnectionHandle connection = Open();
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v2(connection.get(), "SELECT count(*) FROM T_UserLog", -1, &raw, nullptr);
  const SQLiteDB::StatementHandle statement(raw);
  if (sqlite3_step(raw) != SQLITE_ROW) std::abort();
  return sqlite3_column_int64(raw, 0);
}

std::vector<Bilog::UserLog> SampleRecords(int count) {
  std::vector<Bilog::UserLog> records(static_cast<std::size_t>(count));
  int i = 0;
  for (Bilog::UserLog& record : records) {
    const std::wstring number = std::to_wstring(10000 + i++);
    record.set_Time(L"2024-03-05 07:08:09.045");
    record.set_Action(L"DriveTray.transMgr.startAllUploadTask");
    record.set_UserId(L"user-0123456789");
    record.set_DevId(L"0123456789abcdef0123456789abcdef");
    record.set_Code(L"004_00000");
    record.set_Extend(L"{\"fileName\":\"holiday picture " + number + L".jpg\",\"fileSize\":\"1048" + number +
                      L"\",\"fileType\":\"jpg\",\"path\":\"/Pictures/2024/by the sea/with all of us\","
                      L"\"result\":\"0\",\"status\":\"done\"}");
    record.set_TraceId(L"23_11_17000000" + number + L"_482" + number);
    record.set_Model(L"Win64");
    record.set_Romversion(L"Microsoft Windows NT 10.0.22631.0");
    record.set_Appversion(L"1.2.3.400");
    record.set_CurModule(L"TalvikDrive");
    record.set_Actiontype(L"basic_opr");
    record.set_OprType(L"0");
  }
  return records;
}

}  // namespace Drive::Bench
