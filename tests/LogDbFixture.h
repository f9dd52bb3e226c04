// LogDbFixture.h - a log database in a folder of its own, and a second connection to look at it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/OtherConnection.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

using Texts = std::vector<std::string>;

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
