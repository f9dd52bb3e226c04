// SharedGlobals.cpp - the process-wide values of the client.
#include "client/common/SharedGlobals.h"

#include <atomic>

#include "platform/EndingLock.h"

namespace Drive {

namespace {

std::atomic<std::uint64_t> changes{0};

}  // namespace

std::uint64_t SharedValueChanges() { return changes; }
void CountSharedValueChange() { ++changes; }

std::unique_lock<std::mutex> LockSharedValue(std::mutex& mutex) { return Platform::LockUnlessEnding(mutex); }

SharedValue<std::wstring> g_userId;
SharedValue<std::string> g_rsaPublicKey;
SharedValue<bool> g_operationLogSwitchState;
SharedValue<std::wstring> g_accessToken;
SharedValue<int> g_pushLogWaitTime;
SharedValue<int> g_pushLogSize;
SharedValue<int> g_pushLogMaxWaitTime;
SharedValue<int> g_ubaSwitch;
SharedValue<int> g_logDbSize;
SharedValue<int> g_maxPushLogCount;
SharedValue<std::string> g_countryCode;

SharedValue<std::wstring> g_deviceId;
SharedValue<std::wstring> g_pcVersion;
SharedValue<std::string> g_pcModel;
SharedValue<std::wstring> g_userAgent;
SharedValue<bool> g_isOffLine;

SharedValue<std::string> g_deviceBrandSync;
SharedValue<std::string> g_appBrandId;
SharedValue<std::string> g_accountBrandId;
SharedValue<std::wstring> g_deviceBrandId;
SharedValue<std::string> g_diskType;
SharedValue<std::string> g_userGrade;

SharedValue<std::wstring> g_dbFullPath;
SharedValue<std::string> g_logDbFullPathWithName;
SharedValue<std::wstring> g_certPath;

}  // namespace Drive
