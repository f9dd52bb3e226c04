// TransportUploadTest.cpp - what a push does with the answers of a collector.
#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <sstream>
#include <thread>

#include "client/common/IPCDriveClient.h"
#include "client/log/SyncPanelLog.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/UploadFixture.h"
#include "transport/HttpTransfer.h"
#include "transport/RequestHeaders.h"

namespace Drive::Testing {
namespace {

using namespace Drive::Bilog;

const std::string kPath = "/common/qmvzomaintqrt";
const std::string kPushFunction = "Drive::Bilog::PushLogRequest::PushLogToServer";

class UploadTest : public UploadFixture {
 protected:
  LogMessage FailLine(const ScriptedServer& server, int attempt, int status, const std::string& response) {
    return {5, 141, kPushFunction,
            "PushLog Fail, url:" + server.Url() + kPath +
                "  RequestId:id-1,retryCount:" + std::to_string(attempt) +
                ",responseCode:" + std::to_string(status) + ",responseString:" + response};
  }
  LogMessage SuccessLine(const ScriptedServer& server) {
    return {1, 129, kPushFunction, "PushLog Success,url:" + server.Url() + kPath + " RequestId:id-1"};
  }
};

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\r\n";
  }
  return text;
}

TEST_F(UploadTest, SendsBodyAndHeaderLinesAsTheyAre) {
  ScriptedServer server(m_authority.Issue("localhost"));
  Configure(server.Url(), server.Url());
  const std::string body("\x78\x9C\0binary", 9);
  g_pcModel = "Model";
  g_pcVersion = L"1.2.3";
  g_userAgent = L"Agent/";

  m_client.Init();
  EXPECT_TRUE(m_log.Has(
      {0, 43, "Drive::Bilog::PushLogRequest::Init", "{PushLogRequest}baseUriPushLog:" + server.Url()}));
  EXPECT_TRUE(PushToBi(body));
  EXPECT_TRUE(m_client.PushLogToUbaServer(body, L"/collector/v1/event", "id-2"));
  EXPECT_TRUE(PushToBi(""));

  const auto requests = server.Requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0].head.rfind("POST /common/qmvzomaintqrt HTTP/1.1\r\n", 0), 0u);
  EXPECT_NE(requests[0].head.find("\r\n" + Joined(CreateReqHeader("id-1"))), std::string::npos);
  EXPECT_EQ(requests[0].body, body);
  EXPECT_EQ(requests[1].head.rfind("POST /collector/v1/event HTTP/1.1\r\n", 0), 0u);
  // SHA-256 of "abc".
  const std::string udid = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
  EXPECT_NE(requests[1].head.find("\r\nX-UDID:" + udid + "\r\n"), std::string::npos) << requests[1].head;
  EXPECT_NE(requests[1].head.find("\r\nUser-Agent:Agent/1.2.3\r\n"), std::string::npos);
  EXPECT_EQ(requests[1].body, body);
  EXPECT_NE(requests[2].head.find("Content-Length: 0\r\n"), std::string::npos) << "an empty POST is one";
}

TEST_F(UploadTest, SucceedsOnTheSecondAttempt) {
  ScriptedServer server(m_authority.Issue("localhost"), {Status(503, "busy\r\nforged\x7F")});
  Configure(server.Url());

  EXPECT_TRUE(PushToBi());

  EXPECT_EQ(m_log.All(), (std::vector{FailLine(server, 0, 503, "busy  forged "), SuccessLine(server)}));
}

TEST_F(UploadTest, GivesUpAfterThreeAttempts) {
  // Neither is a success, and the target of a redirect is no collector.
  const std::string redirect = "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n";
  ScriptedServer server(m_authority.Issue("localhost"),
                        {Status(500), Raw(redirect), Status(400, "auth failed")});
  Configure(server.Url());

  EXPECT_FALSE(PushToBi());

  EXPECT_EQ(m_log.All(), (std::vector{FailLine(server, 0, 500, ""), FailLine(server, 1, 302, ""),
                                      FailLine(server, 2, 400, "auth failed")}));
  EXPECT_EQ(server.Requests().size(), 3u);
}

