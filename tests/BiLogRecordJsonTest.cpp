// BiLogRecordJsonTest.cpp - what becomes of the Info and Extend texts of a BI record.
#include <gtest/gtest.h>

#include <string>

#include "bilog/BiRecordJson.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {
namespace {

TEST(BiRecordJsonTest, SendsInfoOrTheMembersOfResultInfo) {
  const struct {
    std::string info;
    std::string expected;  // the members that Info became, as compact JSON; "=" for Info unchanged
  } kCases[] = {
      {"uploaded 3 files", "="},
      {"", "="},
      {R"({"ResultInfo":{"file_id":"a","file_size":12,"thumbnail_type":3}})",
       R"({"file_id":"a","file_size":12,"thumbnail_type":3})"},
      {R"({"ResultInfo":{"file_id":"a","file_size":12}})", R"({"file_id":"a","file_size":12})"},
      {R"({"ResultInfo":{}})", "{}"},
      {R"({"ResultInfo":{"file_size":9007199254740993}})", R"({"file_size":9007199254740993})"},
      {R"({"ResultInfo":{"file_size":18446744073709551615,"thumbnail_type":3000000000}})",
       R"({"file_size":9223372036854775807,"thumbnail_type":2147483647})"},
      {R"({"ResultInfo":{"file_size":-1e300,"thumbnail_type":-3e9}})",
       R"({"file_size":-9223372036854775808,"thumbnail_type":-2147483648})"},
      {R"({"ResultInfo":{"file_id":7,"file_size":"12","thumbnail_type":true}})", "{}"},
      {R"({"ResultInfo":{"file_id":null,"file_size":[],"thumbnail_type":{}}})", "{}"},
      {R"({"ResultInfo":[1]})", "="},
      {R"([{"ResultInfo":{}}])", "="},
      {R"("ResultInfo")", "="},
  };
  for (const auto& each : kCases) {
    UserLog record;
    record.set_Info(TypeConvert::UTF8ToUnicode(each.info));
    const Json::Value object = MakeBiRecordJson(record);
    Json::Value got(Json::objectValue);
    for (const char* key : {"Info", "file_id", "file_size", "thumbnail_type"}) {
      if (object.isMember(key)) {
        got[key] = object[key];
      }
    }
    if (each.expected == "=") {
      EXPECT_TRUE(got.size() == 1 && got["Info"] == each.info) << each.info;
    } else {
      EXPECT_EQ(WriteJson(got), each.expected);
    }
  }
}

TEST(BiRecordJsonTest, SendsExtendAsObjectOrAsTextWithTheBrand) {
  g_deviceBrandSync = "brand";
  struct {
    const wchar_t* extend;
    bool isObject;
    const char* begin;  // of the text, or of the written object
  } const cases[] = {
      {LR"({"a":"1"})", true, R"({"ACCOUNT_BRAND_ID":"","APP_BRAND_ID":"","COUNTRY_CODE":"",)"},
      {LR"({"DEVICE_BRAND":"old"})", true, R"({"ACCOUNT_BRAND_ID":"",)"},
      {L"a:b", false, "a:b;DEVICE_BRAND:brand;APP_BRAND_ID:"},
      {L"", false, ";DEVICE_BRAND:brand;"},
      {L"[1]", false, "[1];DEVICE_BRAND:brand;"},
      {L"x;DEVICE_BRAND:other", false, "x;DEVICE_BRAND:other"},
      {LR"(["DEVICE_BRAND"])", false, R"(["DEVICE_BRAND"])"},
  };
  for (const auto& row : cases) {
    UserLog record;
    record.set_Extend(row.extend);
    const Json::Value extend = MakeBiRecordJson(record)["Extend"];
    ASSERT_EQ(extend.isObject(), row.isObject) << row.begin;
    EXPECT_EQ((row.isObject ? WriteJson(extend) : extend.asString()).rfind(row.begin, 0), 0u) << row.begin;
    EXPECT_TRUE(!row.isObject || extend["DEVICE_BRAND"] == "brand") << row.begin;
  }
  g_deviceBrandSync = "";
}

}  // namespace
}  // namespace Drive::Bilog
