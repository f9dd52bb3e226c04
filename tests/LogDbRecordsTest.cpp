// LogDbRecordsTest.cpp - storing, reading and deleting records, under the row cap.
#include <tuple>

#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

using Bilog::UserLog;

class LogDbRecordsTest : public LogDbTest {};

TEST_F(LogDbRecordsTest, BringsEveryFieldBackFromItsColumn) {
  UserLog record;
  int number = 0;
  for (const auto set : {&UserLog::set_Time, &UserLog::set_Action, &UserLog::set_UserId, &UserLog::set_DevId,
                         &UserLog::set_Code, &UserLog::set_Info, &UserLog::set_Extend, &UserLog::set_TraceId,
                         &UserLog::set_Model, &UserLog::set_Romversion, &UserLog::set_Appversion,
                         &UserLog::set_Reqsize, &UserLog::set_Rspsize, &UserLog::set_CurModule,
                         &UserLog::set_Actiontype, &UserLog::set_NextModule, &UserLog::set_OprType}) {
    (record.*set)(L"t" + std::to_wstring(++number));
  }
  record.set_Id(77);  // the database assigns its own
  record.set_UseTime(0.1);
  record.set_StartTime(1709622489045.5);
  record.set_Logversion(-16);
  record.set_TraceEndFlag(-2147483647);
  record.set_ResidenceTime(-2147483647);
  record.set_IsMaintenanceLog(1);
  Insert({record}, true);
  Insert(Database().GetUserLogList(9, 1, true), true);  // read, and stored once more
  for (const std::string id : {"1", "2"}) {
    EXPECT_EQ(id + "|t1|t2|t3|t4|t5|t6|t7|t8|0.1|1709622489045.5|t9|t10|t11|t12|t13|-16|-2147483647|t14|t15|"
                   "t16|-2147483647.0|t17|1",
              Run("SELECT * FROM T_UBAUserLog WHERE Id = " + id));
  }
}

TEST_F(LogDbRecordsTest, KeepsTextsWholeAndApart) {
  const std::wstring smile = TypeConvert::UTF8ToUnicode("\xF0\x9F\x98\x80");
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"a" + smile + L"z", L"a" + smile + L"z"},
      {std::wstring(1, static_cast<wchar_t>(0xD83D)) + L"z", L"\xFFFDz"},  // a lone surrogate
      {L"\xFEFF\x4E2D", L"\xFEFF\x4E2D"},                                  // a byte-order mark, a swapped one
      {L"\xFFFE\x4E2D", L"\xFFFD\x4E2D"},
      {std::wstring(L"a\0z", 3), L"a"},
      {std::wstring(1000000, L'x'), std::wstring(1000000, L'x')},
      {L"'); DROP TABLE T_UserLog;--", L"'); DROP TABLE T_UserLog;--"},
  };
  for (const auto& [text, expected] : rows) {
    UserLog record;
    record.set_Info(text);
    record.set_Extend(smile);
    Insert({record});
    const UserLog read = Database().GetUserLogList(1, 0, false).at(0);
    EXPECT_TRUE(expected == read.get_Info()) << read.get_Info().substr(0, 9);
    EXPECT_EQ(smile, read.get_Extend());
    Database().DeleteAllOperationLogUserLog(false, 0);
  }
}

TEST_F(LogDbRecordsTest, ReadsRowsOfAnyType) {
  Run("INSERT INTO T_UserLog (Time, Action, Info, UseTime, Logversion, ResidenceTime, IsMaintenanceLog) "
      "VALUES (5, x'ff61', NULL, 'text', 'nine', 5000000000, 0)");
  Insert(Database().GetUserLogList(9, 0, false), true);
  EXPECT_EQ(  // the low 32 bits
      "5|\xEF\xBF\xBD\x61||0.0|0|705032704.0",
      Run("SELECT Time, Action, Info, UseTime, Logversion, ResidenceTime FROM T_UBAUserLog"));
}

