// TransportEncodingTest.cpp - bodies, identifiers and JSON text.
#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "client/common/SharedGlobals.h"
#include "collector/Decoding.h"
#include "tests/support/ManualClock.h"
#include "transport/BodyEncoding.h"
#include "transport/Identifiers.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {
namespace {

constexpr auto kRule = Collection::DeflateRule::kAsZlibMakes;

std::string RandomText(std::size_t size) {
  std::mt19937 generator(1);
  std::string text(size, '\0');
  for (char& c : text) c = static_cast<char>(generator());
  return text;
}

TEST(BodyEncodingTest, MakesZlibBodiesUpToTheLimitExactly) {
  // Random bytes grow by a header, a few bytes a block and a checksum: find the text that makes 200000.
  std::string text = RandomText(kMaxZlibBytes);
  std::vector<unsigned char> any(2 * kMaxZlibBytes);
  uLongf size = 0;
  do {
    text.pop_back();
    size = static_cast<uLongf>(any.size());
    compress(any.data(), &size, reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()));
  } while (size > kMaxZlibBytes);
  ASSERT_EQ(size, kMaxZlibBytes);
  const auto body = ZlibCompress(text);
  EXPECT_TRUE(Collection::InflateZlib({body.begin(), body.end()}, kRule) == text);
  EXPECT_TRUE(ZlibCompress(text + "x").empty());
  EXPECT_TRUE(ZlibCompress("").empty());
}

TEST(IdentifiersTest, StampTheTime) {
  const Testing::ManualClock clock;
  g_deviceId = L"A1é";
  EXPECT_EQ(MakeRequestId(), "A1\xC3\xA9" + GetLocalTimeString());
  EXPECT_EQ(GetLocalTimeString(), "20240305070809045");
  EXPECT_EQ(MakeRecordTime(), L"2024-03-05 07:08:09.045");
  g_deviceId = std::wstring();

  const std::wstring id = MakeRandomLogId(-7);
  EXPECT_EQ(id.substr(0, 20), L"-7_11_1709622489045_");
  EXPECT_EQ(id.find_first_not_of(L"0123456789", 20), std::wstring::npos);
  EXPECT_EQ(id.size(), 28u);
  EXPECT_NE(id[20], L'0');
  EXPECT_NE(MakeRandomLogId(-7), id);
}

TEST(IdentifiersTest, ResultCodesAreShortOnesPadded) {
  for (const auto& [code, text] : {std::pair<std::wstring, std::wstring>{L"", L"004_00000"},
                                   {L"-1", L"004_000-1"},
                                   {L"004", L"004_00004"},
                                   {L"1234", L"004_01234"},
                                   {L"12345", L"12345"},
                                   {L"004_", L"004_"},
                                   {L"004_00012", L"004_00012"}}) {
    EXPECT_EQ(MakeResultCode(code), text);
  }
}

TEST(JsonTextTest, TakesObjectsOnly) {
  const std::string longText = R"({"a":")" + std::string(1024 * 1024, 'x') + "\"}";
  const std::pair<std::string, std::string> accepted[] = {
      {" {\"b\" : 1 ,\n \"a\":[1.5,null]} ", R"({"a":[1.5,null],"b":1})"},
      {R"({"a":1,"a":2})", R"({"a":2})"},
      {R"({"a\\":"\"//"})", R"({"a\\":"\"//"})"},
      {R"({"a":"\ud83d\ude00 \udc00"})", R"({"a":"\ud83d\ude00 \ufffd"})"},
      {"{\"a\":\"\xFF\"}", R"({"a":"\ufffd"})"},
      {R"({"a":9223372036854775807})", R"({"a":9223372036854775807})"},
      {R"({"a\u0000":["\u0000\n",[],{},true,-2.5,0.1,18446744073709551615]})",
       R"({"a\u0000":["\u0000\n",[],{},true,-2.5,0.10000000000000001,18446744073709551615]})"},
      {longText, longText},
  };
  for (const auto& [text, written] : accepted) {
    const auto value = ParseJsonObject(text);
    ASSERT_TRUE(value.has_value()) << text;
    EXPECT_EQ(WriteJson(*value), written);
  }
  for (const char* text :
       {"", "{", "[]", "1", "null", "\"a\"", "{} x", "{}{}", "{/**/}", "{\"a\":[1/**/]}", "{} // c",
        "{'a':1}", "{\"a\":}", "{\"a\":1,}", "{\"a\":1e999}", "{\"a\":NaN}", "{\"a\":\"\\ud800\"}"}) {
    EXPECT_FALSE(ParseJsonObject(text).has_value()) << text;
  }
  const auto nested = [](std::size_t levels) {
    return R"({"a":)" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
  };
  EXPECT_TRUE(ParseJsonObject(nested(200)).has_value());
  EXPECT_FALSE(ParseJsonObject(nested(201)).has_value());
  EXPECT_FALSE(ParseJsonObject(nested(1000000)).has_value());
}

}  // namespace
}  // namespace Drive::Bilog
