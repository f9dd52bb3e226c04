// EndToEndMaintenanceTest.cpp - BI events from OutputBILog's queue to the collector, through all that can
// fail.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "client/common/IPCDriveClient.h"
#include "tests/support/ProductFixture.h"

namespace Drive {
namespace {

using Collection::Fault;
using Collection::ServerCertificate;
using std::chrono::milliseconds;

class MaintenanceTest : public Testing::ProductFixture {
 protected:
  static constexpr Channel kChannel = Channel::kMaintenance;

  explicit MaintenanceTest(Collection::Collector::Options options = {})
      : Testing::ProductFixture(std::move(options)) {}

  // Records so many events and lets the worker store them.
  void Store(int count) {
    for (int i = 0; i < count; ++i) {
      m_manager.AddEvent(16001, L"0", L"event " + std::to_wstring(i), 0.5);
    }
    m_manager.Start();
    m_clock.WaitForWaiters(1);
    ASSERT_EQ(Stored(kChannel), static_cast<std::size_t>(count));
  }
  void StartTimer() {
    m_timer.Start();
    m_clock.WaitForWaiters(2);
  }
  void Tick() { m_clock.Advance(milliseconds(5000)); }

  Bilog::BILoggerManager m_manager;
  Bilog::BILoggerTimer m_timer;
};

TEST_F(MaintenanceTest, DeliversInBatchesAndDeletesWhatWasAccepted) {
  Store(95);
  StartTimer();
  m_clock.Advance(milliseconds(4999));
  EXPECT_EQ(Attempts(kChannel), 0);
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(Accepted(kChannel), 40) << Refusals();
  EXPECT_EQ(Stored(kChannel), 55u);
  Tick();
  EXPECT_EQ(Accepted(kChannel), 80);
  Tick();
  EXPECT_EQ(Accepted(kChannel), 95);
  EXPECT_EQ(Stored(kChannel), 0u);
  Tick();
  EXPECT_EQ(Attempts(kChannel), 3);
  const auto records = m_collector.Records(kChannel);
  ASSERT_EQ(records.size(), 95u);
  EXPECT_EQ(records.back().record["Info"].asString(), "event 0");
  EXPECT_EQ(records.front().record["Info"].asString(), "event 94");
}

struct FaultCase {
  const char* name;
  Fault fault;
  bool delivered;  // within the tick
  std::int64_t attempts;
  const char* message;  // the beginning of a message, and how often it comes
  std::size_t messages;
};

Fault Answer(int status, int count, const std::string& body = "") {
  Fault fault;
  fault.status = status;
  fault.count = count;
  fault.body = body;
  return fault;
}

Fault Drop(int count) {
  Fault fault;
  fault.drop = true;
  fault.count = count;
  return fault;
}

class FaultTest : public MaintenanceTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(FaultTest, KeepsRowsUntilAccepted) {
  const FaultCase& row = GetParam();
  Store(3);
  StartTimer();
  m_collector.InjectFault(row.fault);
  Tick();
  EXPECT_EQ(Attempts(kChannel), row.attempts);
  EXPECT_EQ(Stored(kChannel), row.delivered ? 0u : 3u);
  EXPECT_EQ(CountBeginning(row.message), row.messages);
  EXPECT_EQ(CountBeginning("PushLog Success,url:"), row.delivered ? 1u : 0u);
  m_collector.ClearFaults();
  Tick();
  EXPECT_EQ(Stored(kChannel), 0u);
  EXPECT_EQ(Accepted(kChannel), 3) << Refusals();
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FaultTest,
    testing::Values(FaultCase{"SecondAttempt", Answer(500, 1), true, 2, "PushLog Fail, url:", 1},
                    FaultCase{"ServerError", Answer(500, 3), false, 3, "PushLog Fail, url:", 3},
                    FaultCase{"BadRequest", Answer(400, 3, "no"), false, 3, "PushLog Fail, url:", 3},
                    FaultCase{"TokenRefused", Answer(400, 3, R"({"error":"interface auth failed"})"), false,
                              1, "update at", 1},
                    FaultCase{"RedirectIsNotFollowed", Answer(302, 3), false, 3, "PushLog Fail, url:", 3},
                    FaultCase{"Dropped", Drop(3), false, 3, "PushLogToServer Fail result:", 3},
                    FaultCase{"DroppedOnce", Drop(1), true, 2, "PushLogToServer Fail result:", 1}),
    [](const auto& row) { return row.param.name; });

TEST_F(MaintenanceTest, GoesOnWhenTheCollectorIsBackOrTheNetworkIs) {
  Store(2);
  StartTimer();
  m_collector.Stop();
  Tick();
  EXPECT_EQ(CountBeginning("PushLogToServer Fail result:7"), 3u);
  EXPECT_EQ(Stored(kChannel), 2u);
  m_collector.Start();
  g_isOffLine = true;
  Tick();
  EXPECT_EQ(CountBeginning("Not net or at disable"), 1u);
  EXPECT_EQ(Attempts(kChannel), 0);
  g_isOffLine = false;
  Tick();
  EXPECT_EQ(Accepted(kChannel), 2);
  EXPECT_EQ(Stored(kChannel), 0u);
}

TEST_F(MaintenanceTest, RenewsTheTokenOverIpc) {
  IPC::SetIpcEndpointName("drivelog-test-" + std::to_string(std::hash<std::string>{}(m_folder.Narrow(""))));
  int requests = 0;
  {
    const IPC::IPCDriveServer mainProcess([&requests](int command, const std::string& payload) {
      ++requests;
      return command == 4 && payload == "Rt Change At" ? "token-2" : "";
    });
    ASSERT_TRUE(mainProcess.IsListening());
    Store(1);
    StartTimer();
    m_collector.InjectFault(Answer(400, 1, "interface auth failed"));
    Tick();
    EXPECT_EQ(Attempts(kChannel), 1);
    EXPECT_EQ(Stored(kChannel), 1u);
    Tick();
    EXPECT_EQ(Accepted(kChannel), 1);
  }
  EXPECT_EQ(requests, 1);
  EXPECT_EQ(Bilog::LogSettings::GetInstance().GetAccessToken(), L"token-2");
  EXPECT_EQ(g_accessToken.Get(), L"token-2");
  IPC::SetIpcEndpointName("TalvikCloud");
}

TEST_F(MaintenanceTest, DeliversHostileTextsAndWhatFollowsThem) {
  const std::string deep = std::string(10000, '[') + std::string(10000, ']');
  const std::wstring wideDeep(deep.begin(), deep.end());
  const std::wstring texts[] = {
      L"plain",
      L"{\"ResultInfo\":{\"file_id\":\"a\",\"file_size\":12}}",
      L"{\"ResultInfo\":[1,2]}",
      L"{\"ResultInfo\":{\"file_id\":{},\"file_size\":\"x\",\"thumbnail_type\":1e999}}",
      L"[1,2,3]",
      L"{\"a\":1} // trailing",
      L"\"DEVICE_BRAND\"",
      L"{\"DEVICE_BRAND\":[{}]}",
      wideDeep,
      L"{\"x\":" + wideDeep + L"}",
      std::wstring(L"lone ") + static_cast<wchar_t>(0xD83D) + L" surrogate " + static_cast<wchar_t>(0xDE00),
      std::wstring(L"nul\0inside", 10),
      L"\x01\x1f\x7f\u20ac \U0001F600",
      std::wstring(1024 * 1024, L'x'),
  };
  for (const std::wstring& text : texts) {
    m_manager.AddEvent(1, L"0", L"dropped", text, text);
    m_manager.AddEvent(text, text, text, text, text);
  }
  m_manager.AddEvent(L"last", L"0", L"", L"", L"");
  m_manager.Start();
  m_clock.WaitForWaiters(1);
  const std::size_t count = 2 * std::size(texts) + 1;
  ASSERT_EQ(Stored(kChannel), count);
  StartTimer();
  Tick();
  EXPECT_EQ(Accepted(kChannel), static_cast<std::int64_t>(count)) << Refusals();
  EXPECT_EQ(Stored(kChannel), 0u);
  EXPECT_EQ(m_collector.Records(kChannel, 1)[0].record["Action"].asString(), "last");
}

TEST_F(MaintenanceTest, SplitsABatchThatIsTooLargeAndDropsARecordThatIs) {
  // Hardly compressible texts: one of 120 000 characters fits a request, two do not, one of 400 000 does not.
  const auto noise = [](std::size_t length) {
    std::mt19937 draw(7);
    std::wstring text;
    for (std::size_t i = 0; i < length; ++i) {
      text += static_cast<wchar_t>(L'0' + draw() % 75);
    }
    return text;
  };
  m_manager.AddEvent(1, L"0", noise(120000), 1.0);
  m_manager.AddEvent(2, L"0", noise(400000), 1.0);
  m_manager.AddEvent(3, L"0", noise(120000), 1.0);
  m_manager.AddEvent(4, L"0", L"small", 1.0);
  m_manager.Start();
  m_clock.WaitForWaiters(1);
  StartTimer();
  Tick();
  EXPECT_EQ(Accepted(kChannel), 3) << Refusals();
  EXPECT_EQ(Stored(kChannel), 0u);
  EXPECT_EQ(CountBeginning("record too large for any request, deleted, Id:2"), 1u);
}

TEST_F(MaintenanceTest, StopEndsATransferThatHangs) {
  Store(1);
  StartTimer();
  Fault hang;
  hang.delay = std::chrono::seconds(60);
  hang.count = 0;
  m_collector.InjectFault(hang);
  const auto begin = std::chrono::steady_clock::now();
  m_timer.Stop();  // wakes the timer, whose last run posts
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_EQ(Attempts(kChannel), 1);
  EXPECT_EQ(Stored(kChannel), 1u);
}

class CertificateTest : public MaintenanceTest, public testing::WithParamInterface<ServerCertificate> {
 protected:
  CertificateTest() : MaintenanceTest(OptionsOf(GetParam())) {}
  static Collection::Collector::Options OptionsOf(ServerCertificate certificate) {
    Collection::Collector::Options options;
    options.certificate = certificate;
    return options;
  }
};

TEST_P(CertificateTest, SendsNothingToAServerThatCannotBeTrusted) {
  Store(1);
  StartTimer();
  Tick();
  EXPECT_EQ(Attempts(kChannel), 0);
  EXPECT_EQ(Stored(kChannel), 1u);
  EXPECT_EQ(CountBeginning("PushLogToServer Fail result:60"), 3u);
}

INSTANTIATE_TEST_SUITE_P(Faults, CertificateTest,
                         testing::Values(ServerCertificate::kExpired, ServerCertificate::kWrongHost,
                                         ServerCertificate::kForeignAuthority));

}  // namespace
}  // namespace Drive
