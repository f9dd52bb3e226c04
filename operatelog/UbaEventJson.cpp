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

using Key = Json::StaticString;  // is not copied into each object

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
  object[Key("Id")] = record.get_Id();
  object[Key("DevId")] = HashedDeviceId(record.*Fields::kDevId);
  object[Key("Info")] = text(Fields::kInfo);
  object[Key("CurModule")] = text(Fields::kCurModule);
  object[Key("Actiontype")] = text(Fields::kActiontype);
  object[Key("NextModule")] = text(Fields::kNextModule);
  object[Key("CountryCode")] = g_countryCode.Get();
  object[Key("ResidenceTime")] = static_cast<Json::Int>(record.get_ResidenceTime());
  object[Key("OprType")] = text(Fields::kOprType);
  object[Key("IsMaintenanceLog")] = record.get_IsMaintenanceLog();
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
    event[Key("e")] = "PCE";
    event[Key("t")] = Bilog::Clamped<Json::Int64>(Bilog::FiniteOr0(record.get_StartTime()));
    event[Key("q")] = sequence;
    event[Key("v")] = 1;
    event[Key("x")] = std::move(recordJson);
    sequence = (sequence + 1) % kSequenceModulus;
  }
  return events;
}

}  // namespace Drive::OperateLog
