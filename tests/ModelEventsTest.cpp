// ModelEventsTest.cpp - the objects of an operation-log request.
#include <gtest/gtest.h>

#include "model/EventJson.h"
#include "tests/support/ManualClock.h"

namespace Drive {
namespace {

// The names of an object's members, which JSON keeps in order.
std::string Names(const Json::Value& object) {
  std::string names;
  for (const std::string& name : object.getMemberNames()) {
    names += (names.empty() ? "" : " ") + name;
  }
  return names;
}

TEST(EventJsonTest, HeaderSaysWhoAsksAndWhen) {
  Header header;
  header.SetRequestId(L"id-\u00e9");
  header.SetTimestamp(L"1700000000123");
  const Json::Value object = MakeHeaderJson(header, "enciphered");
  EXPECT_EQ(Names(object),
            "appid chifer compress_mode hmac protocol_version requestid serviceid servicetag timestamp");
  EXPECT_EQ(object["requestid"], "id-\xc3\xa9");
  EXPECT_EQ(object["timestamp"], "1700000000123");
  EXPECT_EQ(object["chifer"], "enciphered");
  EXPECT_EQ(object["serviceid"], "qmvzooperqrt");
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
  common.set_Events_global_properties(L"events_global_properties");
  Json::Value object = MakeEventsCommonJson(common, MakeDevicePropertiesJson(EventCommonProperties()));
  Json::Value device;
  ASSERT_TRUE(object.removeMember("properties", &device));
  EXPECT_EQ(Names(object), "androidid events_global_properties imei oaid sn udid upid uuid");
  for (const std::string& name : object.getMemberNames()) {
    EXPECT_EQ(object[name], name);
  }
  EXPECT_EQ(
      Names(device),
      "_app_ver _channel _lib_name _lib_ver _mcc _mnc _model _oaid_tracking_flag _package_name _rom_ver "
      "_zelo_ver events_global_properties");
  EXPECT_TRUE(device["_oaid_tracking_flag"].isBool());
}

TEST(EventJsonTest, EventsSayTheActionAndTheTimeOfTheRequest) {
  const Testing::ManualClock clock;
  std::vector<Bilog::UserLog> records(2);
  records[0].set_Action(L"first");
  records[1].set_Action(L"second");
  const Json::Value events = MakeEventPayload(records)["events"];
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0]["event"], "first");
  EXPECT_EQ(events[1]["event"], "second");
  EXPECT_EQ(Names(events[1]), "event event_session_name eventtime first_session_event type");
  EXPECT_EQ(events[1]["eventtime"], Json::Value(static_cast<double>(clock.NowMilliseconds())));
  EXPECT_TRUE(events[1]["first_session_event"].isBool());
}

}  // namespace
}  // namespace Drive
