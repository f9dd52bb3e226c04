// OperateLogQueueTest.cpp - operation events on their way through facade and queue into the tables.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/OperationLogger.h"
#include "model/LogSettings.h"
#include "operatelog/OperationLoggerManager.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Sizes = std::vector<std::size_t>;

class OperationQueueTest : public testing::Test {
 protected:
  OperationQueueTest() {
    Settings().Reset();
    Platform::InstallSystem(&m_system);
    m_manager = std::make_unique<OperationLoggerManager>();
  }
  ~OperationQueueTest() override {
    m_manager.reset();
    m_logger.StopLoggerTask();
    Platform::InstallSystem(nullptr);
    Settings().Reset();
  }

  static Bilog::LogSettings& Settings() { return Bilog::LogSettings::GetInstance(); }

  void Queue(int count) {
    for (int i = 0; i < count; ++i) {
      m_manager->AddEvent(OperationBasicEventType::kDriveActionNewFile, static_cast<OperationType>(i),
                          OperationActionType::kBasicOperation, {});
    }
  }
  void Start() {
    m_manager->Start();
    m_clock.WaitForWaiters(1);
  }
  void Tick() { m_clock.Advance(seconds(10)); }

  Testing::FakeSystem m_system;
  Testing::ManualClock m_clock;
  Testing::CapturedLog m_log;
  Testing::RecordingStorage m_storage;
  std::unique_ptr<OperationLoggerManager> m_manager;
  OperationLogger& m_logger = OperationLogger::GetInstance();
};

TEST_F(OperationQueueTest, FillsTheRecordOfAnEvent) {
  g_pcVersion = L"9.8.7";
  g_deviceId = L"device-1";
  Settings().SetUserId(L"user-1");
  m_manager->AddEvent(static_cast<OperationBasicEventType>(76), static_cast<OperationType>(-3),
                      static_cast<OperationActionType>(9),
                      {{L"fileName", L"\"\u00e9\".txt"}, {L"Type", L"1"}, {L"DeleteCount", L"2"}});
  m_manager->AddEvent(static_cast<OperationBasicEventType>(77), OperationType::kNone,
                      OperationActionType::kBasicOperation, {});  // unknown, so dropped
  Queue(1);
  Start();
  Tick();
  ASSERT_EQ(m_storage.Rows(false).size(), 2u);
  const Bilog::UserLog record = m_storage.Rows(false)[0];
  EXPECT_EQ(record.get_Action() + L"|" + record.get_Actiontype() + L"|" + record.get_OprType() + L"|" +
                record.get_Code() + L"|" + record.get_CurModule() + L"|" + record.get_NextModule() + L"|" +
                record.get_Info() + L"|" + record.get_Rspsize() + L"|" + record.get_Reqsize(),
            L"DriveTray.transMgr.downloadFailByFileOccupy||-3|004_00000|TalvikDrive||||");
  EXPECT_EQ(record.get_UserId() + L"|" + record.get_DevId() + L"|" + record.get_Appversion() + L"|" +
                record.get_Model() + L"|" + record.get_Romversion(),
            L"user-1|device-1|9.8.7|Win64|Microsoft Windows NT 10.0.22631.0");
  EXPECT_EQ(record.get_Time(), L"2024-03-05 07:08:09.045");
  EXPECT_EQ(record.get_TraceId().substr(0, 20), L"76_11_1709622489045_");
  EXPECT_EQ(record.get_Extend(),
            L"{\"DeleteCount\":\"2\",\"Type\":\"1\",\"fileName\":\"\\\"\\u00e9\\\".txt\"}");
  EXPECT_EQ(record.get_IsMaintenanceLog(), 0);
  EXPECT_EQ(m_storage.Rows(false)[1].get_Extend(), L"{}");
}

TEST_F(OperationQueueTest, SavesAHundredRecordsATickInOrderAndTheRestAtItsEnd) {
  Queue(250);
  Start();
  m_clock.Advance(milliseconds(9999));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes());
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes({100}));
  m_clock.Advance(milliseconds(30000));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes({100, 100, 50}));
  Queue(1000);
  m_manager.reset();
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes({100, 100, 50, 1000}));
  const auto rows = m_storage.Rows(false);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].get_OprType(), std::to_wstring(i < 250 ? i : i - 250));
  }
}

