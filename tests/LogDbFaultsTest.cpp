// LogDbFaultsTest.cpp - locked, full, damaged and missing files, and the records that wait for them. The
// calls of the file system fail one by one in proofs/storage_faults.cpp.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <optional>
#include <thread>
#include <tuple>

#include "logdb/KeptRecords.h"
#include "platform/ProcessEnd.h"
#include "tests/LogDbFixture.h"
#include "tests/support/FaultyVfs.h"
#include "tests/support/ManualClock.h"

namespace Drive::Testing {
namespace {

using std::chrono::milliseconds;

class LogDbFaultsTest : public LogDbTest {};

TEST_F(LogDbFaultsTest, KeepsABatchUntilTheCauseIsGone) {
  FaultyVfs vfs;
  const std::filesystem::path folder = m_folder.Path() / "db";
  const auto remove = [&] { std::filesystem::remove_all(folder); };
  using Step = std::function<void()>;
  const std::tuple<Step, Step, std::string> rows[] = {
      {[&] { vfs.FailAlways(FaultyVfs::Call::kWrite, SQLITE_FULL); }, [&] { vfs.Heal(); },
       "InsertUserLogBatch: InsertUserLogBatch failed,error code is 13,reason:database or disk is full"},
      {[&] { std::ofstream(Path(), std::ios::trunc) << std::string(8192, 'g'); }, remove,
       "_beginTransaction: file is not a database: file is not a database"},
      {[&] { remove(), std::ofstream(folder) << "in the way"; }, remove,
       "CreateDb: Create sync database failed,error code is .14"},
  };
  for (const auto& [cause, cure, message] : rows) {
    cause();
    m_log.Clear();
    Insert(Many(1000, 3000));  // more than fits the page cache
    EXPECT_EQ(Texts{message}, Errors());

    cure();
    m_log.Clear();
    Insert({Record(L"last")});
    EXPECT_EQ("1001|1001|last",
              Run("SELECT count(*), count(DISTINCT Action), Action FROM T_UserLog HAVING max(Id)"));
    EXPECT_EQ(Texts{}, Errors());
    Database().DeleteFromAllTables();
  }
}

TEST_F(LogDbFaultsTest, WaitsForALockedFileForAWhile) {
  Insert({Record(L"a")});
  ManualClock clock;
  OtherConnection other(Path());
  other.Run("BEGIN EXCLUSIVE");
  const auto waits = [&clock](const std::function<void()>& operation) {
    const std::int64_t begun = clock.NowMilliseconds();
    std::int64_t ended = 0;
    std::thread thread([&] { operation(), ended = clock.NowMilliseconds(), clock.Leave(); });
    clock.WaitForWaiters(1);
    clock.Advance(std::chrono::seconds(90));
    thread.join();
    return milliseconds(ended - begun);
  };
  // One try is 101 slices of 10 to 100 ms. The whole batch makes one; a deletion three, and two pauses.
  const milliseconds insert = waits([] { Insert(Many(50)); });
  EXPECT_TRUE(insert > milliseconds(4000) && insert < milliseconds(7500)) << insert.count();
  const milliseconds deletion = waits([] { Database().DeleteUserLogWithId(1, 1, 0, false); });
  EXPECT_TRUE(deletion > milliseconds(32000) && deletion < milliseconds(42500)) << deletion.count();
  EXPECT_EQ(
      (Texts{"_beginTransaction: database is locked: database is locked",
             "_executeNoQuerySqlCmd: _executeNoQuerySqlCmd failed,error code is 5,reason:database is locked",
             "DeleteUserLogWithId: DeleteUserLogWithId failed,error code is 5,reason:database is locked"}),
      Errors());
}

// With the file locked the end must not wait for long; what comes when the file is free is stored.
TEST_F(LogDbFaultsTest, TheEndOfTheProcessDoesNotWaitForALock) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto end = [this] {
    ManualClock clock;
    std::optional<OtherConnection> other(Path());
    other->Run("BEGIN EXCLUSIVE");
    std::thread insert([] { Insert({Record(L"a")}); });
    clock.WaitForWaiters(1);
    const auto begun = std::chrono::steady_clock::now();
    Platform::ProcessEnd::Begin();
    Database().DeleteUserLogWithId(1, 1, 0, false);
    insert.join();
    const auto took = std::chrono::steady_clock::now() - begun;
    other.reset();
    Insert({Record(L"b")});
    const bool isGood = took < std::chrono::milliseconds(1900) && Actions() == "a b";
    std::filesystem::remove_all(m_folder.Path());
    std::_Exit(isGood ? 0 : 1);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
}

class LogDbKeptRecordsTest : public LogDbTest {
 protected:
  // A folder where the file should be: nothing can be stored.
  void SetUp() override { std::filesystem::create_directories(Path()); }
  void Unblock() { std::filesystem::remove(Path()); }
};

TEST_F(LogDbKeptRecordsTest, DropsTheOldestAboveTheBoundsAndFollowsDeletions) {
  Insert({Record(L"deleted", 1), Record(L"dropped")});
  Insert({Record(L"also deleted", 1)});
  Database().DeleteAllOperationLogUserLog(false, 1);
  Insert(Many(9000));
  Insert(Many(1000));
  // Two of these fit; one that is too big alone does not push them out.
  constexpr std::size_t kBound = SQLiteDB::KeptRecords::kMaxBytes / sizeof(wchar_t);
  Insert(Many(3, kBound * 3 / 8), true);
  Insert(Many(1, kBound), true);
  EXPECT_EQ(3U, m_log.Count("InsertUserLogBatch dropped 1 records: too many wait for the database"));

  Unblock();
  Database().StoreKeptRecords();
  Insert({});  // stored means forgotten
  EXPECT_EQ("10000|0", Run("SELECT count(*), min(Action) FROM T_UserLog"));
  EXPECT_EQ("1 2", Actions("T_UBAUserLog"));
}

// The deletion comes while an insert of kept and new records waits for the file, and that insert fails.
TEST_F(LogDbKeptRecordsTest, ADeletionMeetsAnInsertUnderWay) {
  Insert({Record(L"kept")});
  Unblock();
  LogDbTest::SetUp();
  ManualClock clock;
  OtherConnection other(Path());
  other.Run("BEGIN IMMEDIATE");
  std::thread insert([&clock] { Insert({Record(L"new")}), clock.Leave(); });
  clock.WaitForWaiters(1);
  std::thread deletion([&clock] { Database().DeleteFromAllTables(), clock.Leave(); });
  clock.WaitForWaiters(2);
  clock.Advance(std::chrono::seconds(90));
  insert.join();
  deletion.join();
  other.Run("COMMIT");
  Insert({Record(L"after")});
  EXPECT_EQ("after", Actions());
}

// A log function that records an event of its own must not meet the lock of the operation that reports.
TEST_F(LogDbKeptRecordsTest, ReportsWithoutHoldingALock) {
  int calls = 0;
  CommLog::GetInstance().SetLogFunc([&calls](int, int, const std::string&, const std::string&) {
    if (++calls < 3) Insert({Record(L"from the log function")});
  });
  Insert({Record(L"a")});
  CommLog::GetInstance().SetLogFunc(nullptr);
  EXPECT_GE(calls, 3);
}

}  // namespace
}  // namespace Drive::Testing
