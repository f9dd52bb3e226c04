// OperateLogUbaJsonTest.cpp - the events of a UBA request.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "client/common/EncryptHelper.h"
#include "client/common/SharedGlobals.h"
#include "operatelog/UbaEventJson.h"
#include "tests/support/CapturedLog.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {
namespace {

// The first record that this process converts has this one, whatever test comes first.
constexpr const wchar_t* kFirstDevice = L"device-1";

Bilog::UserLog Record() {
  Bilog::UserLog record;
  record.set_Id(7);
  record.set_DevId(kFirstDevice);
  record.set_Action(L"Drive.action.newFile");
  return record;
}

TEST(UbaEventJsonTest, SendsEveryFieldAndTheCountry) {
  g_countryCode = "CN";
  int sequence = 0;
  const Json::Value events = MakeEventsJsonObject({Record()}, sequence);
  EXPECT_EQ(events[0].getMemberNames(), (std::vector<std::string>{"e", "q", "t", "v", "x"}));
  EXPECT_EQ(events[0]["e"], "PCE");
  EXPECT_EQ(events[0]["v"], 1);
  const Json::Value record = events[0]["x"];
  EXPECT_EQ(record.getMemberNames(),
            (std::vector<std::string>{
                "Action",  "Actiontype", "Appversion", "Code",         "CountryCode",      "CurModule",
                "DevId",   "Extend",     "Id",         "Info",         "IsMaintenanceLog", "Logversion",
                "Model",   "NextModule", "OprType",    "Reqsize",      "ResidenceTime",    "Romversion",
                "Rspsize", "StartTime",  "Time",       "TraceEndFlag", "TraceId",          "UseTime",
                "UserId"}));
  EXPECT_EQ(record["CountryCode"], "CN");
  EXPECT_EQ(record["Id"], 7);
}

TEST(UbaEventJsonTest, SendsTheHashOfTheFirstDeviceForEveryRecord) {
  Bilog::UserLog other = Record();
  other.set_DevId(L"device-2");
  EXPECT_EQ(MakeUbaRecordJson(Record())["DevId"], EncryptHelper::SHA256_Encode("device-1"));
  EXPECT_EQ(MakeUbaRecordJson(other)["DevId"], EncryptHelper::SHA256_Encode("device-1"));
}

TEST(UbaEventJsonTest, TruncatesTheStartTimeAndClampsIt) {
  const double infinity = std::numeric_limits<double>::infinity();
  constexpr Json::Int64 kMax = std::numeric_limits<Json::Int64>::max();
  constexpr Json::Int64 kMin = std::numeric_limits<Json::Int64>::min();
  const struct {
    double time;
    Json::Int64 t;
    double startTime;
  } kCases[] = {{1709622489045.9, 1709622489045, 1709622489045.9},
                {-1.9, -1, -1.9},
                {1e300, kMax, 1e300},
                {9223372036854775808.0, kMax, 9223372036854775808.0},
                {-1e300, kMin, -1e300},
                {infinity, kMax, 0.0},
                {-infinity, kMin, 0.0},
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

TEST(UbaEventJsonTest, NumbersEventsUpTo999998) {
  int sequence = 999997;
  const Json::Value events = MakeEventsJsonObject({Record(), Record(), Record()}, sequence);
  EXPECT_EQ(events[0]["q"], 999997);
  EXPECT_EQ(events[1]["q"], 999998);
  EXPECT_EQ(events[2]["q"], 0);
  EXPECT_EQ(sequence, 1);
}

TEST(UbaEventJsonTest, ReportsALongRecordAndSendsIt) {
  const Testing::CapturedLog log;
  Bilog::UserLog record = Record();
  const std::size_t length = Bilog::WriteJson(MakeUbaRecordJson(record)).size();
  int sequence = 0;
  record.set_Info(std::wstring(2048 - length, L'i'));
  MakeEventsJsonObject({record}, sequence);
  EXPECT_TRUE(log.OfLevel(2).empty());
  record.set_Info(std::wstring(2049 - length, L'i'));
  EXPECT_EQ(MakeEventsJsonObject({record}, sequence).size(), 1u);
  ASSERT_EQ(log.OfLevel(2).size(), 1u);
  EXPECT_EQ(log.OfLevel(2)[0].text,
            "ubaLog id is :7action is :Drive.action.newFilerequestBody length is :2049");
}

}  // namespace
}  // namespace Drive::OperateLog
