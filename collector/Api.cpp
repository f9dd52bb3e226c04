// Api.cpp - the collector's JSON interface, for scripts and people.
#include "collector/Api.h"

#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "collector/Collector.h"
#include "collector/JsonCheck.h"
#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

constexpr std::int64_t kDefaultLimit = 100;

HttpReply JsonReply(const Json::Value& value) {
  return {200, "application/json", CompactText(value) + "\n", false};
}

Json::Int64 Number(std::int64_t value) { return static_cast<Json::Int64>(value); }

std::int64_t QueryNumber(const HttpRequest& request, const char* name, std::int64_t fallback) {
  const auto found = request.query.find(name);
  if (found == request.query.end()) {
    return fallback;
  }
  const std::string& text = found->second;
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 0) {
    throw std::invalid_argument(std::string(name) + " is no number from 0 on");
  }
  return value;
}

std::optional<Channel> QueryChannel(const HttpRequest& request) {
  const auto found = request.query.find("channel");
  if (found == request.query.end() || found->second.empty()) {
    return std::nullopt;
  }
  const auto channel = ChannelNamed(found->second);
  if (!channel) {
    throw std::invalid_argument("channel is none of maintenance, operation, uba");
  }
  return channel;
}

Json::Value HeaderLines(const Headers& headers) {
  Json::Value lines(Json::arrayValue);
  for (const Header& header : headers) {
    lines.append(header.name + ": " + header.value);
  }
  return lines;
}

HttpReply GetCounts(Collector& collector, const HttpRequest&) {
  Json::Value all;
  for (const Channel channel : kChannels) {
    const Collector::ChannelCounts counts = collector.Counts(channel);
    Json::Value& value = all[NameOf(channel)];
    value["attempts"] = Number(counts.attempts);
    value["requests"] = Number(counts.stored.requests);
    value["records"] = Number(counts.stored.records);
    value["replays"] = Number(counts.stored.replays);
    value["rejected"] = Number(counts.stored.rejected);
  }
  return JsonReply(all);
}

HttpReply GetRecords(Collector& collector, const HttpRequest& request) {
  const bool withRequest = QueryNumber(request, "plain", 0) != 0;
  Json::Value list(Json::arrayValue);
  for (const StoredRecord& stored :
       collector.Records(QueryChannel(request), QueryNumber(request, "limit", kDefaultLimit),
                         QueryNumber(request, "since", 0))) {
    Json::Value value;
    value["id"] = Number(stored.id);
    value["channel"] = NameOf(stored.channel);
    value["request_id"] = stored.requestId;
    value["received_ms"] = Number(stored.receivedMs);
    value["replay"] = stored.replay;
    value["headers"] = HeaderLines(stored.headers);
    value["record"] = stored.record;
    if (withRequest) {
      value["plain"] = stored.requestText;
    }
    list.append(std::move(value));
  }
  return JsonReply(list);
}

HttpReply GetRejected(Collector& collector, const HttpRequest& request) {
  Json::Value list(Json::arrayValue);
  for (const StoredRefusal& stored : collector.Rejected(QueryNumber(request, "limit", kDefaultLimit))) {
    Json::Value value;
    value["id"] = Number(stored.id);
    value["channel"] = NameOf(stored.channel);
    value["received_ms"] = Number(stored.receivedMs);
    value["status"] = stored.status;
    value["reason"] = stored.reason;
    value["headers"] = HeaderLines(stored.headers);
    list.append(std::move(value));
  }
  return JsonReply(list);
}

HttpReply PostReset(Collector& collector, const HttpRequest& request) {
  collector.Reset();
  return GetCounts(collector, request);
}

HttpReply GetFaults(Collector& collector, const HttpRequest&) {
  Json::Value list(Json::arrayValue);
  for (const Fault& fault : collector.PendingFaults()) {
    list.append(FaultToJson(fault));
  }
  return JsonReply(list);
}

HttpReply PostFault(Collector& collector, const HttpRequest& request) {
  collector.InjectFault(FaultFromJson(ParseObject(request.body, "the fault")));
  return GetFaults(collector, request);
}

HttpReply DeleteFaults(Collector& collector, const HttpRequest& request) {
  collector.ClearFaults();
  return GetFaults(collector, request);
}

struct Route {
  const char* method;
  const char* path;
  HttpReply (*answer)(Collector&, const HttpRequest&);
};

constexpr Route kRoutes[] = {
    {"GET", "/api/counts", GetCounts},       {"GET", "/api/records", GetRecords},
    {"GET", "/api/rejected", GetRejected},   {"POST", "/api/reset", PostReset},
    {"GET", "/api/faults", GetFaults},       {"POST", "/api/faults", PostFault},
    {"DELETE", "/api/faults", DeleteFaults},
};

}  // namespace

HttpReply AnswerApi(Collector& collector, const HttpRequest& request) {
  for (const Route& route : kRoutes) {
    if (request.method == route.method && request.path == route.path) {
      try {
        return route.answer(collector, request);
      } catch (const Refusal& refusal) {
        return {400, "text/plain", std::string(refusal.what()) + "\n", false};
      } catch (const std::invalid_argument& error) {
        return {400, "text/plain", std::string(error.what()) + "\n", false};
      }
    }
  }
  return {404, "text/plain", "no such path\n", false};
}

}  // namespace Drive::Collection
