// BiRecordJson.h - a BI record as the maintenance collector takes it.
#pragma once

#include <json/value.h>

#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::Bilog {

// One object with 17 members at most:
//
//   {"Time", "Action", "UserId", "DevId", "Code",
//    "Info" | "file_id", "file_size", "thumbnail_type",
//    "Extend", "TraceId", "UseTime", "StartTime", "Model", "Romversion", "Appversion", "Reqsize", "Rspsize",
//    "Logversion", "TraceEndFlag"}
//
// An Info text that holds {"ResultInfo": {...}} is replaced by those of its three members that have a fitting
// type; any other Info is sent as text. Numbers that JSON cannot express are sent as 0.
Json::Value MakeBiRecordJson(const UserLog& record);

Json::Value MakeBiRecordsJson(const std::vector<UserLog>& records);

}  // namespace Drive::Bilog
