// UbaCheck.cpp - the UBA channel's body:
//
//   gzip( {"events": [{"e": "PCE", "t": time, "q": sequence, "v": 1, "x": record}, ...]} )
#include <cmath>

#include "collector/JsonCheck.h"
#include "collector/RecordCheck.h"
#include "collector/Refusal.h"
#include "collector/RequestCheck.h"

namespace Drive::Collection {

namespace {

constexpr int kSequenceNumbers = 999999;  // they run from 0 to 999998
constexpr double kExactTimes = 9e15;      // every whole number below has a double of its own

void CheckEvent(const Json::Value& event) {
  RequireMembers(event, "the event",
                 {{"e", Kind::kString},
                  {"t", Kind::kInt64},
                  {"q", Kind::kInt32},
                  {"v", Kind::kInt32},
                  {"x", Kind::kObject}});
  Require(event["e"].asString() == "PCE", "\"e\" of the event is wrong");
  Require(event["v"].asInt() == 1, "\"v\" of the event is wrong");
  Require(event["q"].asInt() >= 0 && event["q"].asInt() < kSequenceNumbers,
          "\"q\" of the event is out of range");
  CheckUbaRecord(event["x"]);
  const double startTime = event["x"]["StartTime"].asDouble();
  Require(std::fabs(startTime) >= kExactTimes || event["t"].asInt64() == static_cast<Json::Int64>(startTime),
          "\"t\" of the event is not the record's start time");
}

}  // namespace

Accepted CheckUbaBody(const std::string& requestId, const std::string& body, DeflateRule rule) {
  Accepted accepted;
  accepted.requestId = requestId;
  accepted.plainText = InflateGzip(body, rule);
  const Json::Value root = ParseObject(accepted.plainText, "the body");
  RequireMembers(root, "the body", {{"events", Kind::kArray}});

  const Json::Value& events = root["events"];
  Require(!events.empty(), "the body has no event");
  for (Json::ArrayIndex i = 0; i < events.size(); ++i) {
    CheckEvent(events[i]);
    Require(i == 0 || events[i]["q"].asInt() == (events[i - 1]["q"].asInt() + 1) % kSequenceNumbers,
            "\"q\" does not go up by one from event to event");
    accepted.records.push_back(events[i]);
  }
  return accepted;
}

}  // namespace Drive::Collection
