// RecordCheck.h - the members that a log record has on the wire.
#pragma once

#include <json/json.h>

namespace Drive::Collection {

// A record of the maintenance channel: 15 members of its own, "Extend", and what became of its detail text:
// "Info", or any of "file_id", "file_size" and "thumbnail_type", or nothing.
void CheckMaintenanceRecord(const Json::Value& record);

// A record of the UBA channel: 25 members, "DevId" hashed.
void CheckUbaRecord(const Json::Value& record);

}  // namespace Drive::Collection
