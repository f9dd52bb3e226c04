// BiLogQueueTest.cpp - BI records on their way from the caller to the storage, in virtual time.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "bilog/BILoggerManager.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "model/LogSettings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStorage.h"
#include "transport/JsonText.h"

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

TEST_F(BiQueueTest, StoresWithin60SecondsAndNotEarlier) {
  StartWorker();
  Add(3);
  m_clock.Advance(milliseconds(59999));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{});
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{3});
  m_clock.Advance(milliseconds(60000));
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{3}) << "an empty queue needs no insert";
}

TEST_F(BiQueueTest, DrainsInBatchesOfAThousandInOrder) {
  Add(2500);
  StartWorker();
  m_clock.Advance(milliseconds(10));
  EXPECT_EQ(m_storage.InsertSizes(false), (Sizes{1000, 1000, 500}));
  const auto rows = m_storage.Rows(false);
  ASSERT_EQ(rows.size(), 2500u);
  for (int i = 0; i < 2500; ++i) {
    ASSERT_EQ(rows[static_cast<std::size_t>(i)].get_Info(), std::to_wstring(i));
  }
}

TEST_F(BiQueueTest, ProducerStoresTheOldestThousandBeyondTheSoftBound) {
  Add(5001);
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{});
  Add(1);
  EXPECT_EQ(m_storage.InsertSizes(false), Sizes{1000});
  EXPECT_EQ(m_storage.Rows(false).back().get_Info(), L"999");
  StartWorker();
  m_clock.Advance(milliseconds(10));
  EXPECT_EQ(m_storage.InsertSizes(false), (Sizes{1000, 1000, 1000, 1000, 1000, 2}));
}

TEST_F(BiQueueTest, TwoWorkersShareTheQueue) {
  m_manager.Start();
  m_manager.Start();
  m_clock.WaitForWaiters(2);
  Add(10);
  m_clock.Advance(milliseconds(60000));
  EXPECT_EQ(m_storage.Rows(false).size(), 10u);
}

TEST_F(BiQueueTest, FillsTheUserOfARecordQueuedBeforeTheUserWasKnown) {
  LogSettings::GetInstance().SetUserId(L"");
  Add(1);
  LogSettings::GetInstance().SetUserId(L"late");
  StartWorker();
  ASSERT_EQ(m_storage.Rows(false).size(), 1u);
  EXPECT_EQ(m_storage.Rows(false)[0].get_UserId(), L"late");
}

TEST_F(BiQueueTest, LosesNoRecordOfManyThreads) {
  StartWorker();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this] {
      for (int n = 0; n < 1500; ++n) {
        m_manager.AddEvent(16001, L"info", L"extend");
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  m_clock.Advance(milliseconds(61000));
  EXPECT_EQ(m_storage.Rows(false).size(), 12000u);
}

struct Expected {
  const wchar_t* action;
  const wchar_t* code;
  const wchar_t* info;
  const wchar_t* extendBegin;
  double useTime;
};

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
  const Expected expected[] = {
      {L"act", L"c", L"i", L"e;DEVICE_BRAND:", 1.0},
      {L"7", L"c", L"i", L";DEVICE_BRAND:", 2.5},
      {L"7", L"c", L"i", L"e;DEVICE_BRAND:", 1.0},
      {L"7", L"004_00000", L"i", L"e;DEVICE_BRAND:", 1.0},
      {L"7", L"c", L"i", L"{\"ACCOUNT_BRAND_ID\":", 1.0},
      {L"-7", L"004_00000", L"Operation success", L"{\"ACCOUNT_BRAND_ID\":", 1.0},
  };
  const auto rows = m_storage.Rows(false);
  ASSERT_EQ(rows.size(), std::size(expected));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const UserLog& row = rows[i];
    SCOPED_TRACE(i);
    EXPECT_EQ(row.get_Action(), expected[i].action);
    EXPECT_EQ(row.get_Code(), expected[i].code);
    EXPECT_EQ(row.get_Info(), expected[i].info);
    EXPECT_EQ(row.get_Extend().rfind(expected[i].extendBegin, 0), 0u);
    EXPECT_EQ(row.get_UseTime(), expected[i].useTime);
    EXPECT_EQ(row.get_Time(), L"2024-03-05 07:08:09.045");
    EXPECT_EQ(row.get_StartTime(), static_cast<double>(m_clock.NowMilliseconds()));
    EXPECT_EQ(row.get_UserId(), L"user");
    EXPECT_EQ(row.get_DevId(), L"device");
    EXPECT_EQ(row.get_Appversion(), L"1.2.3");
    EXPECT_EQ(row.get_IsMaintenanceLog(), 1);
  }
  EXPECT_EQ(rows[0].get_TraceId(), L"t");
  EXPECT_EQ(rows[1].get_TraceId().rfind(L"7_11_" + std::to_wstring(m_clock.NowMilliseconds()) + L"_", 0), 0u);
  const auto extend = ParseJsonObject(TypeConvert::UnicodeToUTF8(rows[4].get_Extend()));
  ASSERT_TRUE(extend.has_value());
  EXPECT_EQ((*extend)["k"].asString(), "v\"1");
}

}  // namespace
}  // namespace Drive::Bilog
