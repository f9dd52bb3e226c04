// OperateLogFacadeTest.cpp - the operation facade: its switch, its start and stop, and many threads at once.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "client/common/SharedGlobals.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/OperationLogger.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

using std::chrono::seconds;

class OperationFacadeTest : public testing::Test {
 protected:
  OperationFacadeTest() { Settings().Reset(); }
  ~OperationFacadeTest() override {
    m_logger.StopLoggerTask();
    Settings().Reset();
  }

  static Bilog::LogSettings& Settings() { return Bilog::LogSettings::GetInstance(); }
  void Record(int type = 0) {
    m_logger.OutputOperationLog(OperationBasicEventType::kDriveActionNewFile,
                                static_cast<OperationType>(type), OperationActionType::kBasicOperation);
  }
  void StartAll() {
    m_logger.StartLoggerTask();
    m_logger.StartLogRptTask();
    m_clock.WaitForWaiters(3);
  }

  Testing::ManualClock m_clock;
  Testing::CapturedLog m_log;
  OperationLogger& m_logger = OperationLogger::GetInstance();
};

TEST_F(OperationFacadeTest, RecordsAListInGroupsOfTen) {
  Testing::RecordingStorage storage;
  StartAll();
  m_logger.OutputOperationLog(OperationBasicEventType::kDriveActionDeleteFile, OperationType::kNone,
                              OperationActionType::kFileTranslate,
                              std::vector<OperationLogger::Fields>(25, {{L"a", L"\""}}));
  m_clock.Advance(seconds(10));
  ASSERT_EQ(storage.Rows(false).size(), 2u);
  std::wstring maps;
  for (int i = 0; i < 10; ++i) {
    maps += L",{\\\"a\\\":\\\"\\\"\\\"}";  // quotes escaped once, by the JSON text around them
  }
  EXPECT_EQ(storage.Rows(false)[1].get_Extend(), L"{\"fileInfos\":\"[" + maps.substr(1) + L"]\"}");
}

TEST_F(OperationFacadeTest, EmptiesTheTablesThatTheSwitchesForbid) {
  Testing::RecordingStorage storage;
  auto& database = Bilog::BiDataBase::GetInstance();
  const auto fill = [&database] {
    std::vector<Bilog::UserLog> batch(2);
    batch[1].set_IsMaintenanceLog(1);
    database.executeInsertUserLogBatchCallback(batch, false);
    batch.resize(1);
    database.executeInsertUserLogBatchCallback(batch, true);
  };
  fill();
  m_logger.StartLogRptTask();
  EXPECT_EQ(m_log.Count("g_ubaSwitch == 0"), 1u);
  EXPECT_EQ(storage.Rows(false).size(), 2u);
  EXPECT_TRUE(storage.Rows(true).empty());

  fill();
  Settings().SetUbaSwitch(1);
  m_logger.SetOperationLogSwitchState(false);
  EXPECT_EQ(m_log.Count("[PushStatusCommand] OperationLogSwitchState:false"), 1u);
  EXPECT_FALSE(g_operationLogSwitchState);
  ASSERT_EQ(storage.Rows(false).size(), 2u);  // the BI records
  EXPECT_EQ(storage.Rows(false)[0].get_IsMaintenanceLog(), 1);
  EXPECT_TRUE(storage.Rows(true).empty());

  fill();
  m_logger.StartLogRptTask();
  EXPECT_EQ(m_log.Count("OperationLogSwitchState:false"), 1u);
  EXPECT_EQ(storage.Rows(false).size(), 3u);
  EXPECT_TRUE(storage.Rows(true).empty());
  m_logger.SetOperationLogSwitchState(true);
  EXPECT_EQ(m_log.Count("[PushStatusCommand] OperationLogSwitchState:true"), 1u);
  EXPECT_TRUE(Settings().GetOperationLogSwitch());
}

TEST_F(OperationFacadeTest, LosesNothingOfManyThreadsBeforeTheSwitchAndKeepsNothingBehindIt) {
  constexpr int kThreads = 16;
  constexpr int kEach = 6250;  // 100 000 in all
  std::vector<std::atomic<int>> stored(kThreads * kEach);
  std::atomic<int> rows{0};
  auto& database = Bilog::BiDataBase::GetInstance();
  database.setInsertUserLogBatchCallbackFunc([&](std::vector<Bilog::UserLog>& batch, bool uba) {
    for (const Bilog::UserLog& record : batch) {
      stored[static_cast<std::size_t>(std::stoi(record.get_OprType()))] += uba ? 0 : 1;
    }
    rows += static_cast<int>(batch.size());
  });
  database.setDeleteAllOperationLogUserLogCallbackFunc([&](bool, int) { rows = 0; });
  StartAll();

  std::atomic<int> running{kThreads};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kEach; ++i) {
        Record(thread * kEach + i);
      }
      --running;
    });
  }
  while (running > 0) {
    m_clock.Advance(seconds(10));
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  m_clock.Advance(seconds(10 * kThreads * kEach / 100));
  for (const std::atomic<int>& count : stored) {
    ASSERT_EQ(count, 1);
  }
  EXPECT_EQ(rows, kThreads * kEach);

  for (int i = 0; i < 150; ++i) {
    Record(i);
  }
  std::thread saving([this] { m_clock.Advance(seconds(10)); });
  m_logger.SetOperationLogSwitchState(false);
  saving.join();
  m_clock.Advance(seconds(30));
  EXPECT_EQ(rows, 0);
  m_logger.StopLoggerTask();
  database.setInsertUserLogBatchCallbackFunc({});
  database.setDeleteAllOperationLogUserLogCallbackFunc({});
}

}  // namespace
}  // namespace Drive::OperateLog
