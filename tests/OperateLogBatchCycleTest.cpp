// OperateLogBatchCycleTest.cpp - which tick sends a batch.
#include <gtest/gtest.h>

#include <stdexcept>

#include "drivelog/BiDataBase.h"
#include "operatelog/BatchCycle.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

constexpr BatchTable kTable = {true, 103, "location", "size:"};

void Store(int count) {
  std::vector<Bilog::UserLog> batch(static_cast<std::size_t>(count));
  Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, kTable.uba);
}

enum class Answer { kAccept, kRefuse };

// Runs so many ticks; the ones that pushed, counted from 1, each with its batch's size: "1:40 6:3".
std::string Ticks(BatchCycle& cycle, int count, Answer answer = Answer::kAccept) {
  std::string pushed;
  for (int tick = 1; tick <= count; ++tick) {
    cycle.PushDbLogs([&](const BatchCycle::Batch& batch) {
      pushed += (pushed.empty() ? "" : " ") + std::to_string(tick) + ":" + std::to_string(batch.size());
      if (answer == Answer::kAccept) {
        cycle.DeleteRows(batch);
      }
      return answer == Answer::kAccept;
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
    EXPECT_TRUE(storage.Rows(true).empty());
    Store(1);
    EXPECT_EQ(Ticks(cycle, 1), "1:1");  // ticks without records were waiting as well
  }
}

TEST(BatchCycleTest, TriesABatchThatFailedAgainWithTheNextTick) {
  const Testing::RecordingStorage storage;
  const Testing::CapturedLog log;
  BatchCycle cycle({60, 100, 300}, kTable);
  Store(5);
  EXPECT_EQ(Ticks(cycle, 3, Answer::kRefuse), "1:5 2:5 3:5");
  EXPECT_EQ(storage.Rows(true).size(), 5u);
  const auto fail = [](const BatchCycle::Batch&) -> bool { throw std::runtime_error("broken"); };
  EXPECT_THROW(cycle.PushDbLogs(fail), std::runtime_error);
  EXPECT_TRUE(cycle.IsComplete());
  EXPECT_EQ(Ticks(cycle, 2), "1:5");
  EXPECT_EQ(log.Count("size:5"), 1u);
  EXPECT_TRUE(storage.Rows(true).empty());
}

}  // namespace
}  // namespace Drive::OperateLog
