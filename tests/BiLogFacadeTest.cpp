// BiLogFacadeTest.cpp - the BI facade: paths, settings, messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

#include "client/common/EncryptHelper.h"
#include "client/common/ReadSyncConfigFile.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "drivelog/BILogger.h"
#include "model/LogSettings.h"
#include "platform/System.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/TempFolder.h"

namespace Drive::Bilog {
namespace {

class BiFacadeTest : public testing::Test {
 protected:
  BiFacadeTest() {
    LogSettings::GetInstance().Reset();
    m_system.roaming = m_folder.Path().wstring();
    Platform::InstallSystem(&m_system);
    const std::filesystem::path config = ReadSyncConfigFile::ReadSyncConfigFileIf::GetConfigFilePath();
    std::filesystem::create_directories(config.parent_path());
    std::ofstream(config) << PC_VERSION_KEY << "=9.8.7\nMacAddressEncrypt=device-1\n";
  }
  ~BiFacadeTest() override {
    Platform::InstallSystem(nullptr);
    LogSettings::GetInstance().Reset();
  }

  Testing::TempFolder m_folder;
  Testing::FakeSystem m_system;
  Testing::CapturedLog m_log;
  BILogger& m_logger = BILogger::GetInstance();
};

TEST_F(BiFacadeTest, PutsTheDatabaseIntoAFolderNamedByTheHash) {
  EXPECT_TRUE(m_logger.InitDataBase(L"user-1"));
  const std::filesystem::path folder = m_folder.Path() / APP_NAME / EncryptHelper::SHA256_Encode("user-1");
  EXPECT_EQ(std::filesystem::path(g_dbFullPath.Get()), folder);
  EXPECT_EQ(g_logDbFullPathWithName.Get(), (folder / "user-1LogDB").u8string());
  EXPECT_TRUE(std::filesystem::exists(folder / "user-1LogDB"));
  EXPECT_EQ(g_pcVersion.Get(), L"9.8.7");
  EXPECT_EQ(g_deviceId.Get(), L"device-1");

  const std::filesystem::path pem =
      std::filesystem::path("programs") / "Talvik" / "Cloud" / "PEM" / "Cacert.pem";
  EXPECT_EQ(std::filesystem::path(g_certPath.Get()), pem);
}

TEST_F(BiFacadeTest, SettingsReachGlobalsAndStoreWithTheWaitTimesExchanged) {
  const BiUbaDataType data{L"u", "abcd", false, L"token", 10, 20, 50, 1, 12345, 7, "CN"};
  m_logger.SetBiUbaDataPara(data);

  EXPECT_EQ(g_userId.Get() + g_accessToken.Get(), L"utoken");
  EXPECT_EQ(g_rsaPublicKey.Get() + g_countryCode.Get(), "abcdCN");
  EXPECT_FALSE(g_operationLogSwitchState.Get());
  const int numbers[] = {g_pushLogWaitTime, g_pushLogSize, g_pushLogMaxWaitTime,
                         g_ubaSwitch,       g_logDbSize,   g_maxPushLogCount};
  EXPECT_TRUE(std::equal(std::begin(numbers), std::end(numbers), &data.pushLogWaitTime));
  EXPECT_FALSE(g_pcModel.Get().empty());
  EXPECT_EQ(LogSettings::GetInstance().GetUserId() + LogSettings::GetInstance().GetAccessToken(), L"utoken");

  const std::string location = "Drive::Bilog::BILogger::SetBiUbaDataPara";
  const Testing::LogMessage expected[] = {{2, 155, location, "g_operationLogSwitchState = 0"},
                                          {2, 156, location, "g_ubaSwitch = 1"},
                                          {1, 157, location, "g_rsaPublicKey = abcd"},
                                          {2, 158, location, "g_pushLogWaitTime = 50"},  // the maximum; meant
                                          {2, 159, location, "g_pushLogSize = 20"},
                                          {2, 160, location, "g_pushLogMaxWaitTime = 300"},
                                          {2, 161, location, "m_logDbSize = 12345"},
                                          {2, 162, location, "m_maxPushLogCount = 7"},
                                          {2, 163, location, "g_countryCode = CN"}};
  EXPECT_EQ(m_log.All(), std::vector<Testing::LogMessage>(std::begin(expected), std::end(expected)));
}

TEST_F(BiFacadeTest, DiskTypeFollowsTheCode) {
  const std::wstring s;
  const std::map<std::wstring, std::wstring> map;
  const std::function<void(int)> forms[] = {[&](int code) { m_logger.OutputBILog(code, s, s, 1.0); },
                                            [&](int code) { m_logger.OutputBILog(code, s, s, s, s); },
                                            [&](int code) { m_logger.OutputBILog(code, s, s); },
                                            [&](int code) { m_logger.OutputBILog(code, s, s, map); },
                                            [&](int code) { m_logger.OutputBILog(code, map); }};
  for (const auto& form : forms) {
    std::string types;
    for (const int code : {16000, 16001, 16019, 16020, 16021}) {
      g_diskType = "-";
      form(code);
      types += g_diskType.Get();
    }
    EXPECT_EQ(types, &form == &forms[0] ? "-0110" : "-0000") << "only the first form knows two codes";
  }
}

}  // namespace
}  // namespace Drive::Bilog
