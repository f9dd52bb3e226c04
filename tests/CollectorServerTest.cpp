// CollectorServerTest.cpp - the collector over real TLS: storing, replays, faults, interface.
#include <gtest/gtest.h>
#include <httplib.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "tests/CollectorRequests.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

using namespace Collection;

constexpr Channel kM = Channel::kMaintenance;
constexpr Channel kU = Channel::kUba;

class CollectorServerTest : public testing::Test {
 protected:
  // Made on first use, of the options as they are then.
  Collector& Service() {
    if (!m_collector) {
      m_collector = std::make_unique<Collector>(m_options);
    }
    return *m_collector;
  }

  StoredCounts Stored(Channel channel) { return Service().Counts(channel).stored; }

  TestRequest Request(Channel channel, const std::string& id = "D20240305070809012") {
    return MakeRequest(channel, Service().RsaPublicKeyHex(), id);
  }

  httplib::Result Send(const std::string& method, const std::string& path, const Headers& headers = {},
                       const std::string& body = "") {
    const std::string url = Service().Url();
    // By name: compiled by MinGW, this client compares no addresses with certificates.
    httplib::SSLClient client("localhost", std::stoi(url.substr(url.rfind(':') + 1)));
    client.set_ca_cert_path(Service().CaPath().c_str());
    client.enable_server_certificate_verification(true);
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.body = body;
    for (const Header& header : headers) {
      request.headers.emplace(header.name, header.value);
    }
    return client.send(request);
  }

  // The status; -1 when there is none.
  int Post(const TestRequest& request) {
    const auto result = Send("POST", PathOf(request.channel), request.headers, request.Body());
    m_error = result.error();
    m_answer = result ? result->body : "";
    return result ? result->status : -1;
  }

  Json::Value Get(const std::string& path) {
    Json::Value value;
    const auto result = Send("GET", path);
    EXPECT_TRUE(result && Json::Reader().parse(result->body, value)) << path;
    return value;
  }

  TempFolder m_folder;
  Collector::Options m_options = CollectorIn(m_folder.Path());
  std::unique_ptr<Collector> m_collector;
  httplib::Error m_error{};  // of the last Post
  std::string m_answer;
};

TEST_F(CollectorServerTest, StoresAcceptedRequestsOfEveryChannel) {
  for (const Channel channel : kChannels) {
    const std::string name = NameOf(channel);
    EXPECT_EQ(200, Post(Request(channel, "first"))) << name;
    EXPECT_EQ(200, Post(Request(channel, "second"))) << name;
    EXPECT_EQ(4, Get("/api/counts")[name]["records"].asInt()) << name;
    const Json::Value records = Get("/api/records?limit=3&channel=" + name);
    ASSERT_EQ(3u, records.size()) << name;
    EXPECT_EQ("second", records[0]["request_id"].asString());
    EXPECT_EQ("first", records[2]["request_id"].asString());
    EXPECT_NE(std::string::npos, records[0]["record"].toStyledString().find("Drive.action.newFile"));
    EXPECT_NE(std::string::npos, records[1]["record"].toStyledString().find("Drive.action.deleteFile"));
    EXPECT_EQ(2u, Get("/api/records?channel=" + name + "&since=" + records[2]["id"].asString()).size());
  }
  EXPECT_EQ(200, Send("POST", "/api/reset")->status);
  EXPECT_EQ(0u, Get("/api/records").size());
  EXPECT_EQ(0, Service().Counts(kU).attempts);
}

TEST_F(CollectorServerTest, CountsARepeatedRequestAsAReplayAndStoresItsRecordsOnce) {
  TestRequest request = Request(kM, "same");
  EXPECT_EQ(200, Post(request));
  EXPECT_EQ(200, Post(request));
  EXPECT_EQ(200, Post(Request(kU, "same")));
  EXPECT_EQ(1, Stored(kM).replays);
  EXPECT_EQ(2, Stored(kM).records);
  EXPECT_EQ(0, Stored(kU).replays);

  request.plain["event"][0]["Action"] = "another";
  EXPECT_EQ(200, Post(request));

  EXPECT_EQ(2, Stored(kM).replays);
  const auto records = Service().Records(kM);
  ASSERT_EQ(4u, records.size());
  EXPECT_EQ("another", records[1].record["Action"].asString());
  EXPECT_TRUE(records[1].replay);
  EXPECT_FALSE(records[2].replay);
}

TEST_F(CollectorServerTest, AppliesFaultsInTurnToTheirChannel) {
  const auto inject = [&](const char* fault) { return Send("POST", "/api/faults", {}, fault)->status; };
  EXPECT_EQ(200, inject(R"({"channel":"uba","status":500,"body":"busy","count":2})"));
  EXPECT_EQ(200, inject(R"({"channel":"uba","drop":true})"));

  EXPECT_EQ(200, Post(Request(kM)));
  EXPECT_EQ(500, Post(Request(kU)));
  EXPECT_EQ("busy", m_answer);
  EXPECT_EQ(500, Post(Request(kU)));
  EXPECT_EQ(-1, Post(Request(kU)));
  EXPECT_EQ(httplib::Error::Read, m_error);
  EXPECT_EQ(200, Post(Request(kU)));
  EXPECT_EQ(4, Service().Counts(kU).attempts);
  EXPECT_EQ(1, Stored(kU).requests);
  EXPECT_EQ(0u, Get("/api/faults").size());

  for (const char* wrong :
       {R"({"channel":"bi"})", R"({"status":99})", R"({"share":2})", R"({"x":1})", "[]"}) {
    EXPECT_EQ(400, inject(wrong)) << wrong;
  }
}

TEST_F(CollectorServerTest, StopsAtOnceInTheMiddleOfADelayAndServesAgainOnTheSamePort) {
  Fault fault;
  fault.delay = std::chrono::minutes(5);
  fault.drop = true;
  Service().InjectFault(fault);
  const TestRequest request = Request(kM);
  std::thread client([&] { Post(request); });
  ASSERT_TRUE(Service().WaitForAttempts(kM, 1, std::chrono::seconds(20)));

  const auto start = std::chrono::steady_clock::now();
  Service().Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  client.join();
  EXPECT_EQ(httplib::Error::Read, m_error);
  Post(request);
  EXPECT_EQ(httplib::Error::Connection, m_error);

  const std::string url = Service().Url();
  Service().Start();
  EXPECT_EQ(url, Service().Url());
  EXPECT_EQ(200, Post(request));

  m_options.port = std::stoi(url.substr(url.rfind(':') + 1));
  EXPECT_THROW(Collector{m_options}, std::runtime_error) << "two on one port";
}

}  // namespace
}  // namespace Drive::Testing
