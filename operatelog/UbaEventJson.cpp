// UbaEventJson.cpp - the members of the events of a UBA request.
#include "operatelog/UbaEventJson.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "client/common/EncryptHelper.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "transport/DeviceDescription.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {

namespace {

constexpr int kSequenceModulus = 999999;
constexpr std::size_t kLongRecordBytes = 2048;

double FiniteOr0(double value) { return std::isfinite(value) ? value : 0.0; }

// Truncated; what does not fit becomes the nearest number that does.
std::int64_t ToInteger(double value) {
  using Limits = std::numeric_limits<std::int64_t>;
  if (std::isnan(value)) {
    return 0;
  }
  // The largest integer has no double of its own; the next one above it is 2^63.
  if (value >= static_cast<double>(Limits::max())) {
    return Limits::max();
  }
  return value <= static_cast<double>(Limits::min()) ? Limits::min() : static_cast<std::int64_t>(value);
}

const std::string& HashedDeviceId(const std::wstring& deviceId) {
  static const std::string& hash =
      *new std::string(EncryptHelper::SHA256_Encode(TypeConvert::UnicodeToUTF8(deviceId)));
  return hash;
}

}  // namespace

Json::Value MakeUbaRecordJson(const Bilog::UserLog& record) {
  const auto text = [](const std::wstring& value) { return TypeConvert::UnicodeToUTF8(value); };
  Json::Value object(Json::objectValue);
  object["Id"] = record.get_Id();
  object["Time"] = text(record.get_Time());
  object["Action"] = text(record.get_Action());
  object["UserId"] = text(record.get_UserId());
  object["DevId"] = HashedDeviceId(record.get_DevId());
  object["Code"] = text(record.get_Code());
  object["Info"] = text(record.get_Info());
  object["Extend"] = Bilog::MakeExtendJson(record.get_Extend());
  object["TraceId"] = text(record.get_TraceId());
  object["UseTime"] = FiniteOr0(record.get_UseTime());
  object["StartTime"] = FiniteOr0(record.get_StartTime());
  object["Model"] = text(record.get_Model());
  object["Romversion"] = text(record.get_Romversion());
  object["Appversion"] = text(record.get_Appversion());
  object["Reqsize"] = text(record.get_Reqsize());
  object["Rspsize"] = text(record.get_Rspsize());
  object["Logversion"] = record.get_Logversion();
  object["TraceEndFlag"] = record.get_TraceEndFlag();
  object["CurModule"] = text(record.get_CurModule());
  object["Actiontype"] = text(record.get_Actiontype());
  object["NextModule"] = text(record.get_NextModule());
  object["CountryCode"] = g_countryCode.Get();
  object["ResidenceTime"] = static_cast<Json::Int>(record.get_ResidenceTime());
  object["OprType"] = text(record.get_OprType());
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
    event["t"] = static_cast<Json::Int64>(ToInteger(record.get_StartTime()));
    event["q"] = sequence;
    event["v"] = 1;
    event["x"] = std::move(recordJson);
    sequence = (sequence + 1) % kSequenceModulus;
  }
  return events;
}

}  // namespace Drive::OperateLog
