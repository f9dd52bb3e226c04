// make_vectors.cpp - writes one request of each channel with its plain content, for those who write a server.
//
// make_vectors FOLDER      (see tests/vectors/README.md for what it leaves there)
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bilog/BiRecordJson.h"
#include "client/common/EncryptHelper.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "collector/Cipher.h"
#include "drivelog/CommLog.h"
#include "drivelog/Events.h"
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

namespace {

namespace fs = std::filesystem;
using Drive::Bilog::UserLog;

void Write(const fs::path& file, const std::string& bytes) {
  std::ofstream stream(file, std::ios::binary);
  stream << bytes;
  if (!stream.flush()) {
    throw std::runtime_error("cannot write " + file.u8string());
  }
}

void WriteRequest(const fs::path& folder, const std::string& channel,
                  const std::vector<std::string>& headerLines, const std::string& body,
                  const Json::Value& plain) {
  std::string headers;
  for (const std::string& line : headerLines) {
    headers += line + "\n";
  }
  Write(folder / (channel + ".headers"), headers);
  Write(folder / (channel + ".body"), body);
  Write(folder / (channel + ".json"), Drive::Bilog::WriteJson(plain) + "\n");
}

UserLog MakeRecord(int number, const wchar_t* info, const wchar_t* extend) {
  UserLog record;
  record.set_Id(number);
  record.set_Time(Drive::Bilog::MakeRecordTime());
  record.set_Action(number % 2 == 0 ? L"Drive.action.newFile" : L"Drive.action.deleteFile");
  record.set_UserId(L"user-1");
  record.set_DevId(L"A1B2");
  record.set_Code(Drive::Bilog::MakeResultCode(L"0"));
  record.set_Info(info);
  record.set_Extend(extend);
  record.set_TraceId(Drive::Bilog::MakeRandomLogId(number));
  record.set_UseTime(0.25 * number);
  record.set_StartTime(static_cast<double>(Drive::Platform::CurrentClock().NowMilliseconds()));
  record.set_Model(L"Win64");
  record.set_Romversion(Drive::Bilog::GetOsVersionName());
  record.set_Appversion(L"1.2.3");
  record.set_Actiontype(L"basic_opr");
  record.set_OprType(std::to_wstring(number));
  return record;
}

void MakeVectors(const fs::path& folder) {
  using namespace Drive;
  // The fake system's folders are no place for log files.
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
  const Testing::ManualClock clock;  // the same times in every run
  const Testing::FakeSystem system;
  Platform::InstallSystem(&system);
  g_deviceId = L"A1B2";
  g_pcVersion = L"1.2.3";
  g_pcModel = "Test Machine";
  g_userAgent = L"cloud/";
  g_deviceBrandSync = "brand";
  g_countryCode = "CN";
  Bilog::LogSettings::GetInstance().SetUserId(L"user-1");
  Bilog::LogSettings::GetInstance().SetAccessToken(L"token+/=");
  const std::vector<UserLog> records = {
      MakeRecord(1, L"plain text, \u20ac and \U0001F600", L"a:b"),
      MakeRecord(2, LR"({"ResultInfo":{"file_id":"f-1","file_size":9007199254740993,"thumbnail_type":2}})",
                 LR"({"fileName":"a \"quoted\" name"})"),
  };
  const std::string requestId = Bilog::MakeRequestId();
  const auto text = [](const std::vector<unsigned char>& bytes) {
    return std::string(bytes.begin(), bytes.end());
  };

  const Json::Value bi = Bilog::MakeBiRecordsJson(records);
  WriteRequest(folder, "maintenance", Bilog::CreateReqHeader(requestId),
               text(Bilog::MakeBiEnvelope(TypeConvert::UTF8ToUnicode(requestId), L"qmvzomaintqrt", bi)), bi);

  const auto key = Collection::RsaKey::Generate();
  Write(folder / "rsa-key.pem", Collection::KeyToPem(key.Pair()));
  Header header;
  header.SetRequestId(TypeConvert::UTF8ToUnicode(requestId));
  header.SetTimestamp(std::to_wstring(clock.NowMilliseconds()));
  const Json::Value payload = MakeEventPayload(records);
  const auto envelope = OperateLog::MakeOperationEnvelope(header, payload, key.PublicKeyHex());
  if (envelope.status != OperateLog::OperationEnvelope::Status::kMade) {
    throw std::runtime_error("operation envelope: " + envelope.failure);
  }
  WriteRequest(folder, "operation", Bilog::CreateReqHeader(requestId), envelope.body, payload);

  int sequence = 0;
  Json::Value uba(Json::objectValue);
  uba["events"] = OperateLog::MakeEventsJsonObject(records, sequence);
  std::string gzip;
  Bilog::GzipCompress(Bilog::WriteJson(uba), gzip);
  WriteRequest(folder, "uba", Bilog::CreateUbaReqHeader(requestId, EncryptHelper::SHA256_Encode("A1B2")),
               gzip, uba["events"]);
  Platform::InstallSystem(nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_vectors FOLDER\n", stderr);
    return 2;
  }
  try {
    MakeVectors(fs::u8path(argv[1]));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_vectors: %s\n", error.what());
    return 1;
  }
  return 0;
}
