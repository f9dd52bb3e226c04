// LogDbFixture.h - a log database in a folder of its own, and a second connection to look at it.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

// Another user of the database file.
class OtherConnection {
 public:
  explicit OtherConnection(const std::string& path) {
    EXPECT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &m_connection));
    Run("PRAGMA synchronous = OFF");
  }
  ~OtherConnection() { sqlite3_close(m_connection); }
  OtherConnection(const OtherConnection&) = delete;
  OtherConnection& operator=(const OtherConnection&) = delete;

  void Run(const std::string& sql) {
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(m_connection, sql.c_str(), nullptr, nullptr, nullptr))
        << sql << ": " << sqlite3_errmsg(m_connection);
  }

  // First column of the first row as text; "(none)" without one.
  std::string Text(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(m_connection, sql.c_str(), -1, &statement, nullptr))
        << sqlite3_errmsg(m_connection);
    std::string text = "(none)";
    if (sqlite3_step(statement) == SQLITE_ROW) {
      const auto* value = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      text = value == nullptr ? "(null)" : value;
    }
    sqlite3_finalize(statement);
    return text;
  }

 private:
  sqlite3* m_connection = nullptr;
};

class LogDbTest : public testing::Test {
 protected:
  LogDbTest() {
    Bilog::LogSettings::GetInstance().Reset();
    g_dbFullPath = m_folder.Wide("db");
    g_logDbFullPathWithName = Path();
  }
  ~LogDbTest() override { Database().DeleteFromAllTables(); }

  static SQLiteDB::LogSQLiteDB& Database() { return SQLiteDB::LogSQLiteDB::GetInstance(); }
  std::string Path() const { return (m_folder.Path() / "db" / "Log.db").u8string(); }

  void Init() {
    ASSERT_TRUE(Database().InitDataBase(L"Log.db"));
    m_log.Clear();
  }
  std::string Query(const std::string& sql) const { return OtherConnection(Path()).Text(sql); }
  void Run(const std::string& sql) const { OtherConnection(Path()).Run(sql); }

  // The Action texts of a table's rows in order, such as "a b c".
  std::string Actions(const std::string& table = "T_UserLog") const {
    return Query("SELECT group_concat(Action, ' ') FROM (SELECT Action FROM " + table + " ORDER BY Id)");
  }

  static Bilog::UserLog Record(const std::wstring& action, int maintenance = 0) {
    Bilog::UserLog record;
    record.set_Action(action);
    record.set_IsMaintenanceLog(maintenance);
    return record;
  }
  static void Insert(std::vector<Bilog::UserLog> batch, bool uba = false) {
    Database().InsertUserLogBatch(batch, uba);
  }
  static std::vector<Bilog::UserLog> Many(int count, int maintenance = 0) {
    std::vector<Bilog::UserLog> batch;
    for (int i = 0; i < count; ++i) batch.push_back(Record(std::to_wstring(i), maintenance));
    return batch;
  }

  // Ends a death test's process, whose destructors do not run.
  [[noreturn]] void Leave(bool isGood) const {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder.Path(), ignored);
    std::_Exit(isGood ? 0 : 1);
  }

  TempFolder m_folder;
  CapturedLog m_log;
};

}  // namespace Drive::Testing
