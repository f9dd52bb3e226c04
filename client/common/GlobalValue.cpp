// GlobalValue.cpp - the client's settings of network and package.
#include "client/common/GlobalValue.h"

#include <utility>

namespace Drive {

GlobalValue& GlobalValue::GetInstatnce() {
  static GlobalValue& instance = *new GlobalValue;  // upload threads read it until the process is gone
  return instance;
}

bool GlobalValue::GetIsUseLocalCertificate() const { return m_isUseLocalCertificate; }
void GlobalValue::SetIsUseLocalCertificate(bool value) { m_isUseLocalCertificate = value; }

std::string GlobalValue::GetSystemProxy() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_systemProxy;
}

void GlobalValue::SetSystemProxy(std::string value) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_systemProxy = std::move(value);
}

long GlobalValue::GetTimeoutConnect() const { return m_timeoutConnect; }
void GlobalValue::SetTimeoutConnect(long milliseconds) { m_timeoutConnect = milliseconds; }

long GlobalValue::GetLimitLowSpeed() const { return m_limitLowSpeed; }
void GlobalValue::SetLimitLowSpeed(long bytesPerSecond) { m_limitLowSpeed = bytesPerSecond; }

long GlobalValue::GetTimeoutLowSpeed() const { return m_timeoutLowSpeed; }
void GlobalValue::SetTimeoutLowSpeed(long seconds) { m_timeoutLowSpeed = seconds; }

std::wstring GlobalValue::GetPackageName() const { return L"com.talvik.cloud.pc"; }

}  // namespace Drive
