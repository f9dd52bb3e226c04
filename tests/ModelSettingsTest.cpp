// ModelSettingsTest.cpp - the settings store.
#include <gtest/gtest.h>

#include <sstream>

#include "client/log/TypeConvert.h"
#include "model/LogSettings.h"

namespace Drive::Testing {
namespace {

using Bilog::LogSettings;

// All settings on one line, in the order of the store.
std::string Describe(const LogSettings& settings) {
  std::ostringstream text;
  text << TypeConvert::UnicodeToUTF8(settings.GetUserId()) << '|' << settings.GetRsaPublicKey() << '|'
       << settings.GetOperationLogSwitch() << '|' << TypeConvert::UnicodeToUTF8(settings.GetAccessToken())
       << '|' << settings.GetPushWaitTime() << '|' << settings.GetPushSize() << '|'
       << settings.GetPushMaxWaitTime() << '|' << settings.GetUbaSwitch() << '|' << settings.GetLogDbSize()
       << '|' << settings.GetMaxPushLogCount() << '|' << settings.GetCountryCode();
  return text.str();
}

class LogSettingsTest : public testing::Test {
 protected:
  LogSettingsTest() { m_settings.Reset(); }
  ~LogSettingsTest() override { m_settings.Reset(); }

  LogSettings& m_settings = LogSettings::GetInstance();
};

TEST_F(LogSettingsTest, StartsWithTheDefaultsAndKeepsEachSettingApart) {
  EXPECT_EQ("||1||60|100|300|0|1000000|40|", Describe(m_settings));
  m_settings.SetUserId(L"user");
  m_settings.SetRsaPublicKey("key");
  m_settings.SetOperationLogSwitch(false);
  m_settings.SetAccessToken(L"token");
  m_settings.SetPushWaitTime(1);
  m_settings.SetPushSize(2);
  m_settings.SetPushMaxWaitTime(3);
  m_settings.SetUbaSwitch(4);
  m_settings.SetLogDbSize(5);
  m_settings.SetMaxPushLogCount(6);
  m_settings.SetCountryCode("XY");
  EXPECT_EQ("user|key|0|token|1|2|3|4|5|6|XY", Describe(m_settings));
}

}  // namespace
}  // namespace Drive::Testing
