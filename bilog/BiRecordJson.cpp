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
    object["Info"] = info;
    return;
  }
  if (const Json::Value* fileId = Find(*result, "file_id"); fileId != nullptr && fileId->isString()) {
    object["file_id"] = fileId->asString();
  }
  if (const Json::Value* fileSize = FindNumber(*result, "file_size")) {
    object["file_size"] = ToInt64(*fileSize);
  }
  if (const Json::Value* thumbnail = FindNumber(*result, "thumbnail_type")) {
    object["thumbnail_type"] = Clamped<Json::Int>(thumbnail->asDouble());
  }
}

}  // namespace

Json::Value MakeCommonRecordJson(const UserLog& record) {
  const auto text = [&record](UserLogFields::Text field) {
    return TypeConvert::UnicodeToUTF8(record.*field);
  };
  Json::Value object(Json::objectValue);
  object["Time"] = text(UserLogFields::kTime);
  object["Action"] = text(UserLogFields::kAction);
  object["UserId"] = text(UserLogFields::kUserId);
  object["Code"] = text(UserLogFields::kCode);
  object["Extend"] = MakeExtendJson(record.*UserLogFields::kExtend);
  object["TraceId"] = text(UserLogFields::kTraceId);
  object["UseTime"] = FiniteOr0(record.get_UseTime());
  object["StartTime"] = FiniteOr0(record.get_StartTime());
  object["Model"] = text(UserLogFields::kModel);
  object["Romversion"] = text(UserLogFields::kRomversion);
  object["Appversion"] = text(UserLogFields::kAppversion);
  object["Reqsize"] = text(UserLogFields::kReqsize);
  object["Rspsize"] = text(UserLogFields::kRspsize);
  object["Logversion"] = record.get_Logversion();
  object["TraceEndFlag"] = record.get_TraceEndFlag();
  return object;
}

Json::Value MakeBiRecordJson(const UserLog& record) {
  Json::Value object = MakeCommonRecordJson(record);
  object["DevId"] = TypeConvert::UnicodeToUTF8(record.*UserLogFields::kDevId);
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
