// LogSettings.cpp - the settings behind one reader/writer lock.
#include "model/LogSettings.h"

#include <mutex>
#include <utility>

#include "client/common/SharedValue.h"
#include "platform/EndingLock.h"

namespace Drive::Bilog {

LogSettings& LogSettings::GetInstance() {
  static LogSettings& instance = *new LogSettings;
  return instance;
}

template <typename T>
T LogSettings::Read(T Values::*field) const {
  const auto lock = Platform::LockUnlessEnding<std::shared_lock>(m_mutex);
  return lock.owns_lock() ? m_values.*field : Values{}.*field;
}

template <typename T>
void LogSettings::Write(T Values::*field, T value) {
  const auto lock = Platform::LockUnlessEnding(m_mutex);
  if (!lock.owns_lock() || m_values.*field == value) return;
  std::swap(m_values.*field, value);  // so that the old text is freed after the unlocking
  CountSharedValueChange();
}

std::wstring LogSettings::GetUserId() const { return Read(&Values::userId); }
void LogSettings::SetUserId(std::wstring value) { Write(&Values::userId, std::move(value)); }

std::string LogSettings::GetRsaPublicKey() const { return Read(&Values::rsaPublicKey); }
void LogSettings::SetRsaPublicKey(std::string value) { Write(&Values::rsaPublicKey, std::move(value)); }

bool LogSettings::GetOperationLogSwitch() const { return Read(&Values::operationLogSwitch); }
void LogSettings::SetOperationLogSwitch(bool value) { Write(&Values::operationLogSwitch, value); }

std::wstring LogSettings::GetAccessToken() const { return Read(&Values::accessToken); }
void LogSettings::SetAccessToken(std::wstring value) { Write(&Values::accessToken, std::move(value)); }

int LogSettings::GetPushWaitTime() const { return Read(&Values::pushWaitTime); }
void LogSettings::SetPushWaitTime(int value) { Write(&Values::pushWaitTime, value); }

int LogSettings::GetPushSize() const { return Read(&Values::pushSize); }
void LogSettings::SetPushSize(int value) { Write(&Values::pushSize, value); }

int LogSettings::GetPushMaxWaitTime() const { return Read(&Values::pushMaxWaitTime); }
void LogSettings::SetPushMaxWaitTime(int value) { Write(&Values::pushMaxWaitTime, value); }

int LogSettings::GetUbaSwitch() const { return Read(&Values::ubaSwitch); }
void LogSettings::SetUbaSwitch(int value) { Write(&Values::ubaSwitch, value); }

int LogSettings::GetLogDbSize() const { return Read(&Values::logDbSize); }
void LogSettings::SetLogDbSize(int value) { Write(&Values::logDbSize, value); }

int LogSettings::GetMaxPushLogCount() const { return Read(&Values::maxPushLogCount); }
void LogSettings::SetMaxPushLogCount(int value) { Write(&Values::maxPushLogCount, value); }

std::string LogSettings::GetCountryCode() const { return Read(&Values::countryCode); }
void LogSettings::SetCountryCode(std::string value) { Write(&Values::countryCode, std::move(value)); }

void LogSettings::Reset() {
  Values defaults;
  const std::lock_guard<std::shared_mutex> lock(m_mutex);
  std::swap(m_values, defaults);
  CountSharedValueChange();
}

}  // namespace Drive::Bilog
