// LogDbFixture.h - a log database in a folder of its own, and a second connection to look at it.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "logdb/LogSQLiteDB.h"
#include "logdb/SqliteHandles.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

using Texts = std::vector<std::string>;

// Another user of the database file.
class OtherConnection {
 public:
  explicit OtherConnection(const std::string& path) {
    sqlite3* handle = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &handle));
    m_handle.reset(handle);
    Run("PRAGMA synchronous = OFF");
  }

  sqlite3* Handle() const { return m_handle.get(); }

  // The columns of the first row as text, such as "1|a"; "" without one.
  std::string Run(const std::string& sql) {
    std::string text;
    const auto append = [](void* result, int columns, char** values, char**) {
      for (int i = 0; i < columns; ++i) {
        static_cast<std::string*>(result)->append(i > 0 ? "|" : "").append(values[i] ? values[i] : "");
      }
      return 1;
    };
    const int code = sqlite3_exec(Handle(), sql.c_str(), append, &text, nullptr);
    EXPECT_TRUE(code == SQLITE_OK || code == SQLITE_ABORT) << sql << ": " << code;
    return text;
  }

 private:
  SQLiteDB::ConnectionHandle m_handle;
};

class LogDbTest : public testing::Test {
 protected:
  LogDbTest() {
    Bilog::LogSettings::GetInstance().Reset();
    g_dbFullPath = m_folder.Wide("db");
    g_logDbFullPathWithName = Path();
  }
  ~LogDbTest() override { Database().DeleteFromAllTables(); }

  void SetUp() override {
    Database().InitDataBase(L"Log.db");
    m_log.Clear();
  }

  static SQLiteDB::LogSQLiteDB& Database() { return SQLiteDB::LogSQLiteDB::GetInstance(); }
  std::string Path() const { return (m_folder.Path() / "db" / "Log.db").u8string(); }
  std::string Run(const std::string& sql) const { return OtherConnection(Path()).Run(sql); }

  // The Action texts of a table's rows in order, such as "a b c".
  std::string Actions(const std::string& table = "T_UserLog") const {
    return Run("SELECT group_concat(Action, ' ') FROM (SELECT Action FROM " + table + " ORDER BY Id)");
  }

  // The messages of level 5, as "function of LogSQLiteDB: text".
  Texts Errors() const {
    Texts errors;
    for (const LogMessage& message : m_log.OfLevel(5)) {
      errors.push_back(message.location.substr(message.location.rfind(':') + 1) + ": " + message.text);
    }
    return errors;
  }

  static Bilog::UserLog Record(const std::wstring& action, int maintenance = 0) {
    Bilog::UserLog record;
    record.set_Action(action);
    record.set_IsMaintenanceLog(maintenance);
    return record;
  }
  // Records whose actions are numbers from 0 on.
  static std::vector<Bilog::UserLog> Many(std::size_t count, std::size_t infoLength = 0) {
    std::vector<Bilog::UserLog> batch(count);
    for (std::size_t i = 0; i < count; ++i) {
      batch[i].set_Action(std::to_wstring(i));
      batch[i].set_Info(std::wstring(infoLength, L'x'));
    }
    return batch;
  }
  static void Insert(std::vector<Bilog::UserLog> batch, bool uba = false) {
    Database().InsertUserLogBatch(batch, uba);
  }

  TempFolder m_folder;
  CapturedLog m_log;
};

}  // namespace Drive::Testing
