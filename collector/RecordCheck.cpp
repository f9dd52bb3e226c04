// RecordCheck.cpp - the members that a log record has on the wire.
#include "collector/RecordCheck.h"

#include "collector/Decoding.h"
#include "collector/JsonCheck.h"
#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

const Members& CommonMembers() {
  static const Members& members = *new Members{
      {"Time", Kind::kString},       {"Action", Kind::kString},     {"UserId", Kind::kString},
      {"DevId", Kind::kString},      {"Code", Kind::kString},       {"Extend", Kind::kAny},
      {"TraceId", Kind::kString},    {"UseTime", Kind::kNumber},    {"StartTime", Kind::kNumber},
      {"Model", Kind::kString},      {"Romversion", Kind::kString}, {"Appversion", Kind::kString},
      {"Reqsize", Kind::kString},    {"Rspsize", Kind::kString},    {"Logversion", Kind::kInt32},
      {"TraceEndFlag", Kind::kInt32}};
  return members;
}

const Members& UbaMembers() {
  static const Members& members = *[] {
    auto all = new Members(CommonMembers());
    all->insert(all->end(), {{"Id", Kind::kInt32},
                             {"Info", Kind::kString},
                             {"CurModule", Kind::kString},
                             {"Actiontype", Kind::kString},
                             {"NextModule", Kind::kString},
                             {"CountryCode", Kind::kString},
                             {"ResidenceTime", Kind::kInt32},
                             {"OprType", Kind::kString},
                             {"IsMaintenanceLog", Kind::kInt32}});
    return all;
  }();
  return members;
}

// An object with the seven brand members, or a text with the brand text in it. A text that held its own
// DEVICE_BRAND from the start has none of the other six: that is meant.
void CheckExtend(const Json::Value& extend) {
  if (extend.isString()) {
    Require(extend.asString().find("DEVICE_BRAND") != std::string::npos,
            "\"Extend\" of the record lacks the brand text");
    return;
  }
  Require(extend.isObject(), "\"Extend\" of the record is neither an object nor a string");
  for (const char* name : {"DEVICE_BRAND", "APP_BRAND_ID", "ACCOUNT_BRAND_ID", "DEVICE_BRAND_ID", "DISK_TYPE",
                           "COUNTRY_CODE", "USER_GRADE"}) {
    if (!extend.isMember(name) || !extend[name].isString()) {
      throw Refusal("\"Extend\" of the record lacks the brand member \"" + std::string(name) + "\"");
    }
  }
}

}  // namespace

void CheckMaintenanceRecord(const Json::Value& record) {
  static const Members& detail = *new Members{{"Info", Kind::kString},
                                              {"file_id", Kind::kString},
                                              {"file_size", Kind::kInt64},
                                              {"thumbnail_type", Kind::kInt32}};
  RequireMembers(record, "the record", CommonMembers(), detail);
  Require(!record.isMember("Info") || record.size() == CommonMembers().size() + 1,
          "the record has both \"Info\" and a file member");
  CheckExtend(record["Extend"]);
}

void CheckUbaRecord(const Json::Value& record) {
  RequireMembers(record, "the record", UbaMembers());
  CheckExtend(record["Extend"]);
  Require(IsLowerCaseHex(record["DevId"].asString(), 64), "\"DevId\" of the record is not a SHA-256 text");
  Require(record["IsMaintenanceLog"].asInt() == 0, "a maintenance record on the UBA channel");
}

}  // namespace Drive::Collection
