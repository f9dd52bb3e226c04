// ClientFactsTest.cpp - what the client tells about files, device, application and names.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "client/common/DeviceModel.h"
#include "client/common/EventCommonProperties.h"
#include "client/common/FileHepler.h"
#include "client/common/ReadSyncConfigFile.h"
#include "client/common/SharedGlobals.h"
#include "client/log/LoggerUtility.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

class FactsTest : public testing::Test {
 protected:
  void SetUp() override { Platform::InstallSystem(&m_system); }
  void TearDown() override { Platform::InstallSystem(nullptr); }

  Testing::FakeSystem m_system;
  const Testing::TempFolder m_folder;
};

TEST_F(FactsTest, FileQuestions) {
  const std::wstring file = m_folder.Wide("f\xC3\xAFle");
  const std::wstring folder = m_folder.Path().wstring();
  const std::wstring impossible(3, static_cast<wchar_t>(0xD800));
  std::ofstream(std::filesystem::u8path(m_folder.Narrow("f\xC3\xAFle"))) << "12345";

  EXPECT_TRUE(FileHepler::CheckFileExist(file));
  EXPECT_TRUE(FileHepler::CheckFileExist(folder)) << "folders count";
  EXPECT_EQ(FileHepler::GetLocalFileSize(file), 5U);
  EXPECT_FALSE(FileHepler::DeleteLocalFile(folder));
  EXPECT_TRUE(FileHepler::CheckFileExist(folder));
  EXPECT_TRUE(FileHepler::DeleteLocalFile(file));
  for (const std::wstring& missing : {file, impossible, std::wstring()}) {
    EXPECT_FALSE(FileHepler::CheckFileExist(missing));
    EXPECT_EQ(FileHepler::GetLocalFileSize(missing), 0U) << "never a huge number";
    EXPECT_FALSE(FileHepler::DeleteLocalFile(missing));
  }
}

TEST_F(FactsTest, DeviceModelIsCutBetweenCharacters) {
  struct {
    std::string model;
    std::size_t size;
    std::string expected;
  } const rows[] = {{"ab\xE4\xB8\x89", 16, "ab\xE4\xB8\x89"},
                    {"ab\xE4\xB8\x89", 6, "ab\xE4\xB8\x89"},
                    {"ab\xE4\xB8\x89", 5, "ab"},
                    {"ab\xE4\xB8\x89", 1, ""},
                    {"", 16, "Unknown"},
                    {"a\xFF", 16, "a\xEF\xBF\xBD"}};
  for (const auto& row : rows) {
    m_system.model = row.model;
    std::string buffer(20, '#');
    GetDeviceModel(buffer.data(), row.size);
    EXPECT_EQ(std::string(buffer.c_str()), row.expected);
    EXPECT_EQ(buffer.substr(row.size), std::string(20 - row.size, '#')) << "nothing behind the buffer";
  }
  GetDeviceModel(nullptr, 0);
}

TEST_F(FactsTest, EventPropertiesTellSystemAndApplication) {
  m_system.version = Platform::OsVersion{2, 10, 0, 19045, 1, true};
  m_system.model = "Machine";
  g_pcVersion = L"3.2.1";
  EventCommonProperties properties;
  EXPECT_EQ(properties.get_Rom_ver(), L"10.0.19045.1");
  EXPECT_EQ(properties.get_model(), L"Machine");
  EXPECT_EQ(properties.get_App_ver(), L"3.2.1");
  EXPECT_EQ(properties.get_Package_name(), L"com.talvik.cloud.pc");
  EXPECT_FALSE(properties.get_Lib_ver().empty());

  g_pcModel = "Chosen";
  m_system.version.reset();
  properties = EventCommonProperties();
  EXPECT_EQ(properties.get_model(), L"Chosen");
  EXPECT_EQ(properties.get_Rom_ver(), L"");
  g_pcModel = "";
  g_pcVersion = L"";
}

TEST_F(FactsTest, NamesAndPlaces) {
  m_system.roaming = L"/r";
  m_system.local = L"/l";
  const std::wstring separator = Platform::kPathSeparator;
  EXPECT_EQ(ReadSyncConfigFile::ReadSyncConfigFileIf::GetConfigFilePath(),
            L"/r" + separator + L"TalvikCloud" + separator + L"SyncConfig.ini");
  EXPECT_EQ(LoggerUtility::GetLocalAppDataPath(), L"/l");

  LoggerUtility::SetUplogTypes({{7, "Seven"}});
  EXPECT_EQ(LoggerUtility::GetUplogType(7), "Seven");
  EXPECT_EQ(LoggerUtility::GetUplogType(-8), "-8");
  LoggerUtility::SetUplogTypes({});
  EXPECT_EQ(LoggerUtility::GetUplogType(7), "7");
}

}  // namespace
}  // namespace Drive
