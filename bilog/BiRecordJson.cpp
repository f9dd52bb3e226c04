// BiRecordJson.cpp - the members of a record, and the rule for the Info text of a BI record.
#include "bilog/BiRecordJson.h"

#include <string>

#include "client/log/TypeConvert.h"
#include "model/UserLogFields.h"
#include "transport/DeviceDescription.h"
#include "transport/JsonNumber.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {

namespace {

using Key = Json::StaticString;  // is not copied into each object

const Json::Value* Find(const Json::Value& object, const std::string& key) {
  return object.find(key.data(), key.data() + key.size());
}

// The member, if it is a number.
const Json::Value* FindNumber(const Json::Value& object, const std::string& key) {
  const Json::Value* member = Find(object, key);
  return member != nullptr && member->isNumeric() && !member->isBool() ? member : nullptr;
}

// Exact where the number is a 64-bit integer, which a double may not be able to hold.
Json::Int64 ToInt64(const Json::Value& number) {
  return number.isInt64() ? number.asInt64() : Clamped<Json::Int64>(number.asDouble());
}

void SetInfo(const std::string& info, Json::Value& object) {
  const auto parsed = ParseJsonObject(info);
  const Json::Value* result = parsed ? Find(*parsed, "ResultInfo") : nullptr;
  if (result == nullptr || !result->isObject()) {
    object[Key("Info")] = info;
    return;
  }
  if (const Json::Value* fileId = Find(*result, "file_id"); fileId != nullptr && fileId->isString()) {
    object[Key("file_id")] = fileId->asString();
  }
  if (const Json::Value* fileSize = FindNumber(*result, "file_size")) {
    object[Key("file_size")] = ToInt64(*fileSize);
  }
  if (const Json::Value* thumbnail = FindNumber(*result, "thumbnail_type")) {
    object[Key("thumbnail_type")] = Clamped<Json::Int>(thumbnail->asDouble());
  }
}

}  // namespace

Json::Value MakeCommonRecordJson(const UserLog& record) {
  const auto text = [&record](UserLogFields::Text field) {
    return TypeConvert::UnicodeToUTF8(record.*field);
  };
  Json::Value object(Json::objectValue);
  object[Key("Time")] = text(UserLogFields::kTime);
  object[Key("Action")] = text(UserLogFields::kAction);
  object[Key("UserId")] = text(UserLogFields::kUserId);
  object[Key("Code")] = text(UserLogFields::kCode);
  object[Key("Extend")] = MakeExtendJson(record.*UserLogFields::kExtend);
  object[Key("TraceId")] = text(UserLogFields::kTraceId);
  object[Key("UseTime")] = FiniteOr0(record.get_UseTime());
  object[Key("StartTime")] = FiniteOr0(record.get_StartTime());
  object[Key("Model")] = text(UserLogFields::kModel);
  object[Key("Romversion")] = text(UserLogFields::kRomversion);
  object[Key("Appversion")] = text(UserLogFields::kAppversion);
  object[Key("Reqsize")] = text(UserLogFields::kReqsize);
  object[Key("Rspsize")] = text(UserLogFields::kRspsize);
  object[Key("Logversion")] = record.get_Logversion();
  object[Key("TraceEndFlag")] = record.get_TraceEndFlag();
  return object;
}

Json::Value MakeBiRecordJson(const UserLog& record) {
  Json::Value object = MakeCommonRecordJson(record);
  object[Key("DevId")] = TypeConvert::UnicodeToUTF8(record.*UserLogFields::kDevId);
  SetInfo(TypeConvert::UnicodeToUTF8(record.*UserLogFields::kInfo), object);
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
