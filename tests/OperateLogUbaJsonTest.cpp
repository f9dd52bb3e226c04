// OperateLogUbaJsonTest.cpp - the events of a UBA request.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "operatelog/UbaEventJson.h"

namespace Drive::OperateLog {
namespace {

TEST(UbaEventJsonTest, NumbersEventsAndSendsTheHashOfTheFirstDevice) {
  std::vector<Bilog::UserLog> records(2);
  records[0].set_DevId(L"device-1");
  records[1].set_DevId(L"device-2");
  int sequence = 999998;
  const Json::Value events = MakeEventsJsonObject(records, sequence);
  EXPECT_EQ(events[0]["q"], 999998);
  EXPECT_EQ(events[1]["q"], 0);
  EXPECT_EQ(sequence, 1);
  EXPECT_EQ(events[1]["x"]["DevId"], events[0]["x"]["DevId"]) << "that of the first record of the process";
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
                {kInfinity, 0, 0.0},
                {std::nan(""), 0, 0.0}};
  for (const auto& each : kCases) {
    Bilog::UserLog record;
    record.set_StartTime(each.time);
    record.set_UseTime(each.time);
    int sequence = 0;
    const Json::Value event = MakeEventsJsonObject({record}, sequence)[0];
    EXPECT_EQ(event["t"].asInt64(), each.t) << each.time;
    EXPECT_EQ(event["x"]["StartTime"].asDouble(), each.startTime) << each.time;
    EXPECT_EQ(event["x"]["UseTime"].asDouble(), each.startTime) << each.time;
  }
}

}  // namespace
}  // namespace Drive::OperateLog
