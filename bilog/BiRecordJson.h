// BiRecordJson.h - a BI record as the maintenance collector takes it.
#pragma once

#include <json/value.h>

#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::Bilog {

// The members that the maintenance and the UBA collector take alike. Extend is sent as an object where it
// holds one; numbers that JSON cannot express are sent as 0.
//
//   {"Time", "Action", "UserId", "Code", "Extend", "TraceId", "UseTime", "StartTime", "Model", "Romversion",
//    "Appversion", "Reqsize", "Rspsize", "Logversion", "TraceEndFlag"}
Json::Value MakeCommonRecordJson(const UserLog& record);

// These members, and
//
//   {"DevId", "Info" | "file_id", "file_size", "thumbnail_type"}
//
// An Info text that holds {"ResultInfo": {...}} is replaced by those of its three members that have a fitting
// type; any other Info is sent as text.
Json::Value MakeBiRecordJson(const UserLog& record);

Json::Value MakeBiRecordsJson(const std::vector<UserLog>& records);

}  // namespace Drive::Bilog
