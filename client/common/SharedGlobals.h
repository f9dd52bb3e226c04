// SharedGlobals.h - the process-wide values of the client.
#pragma once

#include <string>

#include "client/common/SharedValue.h"

namespace Drive {

// Identity and settings of the signed-in user. BILogger::SetBiUbaDataPara writes them.
extern SharedValue<std::wstring> g_userId;
extern SharedValue<std::string> g_rsaPublicKey;
extern SharedValue<bool> g_operationLogSwitchState;
extern SharedValue<std::wstring> g_accessToken;
extern SharedValue<int> g_pushLogWaitTime;     // seconds
extern SharedValue<int> g_pushLogSize;         // records
extern SharedValue<int> g_pushLogMaxWaitTime;  // seconds
extern SharedValue<int> g_ubaSwitch;
extern SharedValue<int> g_logDbSize;        // rows
extern SharedValue<int> g_maxPushLogCount;  // records
extern SharedValue<std::string> g_countryCode;

// Device and application.
extern SharedValue<std::wstring> g_deviceId;
extern SharedValue<std::wstring> g_pcVersion;
extern SharedValue<std::string> g_pcModel;
extern SharedValue<std::wstring> g_userAgent;
extern SharedValue<bool> g_isOffLine;

// Brand description.
extern SharedValue<std::string> g_deviceBrandSync;
extern SharedValue<std::string> g_appBrandId;
extern SharedValue<std::string> g_accountBrandId;
extern SharedValue<std::wstring> g_deviceBrandId;
extern SharedValue<std::string> g_diskType;
extern SharedValue<std::string> g_userGrade;

// Files. The two database values name the same file: the folder, and the full path in UTF-8.
extern SharedValue<std::wstring> g_dbFullPath;
extern SharedValue<std::string> g_logDbFullPathWithName;
extern SharedValue<std::wstring> g_certPath;

}  // namespace Drive