TEST_F(LogDbRecordsTest, ReadsAndDeletesTheOldestOfOneChannel) {
  Insert({Record(L"a0"), Record(L"b1", 1), Record(L"c0"), Record(L"d0"), Record(L"e", -5)});
  Run("DROP TABLE T_UBAUserLog");  // made again
  Insert({Record(L"uba")}, true);
  const std::tuple<int, int, bool, std::wstring> rows[] = {
      {2, 0, false, L"a0c0"}, {99, 0, false, L"a0c0d0"}, {9, 1, false, L"b1"}, {9, -5, false, L"e"},
      {9, 0, true, L"uba"},   {9, 1, true, L""},         {0, 0, false, L""},   {-1, 0, false, L""}};
  for (const auto& [count, maintenance, uba, expected] : rows) {
    std::wstring actions;
    for (const UserLog& record : Database().GetUserLogList(count, maintenance, uba)) {
      actions += record.get_Action();
    }
    EXPECT_EQ(expected, actions) << count << " of " << maintenance;
  }
  Database().DeleteUserLogWithId(4, 3, 0, false);
  EXPECT_EQ("a0 b1 c0 d0 e", Actions());
  Database().DeleteUserLogWithId(1, 3, 0, false);
  EXPECT_EQ("b1 d0 e", Actions());
  Database().DeleteAllOperationLogUserLog(false, 0);
  EXPECT_EQ("b1 e", Actions());
  EXPECT_EQ("uba", Actions("T_UBAUserLog"));
  EXPECT_TRUE(m_log.All().empty());
}

TEST_F(LogDbRecordsTest, SkipsOnlyTheRecordThatIsRefused) {
  Run("CREATE TRIGGER Refuse BEFORE INSERT ON T_UserLog WHEN new.Action = 'bad' "
      "BEGIN SELECT RAISE(ABORT, 'no'); END");
  Insert({Record(L"a"), Record(L"bad"), Record(L"b")});
  EXPECT_EQ("a b", Actions());
  EXPECT_EQ(Texts{"InsertUserLogBatch: InsertUserLogBatch failed,error code is 19,reason:no"}, Errors());
}

TEST_F(LogDbRecordsTest, CutsTheOldestTenthBeforeTheBatch) {
  const std::tuple<int, std::string, std::string> rows[] = {
      {10, "(1),(2),(3),(4),(5),(6),(7),(8),(9)", "1 2 3 4 5 6 7 8 9 new"},
      {10, "(1),(2),(3),(4),(5),(6),(7),(8),(9),(10)", "2 3 4 5 6 7 8 9 10 new"},
      {10, "(1),(20),(30),(40),(50)", "1 20 30 40 50 new"},  // the ids span the cap, the rows do not
      {10, "(1),(20),(30),(40),(50),(60),(70),(80),(90),(99)", "20 30 40 50 60 70 80 90 99 new"},
      {10, "(-9223372036854775808),(9223372036854770000)", "-9223372036854775808 9223372036854770000 new"},
      {-9, "(1),(2),(3)", "1 2 3 new"},
      {9, "(1),(2),(3),(4),(5),(6),(7),(8),(9),(10),(11)", "1 2 3 4 5 6 7 8 9 10 11 new"},
  };
  for (const auto& [cap, ids, expected] : rows) {
    Bilog::LogSettings::GetInstance().SetLogDbSize(cap);
    for (const std::string table : {"T_UserLog", "T_UBAUserLog"}) {
      Run("WITH ids(Id) AS (VALUES " + ids + ") INSERT INTO " + table +
          " (Id, Action, IsMaintenanceLog) SELECT Id, Id, Id % 2 FROM ids");
      Insert({Record(L"new")}, table == "T_UBAUserLog");
      EXPECT_EQ(expected, Actions(table)) << cap << ": " << ids;
    }
    Database().DeleteFromAllTables();
    Run("DELETE FROM sqlite_sequence");
  }
}

// A cut that fails may end the transaction: the batch must not go in one by one then.
TEST_F(LogDbRecordsTest, KeepsTheBatchWhenTheCutFails) {
  Bilog::LogSettings::GetInstance().SetLogDbSize(10);
  Insert(Many(10));
  Run("CREATE TRIGGER Refuse BEFORE DELETE ON T_UserLog BEGIN SELECT RAISE(ROLLBACK, 'no'); END");
  Insert({Record(L"new")});
  EXPECT_EQ("0 1 2 3 4 5 6 7 8 9", Actions());
  // Without the column the check cannot tell, and the insert goes on.
  Run("DROP TRIGGER Refuse; ALTER TABLE T_UserLog RENAME COLUMN Id TO Other");
  Insert({});
  EXPECT_EQ("11", Run("SELECT count(*) FROM T_UserLog"));
  EXPECT_EQ("CheckDbSize: SELECT Id FROM T_UserLog exc error!", Errors().back());
}

}  // namespace
}  // namespace Drive::Testing
