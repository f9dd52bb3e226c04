// TransportEncodingTest.cpp - bodies, identifiers, JSON text, and batches that do not fit.
#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <set>
#include <thread>

#include "client/common/SharedGlobals.h"
#include "transport/BodyEncoding.h"
#include "transport/FittingParts.h"
#include "transport/Identifiers.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {
namespace {

class FixedClock : public Platform::Clock {
 public:
  FixedClock() { Platform::InstallClock(this); }
  ~FixedClock() override { Platform::InstallClock(nullptr); }
  std::int64_t NowMilliseconds() const override { return 1700000000123; }
  Platform::LocalTime NowLocal() const override { return {2025, 1, 2, 9, 5, 3, 7}; }
  bool WaitFor(std::chrono::milliseconds, const Platform::WakeSignal& wake) override {
    return wake.IsRaised();
  }
};

// What any reader of gzip or zlib data makes of it.
std::string Inflated(const void* bytes, std::size_t size) {
  z_stream stream{};
  EXPECT_EQ(inflateInit2(&stream, 15 + 32), Z_OK);
  std::string text(10 * 1024 * 1024, '\0');
  stream.next_in = static_cast<Bytef*>(const_cast<void*>(bytes));
  stream.avail_in = static_cast<uInt>(size);
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  EXPECT_EQ(stream.avail_in, 0u);
  text.resize(stream.total_out);
  inflateEnd(&stream);
  return text;
}

std::string RandomText(std::size_t size) {
  std::mt19937 generator(1);
  std::string text(size, '\0');
  for (char& c : text) {
    c = static_cast<char>(generator());
  }
  return text;
}

TEST(BodyEncodingTest, MakesOneGzipMemberOfAnyLength) {
  for (const std::string& text : {std::string("x"), std::string(5000, 'x'), RandomText(3000000)}) {
    std::string body = "old";
    ASSERT_TRUE(GzipCompress(text, body));
    EXPECT_EQ(body.substr(0, 3), "\x1F\x8B\x08");
    EXPECT_EQ(Inflated(body.data(), body.size()), text);
  }
  std::string untouched = "old";
  EXPECT_FALSE(GzipCompress("", untouched));
  EXPECT_EQ(untouched, "old");
}

TEST(BodyEncodingTest, MakesZlibBodiesUpToTheLimitExactly) {
  // Random bytes grow by a header, a few bytes a block and a checksum: find the text that makes 200000.
  std::string text = RandomText(kMaxZlibBytes);
  uLongf size = 0;
  do {
    text.pop_back();
    std::vector<unsigned char> any(2 * kMaxZlibBytes);
    size = static_cast<uLongf>(any.size());
    ASSERT_EQ(compress(any.data(), &size, reinterpret_cast<const Bytef*>(text.data()),
                       static_cast<uLong>(text.size())),
              Z_OK);
  } while (size > kMaxZlibBytes);
  ASSERT_EQ(size, kMaxZlibBytes);

  const auto body = ZlibCompress(text);
  EXPECT_EQ(Inflated(body.data(), body.size()), text);
  EXPECT_TRUE(ZlibCompress(text + "x").empty());
  EXPECT_TRUE(ZlibCompress("").empty());
}

TEST(BodyEncodingTest, WrapsEventsInTheBiEnvelope) {
  const FixedClock clock;
  Json::Value events(Json::arrayValue);
  events.append(true);

  const auto body = MakeBiEnvelope(L"idé", L"tag", events);
  EXPECT_EQ(Inflated(body.data(), body.size()),
            R"({"event":[true],"header":{"App-Id":"com.talvik.cloud.pc","Request-Id":"id\u00e9",)"
            R"("serviceid":"tag","timestamp":1700000000123}})");
}

TEST(IdentifiersTest, StampsTheLocalTime) {
  const FixedClock clock;
  g_deviceId = L"A1é";
  EXPECT_EQ(GetLocalTimeString(), "20250102090503007");
  EXPECT_EQ(MakeRequestId(),
            "A1\xC3\xA9"
            "20250102090503007");
  EXPECT_EQ(MakeRecordTime(), L"2025-01-02 09:05:03.007");
  g_deviceId = std::wstring();
}

TEST(IdentifiersTest, MakesADifferentLogIdEveryTimeInEveryThread) {
  const FixedClock clock;
  constexpr int kThreads = 4;
  constexpr int kCount = 500;
  std::vector<std::vector<std::wstring>> made(kThreads);
  std::vector<std::thread> threads;
  for (auto& ids : made) {
    threads.emplace_back([&ids] {
      for (int i = 0; i < kCount; ++i) ids.push_back(MakeRandomLogId(-7));
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::set<std::wstring> different;
  for (const auto& ids : made) different.insert(ids.begin(), ids.end());
  // Of 2000 draws out of 90 million, one pair is the same every 45 runs; three pairs never are.
  EXPECT_GT(different.size(), static_cast<std::size_t>(kThreads * kCount - 3));
  const std::wstring start = L"-7_11_1700000000123_";
  for (const std::wstring& id : different) {
    EXPECT_EQ(id.rfind(start, 0), 0u);
    EXPECT_EQ(id.size(), start.size() + 8);
    EXPECT_EQ(id.find_first_not_of(L"0123456789", start.size()), std::wstring::npos);
    EXPECT_NE(id[start.size()], L'0');
  }
}

TEST(IdentifiersTest, PadsCodesAndNumbers) {
  for (const auto& [code, text] : {std::pair<std::wstring, std::wstring>{L"", L"004_00000"},
                                   {L"12", L"004_00012"},
                                   {L"-1", L"004_000-1"},
                                   {L"004", L"004_00004"},
                                   {L"1234", L"004_01234"},
                                   {L"12345", L"12345"},
                                   {L"004_", L"004_"},
                                   {L"004_00012", L"004_00012"}}) {
    EXPECT_EQ(MakeResultCode(code), text);
  }
  EXPECT_EQ(ZeroPadded(7, 3), "007");
  EXPECT_EQ(ZeroPadded(1234, 3), "1234");
  EXPECT_EQ(ZeroPadded(0, 0), "0");
  EXPECT_EQ(ZeroPadded(4294967295u, 11), "04294967295");
}

std::string Nested(std::size_t levels) {
  return std::string(R"({"a":)") + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
}

TEST(JsonTextTest, TakesObjectsOnly) {
  const std::pair<std::string, const char*> accepted[] = {
      {"{}", "{}"},
      {" {\"b\" : 1 ,\n \"a\":[1.5,null]} ", R"({"a":[1.5,null],"b":1})"},
      {R"({"a":1,"a":2})", R"({"a":2})"},
      {R"({"a\\":"\"//"})", R"({"a\\":"\"//"})"},
      {R"({"a":"\ud83d\ude00 \udc00"})", R"({"a":"\ud83d\ude00 \ufffd"})"},
      {"{\"a\":\"\xFF\"}", R"({"a":"\ufffd"})"},
      {R"({"a":9223372036854775807})", R"({"a":9223372036854775807})"},
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
}

TEST(JsonTextTest, EndsAtTheLevelLimitAndTakesLongTexts) {
  EXPECT_TRUE(ParseJsonObject(Nested(200)).has_value());
  EXPECT_FALSE(ParseJsonObject(Nested(201)).has_value());
  EXPECT_FALSE(ParseJsonObject(Nested(1000000)).has_value());
  EXPECT_FALSE(ParseJsonObject(std::string(1000000, '{')).has_value());
  const std::string text = R"({"a":")" + std::string(1024 * 1024, 'x') + "\"}";
  EXPECT_EQ(WriteJson(ParseJsonObject(text).value()), text);
}

class FittingPartsTest : public testing::TestWithParam<std::tuple<std::string, std::string, bool>> {};

// A letter is a record: "L" is too large, "f" makes its request fail; two records at most fit a request.
TEST_P(FittingPartsTest, DeliversInOrderAndStopsAtAFailure) {
  const auto& [batch, expected, succeeds] = GetParam();
  std::vector<UserLog> records(batch.size());
  for (std::size_t i = 0; i < batch.size(); ++i) {
    records[i].set_Action(std::wstring(1, static_cast<wchar_t>(batch[i])));
  }
  const auto text = [](const std::vector<UserLog>& part) {
    std::string actions;
    for (const UserLog& record : part) actions += static_cast<char>(record.get_Action()[0]);
    return actions;
  };
  std::string done;
  const bool succeeded = DeliverInFittingParts(
      records,
      [&](const std::vector<UserLog>& part) {
        if (part.size() > 2 || text(part).find('L') != std::string::npos) return PartResult::kTooLarge;
        return text(part).find('f') != std::string::npos ? PartResult::kFailed : PartResult::kDelivered;
      },
      [&](const std::vector<UserLog>& part) { done += text(part) + " "; },
      [&](const UserLog& record) { done += "drop:" + text({record}) + " "; });
  EXPECT_EQ(done, expected);
  EXPECT_EQ(succeeded, succeeds);
}

INSTANTIATE_TEST_SUITE_P(Batches, FittingPartsTest,
                         testing::Values(std::tuple{"", "", true}, std::tuple{"ab", "ab ", true},
                                         std::tuple{"abcde", "ab c de ", true},
                                         std::tuple{"aLcd", "a drop:L cd ", true},
                                         std::tuple{"L", "drop:L ", true}, std::tuple{"abfd", "ab ", false},
                                         std::tuple{"fbcd", "", false}));

}  // namespace
}  // namespace Drive::Bilog
