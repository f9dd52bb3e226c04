// LogDbRecordsTest.cpp - storing, reading and deleting records.
#include <cmath>
#include <limits>

#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

using Bilog::UserLog;

class LogDbRecordsTest : public LogDbTest {
 protected:
  void SetUp() override { Init(); }

  static std::wstring ActionsOf(const std::vector<UserLog>& records) {
    std::wstring actions;
    for (const UserLog& record : records) actions += record.get_Action() + L" ";
    return actions;
  }
};

TEST_F(LogDbRecordsTest, BringsEveryFieldBackFromItsColumn) {
  UserLog record;
  record.set_Id(77);  // the database assigns its own
  record.set_Time(L"time");
  record.set_Action(L"action");
  record.set_UserId(L"user");
  record.set_DevId(L"device");
  record.set_Code(L"code");
  record.set_Info(L"info");
  record.set_Extend(L"extend");
  record.set_TraceId(L"trace");
  record.set_UseTime(0.1);
  record.set_StartTime(1709622489045.5);
  record.set_Model(L"model");
  record.set_Romversion(L"rom");
  record.set_Appversion(L"app");
  record.set_Reqsize(L"req");
  record.set_Rspsize(L"rsp");
  record.set_Logversion(-16);
  record.set_TraceEndFlag(std::numeric_limits<int>::min());
  record.set_CurModule(L"current");
  record.set_Actiontype(L"type");
  record.set_NextModule(L"next");
  record.set_ResidenceTime(std::numeric_limits<Bilog::Long>::min());
  record.set_OprType(L"opr");
  record.set_IsMaintenanceLog(1);
  Insert({record}, true);

  EXPECT_EQ(
      "1|time|action|user|device|code|info|extend|trace|0.1|1709622489045.5|model|rom|app|req|rsp|-16|"
      "-2147483648|current|type|next|-2147483648|opr|1",
      Query("SELECT Id||'|'||Time||'|'||Action||'|'||UserId||'|'||DevId||'|'||Code||'|'||Info||'|'||Extend"
            "||'|'||TraceId||'|'||UseTime||'|'||StartTime||'|'||Model||'|'||Romversion||'|'||Appversion"
            "||'|'||Reqsize||'|'||Rspsize||'|'||Logversion||'|'||TraceEndFlag||'|'||CurModule||'|'||"
            "Actiontype||'|'||NextModule||'|'||CAST(ResidenceTime AS INTEGER)||'|'||OprType||'|'||"
            "IsMaintenanceLog FROM T_UBAUserLog"));
  // Read and stored once more, the second row must be the same as the first.
  const std::vector<UserLog> read = Database().GetUserLogList(9, 1, true);
  ASSERT_EQ(1U, read.size());
  EXPECT_EQ(1, read[0].get_Id());
  Insert(read, true);
  EXPECT_EQ("2", Query("SELECT count(*) FROM T_UBAUserLog"));
  Run("UPDATE T_UBAUserLog SET Id = 3 WHERE Id = 1");
  EXPECT_EQ(
      "1",
      Query("SELECT count(*) FROM (SELECT DISTINCT Time,Action,UserId,DevId,Code,Info,Extend,TraceId,"
            "UseTime,StartTime,Model,Romversion,Appversion,Reqsize,Rspsize,Logversion,TraceEndFlag,"
            "CurModule,Actiontype,NextModule,ResidenceTime,OprType,IsMaintenanceLog FROM T_UBAUserLog)"));
}

