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
    m_clock.WaitForWaiters(1);
    m_clock.Advance(milliseconds(10000 * ((count + 99) / 100)));
    m_manager.Stop();
    ASSERT_EQ(Stored(Channel::kOperation), static_cast<std::size_t>(count));
    ASSERT_EQ(Stored(Channel::kUba), static_cast<std::size_t>(count));
  }
  void StartTimers() {
    m_operationTimer.Start();
    m_ubaTimer.Start();
    m_clock.WaitForWaiters(2);
  }
  void Tick() { m_clock.Advance(milliseconds(60000)); }

  OperateLog::OperationLoggerManager m_manager;
  OperateLog::OperationLoggerTimer m_operationTimer;
  OperateLog::UbaLoggerTimer m_ubaTimer;
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

  const auto operation = m_collector.Records(Channel::kOperation).back().record;
  EXPECT_EQ(operation["event"].asString(), "Drive.mouse.downloadFile");
  const auto uba = m_collector.Records(Channel::kUba).back().record;
  EXPECT_EQ(uba["q"].asInt(), 0);
  EXPECT_EQ(uba["x"]["Action"].asString(), "Drive.mouse.downloadFile");
  EXPECT_EQ(uba["x"]["Actiontype"].asString(), "basic_opr");
  EXPECT_EQ(uba["x"]["OprType"].asString(), "3");
  EXPECT_EQ(uba["x"]["CountryCode"].asString(), "CN");
  EXPECT_EQ(uba["x"]["Extend"]["fileName"].asString(), "a \"b\" \xE2\x82\xAC");
  EXPECT_EQ(m_collector.Records(Channel::kUba).front().record["q"].asInt(), 179);
}

TEST_F(OperationTest, TriesAgainWithTheNextTickAfterAFailure) {
  Store(5);
  StartTimers();
  Collection::Fault fault;
  fault.status = 503;
  fault.count = 6;
  m_collector.InjectFault(fault);
  Tick();
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 10u);
  Tick();
  EXPECT_EQ(Accepted(Channel::kOperation) + Accepted(Channel::kUba), 10) << Refusals();
}

TEST_F(OperationTest, UbaWaitsForANewToken) {
  IPC::SetIpcEndpointName("drivelog-test-" + std::to_string(std::hash<std::string>{}(m_folder.Narrow(""))));
  const IPC::IPCDriveServer mainProcess([](int, const std::string&) { return "token/2 new"; });
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
  IPC::SetIpcEndpointName("TalvikCloud");
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
  m_manager.AddEvent(OperationBasicEventType{0}, OperationType{0}, OperationActionType{0}, {});
  m_manager.Start();
  m_clock.WaitForWaiters(3);
  m_clock.Advance(milliseconds(10000));
  EXPECT_EQ(Stored(Channel::kOperation) + Stored(Channel::kUba), 0u);
}

TEST_F(OperationTest, SendsNothingUnderAKeyThatIsNone) {
  const std::string good = m_collector.RsaPublicKeyHex();
  struct {
    const char* name;
    std::string key;
  } const keys[] = {{"none", ""},
                    {"odd", good.substr(1)},
                    {"no digits", std::string(540, 'x')},
                    {"no DER", std::string(540, '0')},
                    {"too long", good + "00"},
                    {"cut", good.substr(0, 500)}};
  Store(3);
  for (const auto& row : keys) {
    SCOPED_TRACE(row.name);
    m_log.Clear();
    Bilog::LogSettings::GetInstance().SetRsaPublicKey(row.key);
    m_operationTimer.Start();
    m_clock.WaitForWaiters(1);
    Tick();
    m_operationTimer.Stop();
    EXPECT_EQ(Attempts(Channel::kOperation), 0);
    EXPECT_EQ(Stored(Channel::kOperation), 3u);
    EXPECT_EQ(CountBeginning("g_rsaPublicKey is null"), row.key.empty() ? 2u : 0u);
    EXPECT_EQ(m_log.OfLevel(5).empty(), row.key.empty());
  }
  Bilog::LogSettings::GetInstance().SetRsaPublicKey(good);
  m_operationTimer.Start();
  m_clock.WaitForWaiters(1);
  Tick();
  EXPECT_EQ(Accepted(Channel::kOperation), 3) << Refusals();
}

}  // namespace
}  // namespace Drive
