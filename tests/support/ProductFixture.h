// ProductFixture.h - the whole library as a product sets it up: real database, real collector, virtual time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "bilog/BILoggerManager.h"
#include "bilog/BILoggerTimer.h"
#include "client/common/SharedGlobals.h"
#include "drivelog/BILogger.h"
#include "drivelog/BiDataBase.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

// One folder, one collector and one clock a test. The parts of the facades are made by the tests themselves,
// since a facade lives as long as the process.
class ProductFixture : public testing::Test {
 protected:
  using Channel = Collection::Channel;

  ProductFixture() {
    Bilog::LogSettings::GetInstance().Reset();
    m_system.roaming = m_folder.Wide("roaming");
    m_system.local = m_folder.Wide("local");
    Platform::InstallSystem(&m_system);
    WriteSettings(m_folder.Path() / "local", m_collector.Url(), m_collector.Url());
    auto& logger = Bilog::BILogger::GetInstance();
    EXPECT_TRUE(logger.InitDataBase(L"user-1"));
    g_certPath = std::filesystem::u8path(m_collector.CaPath()).wstring();
    g_deviceId = L"device-1";
    logger.SetBiUbaDataPara(Settings());
  }
  ~ProductFixture() override {
    g_isOffLine = false;
    g_deviceId = L"";
    Bilog::BiDataBase::GetInstance() = Bilog::BiDataBase();
    Platform::InstallSystem(nullptr);
    Bilog::LogSettings::GetInstance().Reset();
  }

  Bilog::BiUbaDataType Settings() const { return SettingsFor(m_collector); }

  // Rows of a channel that wait in the database.
  static std::size_t Stored(Channel channel) {
    return Bilog::BiDataBase::GetInstance()
        .executeGetUserLogListCallback(1000000, channel == Channel::kMaintenance ? 1 : 0,
                                       channel == Channel::kUba)
        .size();
  }
  // Records that the collector has accepted.
  std::int64_t Accepted(Channel channel) const { return m_collector.Counts(channel).stored.records; }
  std::int64_t Attempts(Channel channel) const { return m_collector.Counts(channel).attempts; }

  // Messages that begin with `text`.
  std::size_t CountBeginning(const std::string& text) const {
    std::size_t count = 0;
    for (const LogMessage& message : m_log.All()) {
      count += message.text.rfind(text, 0) == 0 ? 1 : 0;
    }
    return count;
  }
  // What the collector refused, for the message of a failed test.
  std::string Refusals() const {
    std::string text;
    for (const auto& refusal : m_collector.Rejected()) {
      text += refusal.reason + "\n";
    }
    return text;
  }

  TempFolder m_folder;
  FakeSystem m_system;
  CapturedLog m_log;
  ManualClock m_clock;
  Collection::Collector m_collector{CollectorIn(m_folder.Path())};
};

}  // namespace Drive::Testing
