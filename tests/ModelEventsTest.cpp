// ModelEventsTest.cpp - the objects of an operation-log request.
#include <gtest/gtest.h>

#include <algorithm>

#include "client/common/GlobalValue.h"
#include "client/log/TypeConvert.h"
#include "model/EventJson.h"
#include "tests/support/ManualClock.h"

namespace Drive {
namespace {

using Members = std::vector<std::string>;

TEST(EventJsonTest, HeaderSaysWhoAsksAndWhen) {
  Header header;
  header.SetRequestId(L"id-\u00e9");
  header.SetTimestamp(L"1700000000123");
  const Json::Value object = MakeHeaderJson(Header(header), "enciphered");
  EXPECT_EQ(object.getMemberNames(), (Members{"appid", "chifer", "compress_mode", "hmac", "protocol_version",
                                              "requestid", "serviceid", "servicetag", "timestamp"}));
  EXPECT_EQ(object["requestid"].asString(), "id-\xc3\xa9");
  EXPECT_EQ(object["timestamp"], "1700000000123");
  EXPECT_EQ(object["chifer"], "enciphered");
  EXPECT_EQ(object["serviceid"], "qmvzooperqrt");
  EXPECT_EQ(object["appid"], TypeConvert::UnicodeToUTF8(GlobalValue::GetInstatnce().GetPackageName()));
}

TEST(EventJsonTest, CommonBlockHoldsEachIdentifierAndTheDeviceAsAnObject) {
  Events_common common;
  common.set_Androidid(L"androidid");
  common.set_Imei(L"imei");
  common.set_Uuid(L"uuid");
  common.set_Udid(L"udid");
  common.set_Oaid(L"oaid");
  common.set_Upid(L"upid");
  common.set_Sn(L"sn");
  common.set_Properties(L"not sent");
  common.set_Events_global_properties(L"events_global_properties");
  Json::Value object =
      MakeEventsCommonJson(Events_common(common), MakeDevicePropertiesJson(EventCommonProperties()));
  Json::Value device;
  ASSERT_TRUE(object.removeMember("properties", &device));
  EXPECT_EQ(object.size(), 8u);
  for (const std::string& key : object.getMemberNames()) {
    EXPECT_EQ(object[key], key);
  }
  EXPECT_EQ(device.getMemberNames(), (Members{"_app_ver", "_channel", "_lib_name", "_lib_ver", "_mcc", "_mnc",
                                              "_model", "_oaid_tracking_flag", "_package_name", "_rom_ver",
                                              "_zelo_ver", "events_global_properties"}));
  EXPECT_TRUE(device["_oaid_tracking_flag"].isBool());
  EXPECT_EQ(device["_rom_ver"], TypeConvert::UnicodeToUTF8(EventCommonProperties().get_Rom_ver()));
}

TEST(EventJsonTest, EventsSayTheActionAndTheTimeOfTheRequest) {
  const Testing::ManualClock clock;
  std::vector<Bilog::UserLog> records(3);
  records[0].set_Action(L"first");
  records[1].set_Action(L"second");
  records[2].set_Action(L"third");
  records[2].set_Time(L"2001-01-01 00:00:00.000");
  records[2].set_Extend(L"not sent");
  const Json::Value events = MakeEventPayload(records)["events"];
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[0]["event"], "first");
  EXPECT_EQ(events[1]["event"], "second");
  EXPECT_EQ(events[2]["event"], "third");
  EXPECT_EQ(events[2].getMemberNames(),
            (Members{"event", "event_session_name", "eventtime", "first_session_event", "type"}));
  EXPECT_EQ(events[2]["eventtime"], Json::Value(static_cast<double>(clock.NowMilliseconds())));
  EXPECT_TRUE(events[2]["first_session_event"].isBool());
}

}  // namespace
}  // namespace Drive
