// UbaEventJson.h - the events of a UBA request.
//
//   {"e": "PCE", "t": start time, "q": running number, "v": 1, "x": the record}
//
// "x" has a member for each of the record's 24 fields, named like it, and "CountryCode".
#pragma once

#include <json/value.h>

#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::OperateLog {

// Fields that need a second look: DevId is sent as a hash, and as that of the first record that this process
// ever converted; this is meant. Extend is sent as an object where it holds one. Times that JSON cannot
// express are sent as 0.
Json::Value MakeUbaRecordJson(const Bilog::UserLog& record);

// One event a record. `sequence` is the running number of the first one, and becomes that of the next
// request; after 999998 comes 0.
Json::Value MakeEventsJsonObject(const std::vector<Bilog::UserLog>& records, int& sequence);

}  // namespace Drive::OperateLog
