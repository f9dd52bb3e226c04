// EndToEndOperationTest.cpp - operation events on their two ways to the collector, enciphered and not.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "client/common/IPCDriveClient.h"
#include "operatelog/OperationLoggerManager.h"
#include "operatelog/OperationLoggerTimer.h"
#include "operatelog/UbaLoggerTimer.h"
#include "tests/support/ProductFixture.h"

namespace Drive {
namespace {

using OperateLog::OperationActionType;
using OperateLog::OperationBasicEventType;
using OperateLog::OperationType;
using std::chrono::milliseconds;

class OperationTest : public Testing::ProductFixture {
 protected:
  OperationTest() { m_manager.SetLogin(); }

  // Queues events and has them saved, 100 a tick.
  void Store(int count) {
    for (int i = 0; i < count; ++i) {
      m_manager.AddEvent(static_cast<OperationBasicEventType>(i % 77), OperationType{3},
                         static_cast<OperationActionType>(i % 5), {{L"fileName", L"a \"b\" \u20ac"}});
    }
    m_manager.Start();
    m_clock.WaitForWaiters(m_uploads + 1);
    m_clock.Advance(milliseconds(10000 * ((count + 99) / 100)));
    m_manager.Stop();
    ASSERT_EQ(Stored(Channel::kOperation), static_cast<std::size_t>(count));
    ASSERT_EQ(Stored(Channel::kUba), static_cast<std::size_t>(count));
  }
  void StartTimers() {
    m_operationTimer.Start();
    m_ubaTimer.Start();
    m_clock.WaitForWaiters(m_uploads = 2);
  }
  void Tick() { m_clock.Advance(milliseconds(60000)); }

  OperateLog::OperationLoggerManager m_manager;
  OperateLog::OperationLoggerTimer m_operationTimer;
  OperateLog::UbaLoggerTimer m_ubaTimer;
  std::size_t m_uploads = 0;  // timers that run
};

TEST_F(OperationTest, DeliversBothChannelsAndDeletesWhatWasAccepted) {
  Store(180);
  StartTimers();
  Tick();
  EXPECT_EQ(Accepted(Channel::kOperation), 100) << Refusals();
  EXPECT_EQ(Accepted(Channel::kUba), 100) << Refusals();
  EXPECT_EQ(Stored(Channel::kOperation), 80u);
  Tick();
  EXPECT_EQ(Stored(Channel::kUba), 80u) << "a partial batch is held back after a delivery";
  m_operationTimer.Stop();
  m_ubaTimer.Stop();
  StartTimers();
  Tick();
  EXPECT_EQ(Accepted(Channel::kOperation), 180) << Refusals();
  EXPECT_EQ(Accepted(Channel::kUba), 180) << Refusals();
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 0u);

  const auto uba = m_collector.Records(Channel::kUba);
  EXPECT_EQ(uba.back().record["q"].asInt(), 0);
  EXPECT_EQ(uba.front().record["q"].asInt(), 179) << "numbers go on across a restart";
  EXPECT_EQ(uba.back().record["x"]["CountryCode"].asString(), "CN");
  EXPECT_EQ(uba.back().record["x"]["Extend"]["fileName"].asString(), "a \"b\" \xE2\x82\xAC");
  const auto operation = m_collector.Records(Channel::kOperation).back().record;
  EXPECT_EQ(operation["event"], uba.back().record["x"]["Action"]);
}

TEST_F(OperationTest, TicksWithTheHostsMaximumWaitTimeAndHoldsBackForTheStoresOwn) {
  auto data = Settings();
  data.pushLogWaitTime = 20;
  data.pushLogMaxWaitTime = 100;
  Bilog::BILogger::GetInstance().SetBiUbaDataPara(data);
  Store(1);
  StartTimers();
  m_clock.Advance(milliseconds(99999));
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 2u);
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 0u) << Refusals();
  Store(1);  // takes 10 s
  m_clock.Advance(milliseconds(289999));
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 2u);
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 0u) << Refusals();
}

TEST_F(OperationTest, UbaWaitsForANewToken) {
  IPC::SetIpcEndpointName("drivelog-test-" + std::to_string(std::hash<std::string>{}(m_folder.Narrow(""))));
  const IPC::IPCDriveServer mainProcess([](int command, const std::string& payload) {
    return command == 4 && payload == "Rt Change At" ? "token/2 new" : "";
  });
  Store(5);
  StartTimers();
  Collection::Fault expired;
  expired.channel = Channel::kUba;
  expired.untilNewToken = true;
  m_collector.InjectFault(expired);
  Tick();
  EXPECT_EQ(Attempts(Channel::kUba), 1);
  EXPECT_EQ(Stored(Channel::kUba), 5u);
  EXPECT_EQ(Stored(Channel::kOperation), 0u);
  Tick();
  EXPECT_EQ(Accepted(Channel::kUba), 5) << Refusals();
  EXPECT_EQ(Bilog::LogSettings::GetInstance().GetAccessToken() + g_accessToken.Get(),
            L"token/2 newtoken/2 new");
  IPC::SetIpcEndpointName("TalvikCloud");
}

TEST_F(OperationTest, SendsNothingUnderAKeyThatIsNone) {
  const std::string good = m_collector.RsaPublicKeyHex();
  const std::string keys[] = {"",          good.substr(1),     std::string(540, 'x'), std::string(540, '0'),
                              good + good, good.substr(0, 500)};
  Store(3);
  for (const std::string& key : keys) {
    m_log.Clear();
    Bilog::LogSettings::GetInstance().SetRsaPublicKey(key);
    m_operationTimer.Start();
    m_operationTimer.Stop();  // after a last tick
    EXPECT_EQ(CountBeginning("g_rsaPublicKey is null"), key.empty() ? 1u : 0u) << key;
    EXPECT_EQ(CountBeginning("g_rsaPublicKey is not the hexadecimal text"), key.empty() ? 0u : 1u) << key;
  }
  EXPECT_EQ(Attempts(Channel::kOperation), 0);
  EXPECT_EQ(Stored(Channel::kOperation), 3u);
}

TEST_F(OperationTest, SwitchedOffDuringAnUploadTheTablesStayEmpty) {
  Store(5);
  StartTimers();
  Collection::Fault slow;
  slow.delay = milliseconds(300);
  slow.count = 0;
  m_collector.InjectFault(slow);
  std::thread ticking([this] { Tick(); });
  ASSERT_TRUE(m_collector.WaitForAttempts(Channel::kOperation, 1, std::chrono::seconds(20)));
  Bilog::LogSettings::GetInstance().SetOperationLogSwitch(false);
  OperateLog::OperationLoggerManager::DeleteStoredRecords();
  ticking.join();
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 0u);
}

}  // namespace
}  // namespace Drive
