// CollectorServerTest.cpp - the collector over real TLS: storing, replays, faults, interface, certificates.
#include <gtest/gtest.h>
#include <httplib.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "collector/Collector.h"
#include "tests/CollectorRequests.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

using namespace Collection;

class CollectorServerTest : public testing::Test {
 protected:
  Collector& Service() {
    if (!m_collector) {
      m_options.dataFolder = m_folder.Path();
      m_options.database = ":memory:";
      m_collector = std::make_unique<Collector>(m_options);
    }
    return *m_collector;
  }

  std::unique_ptr<httplib::SSLClient> Client() {
    const std::string url = Service().Url();
    auto client =
        std::make_unique<httplib::SSLClient>("127.0.0.1", std::stoi(url.substr(url.rfind(':') + 1)));
    client->set_ca_cert_path(Service().CaPath().c_str());
    client->enable_server_certificate_verification(true);
    return client;
  }

  TestRequest Request(Channel channel, const std::string& id = "D20240305070809012") {
    return MakeRequest(channel, Service().RsaPublicKeyHex(), id);
  }

  httplib::Result Post(const TestRequest& request) {
    httplib::Headers headers;
    std::string contentType;
    for (const Header& header : request.headers) {
      if (header.name == "Content-Type") {
        contentType = header.value;
      } else {
        headers.emplace(header.name, header.value);
      }
    }
    return Client()->Post(PathOf(request.channel), headers, request.Body(), contentType);
  }

  int StatusOf(const httplib::Result& result) { return result ? result->status : -1; }

  Json::Value Get(const std::string& path) {
    const auto result = Client()->Get(path);
    Json::Value value;
    EXPECT_TRUE(result && Json::Reader().parse(result->body, value)) << path;
    return value;
  }

  TempFolder m_folder;
  Collector::Options m_options;
  std::unique_ptr<Collector> m_collector;
};

TEST_F(CollectorServerTest, StoresAcceptedRequestsOfEveryChannel) {
  for (const Channel channel : kChannels) {
    EXPECT_EQ(200, StatusOf(Post(Request(channel, "first")))) << NameOf(channel);
    EXPECT_EQ(200, StatusOf(Post(Request(channel, "second")))) << NameOf(channel);
  }
  const Json::Value counts = Get("/api/counts");
  for (const Channel channel : kChannels) {
    const std::string name = NameOf(channel);
    EXPECT_EQ(4, counts[name]["records"].asInt()) << name;
    const Json::Value records = Get("/api/records?limit=3&channel=" + name);
    ASSERT_EQ(3u, records.size()) << name;
    EXPECT_EQ("second", records[0]["request_id"].asString());
    EXPECT_EQ("first", records[2]["request_id"].asString());
    EXPECT_GT(records[0]["id"].asInt64(), records[1]["id"].asInt64());
    EXPECT_EQ(2u, Get("/api/records?channel=" + name + "&since=" + records[2]["id"].asString()).size());
  }
  EXPECT_EQ(12u, Get("/api/records").size());
  EXPECT_EQ(200, StatusOf(Client()->Post("/api/reset")));
  EXPECT_EQ(0u, Get("/api/records").size());
  EXPECT_EQ(0, Service().Counts(Channel::kUba).attempts);
}

TEST_F(CollectorServerTest, AnswersARefusedRequestWithItsReasonAndKeepsIt) {
  TestRequest request = Request(Channel::kUba);
  request.Header("X-Lang") = "en";

  const auto result = Post(request);

  ASSERT_EQ(422, StatusOf(result));
  EXPECT_EQ("header X-Lang has the wrong value \"en\"", result->body);
  const Json::Value rejected = Get("/api/rejected");
  ASSERT_EQ(1u, rejected.size());
  EXPECT_EQ(result->body, rejected[0]["reason"].asString());
  EXPECT_EQ("uba", rejected[0]["channel"].asString());
  EXPECT_EQ(0, Service().Counts(Channel::kUba).stored.requests);
}

TEST_F(CollectorServerTest, CountsARepeatedRequestAsAReplayAndStoresItsRecordsOnce) {
  TestRequest request = Request(Channel::kMaintenance, "same");
  EXPECT_EQ(200, StatusOf(Post(request)));
  EXPECT_EQ(200, StatusOf(Post(request)));
  EXPECT_EQ(200, StatusOf(Post(Request(Channel::kUba, "same"))));
  EXPECT_EQ(1, Service().Counts(Channel::kMaintenance).stored.replays);
  EXPECT_EQ(2, Service().Counts(Channel::kMaintenance).stored.records);
  EXPECT_EQ(0, Service().Counts(Channel::kUba).stored.replays);

  request.plain["event"][0]["Action"] = "another";
  EXPECT_EQ(200, StatusOf(Post(request)));

  EXPECT_EQ(2, Service().Counts(Channel::kMaintenance).stored.replays);
  const auto records = Service().Records(Channel::kMaintenance);
  ASSERT_EQ(4u, records.size());
  EXPECT_EQ("another", records[1].record["Action"].asString());
  EXPECT_TRUE(records[1].replay);
  EXPECT_FALSE(records[2].replay);
}

