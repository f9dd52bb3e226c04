// OperateLogBatchCycleTest.cpp - which tick sends a batch.
#include <gtest/gtest.h>

#include <stdexcept>

#include "drivelog/BiDataBase.h"
#include "operatelog/BatchCycle.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

class BatchCycleTest : public testing::Test {
 protected:
  static void Store(int count, bool uba = false) {
    std::vector<Bilog::UserLog> batch(static_cast<std::size_t>(count));
    Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, uba);
  }

  // Runs so many ticks; the ones that pushed, counted from 1, each with the batch's size: "1:40 6:3".
  std::string Ticks(BatchCycle& cycle, int count, bool accepted = true) {
    std::string pushed;
    for (int tick = 1; tick <= count; ++tick) {
      cycle.PushDbLogs([&](const BatchCycle::Batch& batch) {
        EXPECT_FALSE(cycle.IsComplete());
        pushed += (pushed.empty() ? "" : " ") + std::to_string(tick) + ":" + std::to_string(batch.size());
        if (accepted) {
          cycle.DeleteRows(batch);
        }
        return accepted;
      });
      EXPECT_TRUE(cycle.IsComplete());
    }
    return pushed;
  }

  Testing::CapturedLog m_log;
  Testing::RecordingStorage m_storage;
};

TEST_F(BatchCycleTest, HoldsAPartialBatchBackForTheMaximumWait) {
  const struct {
    BatchSettings settings;
    std::string later;  // ticks after the first delivery
  } kCases[] = {
      {{60, 100, 300}, "5:30"},  // held at 60, 120, 180 and 240 seconds, sent at 300
      {{90, 100, 300}, "4:30"},  // 90, 180, 270
      {{300, 100, 300}, "1:30"},
      {{10, 100, 300}, "30:30"},
      {{60, 30, 300}, "1:30"},       // a full batch
      {{60, 20, 300}, "1:20 6:10"},  // a full one, then the rest
      {{2000000000, 100, 2000000001}, "2:30"},
  };
  for (const auto& each : kCases) {
    Testing::RecordingStorage storage;
    BatchCycle cycle(each.settings, {false, 1, "location", "text"});
    Store(7);
    EXPECT_EQ(Ticks(cycle, 1), "1:7");  // the first tick sends whatever there is
    Store(30);
    EXPECT_EQ(Ticks(cycle, 40), each.later) << each.settings.period;
    EXPECT_TRUE(storage.Rows(false).empty());
  }
}

TEST_F(BatchCycleTest, TriesAFailedBatchAgainWithTheNextTick) {
  BatchCycle cycle({60, 100, 300}, {true, 1, "location", "text"});
  Store(5, true);
  EXPECT_EQ(Ticks(cycle, 3, false), "1:5 2:5 3:5");
  EXPECT_EQ(m_storage.Rows(true).size(), 5u);
  EXPECT_EQ(Ticks(cycle, 1), "1:5");
  EXPECT_TRUE(m_storage.Rows(true).empty());
}

TEST_F(BatchCycleTest, CountsTicksWithoutRecordsAsWaiting) {
  BatchCycle cycle({60, 100, 300}, {false, 1, "location", "text"});
  Store(5);
  Ticks(cycle, 1);
  EXPECT_EQ(Ticks(cycle, 10), "");
  Store(5);
  EXPECT_EQ(Ticks(cycle, 1), "1:5");
}

TEST_F(BatchCycleTest, GoesOnWithTheBatchThatAnExceptionLeftBehind) {
  BatchCycle cycle({60, 100, 300}, {false, 103, "location", "size:"});
  Store(5);
  EXPECT_THROW(cycle.PushDbLogs([](const BatchCycle::Batch&) -> bool { throw std::runtime_error("broken"); }),
               std::runtime_error);
  EXPECT_TRUE(cycle.IsComplete());
  EXPECT_EQ(Ticks(cycle, 2), "1:5");
  EXPECT_EQ(m_log.Count("size:5"), 1u);
}

}  // namespace
}  // namespace Drive::OperateLog
