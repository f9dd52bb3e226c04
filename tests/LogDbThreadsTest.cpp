// LogDbThreadsTest.cpp - the database used from several threads, and at the end of the process.
#include <atomic>
#include <chrono>
#include <thread>

#include "platform/ProcessEnd.h"
#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

class LogDbThreadsTest : public LogDbTest {
 protected:
  void SetUp() override { Init(); }
};

TEST_F(LogDbThreadsTest, StoresAndDeliversEveryRecordOnce) {
  constexpr int kWriters = 3;
  constexpr int kBatches = 20;
  std::atomic<int> writersLeft{kWriters};
  std::vector<std::thread> threads;
  for (int writer = 0; writer < kWriters; ++writer) {
    threads.emplace_back([&writersLeft, writer] {
      for (int i = 0; i < kBatches; ++i) Insert(Many(5, writer % 2), writer == 2);
      --writersLeft;
    });
  }
  std::atomic<int> delivered{0};
  for (const bool uba : {false, true}) {
    threads.emplace_back([&delivered, &writersLeft, uba] {
      for (bool isLast = false; !isLast;) {
        isLast = writersLeft == 0;
        for (const int maintenance : {0, 1}) {
          const auto records = Database().GetUserLogList(1000, maintenance, uba);
          if (records.empty()) continue;
          Database().DeleteUserLogWithId(records.front().get_Id(), records.back().get_Id(), maintenance, uba);
          delivered += static_cast<int>(records.size());
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(kWriters * kBatches * 5, delivered);
  EXPECT_EQ("0", Query("SELECT (SELECT count(*) FROM T_UserLog) + (SELECT count(*) FROM T_UBAUserLog)"));
  EXPECT_TRUE(m_log.OfLevel(5).empty());
}

// With the file locked for good, an insert under way and another one to come: the exit must not wait for
// either for long.
TEST_F(LogDbThreadsTest, TheEndOfTheProcessDoesNotWaitForALock) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        OtherConnection other(Path());
        other.Run("BEGIN EXCLUSIVE");
        std::thread([] { Insert({Record(L"under way")}); }).detach();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));  // either order must do
        const auto begun = std::chrono::steady_clock::now();
        Platform::ProcessEnd::Begin();
        Insert({Record(L"at the end")});
        Database().DeleteUserLogWithId(1, 1, 0, false);
        Database().StoreKeptRecords();
        const auto took = std::chrono::steady_clock::now() - begun;
        Leave(took < std::chrono::milliseconds(1900));
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(LogDbThreadsTest, TheEndOfTheProcessStillStoresRecords) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        Platform::ProcessEnd::Begin();
        Insert({Record(L"a")});
        Leave(Actions() == "a");
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive::Testing
