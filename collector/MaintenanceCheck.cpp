// MaintenanceCheck.cpp - the maintenance channel's body:
//
//   zlib( {"header": {"Request-Id", "App-Id", "serviceid", "timestamp"}, "event": [record, ...]} )
#include "collector/JsonCheck.h"
#include "collector/RecordCheck.h"
#include "collector/Refusal.h"
#include "collector/RequestCheck.h"

namespace Drive::Collection {

Accepted CheckMaintenanceBody(const std::string& requestId, const std::string& body, DeflateRule rule) {
  Accepted accepted;
  accepted.requestId = requestId;
  accepted.plainText = InflateZlib(body, rule);
  const Json::Value root = ParseObject(accepted.plainText, "the body");
  RequireMembers(root, "the body", {{"header", Kind::kObject}, {"event", Kind::kArray}});

  const Json::Value& header = root["header"];
  RequireMembers(header, "the header",
                 {{"Request-Id", Kind::kString},
                  {"App-Id", Kind::kString},
                  {"serviceid", Kind::kString},
                  {"timestamp", Kind::kInt64}});
  Require(header["Request-Id"].asString() == requestId, "\"Request-Id\" is not the one of the HTTP header");
  Require(header["App-Id"].asString() == "com.talvik.cloud.pc", "\"App-Id\" is wrong");
  Require(header["serviceid"].asString() == "qmvzomaintqrt", "\"serviceid\" is wrong");
  Require(header["timestamp"].asInt64() >= 0, "\"timestamp\" is negative");

  Require(!root["event"].empty(), "the body has no record");
  for (const Json::Value& record : root["event"]) {
    CheckMaintenanceRecord(record);
    accepted.records.push_back(record);
  }
  return accepted;
}

}  // namespace Drive::Collection
