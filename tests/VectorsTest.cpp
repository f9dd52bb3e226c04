// VectorsTest.cpp - the committed requests are those that the library makes, and mean what their plain forms
// say, to a server of another hand. With DRIVELOG_WRITE_VECTORS in the environment they are written anew
// first.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "bilog/BiRecordJson.h"
#include "client/common/EncryptHelper.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "collector/Cipher.h"
#include "collector/DataFolder.h"
#include "collector/DecodeCommand.h"
#include "model/EventJson.h"
#include "model/LogSettings.h"
#include "operatelog/OperationEnvelope.h"
#include "operatelog/UbaEventJson.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ManualClock.h"
#include "transport/BodyEncoding.h"
#include "transport/DeviceDescription.h"
#include "transport/Identifiers.h"
#include "transport/JsonText.h"
#include "transport/RequestHeaders.h"

namespace Drive {
namespace {

using Collection::Channel;
using Collection::ReadFile;

const std::filesystem::path kFolder = std::filesystem::u8path(VECTORS_FOLDER);

struct Request {
  std::string headers;  // a line each
  std::string body;
  std::string plain;
};

Bilog::UserLog MakeRecord(int number, const wchar_t* traceId, const wchar_t* info, const wchar_t* extend) {
  Bilog::UserLog record;
  record.set_Id(number);
  record.set_Time(Bilog::MakeRecordTime());
  record.set_Action(number % 2 == 0 ? L"Drive.action.newFile" : L"Drive.action.deleteFile");
  record.set_UserId(L"user-1");
  record.set_DevId(L"A1B2");
  record.set_Code(Bilog::MakeResultCode(L"0"));
  record.set_Info(info);
  record.set_Extend(extend);
  record.set_TraceId(traceId);
  record.set_UseTime(0.25 * number);
  record.set_StartTime(static_cast<double>(Platform::CurrentClock().NowMilliseconds()));
  record.set_Model(L"Win64");
  record.set_Romversion(Bilog::GetOsVersionName());
  record.set_Appversion(L"1.2.3");
  record.set_Actiontype(L"basic_opr");
  record.set_OprType(std::to_wstring(number));
  return record;
}

Request MakeRequest(Channel channel) {
  const std::vector<Bilog::UserLog> records = {
      MakeRecord(1, L"1_11_1709622489045_86971933", L"plain text, \u20ac and \U0001F600", L"a:b"),
      MakeRecord(2, L"2_11_1709622489045_81491014",
                 LR"({"ResultInfo":{"file_id":"f-1","file_size":9007199254740993,"thumbnail_type":2}})",
                 LR"({"fileName":"a \"quoted\" name"})"),
  };
  const std::string requestId = Bilog::MakeRequestId();
  std::vector<std::string> headers = Bilog::CreateReqHeader(requestId);
  std::string body;
  Json::Value plain;
  if (channel == Channel::kMaintenance) {
    plain = Bilog::MakeBiRecordsJson(records);
    const auto bytes = Bilog::MakeBiEnvelope(TypeConvert::UTF8ToUnicode(requestId), L"qmvzomaintqrt", plain);
    body.assign(bytes.begin(), bytes.end());
  } else if (channel == Channel::kOperation) {
    Header header;
    header.SetRequestId(TypeConvert::UTF8ToUnicode(requestId));
    header.SetTimestamp(std::to_wstring(Platform::CurrentClock().NowMilliseconds()));
    plain = MakeEventPayload(records);
    const Collection::RsaKey key(Collection::KeyFromPem(ReadFile(kFolder / "rsa-key.pem")));
    body = OperateLog::MakeOperationEnvelope(header, plain, key.PublicKeyHex()).body;
  } else {
    headers = Bilog::CreateUbaReqHeader(requestId, EncryptHelper::SHA256_Encode("A1B2"));
    int sequence = 0;
    Json::Value root;
    root["events"] = plain = OperateLog::MakeEventsJsonObject(records, sequence);
    Bilog::GzipCompress(Bilog::WriteJson(root), body);
  }
  Request request{"", body, Bilog::WriteJson(plain) + "\n"};
  for (const std::string& line : headers) request.headers += line + "\n";
  return request;
}

class VectorsTest : public testing::TestWithParam<Channel> {
 protected:
  VectorsTest() {
    Platform::InstallSystem(&m_system);
    g_deviceId = L"A1B2";
    g_pcVersion = L"1.2.3";
    g_pcModel = "Test Machine";
    g_userAgent = L"cloud/";
    g_deviceBrandSync = "brand";
    g_countryCode = "CN";
    Bilog::LogSettings::GetInstance().SetUserId(L"user-1");
    Bilog::LogSettings::GetInstance().SetAccessToken(L"token+/=");
  }
  ~VectorsTest() override { Platform::InstallSystem(nullptr); }

  const Testing::ManualClock m_clock;
  const Testing::FakeSystem m_system;
};

TEST_P(VectorsTest, HoldWhatTheLibraryMakesAndItsPlainForm) {
  const std::filesystem::path file = kFolder / Collection::NameOf(GetParam());
  const auto named = [&file](const char* extension) { return std::filesystem::path(file) += extension; };
  const Request request = MakeRequest(GetParam());
  if (std::getenv("DRIVELOG_WRITE_VECTORS") != nullptr) {
    std::ofstream(named(".headers"), std::ios::binary) << request.headers;
    std::ofstream(named(".body"), std::ios::binary) << request.body;
    std::ofstream(named(".json"), std::ios::binary) << request.plain;
  }
  EXPECT_EQ(request.headers, ReadFile(named(".headers")));
  EXPECT_EQ(request.plain, ReadFile(named(".json")));

  Collection::DecodeOrder order;
  order.channel = GetParam();
  order.headersFile = named(".headers");
  order.bodyFile = named(".body");
  order.rsaKeyFile = kFolder / "rsa-key.pem";
  std::ostringstream out;
  std::ostringstream reason;
  ASSERT_EQ(Collection::RunDecode(order, out, reason), 0) << reason.str();
  const auto decoded = Bilog::ParseJsonObject(out.str());
  ASSERT_TRUE(decoded.has_value());
  const char* const list = GetParam() == Channel::kUba ? "events" : "event";
  EXPECT_EQ(Bilog::WriteJson((*decoded)[list]) + "\n", request.plain);
}

INSTANTIATE_TEST_SUITE_P(Channels, VectorsTest, testing::ValuesIn(Collection::kChannels));

}  // namespace
}  // namespace Drive
