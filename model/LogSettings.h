// LogSettings.h - the library's own store of the host's settings.
#pragma once

#include <shared_mutex>
#include <string>

namespace Drive::Bilog {

// What SetBiUbaDataPara handed over, as the library's threads read it. Nothing is persisted.
//
// Surprises: the library never sets pushMaxWaitTime, and pushWaitTime holds the host's maximum wait time; see
//            BILogger::SetBiUbaDataPara.
// Thread-safety: every operation may be called from any thread; each locks for its own field only.
// Lifetime: never destroyed.
class LogSettings {
 public:
  static LogSettings& GetInstance();

  std::wstring GetUserId() const;
  void SetUserId(std::wstring value);

  // Hexadecimal text of the key.
  std::string GetRsaPublicKey() const;
  void SetRsaPublicKey(std::string value);

  bool GetOperationLogSwitch() const;
  void SetOperationLogSwitch(bool value);

  std::wstring GetAccessToken() const;
  void SetAccessToken(std::wstring value);

  // Seconds.
  int GetPushWaitTime() const;
  void SetPushWaitTime(int value);

  // Records in one request.
  int GetPushSize() const;
  void SetPushSize(int value);

  // Seconds.
  int GetPushMaxWaitTime() const;
  void SetPushMaxWaitTime(int value);

  // 1 is on.
  int GetUbaSwitch() const;
  void SetUbaSwitch(int value);

  // Rows that one table may hold.
  int GetLogDbSize() const;
  void SetLogDbSize(int value);

  // Records in one BI request.
  int GetMaxPushLogCount() const;
  void SetMaxPushLogCount(int value);

  std::string GetCountryCode() const;
  void SetCountryCode(std::string value);

  // Puts the defaults back. For tests.
  void Reset();

 private:
  struct Values {
    std::wstring userId;
    std::string rsaPublicKey;
    bool operationLogSwitch = true;
    std::wstring accessToken;
    int pushWaitTime = 60;
    int pushSize = 100;
    int pushMaxWaitTime = 300;
    int ubaSwitch = 0;
    int logDbSize = 1000000;
    int maxPushLogCount = 40;
    std::string countryCode;
  };

  LogSettings() = default;

  template <typename T>
  T Read(T Values::*field) const;
  template <typename T>
  void Write(T Values::*field, T value);

  mutable std::shared_mutex m_mutex;  // guards m_values
  Values m_values;
};

// The setting, or its default where a positive number is needed and the setting is none.
constexpr int PositiveOr(int setting, int defaultValue) { return setting > 0 ? setting : defaultValue; }

}  // namespace Drive::Bilog
