// EventJson.h - the objects of an operation-log request.
//
//   request:  {"header": MakeHeaderJson, "event": enciphered payload as text}
//   payload:  {"events_common": {..., "properties": MakeDevicePropertiesJson}, "events": [...]}
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "client/common/EventCommonProperties.h"
#include "drivelog/Events.h"
#include "drivelog/UserLog.h"

namespace Drive {

// Service identifier of the operation channel.
inline constexpr const char* kOperationServiceId = "qmvzooperqrt";

// `chifer` is the enciphered key of the request.
Json::Value MakeHeaderJson(const Header& header, const std::string& chifer);

Json::Value MakeDevicePropertiesJson(const EventCommonProperties& properties);

Json::Value MakeEventsCommonJson(const Events_common& common, const Json::Value& deviceProperties);

// One event a record. Of the record only the action is sent; the event's time is that of this call.
Json::Value MakeEventsJson(const std::vector<Bilog::UserLog>& records);

// The payload of a request that is made now.
Json::Value MakeEventPayload(const std::vector<Bilog::UserLog>& records);

}  // namespace Drive
