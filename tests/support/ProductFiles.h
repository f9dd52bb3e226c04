// ProductFiles.h - what a product and its collector find in a test's folder, and what the product hands over.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "collector/Collector.h"
#include "drivelog/BiUbaDataType.h"

namespace Drive::Testing {

// A collector whose keys are in FOLDER/collector, and its records nowhere.
inline Collection::Collector::Options CollectorIn(const std::filesystem::path& folder) {
  Collection::Collector::Options options;
  options.dataFolder = folder / "collector";
  options.database = ":memory:";
  return options;
}

// Writes the client's settings below its local application data.
inline void WriteSettings(const std::filesystem::path& local, const std::string& baseUri,
                          const std::string& ubaUri) {
  std::filesystem::create_directories(local / "TalvikCloud");
  std::ofstream(local / "TalvikCloud" / "SyncSetting.ini")
      << "[Server]\nBaseUri=" << baseUri << "\nUbaUri=" << ubaUri << "\nMacAddressEncrypt=device-1\n";
}

// What a product that uploads all three channels to the collector hands over, once a minute.
inline Bilog::BiUbaDataType SettingsFor(const Collection::Collector& collector) {
  Bilog::BiUbaDataType data;
  data.userId = L"user-1";
  data.rsaPublicKey = collector.RsaPublicKeyHex();
  data.accessToken = L"token-1";
  data.pushLogMaxWaitTime = 60;
  data.ubaSwitch = 1;
  data.countryCode = "CN";
  return data;
}

}  // namespace Drive::Testing
