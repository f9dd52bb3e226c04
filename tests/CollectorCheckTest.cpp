// CollectorCheckTest.cpp - what the collector's checks take and for which reason they refuse the rest.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "collector/Cipher.h"
#include "collector/RequestCheck.h"
#include "tests/CollectorRequests.h"

namespace Drive::Testing {
namespace {

using namespace Collection;

const RsaKey& CollectorKey() {
  static const RsaKey& key = *new RsaKey(RsaKey::Generate());
  return key;
}

TestRequest Good(Channel channel) { return MakeRequest(channel, CollectorKey().PublicKeyHex()); }

Verdict CheckIt(const TestRequest& request, const std::string& body,
                DeflateRule rule = DeflateRule::kAsZlibMakes, const std::string& token = "") {
  return Check(request.channel, request.headers, body, {&CollectorKey(), token, rule});
}

std::string ReasonOf(const Verdict& verdict) {
  const auto* refused = std::get_if<Refused>(&verdict);
  return refused != nullptr ? refused->reason : "accepted";
}

TEST(CollectorCheckTest, TakesTheRecordsOfGoodRequestsInTheirOrder) {
  const char* const kFirst[] = {"upload", "open", "open"};
  const char* const kNames[] = {"Action", "event", "Action"};
  for (const Channel channel : kChannels) {
    SCOPED_TRACE(NameOf(channel));
    const TestRequest request = Good(channel);

    const Verdict verdict = CheckIt(request, request.Body());

    ASSERT_EQ("accepted", ReasonOf(verdict));
    const auto& accepted = std::get<Accepted>(verdict);
    EXPECT_EQ("A1B220240305070809012", accepted.requestId);
    ASSERT_EQ(2u, accepted.records.size());
    const auto i = static_cast<std::size_t>(channel);
    const Json::Value& record = accepted.records[0];
    EXPECT_EQ(kFirst[i], (channel == Channel::kUba ? record["x"] : record)[kNames[i]].asString());
    EXPECT_NE(std::string::npos, accepted.plainText.find(kFirst[i]));
  }
}

struct Row {
  Channel channel;
  std::string reason;  // part of it
  std::function<void(TestRequest&)> change;
};

constexpr Channel kM = Channel::kMaintenance;
constexpr Channel kO = Channel::kOperation;
constexpr Channel kU = Channel::kUba;

Json::Value& Record(TestRequest& r) {
  return r.channel == kU ? r.plain["events"][0]["x"] : r.plain["event"][0];
}

// A header set, and which of its headers have a value of their own.
std::vector<Row> HeaderRows() {
  std::vector<Row> rows;
  for (const Channel channel : kChannels) {
    for (const Header& header : Good(channel).headers) {
      const std::string name = header.name;
      const bool isOpen = name == "X-Model" || name == "X-AppVer" || name == "User-Agent";
      rows.push_back({channel, name + " comes more than once", [=](TestRequest& r) {
                        r.headers.push_back({name, r.Header(name)});
                      }});
      rows.push_back({channel, isOpen && name != "User-Agent" ? "accepted" : name, [=](TestRequest& r) {
                        std::string& value = r.Header(name);
                        value = name == "User-Agent" ? "client13.2" : isOpen ? "1" : "";
                      }});
    }
  }
  rows.push_back(
      {kM, "header App-Ver has the wrong value", [](TestRequest& r) { r.Header("App-Ver") = "1.1.1.2"; }});
  rows.push_back(
      {kM, "header App-Id is missing", [](TestRequest& r) { r.headers.erase(r.headers.begin() + 3); }});
  rows.push_back({kM, "is spelled app-id", [](TestRequest& r) { r.headers[3].name = "app-id"; }});
  rows.push_back({kM, "unknown header Content-Encoding", [](TestRequest& r) {
                    r.headers.push_back({"Content-Encoding", "deflate"});
                  }});
  rows.push_back({kO, "\"requestid\" is not the one", [](TestRequest& r) { r.Header("Request-Id") += "1"; }});
  rows.push_back(
      {kU, "X-UDID has the wrong", [](TestRequest& r) { r.Header("X-UDID") = std::string(64, 'A'); }});
  rows.push_back(
      {kU, "no token credential", [](TestRequest& r) { r.Header("Authorization") = Base64("8:null:"); }});
  rows.push_back({kU, "no token credential",
                  [](TestRequest& r) { r.Header("Authorization") = Base64("8:null:null:null:a+b"); }});
  return rows;
}

std::vector<Row> BodyRows() {
  return {
      {kM, "the body lacks \"event\"", [](TestRequest& r) { r.plain.removeMember("event"); }},
      {kM, "the body has no record", [](TestRequest& r) { r.plain["event"].clear(); }},
      {kM, "\"Request-Id\" is not the one", [](TestRequest& r) { r.plain["header"]["Request-Id"] = "x"; }},
      {kM, "\"App-Id\" is wrong", [](TestRequest& r) { r.plain["header"]["App-Id"] = "x"; }},
      {kM, "\"serviceid\" is wrong", [](TestRequest& r) { r.plain["header"]["serviceid"] = "qmvzooperqrt"; }},
      {kM, "\"timestamp\" of the header is not a 64-bit",
       [](TestRequest& r) { r.plain["header"]["timestamp"] = "1"; }},
      {kM, "the header has an unknown member \"x\"", [](TestRequest& r) { r.plain["header"]["x"] = 1; }},
      {kM, "unknown member \"IsMaintenanceLog\"", [](TestRequest& r) { Record(r)["IsMaintenanceLog"] = 1; }},
      {kM, "both \"Info\" and a file member", [](TestRequest& r) { Record(r)["file_id"] = "f"; }},
      {kM, "accepted", [](TestRequest& r) { Record(r).removeMember("Info"); }},
      {kM, "\"file_size\" of the record is not",
       [](TestRequest& r) { r.plain["event"][1]["file_size"] = 1.0; }},
      {kM, "lacks the brand text", [](TestRequest& r) { Record(r)["Extend"] = "a:b"; }},
      {kM, "brand member \"DISK_TYPE\"",
       [](TestRequest& r) { r.plain["event"][1]["Extend"].removeMember("DISK_TYPE"); }},
      {kM, "neither an object nor a string",
       [](TestRequest& r) { Record(r)["Extend"] = Json::Value(Json::arrayValue); }},
      {kM, "\"UseTime\" of the record is not a number", [](TestRequest& r) { Record(r)["UseTime"] = "1"; }},
      {kM, "\"Logversion\" of the record is not a 32-bit",
       [](TestRequest& r) { Record(r)["Logversion"] = 1.0; }},
      {kM, "the record lacks \"TraceId\"", [](TestRequest& r) { Record(r).removeMember("TraceId"); }},
      {kO, "\"chifer\" is not Base64", [](TestRequest& r) { r.chifer = "=AAA"; }},
      {kO, "not enciphered for the collector's key",
       [](TestRequest& r) { r.chifer = Base64(std::string(256, 'a')); }},
      {kO, "holds no AES key",
       [](TestRequest& r) { r.chifer = EncipherKey(r.rsaKeyHex, std::string(32, 'A')); }},
      {kO, "holds no AES key",
       [](TestRequest& r) { r.chifer = EncipherKey(r.rsaKeyHex, std::string(30, 'a')); }},
      {kO, "not enciphered with the key", [](TestRequest& r) { r.event = std::string(96, '0'); }},
      {kO, "\"event\" is not lower-case hex", [](TestRequest& r) { r.event = std::string(64, 'A'); }},
      {kO, "not a vector and whole blocks", [](TestRequest& r) { r.event = std::string(66, '0'); }},
      {kO, "not a vector and whole blocks", [](TestRequest& r) { r.event = std::string(32, '0'); }},
      {kO, "\"timestamp\" is not a decimal", [](TestRequest& r) { r.plain["header"]["timestamp"] = "-1"; }},
      {kO, "\"serviceid\" is wrong", [](TestRequest& r) { r.plain["header"]["serviceid"] = ""; }},
      {kO, "the header lacks \"hmac\"", [](TestRequest& r) { r.plain["header"].removeMember("hmac"); }},
      {kO, "the payload lacks \"events\"", [](TestRequest& r) { r.plain["event"].removeMember("events"); }},
      {kO, "the payload has no event", [](TestRequest& r) { r.plain["event"]["events"].clear(); }},
      {kO, "the event has an unknown member \"Extend\"",
       [](TestRequest& r) { r.plain["event"]["events"][1]["Extend"] = ""; }},
      {kO, "\"events_common\" lacks \"imei\"",
       [](TestRequest& r) { r.plain["event"]["events_common"].removeMember("imei"); }},
      {kO, "\"_oaid_tracking_flag\" of \"properties\" is not a boolean",
       [](TestRequest& r) {
         r.plain["event"]["events_common"]["properties"]["_oaid_tracking_flag"] = "false";
       }},
      {kU, "the body has an unknown member \"header\"", [](TestRequest& r) { r.plain["header"] = 1; }},
      {kU, "the body has no event", [](TestRequest& r) { r.plain["events"].clear(); }},
      {kU, "\"e\" of the event is wrong", [](TestRequest& r) { r.plain["events"][0]["e"] = "PC"; }},
      {kU, "\"v\" of the event is wrong", [](TestRequest& r) { r.plain["events"][0]["v"] = 2; }},
      {kU, "\"q\" of the event is out of range", [](TestRequest& r) { r.plain["events"][0]["q"] = 999999; }},
      {kU, "\"q\" does not go up by one", [](TestRequest& r) { r.plain["events"][1]["q"] = 1; }},
      {kU, "\"t\" of the event is not the record's",
       [](TestRequest& r) { r.plain["events"][0]["t"] = 1700000000124; }},
      {kU, "\"DevId\" of the record is not a SHA-256", [](TestRequest& r) { Record(r)["DevId"] = "A1B2"; }},
      {kU, "the record lacks \"CountryCode\"", [](TestRequest& r) { Record(r).removeMember("CountryCode"); }},
      {kU, "\"ResidenceTime\" of the record is not",
       [](TestRequest& r) { Record(r)["ResidenceTime"] = 3.0; }},
      {kU, "a maintenance record", [](TestRequest& r) { Record(r)["IsMaintenanceLog"] = 1; }},
  };
}

TEST(CollectorCheckTest, RefusesOneChangeWithItsReason) {
  std::vector<Row> rows = HeaderRows();
  for (Row& row : BodyRows()) {
    rows.push_back(std::move(row));
  }
  for (const Row& row : rows) {
    TestRequest request = Good(row.channel);
    row.change(request);
    EXPECT_NE(std::string::npos, ReasonOf(CheckIt(request, request.Body())).find(row.reason))
        << NameOf(row.channel) << ": wanted \"" << row.reason << "\", got \""
        << ReasonOf(CheckIt(request, request.Body())) << '"';
  }
}

TEST(CollectorCheckTest, RefusesABodyWithAnyByteChangedAddedOrMissing) {
  for (const Channel channel : kChannels) {
    SCOPED_TRACE(NameOf(channel));
    const TestRequest request = Good(channel);
    const std::string body = request.Body();
    for (std::size_t i = 0; i < body.size(); ++i) {
      for (const int mask : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
        std::string changed = body;
        changed[i] = static_cast<char>(changed[i] ^ mask);
        ASSERT_NE("accepted", ReasonOf(CheckIt(request, changed))) << "byte " << i << " mask " << mask;
      }
      ASSERT_NE("accepted", ReasonOf(CheckIt(request, body.substr(0, i)))) << i << " bytes";
    }
    EXPECT_EQ("bytes follow the compressed data", ReasonOf(CheckIt(request, body + '\0')));
    EXPECT_EQ("bytes follow the compressed data", ReasonOf(CheckIt(request, body + body)));
  }
}

TEST(CollectorCheckTest, TakesOtherDeflateDataOnlyWhenToldTo) {
  for (const Channel channel : kChannels) {
    TestRequest request = Good(channel);
    request.level = 1;
    const std::string body = request.Body();
    EXPECT_NE(std::string::npos, ReasonOf(CheckIt(request, body)).find("default level")) << NameOf(channel);
    EXPECT_EQ("accepted", ReasonOf(CheckIt(request, body, DeflateRule::kAny))) << NameOf(channel);
  }
}

TEST(CollectorCheckTest, RefusesTextThatIsNotStrictJson) {
  const std::string deep(5000, '[');
  for (const std::string& text :
       {std::string("[]"), std::string("{} {}"), std::string("{/**/}"), std::string("{\"a\":\"\n\"}"),
        std::string("{\"header\":1,\"header\":1}"), std::string("{\"a\":\"\xC0\x80\"}"),
        std::string("{\"a\":\"\xED\xA0\x80\"}"), "{\"a\":" + deep, std::string("{\"a\":'b'}"),
        std::string("{\"a\":NaN}"), std::string(" ")}) {
    const std::string reason = ReasonOf(CheckIt(Good(kM), Zlib(text)));
    EXPECT_EQ(0u, reason.find("the body is not ")) << text.substr(0, 40) << ": " << reason;
  }
}

TEST(CollectorCheckTest, StopsInflatingABodyThatGrowsWithoutEnd) {
  EXPECT_EQ("decompressed data is too long", ReasonOf(CheckIt(Good(kM), Zlib(std::string(65 << 20, ' ')))));
}

TEST(CollectorCheckTest, RefusesAnotherTokenThanTheExpectedOneAsExpired) {
  const TestRequest request = Good(kU);
  const auto with = [&](const char* token) {
    return CheckIt(request, request.Body(), DeflateRule::kAsZlibMakes, token);
  };
  EXPECT_EQ("accepted", ReasonOf(with("token%2B1")));
  ASSERT_EQ("interface auth failed", ReasonOf(with("token")));
  EXPECT_EQ(400, std::get<Refused>(with("token")).status);
}

}  // namespace
}  // namespace Drive::Testing
