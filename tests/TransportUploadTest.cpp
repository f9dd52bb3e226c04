// TransportUploadTest.cpp - what a push reports, and what bad answers cost it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "client/common/GlobalValue.h"
#include "client/common/IPCDriveClient.h"
#include "client/common/SharedGlobals.h"
#include "client/log/SyncPanelLog.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"
#include "transport/PushLogRequest.h"

namespace Drive::Testing {
namespace {

using namespace Drive::Bilog;
using Messages = std::vector<LogMessage>;

const std::string kClass = "Drive::Bilog::PushLogRequest::";

class UploadTest : public testing::Test {
 protected:
  UploadTest() {
    m_system.local = m_folder.Path().wstring();
    Platform::InstallSystem(&m_system);
    g_certPath = std::filesystem::u8path(m_collector.CaPath()).wstring();
    Configure(m_collector.Url());
  }
  ~UploadTest() override {
    Platform::InstallSystem(nullptr);
    g_certPath = std::wstring();
    g_isOffLine = false;
    LogSettings::GetInstance().Reset();
    m_global.SetIsUseLocalCertificate(false);
  }

  void Configure(const std::string& address) {
    WriteSettings(m_folder.Path(), address, address);
    m_client.Init();
    EXPECT_TRUE(m_log.Has({0, 43, kClass + "Init", "{PushLogRequest}baseUriPushLog:" + address}));
    m_log.Clear();
  }
  // To the next request that has none yet.
  void AddAnswer(int status, const std::string& body = {}) {
    Collection::Fault answer;
    answer.status = status;
    answer.body = body;
    m_collector.InjectFault(answer);
  }
  bool PushToBi() { return m_client.PushLogToBiServer("body", L"/common/qmvzomaintqrt", "id-1"); }
  bool PushToUba() { return m_client.PushLogToUbaServer("body", L"/collector/v1/event", "id-2"); }

  TempFolder m_folder;
  FakeSystem m_system;
  CapturedLog m_log;
  Collection::Collector m_collector{CollectorIn(m_folder.Path())};
  GlobalValue& m_global = GlobalValue::GetInstatnce();
  PushLogRequest m_client;
};

TEST_F(UploadTest, ReportsEveryAttempt) {
  SyncPanelLog::GetInstance().SetFolder(m_folder.Wide("logs"));
  IPC::SetIpcEndpointName("drivelog-transport-" + m_folder.Path().filename().string());
  LogSettings::GetInstance().SetAccessToken(L"old");
  AddAnswer(503, "busy\r\nforged\x7F");
  AddAnswer(400, std::string(65530, '-') + "interface auth failed");
  AddAnswer(200);
  AddAnswer(400, "{interface auth failed}");
  EXPECT_TRUE(PushToBi());
  EXPECT_FALSE(PushToBi());
  const std::string url = m_collector.Url() + "/common/qmvzomaintqrt";
  const std::string location = kClass + "PushLogToServer";
  const std::string fail = "PushLog Fail, url:" + url + "  RequestId:id-1,retryCount:";
  const std::string kept = std::string(65530, '-') + "interf";  // of a long response
  const auto messages = m_log.All();
  ASSERT_EQ(messages.size(), 5u) << "the sixth goes to the log files, past the installed function";
  EXPECT_EQ(Messages(messages.begin(), messages.begin() + 4),
            (Messages{{5, 141, location, fail + "0,responseCode:503,responseString:busy  forged "},
                      {5, 141, location, fail + "1,responseCode:400,responseString:" + kept},
                      {1, 129, location, "PushLog Success,url:" + url + " RequestId:id-1"},
                      {2, 134, location, "update at"}}));
  EXPECT_EQ(messages[4].location + messages[4].text, kClass + "SendAtLostMessageSendAtLostMessage AT");
  std::ifstream file(m_folder.Path() / "logs" / "debug.log");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_NE(text.find(kClass + "SendAtLostMessage:94 Get New AT"), std::string::npos);
  EXPECT_EQ(LogSettings::GetInstance().GetAccessToken(), L"old") << "there was nobody to ask";
  SyncPanelLog::GetInstance().SetFolder(L"");
}

TEST_F(UploadTest, ConnectsToNobodyWhereNothingIsToBeSent) {
  g_certPath = std::wstring();
  EXPECT_FALSE(PushToBi());
  g_isOffLine = true;
  EXPECT_FALSE(PushToBi());
  EXPECT_FALSE(PushToUba());
  EXPECT_EQ(m_log.All(), (Messages{{5, 238, kClass + "InitCurl", "Path of certfile is empty"},
                                   {5, 58, kClass + "PushLogToBiServer", "Not net or at disable"},
                                   {5, 76, kClass + "PushLogToUbaServer", "Not net or at disable"}}));
  g_isOffLine = false;
  Configure("");
  EXPECT_TRUE(PushToBi()) << "without a collector the records count as delivered";
  EXPECT_EQ(m_log.All(), (Messages{{2, 62, kClass + "PushLogToBiServer", "baseUri is empty"}}));
  g_certPath = L"any";
  EXPECT_FALSE(PushToUba()) << "unlike there";
}

TEST_F(UploadTest, SendsNothingToAServerThatCannotBeTrusted) {
  using Collection::ServerCertificate;
  for (const auto certificate :
       {ServerCertificate::kExpired, ServerCertificate::kWrongHost, ServerCertificate::kForeignAuthority}) {
    auto options = CollectorIn(m_folder.Path());  // of the same authority
    options.certificate = certificate;
    Collection::Collector other(options);
    Configure(other.Url());
    EXPECT_FALSE(PushToBi());
    EXPECT_EQ(m_log.All(),
              Messages(3, {5, 121, kClass + "PushLogToServer", "PushLogToServer Fail result:60"}));
    EXPECT_EQ(other.Counts(Collection::Channel::kMaintenance).attempts, 0);
  }
}

TEST_F(UploadTest, TrustsTheSystemsStoreWhenTold) {
  m_global.SetIsUseLocalCertificate(true);  // the system does not know the collector's authority
  EXPECT_FALSE(PushToBi());
  EXPECT_EQ(m_log.All(), Messages(3, {5, 121, kClass + "PushLogToServer", "PushLogToServer Fail result:60"}));
}

}  // namespace
}  // namespace Drive::Testing
