// UploadFixture.h - what an upload needs of the client: settings file, certificates, a diagnostic log.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "client/common/GlobalValue.h"
#include "client/common/SharedGlobals.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Certificates.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/TempFolder.h"
#include "transport/PushLogRequest.h"

namespace Drive::Testing {

class UploadFixture : public testing::Test {
 protected:
  UploadFixture() {
    m_system.local = m_folder.Path().wstring();
    Platform::InstallSystem(&m_system);
    std::ofstream(m_folder.Path() / "ca.pem") << m_authority.Pem();
    g_certPath = m_folder.Wide("ca.pem");
  }
  ~UploadFixture() override {
    Platform::InstallSystem(nullptr);
    g_certPath = std::wstring();
    g_isOffLine = false;
    Bilog::LogSettings::GetInstance().Reset();
    GlobalValue& global = GlobalValue::GetInstatnce();
    global.SetIsUseLocalCertificate(false);
    global.SetSystemProxy("");
    global.SetLimitLowSpeed(1);
    global.SetTimeoutLowSpeed(30);
  }

  // Both collectors at these addresses, as the client's settings file names them.
  void Configure(const std::string& baseUri, const std::string& ubaUri = {}) {
    std::filesystem::create_directories(m_folder.Path() / "TalvikCloud");
    std::ofstream(m_folder.Path() / "TalvikCloud" / "SyncSetting.ini")
        << "[Server]\nBaseUri=" << baseUri << "\nUbaUri=" << ubaUri << "\nMacAddressEncrypt=abc\n";
    m_client.Init();
    m_log.Clear();
  }

  bool PushToBi(const std::string& body = "body") {
    return m_client.PushLogToBiServer(body, L"/common/qmvzomaintqrt", "id-1");
  }

  // The failed attempts that the log tells of, by libcurl's code.
  std::vector<std::string> FailedAttempts() const {
    const std::string start = "PushLogToServer Fail result:";
    std::vector<std::string> codes;
    for (const LogMessage& message : m_log.OfLevel(5)) {
      EXPECT_EQ(message.location, "Drive::Bilog::PushLogRequest::PushLogToServer");
      if (message.line == 121 && message.text.compare(0, start.size(), start) == 0) {
        codes.push_back(message.text.substr(start.size()));
      }
    }
    return codes;
  }

  TempFolder m_folder;
  FakeSystem m_system;
  Authority m_authority;
  CapturedLog m_log;
  Bilog::PushLogRequest m_client;
};

}  // namespace Drive::Testing
