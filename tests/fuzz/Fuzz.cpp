// Fuzz.cpp - what the fuzz targets share: promises, and what becomes of records.
#include "tests/fuzz/Fuzz.h"

#include <cstdlib>
#include <iostream>

#include "bilog/BiRecordJson.h"
#include "client/log/TypeConvert.h"
#include "collector/DataFolder.h"
#include "collector/Refusal.h"
#include "collector/RequestCheck.h"
#include "drivelog/CommLog.h"
#include "model/EventJson.h"
#include "operatelog/OperationEnvelope.h"
#include "operatelog/UbaEventJson.h"
#include "transport/BodyEncoding.h"
#include "transport/JsonText.h"

namespace Drive::Testing {

namespace {

using namespace Collection;

constexpr char kRequestId[] = "A1B220240305070809045";
constexpr DeflateRule kRule = DeflateRule::kAsZlibMakes;

Accepted Deliver(Channel channel, const std::vector<Bilog::UserLog>& records) {
  if (channel == Channel::kMaintenance) {
    const auto body = Bilog::MakeBiEnvelope(TypeConvert::UTF8ToUnicode(kRequestId), L"qmvzomaintqrt",
                                            Bilog::MakeBiRecordsJson(records));
    return CheckMaintenanceBody(kRequestId, {body.begin(), body.end()}, kRule);
  }
  if (channel == Channel::kUba) {
    Json::Value root;
    int sequence = 999998;
    root["events"] = OperateLog::MakeEventsJsonObject(records, sequence);
    std::string body;
    Promise(Bilog::GzipCompress(Bilog::WriteJson(root), body), "no gzip body");
    return CheckUbaBody(kRequestId, body, kRule);
  }
  static const RsaKey key(KeyFromPem(ReadFile(VECTORS_FOLDER "/rsa-key.pem")));
  static const std::string publicKey = key.PublicKeyHex();
  Drive::Header header;
  header.SetRequestId(TypeConvert::UTF8ToUnicode(kRequestId));
  header.SetTimestamp(L"1700000000123");
  const auto envelope = OperateLog::MakeOperationEnvelope(header, MakeEventPayload(records), publicKey);
  return CheckOperationBody(kRequestId, envelope.body, kRule, key);
}

}  // namespace

void Promise(bool holds, const std::string& what) {
  if (!holds) {
    std::cerr << "broken promise: " << what << std::endl;
    std::abort();
  }
}

void PromiseDelivery(Channel channel, const std::vector<Bilog::UserLog>& records) {
  static const bool isQuiet =
      (CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {}), true);
  static_cast<void>(isQuiet);
  try {
    const Accepted accepted = Deliver(channel, records);
    Promise(accepted.records.size() == records.size(), "a record is lost");
    for (std::size_t i = 0; i < records.size(); ++i) {
      const bool isUba = channel == Channel::kUba;
      const Json::Value& sent = isUba ? accepted.records[i]["x"] : accepted.records[i];
      const std::string action = TypeConvert::UnicodeToUTF8(records[i].get_Action());
      Promise(sent[channel == Channel::kOperation ? "event" : "Action"] == action, "another action");
      Promise(!sent.isMember("Info") || sent["Info"] == TypeConvert::UnicodeToUTF8(records[i].get_Info()),
              "another info");
    }
  } catch (const Refusal& refusal) {
    Promise(false, std::string("refused: ") + refusal.what());
  }
}

}  // namespace Drive::Testing
