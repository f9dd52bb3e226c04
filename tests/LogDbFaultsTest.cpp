// LogDbFaultsTest.cpp - locked, full, damaged and missing database files.
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/LogDbFixture.h"
#include "tests/support/FaultyVfs.h"
#include "tests/support/ManualClock.h"

namespace Drive::Testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class LogDbFaultsTest : public LogDbTest {
 protected:
  void SetUp() override { Init(); }

  // Runs the operation on a thread of its own and moves the clock until it has ended. Virtual time it took.
  template <typename Operation>
  static milliseconds Timed(ManualClock& clock, const Operation& operation) {
    const auto before = clock.NowMilliseconds();
    std::int64_t after = 0;
    std::thread thread([&] {
      operation();
      after = clock.NowMilliseconds();
    });
    clock.WaitForWaiters(1);
    clock.Advance(seconds(90));
    thread.join();
    return milliseconds(after - before);
  }

  std::vector<std::string> Errors() const {
    std::vector<std::string> texts;
    for (const LogMessage& message : m_log.OfLevel(5)) texts.push_back(message.text);
    return texts;
  }
};

TEST_F(LogDbFaultsTest, KeepsABatchWhileTheFileIsLocked) {
  ManualClock clock;
  OtherConnection other(Path());
  other.Run("BEGIN EXCLUSIVE");

  // 101 slices of 10 to 100 ms, once for the whole batch.
  const milliseconds waited = Timed(clock, [] { Insert(Many(50)); });
  EXPECT_GT(waited, milliseconds(4000));
  EXPECT_LT(waited, milliseconds(7500));
  EXPECT_EQ(std::vector<std::string>{"database is locked: database is locked"}, Errors());
  EXPECT_EQ("Drive::SQLiteDB::LogSQLiteDB::_beginTransaction", m_log.OfLevel(5)[0].location);

  other.Run("ROLLBACK");
  Insert({Record(L"last")});
  EXPECT_EQ("51", Query("SELECT count(*) FROM T_UserLog"));
  EXPECT_EQ("last", Query("SELECT Action FROM T_UserLog ORDER BY Id DESC"));
}

TEST_F(LogDbFaultsTest, WaitsForALockThatIsGivenBack) {
  ManualClock clock;
  OtherConnection other(Path());
  other.Run("BEGIN IMMEDIATE");
  std::thread insert([] { Insert({Record(L"a")}); });
  clock.WaitForWaiters(1);
  clock.Advance(seconds(1));
  other.Run("COMMIT");
  clock.Advance(seconds(1));
  insert.join();
  EXPECT_EQ("a", Actions());
  EXPECT_TRUE(Errors().empty());
}

TEST_F(LogDbFaultsTest, TriesALockedDeletionThreeTimesWithTwoPauses) {
  Insert({Record(L"a")});
  ManualClock clock;
  OtherConnection other(Path());
  other.Run("BEGIN IMMEDIATE");

  const milliseconds waited = Timed(clock, [] { Database().DeleteUserLogWithId(1, 1, 0, false); });

  EXPECT_GT(waited, seconds(20) + 3 * milliseconds(4000));
  EXPECT_LT(waited, seconds(20) + 3 * milliseconds(7500));
  EXPECT_EQ(
      (std::vector<std::string>{"_executeNoQuerySqlCmd failed,error code is 5,reason:database is locked",
                                "DeleteUserLogWithId failed,error code is 5,reason:database is locked"}),
      Errors());
  EXPECT_EQ("a", Actions());
}

TEST_F(LogDbFaultsTest, KeepsABatchWhileTheDiskIsFull) {
  FaultyVfs vfs;
  vfs.Fail(FaultyVfs::Call::kWrite, 1, SQLITE_FULL, FaultyVfs::Duration::kLasting);
  std::vector<Bilog::UserLog> batch = Many(2000);  // more than fits the page cache
  for (Bilog::UserLog& record : batch) record.set_Info(std::wstring(3000, L'x'));
  Insert(batch);
  EXPECT_EQ(1U, Errors().size());
  EXPECT_TRUE(m_log.Contains("database or disk is full"));

  vfs.Heal();
  Insert({});
  EXPECT_EQ("2000", Query("SELECT count(DISTINCT Action) FROM T_UserLog"));
  EXPECT_EQ("2000", Query("SELECT count(*) FROM T_UserLog"));
}

