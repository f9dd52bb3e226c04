// GlobalValue.h - the client's settings of network and package.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

namespace Drive {

// Settings that the client fixes at its start. The initial values keep every transfer finite.
//
// Thread-safety: every operation may be called from any thread. Lifetime: never destroyed.
class GlobalValue {
 public:
  static GlobalValue& GetInstatnce();

  // Whether uploads trust the operating system's certificate store instead of the client's PEM bundle.
  bool GetIsUseLocalCertificate() const;
  void SetIsUseLocalCertificate(bool value);

  // Address of the HTTP proxy, empty for none.
  std::string GetSystemProxy() const;
  void SetSystemProxy(std::string value);

  // Limit of a connection attempt in milliseconds (initially 10000).
  long GetTimeoutConnect() const;
  void SetTimeoutConnect(long milliseconds);

  // A transfer slower than so many bytes a second (initially 1) for so many seconds (initially 30) ends.
  long GetLimitLowSpeed() const;
  void SetLimitLowSpeed(long bytesPerSecond);
  long GetTimeoutLowSpeed() const;
  void SetTimeoutLowSpeed(long seconds);

  // Package name of the client.
  std::wstring GetPackageName() const;

 private:
  GlobalValue() = default;

  std::atomic<bool> m_isUseLocalCertificate{false};
  std::atomic<long> m_timeoutConnect{10000};
  std::atomic<long> m_limitLowSpeed{1};
  std::atomic<long> m_timeoutLowSpeed{30};
  mutable std::mutex m_mutex;  // guards m_systemProxy
  std::string m_systemProxy;
};

}  // namespace Drive