TEST_F(CollectorServerTest, AppliesFaultsInTurnToTheirChannel) {
  const auto inject = [&](const char* fault) {
    return StatusOf(Client()->Post("/api/faults", fault, "application/json"));
  };
  EXPECT_EQ(200, inject(R"({"channel":"uba","status":500,"body":"busy","count":2})"));
  EXPECT_EQ(200, inject(R"({"channel":"uba","drop":true})"));
  EXPECT_EQ(2u, Get("/api/faults").size());

  EXPECT_EQ(200, StatusOf(Post(Request(Channel::kMaintenance))));
  const auto first = Post(Request(Channel::kUba));
  EXPECT_EQ(500, StatusOf(first));
  EXPECT_EQ("busy", first->body);
  EXPECT_EQ(500, StatusOf(Post(Request(Channel::kUba))));
  EXPECT_EQ(httplib::Error::Read, Post(Request(Channel::kUba)).error());
  EXPECT_EQ(200, StatusOf(Post(Request(Channel::kUba))));

  EXPECT_EQ(4, Service().Counts(Channel::kUba).attempts);
  EXPECT_EQ(1, Service().Counts(Channel::kUba).stored.requests);
  EXPECT_EQ(0u, Get("/api/faults").size());
  for (const char* wrong :
       {R"({"channel":"bi"})", R"({"status":99})", R"({"share":2})", R"({"statsu":500})", "[]", ""}) {
    EXPECT_EQ(400, inject(wrong)) << wrong;
  }
}

TEST_F(CollectorServerTest, RefusesAllTokensUntilANewOneComes) {
  EXPECT_EQ(200, StatusOf(Post(Request(Channel::kUba))));
  Fault fault;
  fault.untilNewToken = true;
  Service().InjectFault(fault);
  for (const Channel channel : kChannels) {
    const auto result = Post(Request(channel));
    ASSERT_EQ(400, StatusOf(result));
    EXPECT_EQ("interface auth failed", result->body);
  }
  TestRequest renewed = Request(Channel::kUba);
  renewed.Header("Authorization") = Base64("8:null:null:null:renewed");
  EXPECT_EQ(200, StatusOf(Post(renewed)));
  EXPECT_EQ(200, StatusOf(Post(Request(Channel::kMaintenance))));
}

TEST(CollectorFaultPlanTest, HitsTheShareThatIsAskedForAndTheSameOnesForASeed) {
  Fault fault;
  fault.count = 0;
  fault.share = 0.25;
  const auto hits = [&](unsigned seed) {
    FaultPlan plan;
    fault.seed = seed;
    plan.Add(fault);
    std::vector<int> hit;
    for (int i = 0; i < 1000; ++i) {
      if (plan.Take(Channel::kUba, {})) {
        hit.push_back(i);
      }
    }
    return hit;
  };
  EXPECT_NEAR(250, static_cast<double>(hits(1).size()), 60);
  EXPECT_EQ(hits(1), hits(1));
  EXPECT_NE(hits(1), hits(2));
}

TEST_F(CollectorServerTest, StopsAtOnceInTheMiddleOfADelayAndServesAgainOnTheSamePort) {
  Fault fault;
  fault.delay = std::chrono::minutes(5);
  fault.drop = true;
  Service().InjectFault(fault);
  const TestRequest request = Request(Channel::kMaintenance);
  httplib::Error error{};
  std::thread client([&] { error = Post(request).error(); });
  ASSERT_TRUE(Service().WaitForAttempts(Channel::kMaintenance, 1, std::chrono::seconds(20)));

  const auto start = std::chrono::steady_clock::now();
  Service().Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  client.join();
  EXPECT_EQ(httplib::Error::Read, error);
  EXPECT_EQ(httplib::Error::Connection, Post(request).error());

  const std::string url = Service().Url();
  Service().Start();
  EXPECT_EQ(url, Service().Url());
  EXPECT_EQ(200, StatusOf(Post(request)));
}

TEST_F(CollectorServerTest, KeepsItsKeysAndRequestsOverARestart) {
  m_options.dataFolder = m_folder.Path();
  m_collector = std::make_unique<Collector>(m_options);
  const std::string key = Service().RsaPublicKeyHex();
  EXPECT_EQ(540u, key.size());
  const TestRequest request = Request(Channel::kOperation);
  EXPECT_EQ(200, StatusOf(Post(request)));
  const std::string ca = ReadFile(Service().CaPath());

  m_collector.reset();
  m_collector = std::make_unique<Collector>(m_options);

  EXPECT_EQ(key, Service().RsaPublicKeyHex());
  EXPECT_EQ(ca, ReadFile(Service().CaPath()));
  EXPECT_EQ(200, StatusOf(Post(request)));
  EXPECT_EQ(1, Service().Counts(Channel::kOperation).stored.replays);
  EXPECT_EQ(std::filesystem::perms::none,
            std::filesystem::status(m_folder.Path() / "rsa-key.pem").permissions() &
                (std::filesystem::perms::group_all | std::filesystem::perms::others_all));
}

TEST_F(CollectorServerTest, ShowsCertificatesThatAClientMustNotTrust) {
  for (const ServerCertificate kind :
       {ServerCertificate::kExpired, ServerCertificate::kWrongHost, ServerCertificate::kForeignAuthority}) {
    m_options.certificate = kind;
    m_collector.reset();
    EXPECT_EQ(httplib::Error::SSLServerVerification, Post(Request(Channel::kMaintenance)).error())
        << static_cast<int>(kind);
    EXPECT_EQ(0, Service().Counts(Channel::kMaintenance).attempts);
  }
  m_options.certificate = ServerCertificate::kGood;
  m_collector.reset();
  EXPECT_EQ(200, StatusOf(Post(Request(Channel::kMaintenance))));
}

TEST_F(CollectorServerTest, SaysThatItsPortIsInUse) {
  const std::string url = Service().Url();
  Collector::Options second = m_options;
  second.port = std::stoi(url.substr(url.rfind(':') + 1));
  EXPECT_THROW(Collector{second}, std::runtime_error);
}

}  // namespace
}  // namespace Drive::Testing
