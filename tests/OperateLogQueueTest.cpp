// OperateLogQueueTest.cpp - records of operation events and their way from the queue into the tables.
#include <gtest/gtest.h>

#include "client/common/SharedGlobals.h"
#include "model/LogSettings.h"
#include "operatelog/OperationLoggerManager.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

using std::chrono::milliseconds;
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
  void Tick() { m_clock.Advance(milliseconds(10000)); }

  Testing::FakeSystem m_system;
  Testing::ManualClock m_clock;
  Testing::CapturedLog m_log;
  Testing::RecordingStorage m_storage;
  std::unique_ptr<OperationLoggerManager> m_manager;
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
  EXPECT_EQ(record.get_Time(), L"2024-03-05 07:08:09.045");
  EXPECT_EQ(record.get_Action(), L"DriveTray.transMgr.downloadFailByFileOccupy");
  EXPECT_EQ(record.get_Actiontype(), L"");
  EXPECT_EQ(record.get_Appversion(), L"9.8.7");
  EXPECT_EQ(record.get_Code(), L"004_00000");
  EXPECT_EQ(record.get_CurModule(), L"TalvikDrive");
  EXPECT_EQ(record.get_Extend(),
            L"{\"DeleteCount\":\"2\",\"Type\":\"1\",\"fileName\":\"\\\"\\u00e9\\\".txt\"}");
  EXPECT_EQ(record.get_Model(), L"Win64");
  EXPECT_EQ(record.get_OprType(), L"-3");
  EXPECT_EQ(record.get_Romversion(), L"Microsoft Windows NT 10.0.22631.0");
  EXPECT_EQ(record.get_TraceId().substr(0, 20), L"76_11_1709622489045_");
  EXPECT_EQ(record.get_UserId(), L"user-1");
  EXPECT_EQ(record.get_DevId(), L"device-1");
  EXPECT_EQ(record.get_NextModule() + record.get_Rspsize() + record.get_Reqsize() + record.get_Info(), L"");
  EXPECT_EQ(record.get_IsMaintenanceLog(), 0);
  EXPECT_EQ(m_storage.Rows(false)[1].get_Extend(), L"{}");
  EXPECT_EQ(m_storage.Rows(false)[1].get_Actiontype(), L"basic_opr");
}

TEST_F(OperationQueueTest, SavesAHundredRecordsATickInOrder) {
  Queue(250);
  Start();
  m_clock.Advance(milliseconds(9999));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes());
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes({100}));
  Tick();
  Tick();
  Tick();
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes({100, 100, 50}));
  const auto rows = m_storage.Rows(false);
  for (std::size_t i = 0; i < 250; ++i) {
    EXPECT_EQ(rows[i].get_OprType(), std::to_wstring(i));
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
    m_log.Clear();
    const std::size_t before = m_storage.InsertSizes(true).size();
    Queue(3);
    Tick();
    EXPECT_EQ(m_storage.InsertSizes(true).size() - before, each.copies) << each.login << each.ubaSwitch;
    EXPECT_EQ(m_log.Count(std::string("isLogin == ") + (each.login ? "1" : "0")), 1u);
    EXPECT_EQ(m_log.Count("g_ubaSwitch == " + std::to_string(each.ubaSwitch)), 1u);
    EXPECT_EQ(m_log.Count("executeInsertUserLogBatchCallback uba"), each.copies);
  }
  EXPECT_EQ(m_log.All().back().location, "Drive::OperateLog::OperationLoggerManager::SaveUserlogToDb");
}

TEST_F(OperationQueueTest, DiscardsQueuedRecordsWhileTheSwitchIsOff) {
  Settings().SetOperationLogSwitch(false);
  Queue(3);
  Start();
  Tick();
  EXPECT_EQ(m_log.Count("g_operationLogSwitchState = 0"), 1u);
  Settings().SetOperationLogSwitch(true);
  Tick();
  EXPECT_TRUE(m_storage.Inserts().empty());
}

TEST_F(OperationQueueTest, LeavesNothingWhenTheSwitchGoesOffInTheMiddleOfASave) {
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
  EXPECT_TRUE(m_storage.Rows(false).empty());
  EXPECT_TRUE(m_storage.Rows(true).empty());
}

TEST_F(OperationQueueTest, SavesEverythingQueuedInOneBatchATableAtItsEnd) {
  Queue(1000);
  m_manager.reset();
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes({1000}));
  EXPECT_EQ(m_storage.InsertSizes(true), Sizes({1000}));
}

}  // namespace
}  // namespace Drive::OperateLog
