// OperateLogUbaJsonTest.cpp - the events of a UBA request.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace Drive::OperateLog
