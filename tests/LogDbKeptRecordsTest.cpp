// LogDbKeptRecordsTest.cpp - records that wait in memory for the database: bounded, and subject to deletions.
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/LogDbFixture.h"
#include "tests/support/ManualClock.h"

namespace Drive::Testing {
namespace {

class LogDbKeptRecordsTest : public LogDbTest {
 protected:
  // A folder where the file should be: nothing can be stored.
  void SetUp() override { Block(); }
  void Block() { std::filesystem::create_directories(Path()); }
  void Unblock() { std::filesystem::remove(Path()); }
};

TEST_F(LogDbKeptRecordsTest, DropsTheOldestAboveTheBoundAndSaysSo) {
  Insert(Many(9000));
  EXPECT_FALSE(m_log.Contains("dropped"));
  Insert(Many(1500));
  Insert({Record(L"uba")}, true);
  EXPECT_EQ(1U,
            m_log.Count("InsertUserLogBatch dropped 500 records, the oldest of more than 10000 that wait for "
                        "the database"));
  Unblock();
  Database().StoreKeptRecords();
  EXPECT_EQ("10000", Query("SELECT count(*) FROM T_UserLog"));
  EXPECT_EQ("500", Query("SELECT Action FROM T_UserLog ORDER BY Id"));
  EXPECT_EQ("uba", Actions("T_UBAUserLog"));
  // Stored means forgotten.
  Insert({});
  EXPECT_EQ("10000", Query("SELECT count(*) FROM T_UserLog"));
}

TEST_F(LogDbKeptRecordsTest, FollowsDeletionsOfItsChannel) {
  Insert({Record(L"a0", 0), Record(L"b1", 1)});
  Insert({Record(L"u0", 0)}, true);
  Database().DeleteAllOperationLogUserLog(false, 0);
  Unblock();
  Database().StoreKeptRecords();
  EXPECT_EQ("b1", Actions());
  EXPECT_EQ("u0", Actions("T_UBAUserLog"));
}

TEST_F(LogDbKeptRecordsTest, FollowsTheDeletionOfEverything) {
  Insert({Record(L"a")});
  Insert({Record(L"u")}, true);
  Database().DeleteFromAllTables();
  Unblock();
  Insert({Record(L"b")});
  EXPECT_EQ("b", Actions());
  Insert({}, true);
  EXPECT_EQ("(null)", Actions("T_UBAUserLog"));
}

// The deletion comes while an insert of kept and new records waits for the file, and that insert fails.
TEST_F(LogDbKeptRecordsTest, ADeletionMeetsAnInsertUnderWay) {
  Insert({Record(L"kept")});
  Unblock();
  Init();
  ManualClock clock;
  OtherConnection other(Path());
  other.Run("BEGIN IMMEDIATE");
  std::thread insert([] { Insert({Record(L"new")}); });
  clock.WaitForWaiters(1);
  std::thread deletion([] { Database().DeleteFromAllTables(); });
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