// Whatever call fails, and at whatever moment: every record ends in the file exactly once.
TEST_F(LogDbFaultsTest, StoresEveryRecordOnceWhateverCallFails) {
  using Call = FaultyVfs::Call;
  const struct {
    Call call;
    int code;
  } faults[] = {{Call::kOpen, SQLITE_CANTOPEN},    {Call::kRead, SQLITE_IOERR_READ},
                {Call::kWrite, SQLITE_FULL},       {Call::kWrite, SQLITE_IOERR_WRITE},
                {Call::kSync, SQLITE_IOERR_FSYNC}, {Call::kLock, SQLITE_IOERR_LOCK}};
  for (const auto& fault : faults) {
    int failures = 0;
    for (int n = 1;; ++n) {
      SCOPED_TRACE("call " + std::to_string(static_cast<int>(fault.call)) + ", number " + std::to_string(n));
      FaultyVfs vfs;
      vfs.Fail(fault.call, n, fault.code, FaultyVfs::Duration::kOnce);
      Insert({Record(L"a"), Record(L"b")});
      Database().GetUserLogList(9, 0, false);
      if (!vfs.HasFailed()) break;
      ++failures;
      vfs.Heal();
      Insert({Record(L"c")});
      ASSERT_EQ("a b c", Actions());
      ASSERT_EQ("ok", Query("PRAGMA integrity_check"));
      Database().DeleteAllOperationLogUserLog(false, 0);
    }
    EXPECT_GT(failures, 0);
    Database().DeleteAllOperationLogUserLog(false, 0);
  }
}

TEST_F(LogDbFaultsTest, ResumesWhenGarbageIsTakenAway) {
  std::filesystem::remove(Path());
  std::ofstream(Path(), std::ios::binary) << std::string(8192, 'g');

  Insert({Record(L"a")});
  EXPECT_EQ(std::vector<std::string>{"file is not a database: file is not a database"}, Errors());
  EXPECT_TRUE(Database().GetUserLogList(9, 0, false).empty());
  Database().DeleteUserLogWithId(1, 9, 0, false);
  EXPECT_EQ(8192U, std::filesystem::file_size(Path()));

  std::filesystem::remove(Path());
  m_log.Clear();
  Insert({Record(L"b")});
  EXPECT_EQ("a b", Actions());
  EXPECT_TRUE(Errors().empty());
}

TEST_F(LogDbFaultsTest, MakesAFileAgainThatIsGoneOrEmptyOrHasNoTables) {
  std::filesystem::remove_all(m_folder.Path() / "db");
  Insert({Record(L"a")});
  EXPECT_EQ("a", Actions());
  EXPECT_EQ("wal", Query("PRAGMA journal_mode"));

  std::filesystem::resize_file(Path(), 0);
  Insert({Record(L"b")}, true);
  EXPECT_EQ("b", Actions("T_UBAUserLog"));

  Run("DROP TABLE T_UBAUserLog; CREATE TABLE Other (A)");
  Insert({Record(L"c")}, true);
  EXPECT_EQ("c", Actions("T_UBAUserLog"));
  EXPECT_TRUE(Errors().empty());
}

TEST_F(LogDbFaultsTest, NamesEachStepThatFailsWithoutAFile) {
  std::filesystem::remove(Path());
  const std::string opening = "Open database failed,error code is 14,reason:unable to open database file";
  const struct {
    const char* name;
    std::function<void()> operation;
    std::string message;
    std::string location;
  } rows[] = {
      {"delete by id", [] { Database().DeleteUserLogWithId(1, 2, 0, true); },
       "DeleteUserLogWithId failed,error code is 21,reason:unable to open database file",
       "DeleteUserLogWithId"},
      {"delete channel", [] { Database().DeleteAllOperationLogUserLog(true, 0); },
       "DeleteAllOperationLogUserLog failed,error code is 21,reason:unable to open database file",
       "DeleteAllOperationLogUserLog"},
      {"delete everything", [] { Database().DeleteFromAllTables(); },
       "_executeNoQuerySqlCmd failed,error code is 21,reason:unable to open database file",
       "_executeNoQuerySqlCmd"},
      {"read", [] { Database().GetUserLogList(1, 0, true); }, opening, "_connectDbReadonly"},
      {"create tables", [] { Database().CreateTables(); }, opening, "_connectDb"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    m_log.Clear();
    row.operation();
    EXPECT_EQ(1U, m_log.Count(opening));
    bool isFound = false;
    for (const LogMessage& message : m_log.OfLevel(5)) {
      isFound = isFound || (message.text == row.message &&
                            message.location == "Drive::SQLiteDB::LogSQLiteDB::" + row.location);
    }
    EXPECT_TRUE(isFound) << row.message;
  }
  EXPECT_FALSE(std::filesystem::exists(Path()));
}

}  // namespace
}  // namespace Drive::Testing
