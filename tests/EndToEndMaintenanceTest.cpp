// EndToEndMaintenanceTest.cpp - BI events from the queue to the collector, through all that can fail.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "tests/support/ProductFixture.h"

namespace Drive {
namespace {

using std::chrono::milliseconds;

class MaintenanceTest : public Testing::ProductFixture {
 protected:
  static constexpr Channel kChannel = Channel::kMaintenance;

  void Add(int count) {
    for (int i = 0; i < count; ++i) {
      m_manager.AddEvent(16001, L"0", L"event " + std::to_wstring(i), 0.5);
    }
  }
  // Has one more worker store what is queued, and starts the upload timer.
  void Start() {
    m_manager.Start();
    m_clock.WaitForWaiters(++m_workers);
    m_timer.Start();
    m_clock.WaitForWaiters(m_workers + 1);
  }
  void Tick() { m_clock.Advance(milliseconds(5000)); }

  Bilog::BILoggerManager m_manager;
  Bilog::BILoggerTimer m_timer;
  std::size_t m_workers = 0;
};

TEST_F(MaintenanceTest, DeliversInBatchesAndDeletesWhatWasAccepted) {
  Add(95);
  Start();
  m_clock.Advance(milliseconds(4999));
  EXPECT_EQ(Attempts(kChannel), 0);
  m_clock.Advance(milliseconds(1));
  EXPECT_EQ(Accepted(kChannel), 40) << Refusals();
  EXPECT_EQ(Stored(kChannel), 55u);
  Tick();
  Tick();
  Tick();
  EXPECT_EQ(Attempts(kChannel), 3);
  EXPECT_EQ(Stored(kChannel), 0u);
  const auto records = m_collector.Records(kChannel);
  ASSERT_EQ(records.size(), 95u);
  EXPECT_EQ(records.back().record["Info"].asString(), "event 0");
  EXPECT_EQ(records.front().record["Info"].asString(), "event 94");
}

TEST_F(MaintenanceTest, KeepsRowsUntilAccepted) {
  const auto answer = [this](int status, int count, const std::string& body = "", bool drop = false) {
    return [=] {
      Collection::Fault fault;
      fault.status = status;
      fault.count = count;
      fault.body = body;
      fault.drop = drop;
      m_collector.InjectFault(fault);
    };
  };
  const struct {
    std::function<void()> fail;
    std::int64_t attempts;  // within the tick
    bool delivered;
    const char* message;  // the beginning of a message, and how often it comes
    std::size_t messages;
  } kCases[] = {
      {answer(500, 1), 2, true, "PushLog Fail, url:", 1},
      {answer(500, 3), 3, false, "PushLog Fail, url:", 3},
      {answer(400, 3, "no"), 3, false, "PushLog Fail, url:", 3},
      {answer(400, 3, R"({"error":"interface auth failed"})"), 1, false, "update at", 1},
      {answer(302, 3), 3, false, "PushLog Fail, url:", 3},
      {answer(0, 3, "", true), 3, false, "PushLogToServer Fail result:", 3},
      {answer(0, 1, "", true), 2, true, "PushLogToServer Fail result:", 1},
      {[this] { m_collector.Stop(); }, 0, false, "PushLogToServer Fail result:7", 3},
      {[] { g_isOffLine = true; }, 0, false, "Not net or at disable", 1},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(&each - kCases);
    m_collector.Reset();
    m_log.Clear();
    Add(2);
    Start();
    each.fail();
    Tick();
    EXPECT_EQ(Attempts(kChannel), each.attempts);
    EXPECT_EQ(Stored(kChannel), each.delivered ? 0u : 2u);
    EXPECT_EQ(CountBeginning(each.message), each.messages);
    EXPECT_EQ(CountBeginning("PushLog Success,url:"), each.delivered ? 1u : 0u);
    g_isOffLine = false;
    m_collector.ClearFaults();
    m_collector.Start();
    Tick();
    EXPECT_EQ(Accepted(kChannel), 2) << Refusals();
    m_timer.Stop();
  }
}

TEST_F(MaintenanceTest, SplitsABatchThatIsTooLargeAndDropsARecordThatIs) {
  // Hardly compressible texts: one of 120 000 characters fits a request, two do not, one of 400 000 does not.
  const auto noise = [](std::size_t length) {
    std::mt19937 draw(7);
    std::wstring text(length, L'0');
    for (wchar_t& c : text) {
      c = static_cast<wchar_t>(L'0' + draw() % 75);
    }
    return text;
  };
  for (const std::size_t length : {120000, 400000, 120000, 5}) {
    m_manager.AddEvent(1, L"0", noise(length), 1.0);
  }
  Start();
  Tick();
  EXPECT_EQ(Accepted(kChannel), 3) << Refusals();
  EXPECT_EQ(Stored(kChannel), 0u);
  EXPECT_EQ(CountBeginning("record too large for any request, deleted, Id:2"), 1u);
}

}  // namespace
}  // namespace Drive
