// UbaEventJson.cpp - the members of the events of a UBA request.
#include "operatelog/UbaEventJson.h"

#include <string>

#include "bilog/BiRecordJson.h"
#include "client/common/EncryptHelper.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "model/UserLogFields.h"
#include "transport/JsonNumber.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {

namespace {

constexpr int kSequenceModulus = 999999;
constexpr std::size_t kLongRecordBytes = 2048;

const std::string& HashedDeviceId(const std::wstring& deviceId) {
  static const std::string& hash =
      *new std::string(EncryptHelper::SHA256_Encode(TypeConvert::UnicodeToUTF8(deviceId)));
  return hash;
}

}  // namespace

Json::Value MakeUbaRecordJson(const Bilog::UserLog& record) {
  using Fields = Bilog::UserLogFields;
  const auto text = [&record](Fields::Text field) { return TypeConvert::UnicodeToUTF8(record.*field); };
  Json::Value object = Bilog::MakeCommonRecordJson(record);
  object["Id"] = record.get_Id();
  object["DevId"] = HashedDeviceId(record.*Fields::kDevId);
  object["Info"] = text(Fields::kInfo);
  object["CurModule"] = text(Fields::kCurModule);
  object["Actiontype"] = text(Fields::kActiontype);
  object["NextModule"] = text(Fields::kNextModule);
  object["CountryCode"] = g_countryCode.Get();
  object["ResidenceTime"] = static_cast<Json::Int>(record.get_ResidenceTime());
  object["OprType"] = text(Fields::kOprType);
  object["IsMaintenanceLog"] = record.get_IsMaintenanceLog();
  return object;
}

Json::Value MakeEventsJsonObject(const std::vector<Bilog::UserLog>& records, int& sequence) {
  Json::Value events(Json::arrayValue);
  for (const Bilog::UserLog& record : records) {
    Json::Value recordJson = MakeUbaRecordJson(record);
    if (const std::size_t length = Bilog::WriteJson(recordJson).size(); length > kLongRecordBytes) {
      CommLog::GetInstance().PrintLog(LogLevel::kInfo, __LINE__,
                                      "Drive::OperateLog::UbaLoggerTimer::MakeEventsJsonObject",
                                      "ubaLog id is :" + std::to_string(record.get_Id()) +
                                          "action is :" + TypeConvert::UnicodeToUTF8(record.get_Action()) +
                                          "requestBody length is :" + std::to_string(length));
    }
    Json::Value& event = events.append(Json::Value(Json::objectValue));
    event["e"] = "PCE";
    event["t"] = Bilog::Clamped<Json::Int64>(record.get_StartTime());
    event["q"] = sequence;
    event["v"] = 1;
    event["x"] = std::move(recordJson);
    sequence = (sequence + 1) % kSequenceModulus;
  }
  return events;
}

}  // namespace Drive::OperateLog
