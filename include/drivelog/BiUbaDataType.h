// BiUbaDataType.h - the settings that a host hands to BILogger::SetBiUbaDataPara.
#pragma once

#include <string>

namespace Drive::Bilog {

// A plain record. The host fills all fields; the initial values are the library's own defaults.
struct BiUbaDataType {
  std::wstring userId;                  // account identifier; an empty one is stored and reported
  std::string rsaPublicKey;             // PKCS#1 DER key of the operation collector, 540 hexadecimal digits
  bool operationLogSwitchState = true;  // whether operation and UBA records are kept and sent
  std::wstring accessToken;             // sent with UBA uploads
  int pushLogWaitTime = 60;             // seconds; see BILogger::SetBiUbaDataPara for what becomes of it
  int pushLogSize = 100;                // records in one operation or UBA request; below 1: 100
  int pushLogMaxWaitTime = 300;  // seconds between the ticks of the operation and UBA timers; below 1: 60
  int ubaSwitch = 0;             // 1 sends UBA records, any other value does not
  int logDbSize = 1000000;       // rows that one table may hold; below 1: no limit
  int maxPushLogCount = 40;      // records in one BI request; below 1: 40
  std::string countryCode;       // sent with BI and UBA records
};

}  // namespace Drive::Bilog