TEST_F(OperationQueueTest, CopiesToTheUbaTableBeforeLoginAndWhileItsSwitchIsOne) {
  const struct {
    bool login;
    int ubaSwitch;
    std::size_t copies;
  } kCases[] = {{false, 0, 1}, {false, 1, 1}, {true, 0, 0}, {true, 2, 0}, {true, 1, 1}};
  Start();
  for (const auto& each : kCases) {
    if (each.login) {
      m_manager->SetLogin();
    }
    Settings().SetUbaSwitch(each.ubaSwitch);
    const std::size_t before = m_storage.InsertSizes(true).size();
    Queue(3);
    Tick();
    EXPECT_EQ(m_storage.InsertSizes(true).size() - before, each.copies) << each.login << each.ubaSwitch;
  }
}

TEST_F(OperationQueueTest, KeepsNothingThatIsQueuedOrBeingSavedWhenTheSwitchGoesOff) {
  int inserts = 0;
  m_storage.beforeInsert = [&inserts] {
    if (++inserts == 2) {  // as the facade does it: the switch, then the deletion, then the batch arrives
      Settings().SetOperationLogSwitch(false);
      OperationLoggerManager::DeleteStoredRecords();
    }
  };
  Queue(3);
  Start();
  Tick();
  EXPECT_EQ(inserts, 2);
  Queue(3);
  Tick();
  Settings().SetOperationLogSwitch(true);
  Tick();
  EXPECT_EQ(inserts, 2);
  EXPECT_TRUE(m_storage.Rows(false).empty() && m_storage.Rows(true).empty());
}

TEST_F(OperationQueueTest, RecordsAListInGroupsOfTen) {
  m_logger.StartLoggerTask();
  m_clock.WaitForWaiters(1);
  m_logger.OutputOperationLog(OperationBasicEventType::kDriveActionDeleteFile, OperationType::kNone,
                              OperationActionType::kFileTranslate,
                              std::vector<OperationLogger::Fields>(25, {{L"a", L"\""}}));
  m_clock.Advance(seconds(10));
  ASSERT_EQ(m_storage.Rows(false).size(), 2u);
  std::wstring maps;
  for (int i = 0; i < 10; ++i) {
    maps += L",{\\\"a\\\":\\\"\\\"\\\"}";  // quotes escaped once, by the JSON text around them
  }
  EXPECT_EQ(m_storage.Rows(false)[1].get_Extend(), L"{\"fileInfos\":\"[" + maps.substr(1) + L"]\"}");
}

TEST_F(OperationQueueTest, EmptiesTheTablesThatTheSwitchesForbid) {
  const auto rowsAfter = [&](const std::function<void()>& act) {
    auto& database = Bilog::BiDataBase::GetInstance();
    std::vector<Bilog::UserLog> batch(2);
    batch[1].set_IsMaintenanceLog(1);
    database.executeInsertUserLogBatchCallback(batch, false);
    batch.resize(1);
    database.executeInsertUserLogBatchCallback(batch, true);
    act();
    return std::to_string(m_storage.Rows(false).size()) + " " + std::to_string(m_storage.Rows(true).size());
  };
  const auto start = [this] { m_logger.StartLogRptTask(); };
  EXPECT_EQ(rowsAfter(start), "2 0");
  Settings().SetUbaSwitch(1);
  EXPECT_EQ(rowsAfter([this] { m_logger.SetOperationLogSwitchState(false); }), "2 0") << "BI records stay";
  EXPECT_FALSE(g_operationLogSwitchState);
  EXPECT_EQ(rowsAfter(start), "3 0");
  m_logger.SetOperationLogSwitchState(true);
  EXPECT_EQ(rowsAfter(start), "5 1");
}

TEST_F(OperationQueueTest, LosesNothingOfManyThreads) {
  constexpr int kThreads = 16;
  constexpr int kEach = 6250;  // 100 000 in all
  m_logger.StartLoggerTask();
  m_clock.WaitForWaiters(1);
  std::atomic<int> running{kThreads};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kEach; ++i) {
        m_logger.OutputOperationLog(OperationBasicEventType::kDriveActionNewFile,
                                    static_cast<OperationType>(thread * kEach + i),
                                    OperationActionType::kBasicOperation);
      }
      --running;
    });
  }
  while (running > 0) m_clock.Advance(seconds(10));
  for (std::thread& thread : threads) thread.join();
  m_clock.Advance(seconds(10 * kThreads * kEach / 100));
  std::vector<int> stored(kThreads * kEach);
  for (const Bilog::UserLog& record : m_storage.Rows(false)) {
    ++stored[static_cast<std::size_t>(std::stoi(record.get_OprType()))];
  }
  EXPECT_EQ(stored, std::vector<int>(kThreads * kEach, 1));
}

}  // namespace
}  // namespace Drive::OperateLog
