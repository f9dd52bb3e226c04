// OperateLogUploadTest.cpp - the two upload timers against a real server.
#include <gtest/gtest.h>

#include "drivelog/BILogger.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/OperationLogger.h"
#include "operatelog/OperationLoggerTimer.h"
#include "operatelog/UbaLoggerTimer.h"
#include "tests/OperateLogRequestDecoder.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStorage.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/UploadFixture.h"

namespace Drive::OperateLog {
namespace {

using std::chrono::seconds;

class OperationUploadTest : public Testing::UploadFixture {
 protected:
  OperationUploadTest() { Settings().SetRsaPublicKey(m_key.PublicHex()); }

  static Bilog::LogSettings& Settings() { return Bilog::LogSettings::GetInstance(); }

  static void Store(std::vector<Bilog::UserLog> batch, bool uba) {
    Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, uba);
  }
  static Bilog::UserLog Record(const std::wstring& action) {
    Bilog::UserLog record;
    record.set_Action(action);
    record.set_DevId(L"device-1");
    return record;
  }
  // One that alone fills more than half a request.
  static Bilog::UserLog LargeRecord(std::size_t bytes) {
    std::vector<unsigned char> random(bytes);
    EncryptHelper::GetSecureRandom(random.data(), random.size());
    const std::string text = EncryptHelper::Base64Encode(random.data(), random.size(), true);
    return Record(std::wstring(text.begin(), text.end()));
  }

  std::unique_ptr<OperationUploader> MakeUploader() {
    auto uploader = std::make_unique<OperationUploader>(BatchSettings::Current());
    uploader->Init();
    m_log.Clear();
    return uploader;
  }

