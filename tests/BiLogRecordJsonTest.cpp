// BiLogRecordJsonTest.cpp - what becomes of Info, Extend and numbers of a BI record, hostile ones included.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "bilog/BiRecordJson.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {
namespace {

struct InfoCase {
  const char* name;
  std::string info;
  std::string expected;  // the members that Info became, as compact JSON; "=" for Info unchanged
};

class InfoRuleTest : public testing::TestWithParam<InfoCase> {};

TEST_P(InfoRuleTest, SendsInfoOrTheMembersOfResultInfo) {
  UserLog record;
  record.set_Info(TypeConvert::UTF8ToUnicode(GetParam().info));
  const Json::Value object = MakeBiRecordJson(record);
  Json::Value got(Json::objectValue);
  for (const char* key : {"Info", "file_id", "file_size", "thumbnail_type"}) {
    if (object.isMember(key)) {
      got[key] = object[key];
    }
  }
  if (GetParam().expected == "=") {
    Json::Value unchanged(Json::objectValue);
    unchanged["Info"] = GetParam().info;
    EXPECT_EQ(got, unchanged);
  } else {
    EXPECT_EQ(WriteJson(got), GetParam().expected);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rule, InfoRuleTest,
    testing::Values(
        InfoCase{"Text", "uploaded 3 files", "="}, InfoCase{"Empty", "", "="},
        InfoCase{"AllThree", R"({"ResultInfo":{"file_id":"a","file_size":12,"thumbnail_type":3}})",
                 R"({"file_id":"a","file_size":12,"thumbnail_type":3})"},
        InfoCase{"TwoOfThree", R"({"ResultInfo":{"file_id":"a","file_size":12}})",
                 R"({"file_id":"a","file_size":12})"},
        InfoCase{"NoneOfThree", R"({"ResultInfo":{}})", "{}"},
        InfoCase{"SixtyFourBits", R"({"ResultInfo":{"file_size":9007199254740993}})",
                 R"({"file_size":9007199254740993})"},
        InfoCase{"TooLargeIsClamped",
                 R"({"ResultInfo":{"file_size":18446744073709551615,"thumbnail_type":3000000000}})",
                 R"({"file_size":9223372036854775807,"thumbnail_type":2147483647})"},
        InfoCase{"TooSmallIsClamped", R"({"ResultInfo":{"file_size":-1e300,"thumbnail_type":-3e9}})",
                 R"({"file_size":-9223372036854775808,"thumbnail_type":-2147483648})"},
        InfoCase{"WrongTypesAreAbsent",
                 R"({"ResultInfo":{"file_id":7,"file_size":"12","thumbnail_type":true}})", "{}"},
        InfoCase{"NullsAreAbsent", R"({"ResultInfo":{"file_id":null,"file_size":[],"thumbnail_type":{}}})",
                 "{}"},
        InfoCase{"ResultInfoIsNoObject", R"({"ResultInfo":[1]})", "="},
        InfoCase{"RootIsAnArray", R"([{"ResultInfo":{}}])", "="},
        InfoCase{"RootIsAScalar", R"("ResultInfo")", "="},
        InfoCase{"TrailingText", R"({"ResultInfo":{"file_id":"a"}} x)", "="},
        InfoCase{"Comment", R"({"ResultInfo":{"file_id":"a"}/* c */})", "="},
        InfoCase{"Deep", std::string(10000, '[') + std::string(10000, ']'), "="},
        InfoCase{"DeepBehindResultInfo",
                 R"({"ResultInfo":{"file_id":)" + std::string(10000, '[') + std::string(10000, ']') + "}}",
                 "="},
        InfoCase{"Megabyte", std::string(1024 * 1024, 'x'), "="}),
    [](const auto& row) { return row.param.name; });

TEST(BiRecordJsonTest, ReplacesLoneSurrogatesAndKeepsTheRest) {
  UserLog record;
  record.set_Info(std::wstring(L"a") + static_cast<wchar_t>(0xD800) + L"b");
  record.set_Action(std::wstring(1, static_cast<wchar_t>(0xDC00)));
  const Json::Value object = MakeBiRecordJson(record);
  EXPECT_EQ(object["Info"].asString(),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(object["Action"].asString(), "\xEF\xBF\xBD");
}

TEST(BiRecordJsonTest, SendsNumbersThatJsonCannotExpressAsZero) {
  for (const double value :
       {std::nan(""), std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
    UserLog record;
    record.set_UseTime(value);
    record.set_StartTime(value);
    const Json::Value object = MakeBiRecordJson(record);
    EXPECT_EQ(object["UseTime"].asDouble(), 0.0);
    EXPECT_EQ(object["StartTime"].asDouble(), 0.0);
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
    const std::string text = row.isObject ? WriteJson(extend) : extend.asString();
    EXPECT_EQ(text.rfind(row.begin, 0), 0u) << text;
    if (row.isObject) {
      EXPECT_EQ(extend["DEVICE_BRAND"].asString(), "brand");
    }
  }
  g_deviceBrandSync = "";
}

TEST(BiRecordJsonTest, SendsSeventeenMembersAndNoOthers) {
  const Json::Value object = MakeBiRecordJson(UserLog());
  EXPECT_EQ(object.size(), 17u);
  for (const char* key :
       {"Id", "CurModule", "Actiontype", "NextModule", "ResidenceTime", "OprType", "IsMaintenanceLog"}) {
    EXPECT_FALSE(object.isMember(key)) << key;
  }
}

}  // namespace
}  // namespace Drive::Bilog
