// BiLogQueueTest.cpp - BI records on their way from the caller to the storage, in virtual time.
#include <gtest/gtest.h>

#include "bilog/BILoggerManager.h"
#include "client/common/SharedGlobals.h"
#include "client/log/LoggerUtility.h"
#include "model/LogSettings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::Bilog {
namespace {

using std::chrono::milliseconds;
using Sizes = std::vector<std::size_t>;

class BiQueueTest : public testing::Test {
 protected:
  BiQueueTest() {
    LogSettings::GetInstance().Reset();
    LogSettings::GetInstance().SetUserId(L"user");
  }
  ~BiQueueTest() override { LogSettings::GetInstance().Reset(); }

  void Add(int count) {
    for (int i = 0; i < count; ++i) {
      m_manager.AddEvent(L"action", L"code", std::to_wstring(m_added++), L"extend", L"trace");
    }
  }
  // Starts the worker and lets it drain what is there.
  void StartWorker() {
    m_manager.Start();
    m_clock.WaitForWaiters(1);
  }

  Testing::ManualClock m_clock;
  Testing::RecordingStorage m_storage;
  BILoggerManager m_manager;
  int m_added = 0;
};

TEST_F(BiQueueTest, StoresWithin60SecondsInBatchesOfAThousandInOrder) {
  StartWorker();
  Add(2500);
  m_clock.Advance(milliseconds(59999));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{}) << "a new record does not wake the worker";
  m_clock.Advance(milliseconds(3));
  EXPECT_EQ(m_storage.InsertSizes(false), (Sizes{1000, 1000, 500}));
  m_clock.Advance(milliseconds(60000));
  EXPECT_EQ(m_storage.InsertSizes(false).size(), 3u) << "an empty queue needs no insert";
  const auto rows = m_storage.Rows(false);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_EQ(rows[i].get_Info(), std::to_wstring(i));
  }
}

TEST_F(BiQueueTest, ProducerStoresTheOldestThousandBeyondTheSoftBound) {
  Add(5001);
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{});
  LogSettings::GetInstance().SetUserId(L"");
  Add(1);
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{1000});
  EXPECT_EQ(m_storage.Rows(false).back().get_Info(), L"999");
  LogSettings::GetInstance().SetUserId(L"late");
  StartWorker();
  m_clock.Advance(milliseconds(10));
  EXPECT_EQ(m_storage.InsertSizes(false), (Sizes{1000, 1000, 1000, 1000, 1000, 2}));
  EXPECT_EQ(m_storage.Rows(false)[5000].get_UserId(), L"user");
  EXPECT_EQ(m_storage.Rows(false)[5001].get_UserId(), L"late") << "was not known when it was queued";
}

TEST_F(BiQueueTest, EachFormFillsItsFields) {
  g_deviceId = L"device";
  g_pcVersion = L"1.2.3";
  const BILoggerManager::ExtendMap map{{L"k", L"v\"1"}};
  m_manager.AddEvent(L"act", L"c", L"i", L"e", L"t");
  m_manager.AddEvent(7, L"c", L"i", 2.5);
  m_manager.AddEvent(7, L"c", L"unused", L"i", L"e");
  m_manager.AddEvent(7, L"i", L"e");
  m_manager.AddEvent(7, L"c", L"i", map);
  m_manager.AddEvent(-7, map);
  StartWorker();
  const std::wstring expected[] = {
      L"act|c|i|e;DEVICE_BRAND:|1.0",      L"7|c|i|;DEVICE_BRAND:|2.5",
      L"7|c|i|e;DEVICE_BRAND:|1.0",        L"7|004_00000|i|e;DEVICE_BRAND:|1.0",
      L"7|c|i|{\"ACCOUNT_BRAND_ID\":|1.0", L"-7|004_00000|Operation success|{\"ACCOUNT_BRAND_ID\":|1.0",
  };
  const auto rows = m_storage.Rows(false);
  ASSERT_EQ(rows.size(), std::size(expected));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const UserLog& row = rows[i];
    const std::wstring extend = row.get_Extend();
    EXPECT_EQ(row.get_Action() + L"|" + row.get_Code() + L"|" + row.get_Info() + L"|" +
                  extend.substr(0, extend.find(L':') + 1) + L"|" +
                  std::to_wstring(row.get_UseTime()).substr(0, 3),
              expected[i]);
    EXPECT_EQ(row.get_Time(), L"2024-03-05 07:08:09.045");
    EXPECT_EQ(row.get_StartTime(), 1709622489045.0);
    EXPECT_EQ(row.get_UserId() + row.get_DevId() + row.get_Appversion(), L"userdevice1.2.3");
    EXPECT_EQ(row.get_IsMaintenanceLog(), 1);
  }
  EXPECT_EQ(rows[0].get_TraceId(), L"t");
  EXPECT_EQ(rows[1].get_TraceId().substr(0, 19), L"7_11_1709622489045_");
  EXPECT_NE(rows[4].get_Extend().find(L"\"k\":\"v\\\"1\""), std::wstring::npos);
}

TEST_F(BiQueueTest, RecordsSayWhatWasSoWhenTheEventHappened) {
  const std::wstring info = std::wstring(L"\0\"", 2) + L"\u00e4 \U0001F600" + std::wstring(300, L'x');
  const auto setAll = [](const std::string& value) {
    const std::wstring wide(value.begin(), value.end());
    LogSettings::GetInstance().SetUserId(wide + L"-user");
    g_deviceId = wide + L"-device";
    g_pcVersion = wide + L"-version";
    g_diskType = value + "-disk";
    LoggerUtility::SetUplogTypes({{7, value + "-name"}});
  };
  // To and fro, with values that other events had before, beyond the end of a block.
  const char* const kValues[] = {"a", "b", "a", "c", "c"};
  for (int i = 0; i < 250; ++i) {
    setAll(kValues[i % 5]);
    m_manager.AddEvent(7, L"", info, {{L"a\u00e4", info}, {L"DISK_TYPE", L"of the caller"}});
    m_manager.AddEvent(7, info, L"text");
  }
  setAll("late");
  m_clock.Advance(milliseconds(1000));
  StartWorker();
  const auto rows = m_storage.Rows(false);
  ASSERT_EQ(rows.size(), 500u);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string value = kValues[i / 2 % 5];
    const std::wstring wide(value.begin(), value.end());
    const std::wstring extend = rows[i].get_Extend();
    EXPECT_EQ(rows[i].get_Action() + L"|" + rows[i].get_UserId() + L"|" + rows[i].get_DevId() + L"|" +
                  rows[i].get_Appversion() + L"|" + rows[i].get_Time(),
              wide + L"-name|" + wide + L"-user|" + wide + L"-device|" + wide +
                  L"-version|2024-03-05 07:08:09.045");
    EXPECT_EQ(rows[i].get_Info(), info);
    EXPECT_EQ(rows[i].get_StartTime(), 1709622489045.0);
    const std::wstring disk =
        i % 2 == 0 ? L"\"DISK_TYPE\":\"" + wide + L"-disk\"" : L";DISK_TYPE:" + wide + L"-disk;";
    EXPECT_NE(extend.find(disk), std::wstring::npos) << i;
    EXPECT_EQ(extend.find(L"\"a\\u00e4\":\"\\u0000\\\"\\u00e4 \\ud83d\\ude00xxx") != std::wstring::npos,
              i % 2 == 0);
  }
  LoggerUtility::SetUplogTypes({});
  g_diskType = "";
}

}  // namespace
}  // namespace Drive::Bilog
