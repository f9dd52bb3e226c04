// OperateLogUploadTest.cpp - which tick sends a batch, and what it is enciphered with.
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "collector/Cipher.h"
#include "collector/RequestCheck.h"
#include "drivelog/BiDataBase.h"
#include "model/EventJson.h"
#include "operatelog/BatchCycle.h"
#include "operatelog/OperationEnvelope.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/RecordingStorage.h"

namespace Drive::OperateLog {
namespace {

using Status = OperationEnvelope::Status;

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
  const auto fail = [](const BatchCycle::Batch&) -> bool { throw std::runtime_error("broken"); };
  EXPECT_THROW(cycle.PushDbLogs(fail), std::runtime_error);
  EXPECT_TRUE(cycle.IsComplete());
  EXPECT_EQ(Ticks(cycle, 2), "1:5");
  EXPECT_TRUE(log.Has({1, 103, "location", "size:5"}));
  EXPECT_TRUE(storage.Rows(true).empty());
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

// One request in nine has a zero byte in its key or vector, where a C string would end.
TEST(OperationEnvelopeTest, IsReadByTheCollectorEveryTimeAndSaysWhenItDoesNotFit) {
  const auto key = Collection::RsaKey::Generate();
  Header header;
  header.SetRequestId(L"id");
  header.SetTimestamp(L"1700000000123");
  std::vector<Bilog::UserLog> records(1);
  const auto make = [&] {
    return MakeOperationEnvelope(header, MakeEventPayload(records), key.PublicKeyHex());
  };
  for (int i = 0; i < 100; ++i) {
    const auto request =
        Collection::CheckOperationBody("id", make().body, Collection::DeflateRule::kAsZlibMakes, key);
    ASSERT_EQ(request.records.size(), 1u);
  }
  const auto statusOf = [&](std::size_t size) {  // of text that compresses to three quarters
    Bytes bytes(size * 3 / 4);
    EncryptHelper::GetSecureRandom(bytes.data(), bytes.size());
    const std::string text = EncryptHelper::Base64Encode(bytes.data(), bytes.size(), true);
    records[0].set_Action(std::wstring(text.begin(), text.end()));
    return make().status;
  };
  EXPECT_EQ(statusOf(300000), Status::kTooLarge) << "the payload's compression";
  EXPECT_EQ(statusOf(255000), Status::kTooLarge) << "the request's";
  EXPECT_EQ(statusOf(200000), Status::kMade);
}

}  // namespace
}  // namespace Drive::OperateLog
