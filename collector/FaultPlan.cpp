// FaultPlan.cpp - which of the coming requests are to be answered wrongly, and how.
#include "collector/FaultPlan.h"

#include <stdexcept>
#include <utility>

#include "collector/JsonCheck.h"
#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

constexpr int kMaxDelayMs = 600000;

void CheckRanges(const Fault& fault) {
  if ((fault.status != 0 && (fault.status < 200 || fault.status > 599)) || fault.count < 0 ||
      fault.share < 0 || fault.share > 1 || fault.delay.count() < 0 || fault.delay.count() > kMaxDelayMs) {
    throw std::invalid_argument("a number of the fault is out of range");
  }
}

}  // namespace

Fault FaultFromJson(const Json::Value& value) {
  try {
    RequireMembers(value, "the fault", {},
                   {{"channel", Kind::kString},
                    {"status", Kind::kInt32},
                    {"body", Kind::kString},
                    {"delay_ms", Kind::kInt32},
                    {"drop", Kind::kBool},
                    {"count", Kind::kInt32},
                    {"share", Kind::kNumber},
                    {"seed", Kind::kInt32},
                    {"until_new_token", Kind::kBool}});
  } catch (const Refusal& refusal) {
    throw std::invalid_argument(refusal.what());
  }
  Fault fault;
  if (value.isMember("channel")) {
    fault.channel = ChannelNamed(value["channel"].asString());
    if (!fault.channel) {
      throw std::invalid_argument("the fault names no channel: " + value["channel"].asString());
    }
  }
  fault.status = value.get("status", fault.status).asInt();
  fault.body = value.get("body", "").asString();
  fault.delay = std::chrono::milliseconds(value.get("delay_ms", 0).asInt());
  fault.drop = value.get("drop", false).asBool();
  fault.untilNewToken = value.get("until_new_token", false).asBool();
  fault.count = value.get("count", fault.count).asInt();
  fault.share = value.get("share", fault.share).asDouble();
  fault.seed = static_cast<unsigned>(value.get("seed", 1).asInt());
  CheckRanges(fault);
  return fault;
}

Json::Value FaultToJson(const Fault& fault) {
  Json::Value value(Json::objectValue);
  if (fault.channel) {
    value["channel"] = NameOf(*fault.channel);
  }
  value["status"] = fault.status;
  value["body"] = fault.body;
  value["delay_ms"] = static_cast<Json::Int64>(fault.delay.count());
  value["drop"] = fault.drop;
  value["count"] = fault.count;
  value["share"] = fault.share;
  value["seed"] = fault.seed;
  value["until_new_token"] = fault.untilNewToken;
  return value;
}

void FaultPlan::Add(const Fault& fault) {
  CheckRanges(fault);
  Entry entry{fault, std::mt19937(fault.seed)};
  if (fault.untilNewToken && fault.status == 0 && !fault.drop) {
    entry.fault.status = 400;
    entry.fault.body = "interface auth failed";
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_entries.push_back(std::move(entry));
}

void FaultPlan::Clear() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_entries.clear();
}

std::vector<Fault> FaultPlan::Pending() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<Fault> faults;
  for (const Entry& entry : m_entries) {
    faults.push_back(entry.fault);
  }
  return faults;
}

std::optional<Fault> FaultPlan::Take(Channel channel, const std::optional<std::string>& token) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (token && *token != m_lastToken) {
    if (!m_lastToken.empty()) {
      m_entries.remove_if([](const Entry& entry) { return entry.fault.untilNewToken; });
    }
    m_lastToken = *token;
  }
  for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
    Fault& fault = entry->fault;
    if (fault.channel && *fault.channel != channel) {
      continue;
    }
    if (fault.share < 1 && std::uniform_real_distribution<double>(0, 1)(entry->draws) >= fault.share) {
      continue;
    }
    Fault hit = fault;
    if (!fault.untilNewToken && fault.count > 0 && --fault.count == 0) {
      m_entries.erase(entry);
    }
    return hit;
  }
  return std::nullopt;
}

}  // namespace Drive::Collection
