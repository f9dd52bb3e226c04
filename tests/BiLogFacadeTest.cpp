// BiLogFacadeTest.cpp - the BI facade: paths, settings, messages, disk type.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

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
      std::filesystem::path(m_system.programFiles) / "Talvik" / "Cloud" / "PEM" / "Cacert.pem";
  EXPECT_EQ(std::filesystem::path(g_certPath.Get()), pem);
  const std::string location = "Drive::Bilog::BILogger::InitDataBase";
  EXPECT_TRUE(m_log.Has({2, 168, location, "InitDataBase begin, logDbPath = user-1"}));
  EXPECT_TRUE(m_log.Has({1, 197, location, "g_logDbFullPathWithName :" + g_logDbFullPathWithName.Get()}));
  EXPECT_TRUE(m_log.Has({2, 198, location, "InitDataBase Cert Path :" + pem.u8string()}));
}

TEST_F(BiFacadeTest, NamesTheFileOfTheSignedInUserByTheConstant) {
  LogSettings::GetInstance().SetUserId(L"user-2");
  EXPECT_TRUE(m_logger.InitDataBase(L"user-2"));
  EXPECT_EQ(std::filesystem::u8path(g_logDbFullPathWithName.Get()).filename().wstring(), LOG_DB_NAME);
  EXPECT_TRUE(m_logger.InitDataBase(L"USER-2"));
  EXPECT_EQ(std::filesystem::u8path(g_logDbFullPathWithName.Get()).filename().wstring(), L"USER-2LogDB");
}

TEST_F(BiFacadeTest, KeepsTheCertificateWithoutAProgramFilesFolder) {
  g_certPath = L"kept";
  m_system.programFiles.clear();
  EXPECT_TRUE(m_logger.InitDataBase(L"user-3"));
  EXPECT_EQ(g_certPath.Get(), L"kept");
  EXPECT_TRUE(m_log.Has({5, 195, "Drive::Bilog::BILogger::InitDataBase", "Get program files fail"}));
}

TEST_F(BiFacadeTest, SettingsReachGlobalsAndStoreWithTheWaitTimesExchanged) {
  BiUbaDataType data;
  data.userId = L"u";
  data.rsaPublicKey = "abcd";
  data.operationLogSwitchState = false;
  data.accessToken = L"token";
  data.pushLogWaitTime = 10;
  data.pushLogSize = 20;
  data.pushLogMaxWaitTime = 50;
  data.ubaSwitch = 1;
  data.logDbSize = 12345;
  data.maxPushLogCount = 7;
  data.countryCode = "CN";
  m_logger.SetBiUbaDataPara(data);

  EXPECT_EQ(g_userId.Get(), L"u");
  EXPECT_EQ(g_rsaPublicKey.Get(), "abcd");
  EXPECT_FALSE(g_operationLogSwitchState.Get());
  EXPECT_EQ(g_accessToken.Get(), L"token");
  EXPECT_EQ(g_pushLogWaitTime.Get(), 10);
  EXPECT_EQ(g_pushLogSize.Get(), 20);
  EXPECT_EQ(g_pushLogMaxWaitTime.Get(), 50);
  EXPECT_EQ(g_ubaSwitch.Get(), 1);
  EXPECT_EQ(g_logDbSize.Get(), 12345);
  EXPECT_EQ(g_maxPushLogCount.Get(), 7);
  EXPECT_EQ(g_countryCode.Get(), "CN");
  EXPECT_FALSE(g_pcModel.Get().empty());
  const LogSettings& settings = LogSettings::GetInstance();
  EXPECT_EQ(settings.GetUserId(), L"u");
  EXPECT_EQ(settings.GetAccessToken(), L"token");
  EXPECT_EQ(settings.GetPushWaitTime(), 50) << "meant: the maximum wait time becomes the period";
  EXPECT_EQ(settings.GetPushMaxWaitTime(), 300);

  const std::string location = "Drive::Bilog::BILogger::SetBiUbaDataPara";
  const Testing::LogMessage expected[] = {{2, 155, location, "g_operationLogSwitchState = 0"},
                                          {2, 156, location, "g_ubaSwitch = 1"},
                                          {1, 157, location, "g_rsaPublicKey = abcd"},
                                          {2, 158, location, "g_pushLogWaitTime = 50"},
                                          {2, 159, location, "g_pushLogSize = 20"},
                                          {2, 160, location, "g_pushLogMaxWaitTime = 300"},
                                          {2, 161, location, "m_logDbSize = 12345"},
                                          {2, 162, location, "m_maxPushLogCount = 7"},
                                          {2, 163, location, "g_countryCode = CN"}};
  const auto entries = m_log.All();
  ASSERT_EQ(entries.size(), std::size(expected));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i], expected[i]);
  }
}

TEST_F(BiFacadeTest, ReportsAnEmptyUserAndReadsMissingDeviceData) {
  g_deviceId = L"";
  m_logger.SetBiUbaDataPara(BiUbaDataType());
  EXPECT_EQ(g_deviceId.Get(), L"device-1");
  EXPECT_TRUE(m_log.Has(
      {5, 133, "Drive::Bilog::BILogger::SetBiUbaDataPara", "[BILogger::SetBiUbaDataPara]userid is empty"}));
}

TEST_F(BiFacadeTest, DiskTypeFollowsTheCode) {
  const std::map<std::wstring, std::wstring> map;
  const std::wstring s;
  using Output = std::function<void(int)>;
  const Output withDuration = [&](int code) { m_logger.OutputBILog(code, s, s, 1.0); };
  const Output others[] = {[&](int code) { m_logger.OutputBILog(code, s, s, s, s); },
                           [&](int code) { m_logger.OutputBILog(code, s, s); },
                           [&](int code) { m_logger.OutputBILog(code, s, s, map); },
                           [&](int code) { m_logger.OutputBILog(code, map); }};
  const auto diskTypeAfter = [](const Output& output, int code) {
    g_diskType = "before";
    output(code);
    return g_diskType.Get();
  };
  for (const int code : {16019, 16020}) {
    EXPECT_EQ(diskTypeAfter(withDuration, code), "1");
  }
  EXPECT_EQ(diskTypeAfter(withDuration, 16021), "0");
  EXPECT_EQ(diskTypeAfter(withDuration, 16000), "before");
  for (const Output& output : others) {
    EXPECT_EQ(diskTypeAfter(output, 16019), "0");
    EXPECT_EQ(diskTypeAfter(output, 16001), "0");
    EXPECT_EQ(diskTypeAfter(output, 16000), "before");
  }
}

}  // namespace
}  // namespace Drive::Bilog
