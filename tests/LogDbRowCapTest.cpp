// LogDbRowCapTest.cpp - the oldest tenth goes when a table has reached its row cap.
#include "logdb/RowCap.h"
#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

class LogDbRowCapTest : public LogDbTest {
 protected:
  void SetUp() override { Init(); }
};

TEST_F(LogDbRowCapTest, CutsTheOldestTenthBeforeTheBatch) {
  const struct {
    const char* name;
    int cap;
    std::string ids;  // of the rows before
    std::string expected;
  } rows[] = {
      {"one row below the cap", 10, "1,2,3,4,5,6,7,8,9", "1,2,3,4,5,6,7,8,9,new"},
      {"at the cap", 10, "1,2,3,4,5,6,7,8,9,10", "2,3,4,5,6,7,8,9,10,new"},
      {"far above the cap", 10, "1,2,3,4,5,6,7,8,9,10,11,12,13", "2,3,4,5,6,7,8,9,10,11,12,13,new"},
      {"gaps: ids span the cap, rows do not", 10, "1,20,30,40,50", "1,20,30,40,50,new"},
      {"gaps and at the cap", 10, "1,20,30,40,50,60,70,80,90,100", "20,30,40,50,60,70,80,90,100,new"},
      {"two of twenty", 20, "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20",
       "3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,new"},
      {"ids over all of 64 bits", 10, "-9223372036854775808,0,9223372036854770000",
       "-9223372036854775808,0,9223372036854770000,new"},
      {"a cap below ten", 9, "1,2,3,4,5,6,7,8,9,10,11", "1,2,3,4,5,6,7,8,9,10,11,new"},
      {"a cap of zero", 0, "1,2,3", "1,2,3,new"},
      {"a cap below zero", -10, "1,2,3", "1,2,3,new"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Bilog::LogSettings::GetInstance().SetLogDbSize(row.cap);
    for (const char* table : {"T_UserLog", "T_UBAUserLog"}) {
      std::string values = row.ids;
      for (std::size_t at = 0; (at = values.find(',', at)) != std::string::npos; at += 3)
        values.replace(at, 1, "),(");
      Run(std::string("WITH ids(Id) AS (VALUES(") + values + ")) INSERT INTO " + table +
          " (Id, Action, IsMaintenanceLog) SELECT Id, Id, Id % 2 FROM ids");
      Insert({Record(L"new")}, table == std::string("T_UBAUserLog"));
      EXPECT_EQ(row.expected, Query("SELECT group_concat(Action) FROM (SELECT Action FROM " +
                                    std::string(table) + " ORDER BY Id)"));
    }
    Database().DeleteFromAllTables();
    Run("DELETE FROM sqlite_sequence");
  }
  EXPECT_TRUE(m_log.OfLevel(5).empty());
}

// Random growth, deletions of any rows and exchanged files: always what counting gives.
TEST_F(LogDbRowCapTest, AnswersWhatCountingWouldAnswer) {
  OtherConnection file(Path());
  sqlite3* raw = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &raw));
  SQLiteDB::RowCap rowCap;
  unsigned random = 12345;
  int reached = 0;
  for (int step = 0; step < 600; ++step) {
    random = random * 1103515245U + 12345U;
    const std::string amount = std::to_string(random >> 16U & 15U);
    if ((random >> 20U) % 3 != 0) {
      file.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT " + amount +
               ") INSERT INTO T_UserLog (IsMaintenanceLog) SELECT i % 2 FROM n");
    } else {
      file.Run("DELETE FROM T_UserLog WHERE Id IN (SELECT Id FROM T_UserLog WHERE IsMaintenanceLog = " +
               std::to_string(random >> 24U & 1U) + " LIMIT 2 * " + amount + ")");
    }
    if (step % 150 == 149) file.Run("DELETE FROM T_UserLog; DELETE FROM sqlite_sequence");
    const bool expected = std::stoi(file.Text("SELECT count(*) FROM T_UserLog")) >= 100;
    const std::optional<bool> answer = rowCap.IsReached(raw, "T_UserLog", 100);
    ASSERT_TRUE(answer.has_value());
    ASSERT_EQ(expected, *answer) << "step " << step;
    reached += expected ? 1 : 0;
  }
  EXPECT_GT(reached, 50);
  sqlite3_close(raw);
}

