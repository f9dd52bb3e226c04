// OperateLogUbaJsonTest.cpp - the events of a UBA request.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "client/common/EncryptHelper.h"
#include "operatelog/UbaEventJson.h"
#include "tests/support/CapturedLog.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {
namespace {

Bilog::UserLog Record() {
  Bilog::UserLog record;
  record.set_Id(7);
  record.set_DevId(L"device-1");
  record.set_Action(L"Drive.action.newFile");
  return record;
}

TEST(UbaEventJsonTest, NumbersEventsAndSendsTheHashOfTheFirstDevice) {
  Bilog::UserLog other = Record();
  other.set_DevId(L"device-2");
  int sequence = 999998;
  const Json::Value events = MakeEventsJsonObject({Record(), other}, sequence);
  EXPECT_EQ(events[0]["q"], 999998);
  EXPECT_EQ(events[1]["q"], 0);
  EXPECT_EQ(sequence, 1);
  EXPECT_EQ(events[1]["x"]["DevId"], events[0]["x"]["DevId"]) << "that of the first record of the process";
  EXPECT_NE(events[1]["x"]["DevId"], EncryptHelper::SHA256_Encode("device-2"));
}

TEST(UbaEventJsonTest, TruncatesTheStartTimeAndClampsIt) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  using Limits = std::numeric_limits<Json::Int64>;
  const struct {
    double time;
    Json::Int64 t;
    double startTime;
  } kCases[] = {{1709622489045.9, 1709622489045, 1709622489045.9},
                {-1.9, -1, -1.9},
                {9223372036854775808.0, Limits::max(), 9223372036854775808.0},
                {-1e300, Limits::min(), -1e300},
                {kInfinity, Limits::max(), 0.0},
                {std::nan(""), 0, 0.0}};
  for (const auto& each : kCases) {
    Bilog::UserLog record = Record();
    record.set_StartTime(each.time);
    record.set_UseTime(each.time);
    int sequence = 0;
    const Json::Value event = MakeEventsJsonObject({record}, sequence)[0];
    EXPECT_EQ(event["t"].asInt64(), each.t) << each.time;
    EXPECT_EQ(event["x"]["StartTime"].asDouble(), each.startTime) << each.time;
    EXPECT_EQ(event["x"]["UseTime"].asDouble(), each.startTime) << each.time;
  }
}

TEST(UbaEventJsonTest, ReportsARecordOfMoreThan2048BytesAndSendsIt) {
  const Testing::CapturedLog log;
  Bilog::UserLog record = Record();
  const std::size_t length = Bilog::WriteJson(MakeUbaRecordJson(record)).size();
  int sequence = 0;
  record.set_Info(std::wstring(2048 - length, L'i'));
  MakeEventsJsonObject({record}, sequence);
  EXPECT_TRUE(log.All().empty());
  record.set_Info(std::wstring(2049 - length, L'i'));
  EXPECT_EQ(MakeEventsJsonObject({record}, sequence).size(), 1u);
  EXPECT_EQ(log.Count("ubaLog id is :7action is :Drive.action.newFilerequestBody length is :2049"), 1u);
}

}  // namespace
}  // namespace Drive::OperateLog
