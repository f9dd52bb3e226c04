// BiRecordJson.cpp - the members of a BI record, and the rule for its Info text.
#include "bilog/BiRecordJson.h"

#include <cmath>
#include <limits>
#include <string>

#include "client/log/TypeConvert.h"
#include "transport/DeviceDescription.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {

namespace {

double FiniteOr0(double value) { return std::isfinite(value) ? value : 0.0; }

const Json::Value* Find(const Json::Value& object, const std::string& key) {
  return object.find(key.data(), key.data() + key.size());
}

// A number as a 64-bit integer, clamped to `low` and `high`; nothing for any other type.
const Json::Value* FindNumber(const Json::Value& object, const std::string& key) {
  const Json::Value* member = Find(object, key);
  return member != nullptr && member->isNumeric() && !member->isBool() ? member : nullptr;
}

template <typename Integer>
Integer Clamped(const Json::Value& number) {
  using Limits = std::numeric_limits<Integer>;
  if (number.isInt64()) {
    const auto value = number.asInt64();
    if (value < Limits::min()) {
      return Limits::min();
    }
    return value > Limits::max() ? Limits::max() : static_cast<Integer>(value);
  }
  const double value = number.asDouble();
  if (value >= static_cast<double>(Limits::max())) {
    return Limits::max();
  }
  return value <= static_cast<double>(Limits::min()) ? Limits::min() : static_cast<Integer>(value);
}

void SetInfo(const std::string& info, Json::Value& object) {
  const auto parsed = ParseJsonObject(info);
  const Json::Value* result = parsed ? Find(*parsed, "ResultInfo") : nullptr;
  if (result == nullptr || !result->isObject()) {
    object["Info"] = info;
    return;
  }
  if (const Json::Value* fileId = Find(*result, "file_id"); fileId != nullptr && fileId->isString()) {
    object["file_id"] = fileId->asString();
  }
  if (const Json::Value* fileSize = FindNumber(*result, "file_size")) {
    object["file_size"] = Clamped<Json::Int64>(*fileSize);
  }
  if (const Json::Value* thumbnail = FindNumber(*result, "thumbnail_type")) {
    object["thumbnail_type"] = Clamped<Json::Int>(*thumbnail);
  }
}

}  // namespace

Json::Value MakeBiRecordJson(const UserLog& record) {
  const auto text = [](const std::wstring& value) { return TypeConvert::UnicodeToUTF8(value); };
  Json::Value object(Json::objectValue);
  object["Time"] = text(record.get_Time());
  object["Action"] = text(record.get_Action());
  object["UserId"] = text(record.get_UserId());
  object["DevId"] = text(record.get_DevId());
  object["Code"] = text(record.get_Code());
  SetInfo(text(record.get_Info()), object);
  object["Extend"] = MakeExtendJson(record.get_Extend());
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
  return object;
}

Json::Value MakeBiRecordsJson(const std::vector<UserLog>& records) {
  Json::Value array(Json::arrayValue);
  for (const UserLog& record : records) {
    array.append(MakeBiRecordJson(record));
  }
  return array;
}

}  // namespace Drive::Bilog