  Testing::CollectorKey m_key;
  Testing::RecordingStorage m_storage;
};

TEST_F(OperationUploadTest, SendsTheStoredRecordsEncipheredAndDeletesThem) {
  Testing::ScriptedServer server(m_authority.Issue("localhost"),
                                 {Testing::Status(500), Testing::Status(200)});
  Configure(server.Url());
  Store({Record(L"first"), Record(L"second")}, false);
  const auto uploader = MakeUploader();
  uploader->TimerHandler();
  EXPECT_TRUE(m_storage.Rows(false).empty());
  ASSERT_EQ(server.Requests().size(), 2u);
  const Testing::Request request = server.Requests()[1];
  EXPECT_EQ(request.head.rfind("POST /common/qmvzooperqrt ", 0), 0u);
  const Testing::DecodedRequest decoded = m_key.Decode(request.body);
  EXPECT_EQ(decoded.payload["events"][0]["event"], "first");
  EXPECT_EQ(decoded.payload["events"][1]["event"], "second");
  const std::string requestId = decoded.header["requestid"].asString();
  EXPECT_NE(request.head.find("Request-Id:" + requestId), std::string::npos);
  EXPECT_EQ(m_log.Count("OperateLog RequestId:" + requestId), 1u);
  EXPECT_EQ(m_log.Count("reqData  length is :" + std::to_string(request.body.size())), 1u);
}

TEST_F(OperationUploadTest, KeepsTheRecordsWithoutAKeyAndWhenOfflineAndWhenSwitchedOff) {
  const struct {
    std::string key;
    bool offline;
    bool isOn;
    int level;
    std::string message;
  } kCases[] = {
      {"", false, true, 2, "g_rsaPublicKey is null"},
      {"12zz", false, true, 5, "g_rsaPublicKey is not the hexadecimal text of a 270-byte RSA public key"},
      {m_key.PublicHex(), true, true, 5, "Not net or at disable"},
      {m_key.PublicHex(), false, false, 1, "g_operationLogSwitchState = 0"},
  };
  Testing::ScriptedServer server(m_authority.Issue("localhost"));
  Configure(server.Url());
  Store({Record(L"only")}, false);
  for (const auto& each : kCases) {
    Settings().SetRsaPublicKey(each.key);
    Settings().SetOperationLogSwitch(each.isOn);
    g_isOffLine = each.offline;
    const auto uploader = MakeUploader();
    uploader->TimerHandler();
    EXPECT_EQ(m_storage.Rows(false).size(), 1u) << each.message;
    EXPECT_EQ(m_log.All().back().level, each.level);
    EXPECT_EQ(m_log.All().back().text, each.message);
  }
  EXPECT_TRUE(server.Requests().empty());
}

TEST_F(OperationUploadTest, LeavesNothingWhenTheSwitchGoesOffInTheMiddleOfAnUpload) {
  const Testing::Answer switchOff = [](Testing::Peer& peer) {
    OperationLogger::GetInstance().SetOperationLogSwitchState(false);
    Testing::Status(500)(peer);
  };
  Testing::ScriptedServer server(m_authority.Issue("localhost"), {switchOff});
  Configure(server.Url());
  Store({Record(L"only")}, false);
  const auto uploader = MakeUploader();
  uploader->TimerHandler();
  uploader->TimerHandler();
  EXPECT_TRUE(m_storage.Rows(false).empty());
  EXPECT_EQ(server.Requests().size(), 2u);  // the attempts of the first tick
}

TEST_F(OperationUploadTest, HalvesABatchThatIsTooLargeAndDeletesExactlyWhatWasAccepted) {
  const Testing::Answer kRefused = Testing::Status(500);
  Testing::ScriptedServer server(m_authority.Issue("localhost"),
                                 {Testing::Status(200), kRefused, kRefused, kRefused});
  Configure(server.Url());
  Store({LargeRecord(60000), LargeRecord(60000), LargeRecord(60000), Record(L"fourth"), LargeRecord(220000)},
        false);
  const auto uploader = MakeUploader();
  uploader->TimerHandler();
  ASSERT_EQ(m_storage.Rows(false).size(), 3u);  // the second half was refused
  EXPECT_EQ(m_storage.Rows(false)[0].get_Id(), 3);
  uploader->TimerHandler();
  EXPECT_TRUE(m_storage.Rows(false).empty());  // the last one fits no request
  EXPECT_EQ(m_log.Count("record too large for any request, deleted, Id:5"), 1u);
  EXPECT_EQ(m_key.Decode(server.Requests().back().body).payload["events"][0]["event"], "fourth");
}

TEST_F(OperationUploadTest, SendsUbaRecordsOnlyWhileTheSwitchIsOneAndNumbersThemAcrossRestarts) {
  Testing::ScriptedServer server(m_authority.Issue("localhost"));
  Configure("", server.Url());
  Testing::ManualClock clock;
  UbaLoggerTimer timer;
  for (const int ubaSwitch : {0, 2, 1, 1}) {
    Settings().SetUbaSwitch(ubaSwitch);
    Store({Record(L"first"), Record(L"second")}, true);
    m_log.Clear();
    timer.Start();
    EXPECT_EQ(m_log.All().back().line, 45);
    EXPECT_EQ(m_log.All().back().text, "dbReportFreq = 60");
    clock.WaitForWaiters(1);
    clock.Advance(seconds(60));
    timer.Stop();
    EXPECT_EQ(m_log.Count("g_ubaSwitch = 0"), ubaSwitch == 0 ? 2u : 0u);  // the tick's and the last one's
    EXPECT_EQ(m_storage.Rows(true).empty(), ubaSwitch == 1);
  }
  ASSERT_EQ(server.Requests().size(), 2u);
  const Testing::Request request = server.Requests()[1];
  EXPECT_EQ(request.head.rfind("POST /collector/v1/event ", 0), 0u);
  const auto root = Bilog::ParseJsonObject(Testing::Inflate(request.body));
  ASSERT_TRUE(root && root->size() == 1 && (*root)["events"].size() == 2);
  EXPECT_EQ((*root)["events"][0]["q"], 6);  // three stores went with the first request
  EXPECT_EQ((*root)["events"][1]["x"]["Action"], "second");
}

TEST_F(OperationUploadTest, TicksWithTheHostsMaximumWaitTimeAsPeriod) {
  Configure("");  // without a collector a push succeeds
  Bilog::BiUbaDataType data;
  data.rsaPublicKey = m_key.PublicHex();
  data.pushLogWaitTime = 20;
  data.pushLogMaxWaitTime = 100;
  Bilog::BILogger::GetInstance().SetBiUbaDataPara(data);
  Testing::ManualClock clock;
  OperationLoggerTimer timer;
  timer.Start();
  clock.WaitForWaiters(1);
  Store({Record(L"first")}, false);
  clock.Advance(seconds(99));
  EXPECT_EQ(m_storage.Rows(false).size(), 1u);
  clock.Advance(seconds(1));
  EXPECT_TRUE(m_storage.Rows(false).empty());
  Store({Record(L"second")}, false);
  clock.Advance(seconds(299));  // held back for 300 s, whatever the host said
  EXPECT_EQ(m_storage.Rows(false).size(), 1u);
  clock.Advance(seconds(1));
  EXPECT_TRUE(m_storage.Rows(false).empty());
  timer.Stop();
}

}  // namespace
}  // namespace Drive::OperateLog