TEST_F(UploadTest, RenewsARefusedTokenAndLeavesTheBatchForTheNextTick) {
  SyncPanelLog::GetInstance().SetFolder(m_folder.Wide("logs"));
  IPC::SetIpcEndpointName("drivelog-transport-" + m_folder.Path().filename().string());
  std::vector<std::string> commands;
  std::string answer = "new token";
  const IPC::IPCDriveServer mainProcess([&](int command, const std::string& payload) {
    commands.push_back(std::to_string(command) + " " + payload);
    return answer;
  });
  ASSERT_TRUE(mainProcess.IsListening());
  const Answer refusal = Status(400, R"({"msg":"interface auth failed"})");
  ScriptedServer server(m_authority.Issue("localhost"), {refusal, refusal});
  Configure(server.Url());

  EXPECT_FALSE(PushToBi());
  answer.clear();  // a reply without a token changes nothing
  EXPECT_FALSE(PushToBi());
  EXPECT_TRUE(PushToBi());

  EXPECT_EQ(server.Requests().size(), 3u);
  EXPECT_EQ(commands, (std::vector<std::string>{"4 Rt Change At", "4 Rt Change At"}));
  EXPECT_EQ(LogSettings::GetInstance().GetAccessToken(), L"new token");
  EXPECT_EQ(g_accessToken.Get(), L"new token");
  EXPECT_EQ(m_log.All().at(0), (LogMessage{2, 134, kPushFunction, "update at"}));
  EXPECT_EQ(m_log.All().at(1).location, "Drive::Bilog::PushLogRequest::SendAtLostMessage");
  EXPECT_EQ(m_log.All().at(1).text, "SendAtLostMessage AT");
  EXPECT_FALSE(m_log.Contains("Get New AT")) << "goes to the log files, past the installed function";
  std::ostringstream file;
  file << std::ifstream(m_folder.Path() / "logs" / "debug.log").rdbuf();
  EXPECT_NE(file.str().find("Get New AT"), std::string::npos);
}

TEST_F(UploadTest, NeedsNeitherNetworkNorServerWhereNothingIsToBeSent) {
  ScriptedServer server(m_authority.Issue("localhost"));
  const std::string location = "Drive::Bilog::PushLogRequest::";
  Configure("", "");
  EXPECT_TRUE(PushToBi()) << "without a collector the records count as delivered";
  EXPECT_EQ(m_log.All(),
            (std::vector<LogMessage>{{2, 62, location + "PushLogToBiServer", "baseUri is empty"}}));
  m_log.Clear();
  EXPECT_FALSE(m_client.PushLogToUbaServer("body", L"/collector/v1/event", "id-1"));
  EXPECT_EQ(FailedAttempts(), std::vector<std::string>(3, "3")) << "unlike the other channel";

  Configure(server.Url(), server.Url());
  g_certPath = std::wstring();
  EXPECT_FALSE(PushToBi());
  EXPECT_EQ(m_log.All(),
            (std::vector<LogMessage>{{5, 238, location + "InitCurl", "Path of certfile is empty"}}));
  m_log.Clear();

  g_isOffLine = true;
  EXPECT_FALSE(PushToBi());
  EXPECT_FALSE(m_client.PushLogToUbaServer("body", L"/collector/v1/event", "id-1"));
  EXPECT_EQ(m_log.All(),
            (std::vector<LogMessage>{{5, 58, location + "PushLogToBiServer", "Not net or at disable"},
                                     {5, 76, location + "PushLogToUbaServer", "Not net or at disable"}}));
  EXPECT_TRUE(server.Requests().empty());
}

TEST_F(UploadTest, GoesThroughTheClientsProxy) {
  ScriptedServer proxy(nullptr);
  GlobalValue::GetInstatnce().SetSystemProxy(proxy.Url());
  Configure("http://collector.example");

  EXPECT_TRUE(PushToBi());

  ASSERT_EQ(proxy.Requests().size(), 1u);
  EXPECT_EQ(proxy.Requests()[0].head.rfind("POST http://collector.example" + kPath + " HTTP/1.1\r\n", 0), 0u);
}

TEST_F(UploadTest, KeepsTheResponsesOfThreadsApart) {
  std::deque<ScriptedServer> servers;
  std::deque<PushLogRequest> clients;
  std::vector<std::thread> threads;
  for (const char* response : {"one", "two", "three"}) {
    servers.emplace_back(m_authority.Issue("localhost"), std::vector<Answer>(30, Status(500, response)));
    Configure(servers.back().Url());
    clients.emplace_back().Init();
  }
  m_log.Clear();
  for (PushLogRequest& client : clients) {
    threads.emplace_back([&client] {
      for (int push = 0; push < 10; ++push) {
        EXPECT_FALSE(client.PushLogToBiServer("body", L"/common/qmvzomaintqrt", "id-1"));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }

  for (int attempt = 0; attempt < 3; ++attempt) {
    EXPECT_EQ(m_log.Count(FailLine(servers[0], attempt, 500, "one").text), 10u);
    EXPECT_EQ(m_log.Count(FailLine(servers[1], attempt, 500, "two").text), 10u);
    EXPECT_EQ(m_log.Count(FailLine(servers[2], attempt, 500, "three").text), 10u);
  }
}

TEST(ResponseTest, KeepsTheBeginningOnlyButTakesEverything) {
  ResponseText response;
  std::string block(ResponseText::kMaxKeptBytes - 1, 'a');
  EXPECT_EQ(KeepResponse(block.data(), 1, block.size(), &response), block.size());
  std::string more = "bcd";
  EXPECT_EQ(KeepResponse(more.data(), 3, 1, &response), 3u);
  EXPECT_EQ(KeepResponse(more.data(), 1, 3, &response), 3u);

  EXPECT_EQ(response.kept, block + "b");
  EXPECT_EQ(response.received, block.size() + 6);
  EXPECT_EQ(KeepResponse(more.data(), 1, 3, nullptr), 0u);
}

}  // namespace
}  // namespace Drive::Testing
