// OperateLogUploadTest.cpp - which tick sends a batch, and what it is enciphered with.
#include <gtest/gtest.h>

#include <set>

#include "drivelog/BiDataBase.h"
#include "operatelog/BatchCycle.h"
#include "operatelog/OperationEnvelope.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

constexpr BatchTable kTable = {true, 103, "location", "size:"};

void Store(int count) {
  std::vector<Bilog::UserLog> batch(static_cast<std::size_t>(count));
  Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, kTable.uba);
}

// Runs so many ticks; the ones that pushed, counted from 1, each with its batch's size: "1:40 6:3".
std::string Ticks(BatchCycle& cycle, int count) {
  std::string pushed;
  for (int tick = 1; tick <= count; ++tick) {
    cycle.PushDbLogs([&](const BatchCycle::Batch& batch) {
      pushed += (pushed.empty() ? "" : " ") + std::to_string(tick) + ":" + std::to_string(batch.size());
      cycle.DeleteRows(batch);
      return true;
    });
  }
  return pushed;
}

TEST(BatchCycleTest, HoldsAPartialBatchBackForTheMaximumWait) {
  const struct {
    BatchSettings settings;
    std::string later;  // pushes after the one that sent what there was at the start
  } kCases[] = {
      {{60, 100, 300}, "5:30"},  // held back at 60, 120, 180 and 240 seconds
      {{90, 100, 300}, "4:30"},     {{300, 100, 300}, "1:30"},
      {{10, 100, 300}, "30:30"},    {{60, 30, 300}, "1:30"},  // a full batch
      {{60, 20, 300}, "1:20 6:10"}, {{2000000000, 100, 2000000001}, "2:30"},
  };
  for (const auto& each : kCases) {
    const Testing::RecordingStorage storage;
    BatchCycle cycle(each.settings, kTable);
    Store(7);
    EXPECT_EQ(Ticks(cycle, 1), "1:7");
    Store(30);
    EXPECT_EQ(Ticks(cycle, 70), each.later) << each.settings.period;
    Store(1);
    EXPECT_EQ(Ticks(cycle, 1), "1:1");  // ticks without records were waiting as well
  }
}

TEST(OperationEnvelopeTest, NeverRepeatsAKeyOrVector) {
  constexpr std::size_t kRequests = 10000;
  std::set<Bytes> drawn;
  for (std::size_t i = 0; i < kRequests; ++i) {
    const auto secret = DrawAesSecret();
    ASSERT_TRUE(secret && secret->key.size() == 16 && secret->iv.size() == 16);
    drawn.insert({secret->key, secret->iv});
  }
  EXPECT_EQ(drawn.size(), 2 * kRequests);
}

}  // namespace
}  // namespace Drive::OperateLog