// A file from elsewhere may hold more rows than the growth of its largest id since the last count tells.
TEST_F(LogDbRowCapTest, NoticesRowsBelowTheOnesItHasCounted) {
  Bilog::LogSettings::GetInstance().SetLogDbSize(100);
  Run("INSERT INTO T_UserLog (Id, IsMaintenanceLog) VALUES (1000, 0), (1200, 0)");
  Insert({Record(L"counted")});
  Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 150) "
      "INSERT INTO T_UserLog (Id, IsMaintenanceLog) SELECT i, 0 FROM n");
  Insert({Record(L"new")});
  EXPECT_EQ("144", Query("SELECT count(*) FROM T_UserLog"));
  EXPECT_EQ("11", Query("SELECT min(Id) FROM T_UserLog"));
}

TEST_F(LogDbRowCapTest, CountsAnotherFileAnew) {
  Bilog::LogSettings::GetInstance().SetLogDbSize(100);
  Run("INSERT INTO T_UserLog (Id, IsMaintenanceLog) VALUES (1000, 0), (1200, 0)");
  Insert({Record(L"counted")});
  g_logDbFullPathWithName = (m_folder.Path() / "db" / "Other.db").u8string();
  ASSERT_TRUE(Database().InitDataBase(L"Other.db"));
  OtherConnection other(g_logDbFullPathWithName);
  other.Run(
      "WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i + 1 FROM n LIMIT 205) "
      "INSERT INTO T_UserLog (Id, IsMaintenanceLog) SELECT i, 0 FROM n");
  Insert({Record(L"new")});
  EXPECT_EQ("196", other.Text("SELECT count(*) FROM T_UserLog"));
}

// A cut that fails can end the transaction; the batch must not go in one by one then.
TEST_F(LogDbRowCapTest, KeepsTheBatchWhenTheCutEndsTheTransaction) {
  Bilog::LogSettings::GetInstance().SetLogDbSize(10);
  Insert(Many(10));
  Run("CREATE TRIGGER Refuse BEFORE DELETE ON T_UserLog BEGIN SELECT RAISE(ROLLBACK, 'no'); END");
  Insert({Record(L"new")});
  EXPECT_EQ("0 1 2 3 4 5 6 7 8 9", Actions());
  ASSERT_EQ(1U, m_log.OfLevel(5).size());
  EXPECT_EQ("_executeNoQuerySqlCmd failed,error code is 19,reason:no", m_log.OfLevel(5)[0].text);
  Run("DROP TRIGGER Refuse");
  Insert({});
  EXPECT_EQ("1 2 3 4 5 6 7 8 9 new", Actions());
}

TEST_F(LogDbRowCapTest, ReportsATableThatCannotBeReadAndStillInserts) {
  Run("DROP TABLE T_UserLog");
  Run("CREATE TABLE T_UserLog "
      "(Time,Action,UserId,DevId,Code,Info,Extend,TraceId,UseTime,StartTime,Model,Romversion,"
      "Appversion,Reqsize,Rspsize,Logversion,TraceEndFlag,CurModule,Actiontype,NextModule,ResidenceTime,"
      "OprType,"
      "IsMaintenanceLog)");  // has no Id
  Insert({Record(L"a")});
  ASSERT_EQ(1U, m_log.OfLevel(5).size());
  EXPECT_EQ("SELECT Id FROM T_UserLog exc error!", m_log.OfLevel(5)[0].text);
  EXPECT_EQ("a", Query("SELECT Action FROM T_UserLog"));
}

}  // namespace
}  // namespace Drive::Testing