TEST_F(LogDbRecordsTest, KeepsTextsWholeAndApart) {
  const std::wstring smile = TypeConvert::UTF8ToUnicode("\xF0\x9F\x98\x80");
  const struct {
    const char* name;
    std::wstring text;
    std::wstring expected;
  } rows[] = {
      {"outside the basic plane", L"a" + smile + L"z", L"a" + smile + L"z"},
      {"lone high surrogate", std::wstring(1, static_cast<wchar_t>(0xD83D)), L"\xFFFD"},
      {"lone low surrogate", std::wstring(1, static_cast<wchar_t>(0xDE00)) + L"z", L"\xFFFDz"},
      {"byte-order mark", L"\xFEFF\x4E2D", L"\xFEFF\x4E2D"},
      {"swapped byte-order mark", L"\xFFFE\x4E2D", L"\xFFFD\x4E2D"},
      {"embedded NUL ends the text", std::wstring(L"a\0z", 3), L"a"},
      {"one million characters", std::wstring(1000000, L'\x4E2D'), std::wstring(1000000, L'\x4E2D')},
      {"quotes", L"'\"; DROP TABLE T_UserLog;--", L"'\"; DROP TABLE T_UserLog;--"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    UserLog record = Record(L"neighbour");
    record.set_Info(row.text);
    record.set_Extend(smile);
    Insert({record});
    const UserLog read = Database().GetUserLogList(1, 0, false).at(0);
    EXPECT_TRUE(row.expected == read.get_Info());
    EXPECT_EQ(smile, read.get_Extend());
    Database().DeleteAllOperationLogUserLog(false, 0);
  }
}

TEST_F(LogDbRecordsTest, ReadsRowsOfAnyType) {
  Run("INSERT INTO T_UserLog (IsMaintenanceLog) VALUES (0)");
  Run("INSERT INTO T_UserLog (Time, Action, Info, UseTime, Logversion, ResidenceTime, IsMaintenanceLog) "
      "VALUES (5, x'ff61', 1.5, 'text', 'nine', 5000000000, 0)");
  Run("INSERT INTO T_UserLog (Logversion, ResidenceTime, UseTime, IsMaintenanceLog) "
      "VALUES (1e300, 'text', x'00', 0)");
  UserLog notANumber = Record(L"nan");
  notANumber.set_UseTime(std::nan(""));
  Insert({notANumber});

  const std::vector<UserLog> read = Database().GetUserLogList(9, 0, false);

  ASSERT_EQ(4U, read.size());
  EXPECT_EQ(L"", read[0].get_Info());
  EXPECT_EQ(0.0, read[0].get_UseTime());
  EXPECT_EQ(L"5", read[1].get_Time());
  EXPECT_EQ(L"1.5", read[1].get_Info());
  EXPECT_EQ(
      L"\xFFFD"
      L"a",
      read[1].get_Action());
  EXPECT_EQ(0.0, read[1].get_UseTime());
  EXPECT_EQ(0, read[1].get_Logversion());
  EXPECT_EQ(705032704, read[1].get_ResidenceTime());  // the low 32 bits
  EXPECT_EQ(0, read[2].get_ResidenceTime());
  EXPECT_EQ(0.0, read[3].get_UseTime());
}

TEST_F(LogDbRecordsTest, ReadsTheOldestOfOneChannel) {
  Insert({Record(L"a0"), Record(L"b1", 1), Record(L"c0"), Record(L"d0"), Record(L"negative", -5)});
  Insert({Record(L"uba")}, true);
  const struct {
    int count;
    int maintenance;
    bool uba;
    std::wstring expected;
  } rows[] = {{2, 0, false, L"a0 c0 "},     {99, 0, false, L"a0 c0 d0 "}, {9, 1, false, L"b1 "},
              {9, -5, false, L"negative "}, {9, 0, true, L"uba "},        {9, 1, true, L""},
              {0, 0, false, L""},           {-1, 0, false, L""}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.expected, ActionsOf(Database().GetUserLogList(row.count, row.maintenance, row.uba)))
        << row.count << " of " << row.maintenance;
  }
  EXPECT_TRUE(m_log.All().empty());
}

TEST_F(LogDbRecordsTest, DeletesOnlyTheRangeOfItsChannel) {
  Insert({Record(L"a"), Record(L"b", 1), Record(L"c"), Record(L"d"), Record(L"e")});
  Insert({Record(L"uba")}, true);
  Database().DeleteUserLogWithId(4, 3, 0, false);
  EXPECT_EQ("a b c d e", Actions());
  Database().DeleteUserLogWithId(1, 3, 0, false);
  EXPECT_EQ("b d e", Actions());
  Database().DeleteAllOperationLogUserLog(false, 0);
  EXPECT_EQ("b", Actions());
  EXPECT_EQ("uba", Actions("T_UBAUserLog"));
  Insert({Record(L"later")});
  Database().DeleteFromAllTables();
  EXPECT_EQ("(null)", Actions());
  EXPECT_EQ("(null)", Actions("T_UBAUserLog"));
}

TEST_F(LogDbRecordsTest, SkipsOnlyTheRecordThatIsRefused) {
  Run("DROP TABLE T_UserLog");
  Run("CREATE TABLE T_UserLog (Id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,Time,Action CHECK (Action <> "
      "'bad'),"
      "UserId,DevId,Code,Info,Extend,TraceId,UseTime,StartTime,Model,Romversion,Appversion,Reqsize,Rspsize,"
      "Logversion,TraceEndFlag,CurModule,Actiontype,NextModule,ResidenceTime,OprType,IsMaintenanceLog)");
  Insert({Record(L"a"), Record(L"bad"), Record(L"b")});
  EXPECT_EQ("a b", Actions());
  const std::vector<LogMessage> errors = m_log.OfLevel(5);
  ASSERT_EQ(1U, errors.size());
  EXPECT_EQ("Drive::SQLiteDB::LogSQLiteDB::InsertUserLogBatch", errors[0].location);
  EXPECT_EQ(0U,
            errors[0].text.find("InsertUserLogBatch failed,error code is 19,reason:CHECK constraint failed"));

  // A refusal that ends the whole transaction must not let the rest trickle in one by one.
  Run("CREATE TRIGGER Refuse BEFORE INSERT ON T_UserLog WHEN new.Action = 'worse' "
      "BEGIN SELECT RAISE(ROLLBACK, 'no'); END");
  Insert({Record(L"c"), Record(L"worse"), Record(L"d")});
  EXPECT_EQ("a b", Actions());
  Run("DROP TRIGGER Refuse");
  Insert({});
  EXPECT_EQ("a b c worse d", Actions());
}

}  // namespace
}  // namespace Drive::Testing
