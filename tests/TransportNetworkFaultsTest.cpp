// TransportNetworkFaultsTest.cpp - pushes over a network, and to servers, that fail.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <future>
#include <thread>

#include "platform/ProcessEnd.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/UploadFixture.h"
#include "transport/HttpTransfer.h"

namespace Drive::Testing {
namespace {

using namespace Drive::Bilog;
using namespace std::chrono_literals;
using Codes = std::vector<std::string>;

const std::string kOkHead = "HTTP/1.1 200 OK\r\n";

class NetworkFaultsTest : public UploadFixture {};

std::string Code(CURLcode code) { return std::to_string(code); }

TEST_F(NetworkFaultsTest, TrustsNobodyButTheClientsAuthority) {
  const Authority stranger;
  SslContext oldProtocol = m_authority.Issue("localhost");
  SSL_CTX_set_min_proto_version(oldProtocol.get(), TLS1_VERSION);
  SSL_CTX_set_max_proto_version(oldProtocol.get(), TLS1_1_VERSION);
  SSL_CTX_set_cipher_list(oldProtocol.get(), "ALL:@SECLEVEL=0");
  struct {
    const char* name;
    SslContext context;
    bool trustsSystem;
    CURLcode code;
  } cases[] = {
      {"stranger", stranger.Issue("localhost"), false, CURLE_PEER_FAILED_VERIFICATION},
      {"wrong host", m_authority.Issue("elsewhere.example"), false, CURLE_PEER_FAILED_VERIFICATION},
      {"expired", m_authority.Issue("localhost", -60), false, CURLE_PEER_FAILED_VERIFICATION},
      {"TLS 1.1", std::move(oldProtocol), false, CURLE_SSL_CONNECT_ERROR},
      {"system's store", m_authority.Issue("localhost"), true, CURLE_PEER_FAILED_VERIFICATION},
  };
  for (auto& row : cases) {
    ScriptedServer server(std::move(row.context));
    GlobalValue::GetInstatnce().SetIsUseLocalCertificate(row.trustsSystem);
    Configure(server.Url());

    EXPECT_FALSE(PushToBi()) << row.name;
    EXPECT_EQ(FailedAttempts(), Codes(3, Code(row.code))) << row.name;
    EXPECT_TRUE(server.Requests().empty()) << row.name;
  }
}

// Each fault costs one attempt and leaves nothing behind that would spoil the next.
TEST_F(NetworkFaultsTest, AttemptsAgainAfterEveryKindOfBrokenResponse) {
  const std::string block(64 * 1024, 'x');
  const struct {
    const char* name;
    Answer answer;
    CURLcode code;  // CURLE_OK: no fault at all
  } cases[] = {
      {"interim response", Raw("HTTP/1.1 100 Continue\r\n\r\n" + kOkHead + "Content-Length: 0\r\n\r\n"),
       CURLE_OK},
      {"no response", Raw(""), CURLE_GOT_NOTHING},
      {"garbage", Raw("what?\r\n\r\n"), CURLE_UNSUPPORTED_PROTOCOL},
      {"half a body", Raw(kOkHead + "Content-Length: 10\r\n\r\nhalf"), CURLE_PARTIAL_FILE},
      {"endless headers", Endless(kOkHead, "X-More: " + std::string(1000, 'x') + "\r\n"), CURLE_RECV_ERROR},
      {"endless body", Endless(kOkHead + "\r\n", block), CURLE_FILESIZE_EXCEEDED},
  };
  for (const auto& row : cases) {
    ScriptedServer server(m_authority.Issue("localhost"), {row.answer});
    Configure(server.Url());

    EXPECT_TRUE(PushToBi()) << row.name;
    EXPECT_EQ(FailedAttempts(), row.code == CURLE_OK ? Codes{} : Codes{Code(row.code)}) << row.name;
    EXPECT_EQ(server.Requests().size(), row.code == CURLE_OK ? 1u : 2u) << row.name;
  }
}

TEST_F(NetworkFaultsTest, KeepsLittleOfALongResponse) {
  const std::string late = std::string(ResponseText::kMaxKeptBytes, 'x') + "interface auth failed";
  ScriptedServer server(m_authority.Issue("localhost"), std::vector<Answer>(3, Status(400, late)));
  Configure(server.Url());

  EXPECT_FALSE(PushToBi());

  ASSERT_EQ(m_log.All().size(), 3u) << "an ordinary failure: what comes that late is not looked at";
  EXPECT_LT(m_log.All()[0].text.size(), ResponseText::kMaxKeptBytes + 300);
  EXPECT_NE(m_log.All()[0].text.find(",responseString:xxx"), std::string::npos);
}

TEST_F(NetworkFaultsTest, FailsThreeTimesWithoutAServer) {
  std::string url;
  {
    const ScriptedServer gone(m_authority.Issue("localhost"));
    url = gone.Url();
  }
  Configure(url);

  EXPECT_FALSE(PushToBi());
  EXPECT_EQ(FailedAttempts(), Codes(3, Code(CURLE_COULDNT_CONNECT)));
}

TEST_F(NetworkFaultsTest, EndsATransferThatIsTooSlow) {
  GlobalValue::GetInstatnce().SetLimitLowSpeed(1000000);
  GlobalValue::GetInstatnce().SetTimeoutLowSpeed(1);
  ScriptedServer server(m_authority.Issue("localhost"), {Silence()});
  Configure(server.Url());

  EXPECT_TRUE(PushToBi());
  EXPECT_EQ(FailedAttempts(), Codes{Code(CURLE_OPERATION_TIMEDOUT)});
}

#ifdef SIGPIPE
std::atomic<std::thread::id> g_pushingThread;
std::atomic<int> g_brokenPipes{0};

TEST_F(NetworkFaultsTest, RaisesNoSignalWhenTheServerResetsAnUpload) {
  ScriptedServer server(m_authority.Issue("localhost"), {kResetInBody});
  Configure(server.Url());
  g_pushingThread = std::this_thread::get_id();
  const auto previous = std::signal(
      SIGPIPE, [](int) { g_brokenPipes += std::this_thread::get_id() == g_pushingThread.load(); });

  EXPECT_TRUE(PushToBi(std::string(1000000, 'x')));

  std::signal(SIGPIPE, previous);
  EXPECT_EQ(g_brokenPipes, 0);
  EXPECT_EQ(FailedAttempts().size(), 1u);
}
#endif

TEST_F(NetworkFaultsTest, AbortsATransferInFlightAndEveryLaterOne) {
  const auto drip = Endless(kOkHead + "\r\n", "x", 10ms);
  for (const Answer& hang : {Silence(), drip}) {
    ScriptedServer server(m_authority.Issue("localhost"), {hang});
    Configure(server.Url());
    PushLogRequest client;
    client.Init();
    auto pushed = std::async(std::launch::async, [&] {
      return client.PushLogToBiServer("body", L"/common/qmvzomaintqrt", "id-1");
    });
    server.WaitForRequests(1);
    client.AbortAfter(1h);
    EXPECT_EQ(pushed.wait_for(0ms), std::future_status::timeout);

    client.AbortAfter(0ms);
    client.AbortAfter(1h);  // a later time does not put it off
    // Looked at every 50 ms; the rest is for a busy machine.
    EXPECT_EQ(pushed.wait_for(1s), std::future_status::ready);
    EXPECT_FALSE(pushed.get());
    EXPECT_FALSE(client.PushLogToBiServer("body", L"/common/qmvzomaintqrt", "id-1"));

    EXPECT_EQ(FailedAttempts(), Codes(2, Code(CURLE_ABORTED_BY_CALLBACK))) << "no attempt after an abort";
    EXPECT_EQ(server.Requests().size(), 1u);
  }
}

TEST_F(NetworkFaultsTest, TransfersNothingOnceTheProcessEnds) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  Configure("https://localhost:1");
  const auto pushAtTheEnd = [this] {
    Platform::ProcessEnd::Begin();
    const bool pushed = PushToBi();
    std::_Exit(!pushed && FailedAttempts() == Codes{Code(CURLE_ABORTED_BY_CALLBACK)} ? 0 : 1);
  };
  EXPECT_EXIT(pushAtTheEnd(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive::Testing
