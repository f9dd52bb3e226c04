// CollectorCheckTest.cpp - what the collector's checks take and for which reason they refuse the rest.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <variant>
#include <vector>

#include "collector/Cipher.h"
#include "collector/RequestCheck.h"
#include "tests/CollectorRequests.h"

namespace Drive::Testing {
namespace {

using namespace Collection;

constexpr Channel kM = Channel::kMaintenance;
constexpr Channel kO = Channel::kOperation;
constexpr Channel kU = Channel::kUba;

const RsaKey& CollectorKey() {
  static const RsaKey& key = *new RsaKey(RsaKey::Generate());
  return key;
}

TestRequest Good(Channel channel) { return MakeRequest(channel, CollectorKey().PublicKeyHex()); }

Verdict CheckIt(const TestRequest& request, const std::string& body) {
  return Check(request.channel, request.headers, body, {&CollectorKey(), "", DeflateRule::kAsZlibMakes});
}

std::string ReasonOf(const Verdict& verdict) {
  const auto* refused = std::get_if<Refused>(&verdict);
  return refused != nullptr ? refused->reason : "accepted";
}

void ExpectReason(const TestRequest& request, const std::string& part) {
  const std::string reason = ReasonOf(CheckIt(request, request.Body()));
  EXPECT_NE(std::string::npos, reason.find(part))
      << NameOf(request.channel) << ": wanted \"" << part << "\", got \"" << reason << '"';
}

TEST(CollectorCheckTest, RefusesEachHeaderMissingEmptyDoubledOrMisspelt) {
  using Change = void (*)(Headers&, Headers::iterator);
  const Change kChanges[] = {
      [](Headers& headers, Headers::iterator at) { headers.erase(at); },
      [](Headers&, Headers::iterator at) { at->value.clear(); },
      [](Headers& headers, Headers::iterator at) { headers.push_back(Header(*at)); },
      [](Headers&, Headers::iterator at) { at->name[0] = static_cast<char>(at->name[0] ^ 0x20); },
  };
  for (const Channel channel : kChannels) {
    const TestRequest good = Good(channel);
    for (std::size_t i = 0; i < good.headers.size(); ++i) {
      for (const Change& change : kChanges) {
        TestRequest request = good;
        change(request.headers, request.headers.begin() + static_cast<std::ptrdiff_t>(i));
        const std::string& name = good.headers[i].name;
        // An HTTP library leaves an empty header out.
        const bool isTaken = (name == "X-Model" || name == "X-AppVer") && &change < kChanges + 2;
        ExpectReason(request, isTaken ? "accepted" : "header " + name + " ");
      }
    }
  }
}

struct Row {
  Channel channel;
  std::string part;   // "@" and a header's name, the path of a member, or a step of the encipherment
  std::string value;  // of a member as JSON; empty: it is taken out
  const char* reason;
};

TestRequest Changed(Channel channel, const std::string& part, const std::string& value) {
  TestRequest request = Good(channel);
  if (part == "chifer" || part == "event") {
    (part == "event" ? request.event : request.chifer) = value;
  } else if (part[0] == '@') {
    request.Header(part.substr(1)) = value;
  } else {
    const std::size_t dot = part.rfind('.');
    Json::Value& object = Json::Path(part.substr(0, dot)).make(request.plain);
    if (value.empty()) {
      object.removeMember(part.substr(dot + 1));
    } else {
      Json::Reader().parse(value, object[part.substr(dot + 1)]);
    }
  }
  return request;
}

TEST(CollectorCheckTest, RefusesOneChangeWithItsReason) {
  const std::string key = CollectorKey().PublicKeyHex();
  const Row kRows[] = {
      {kM, "@App-Ver", "1.1.1.2", "header App-Ver has the wrong value"},
      {kM, "@Content-Encoding", "deflate", "unknown header Content-Encoding"},
      {kM, "@Request-Id", "1", "\"Request-Id\" is not the one"},
      {kM, ".event", "[]", "the body has no record"},
      {kM, ".header.App-Id", "\"x\"", "\"App-Id\" is wrong"},
      {kM, ".header.serviceid", "\"qmvzooperqrt\"", "\"serviceid\" is wrong"},
      {kM, ".header.timestamp", "-1", "\"timestamp\" is negative"},
      {kM, ".event[0].file_id", "\"f\"", "both \"Info\" and a file member"},
      {kM, ".event[0].Extend", "\"DEVICE_BRAND:own\"", "accepted"},
      {kM, ".event[0].Extend", "\"a:b\"", "lacks the brand text"},
      {kM, ".event[0].Logversion", "1.0", "\"Logversion\" of the record is not a 32-bit"},
      {kM, ".event[1].file_size", "1.0", "\"file_size\" of the record is not"},
      {kO, "@Request-Id", "1", "\"requestid\" is not the one"},
      {kO, "chifer", "=AAA", "\"chifer\" is not Base64"},
      {kO, "chifer", Base64(std::string(256, 'a')), "not enciphered for the collector's key"},
      {kO, "chifer", EncipherKey(key, std::string(32, 'A')), "holds no AES key"},
      {kO, "event", std::string(96, '0'), "not enciphered with the key"},
      {kO, "event", std::string(64, 'A'), "\"event\" is not lower-case hex"},
      {kO, "event", std::string(66, '0'), "not a vector and whole blocks"},
      {kO, ".header.appid", "\"\"", "\"appid\" is empty"},
      {kO, ".header.serviceid", "\"\"", "\"serviceid\" is wrong"},
      {kO, ".header.timestamp", "\"-1\"", "\"timestamp\" is not a decimal"},
      {kO, ".event.events", "[]", "the payload has no event"},
      {kU, "@X-UDID", std::string(64, 'A'), "header X-UDID has the wrong value"},
      {kU, "@Authorization", Base64("8:null:"), "no token credential"},
      {kU, "@Authorization", Base64("8:null:null:null:a+b"), "no token credential"},
      {kU, ".events", "[]", "the body has no event"},
      {kU, ".events[0].e", "\"PC\"", "\"e\" of the event is wrong"},
      {kU, ".events[0].v", "2", "\"v\" of the event is wrong"},
      {kU, ".events[0].q", "999999", "\"q\" of the event is out of range"},
      {kU, ".events[1].q", "1", "\"q\" does not go up by one"},
      {kU, ".events[0].t", "1709622489046", "\"t\" of the event is not the record's"},
      {kU, ".events[0].x.DevId", "\"A1B2\"", "\"DevId\" of the record is not a SHA-256"},
      {kU, ".events[0].x.IsMaintenanceLog", "1", "a maintenance record"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.part);
    ExpectReason(Changed(row.channel, row.part, row.value), row.reason);
  }
}

void AddMemberPaths(const Json::Value& value, const std::string& path, std::vector<std::string>& paths) {
  for (const std::string& name : value.isObject() ? value.getMemberNames() : Json::Value::Members()) {
    paths.push_back(path + "." + name);
    AddMemberPaths(value[name], path + "." + name, paths);
  }
  for (Json::ArrayIndex i = 0; value.isArray() && i < value.size(); ++i) {
    AddMemberPaths(value[i], path + "[" + std::to_string(i) + "]", paths);
  }
}

TEST(CollectorCheckTest, RefusesEachMemberMissingOrOfAnotherTypeOrBesideAStranger) {
  const std::set<std::string> mayLack = {".event[0].Info", ".event[1].file_id", ".event[1].file_size",
                                         ".event[1].thumbnail_type"};
  for (const Channel channel : kChannels) {
    std::vector<std::string> paths;
    AddMemberPaths(Good(channel).plain, "", paths);
    ASSERT_GT(paths.size(), 30u) << NameOf(channel);
    for (const std::string& path : paths) {
      // An extension may hold what it likes, but must hold the brand.
      const bool isInExtend = path.find(".Extend.") != std::string::npos;
      const bool isOwn = path.find(".Extend.fileName") != std::string::npos;
      const auto isTaken = [&](const std::string& changed, const char* value) {
        const TestRequest request = Changed(channel, changed, value);
        return ReasonOf(CheckIt(request, request.Body())) == "accepted";
      };
      EXPECT_EQ(isOwn || mayLack.count(path) != 0, isTaken(path, "")) << path;
      EXPECT_EQ(isOwn, isTaken(path, "[true]")) << path;
      EXPECT_EQ(isInExtend, isTaken(path + "2", "1")) << path;
    }
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

TEST(CollectorCheckTest, RefusesTextThatIsNotStrictJson) {
  for (const std::string& text :
       {std::string("[]"), std::string("{} {}"), std::string("{/**/}"), std::string("{\"a\":\"\n\"}"),
        std::string("{\"header\":1,\"header\":1}"), std::string("{\"a\":\"\xC0\x80\"}"),
        std::string("{\"a\":\"\xED\xA0\x80\"}"), "{\"a\":" + std::string(5000, '['),
        std::string("{\"a\":'b'}"), std::string("{\"a\":NaN}"), std::string(" ")}) {
    const std::string reason = ReasonOf(CheckIt(Good(kM), Zlib(text)));
    EXPECT_EQ(0u, reason.find("the body is not ")) << text.substr(0, 40) << ": " << reason;
  }
  EXPECT_EQ("decompressed data is too long", ReasonOf(CheckIt(Good(kM), Zlib(std::string(65 << 20, ' ')))));
}

}  // namespace
}  // namespace Drive::Testing
