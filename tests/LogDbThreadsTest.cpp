// LogDbThreadsTest.cpp - the database used from several threads, and at the end of the process.
#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

#include "platform/ProcessEnd.h"
#include "tests/LogDbFixture.h"
#include "tests/support/ManualClock.h"

namespace Drive::Testing {
namespace {

class LogDbThreadsTest : public LogDbTest {};

TEST_F(LogDbThreadsTest, StoresAndDeliversEveryRecordOnce) {
  std::vector<std::thread> threads;
  for (const bool uba : {false, true}) {
    threads.emplace_back([uba] {
      for (int i = 0; i < 20; ++i) Insert(Many(5), uba);
    });
    threads.emplace_back([uba] {
      for (std::size_t delivered = 0; delivered < 100;) {
        const auto records = Database().GetUserLogList(1000, 0, uba);
        if (records.empty()) continue;
        Database().DeleteUserLogWithId(records[0].get_Id(), records.back().get_Id(), 0, uba);
        delivered += records.size();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ("", Actions() + Actions("T_UBAUserLog"));
  EXPECT_EQ(Texts{}, Errors());
}

// With the file locked the end must not wait for long; what comes when the file is free is stored.
TEST_F(LogDbThreadsTest, TheEndOfTheProcessDoesNotWaitForALock) {
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

}  // namespace
}  // namespace Drive::Testing
