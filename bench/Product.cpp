// Product.cpp - sets the library up for a benchmark, and makes records.
#include "bench/Product.h"

#include <ctime>
#include <filesystem>
#include <random>
#include <thread>

#include "bilog/BILoggerManager.h"
#include "client/common/SharedGlobals.h"
#include "drivelog/BILogger.h"
#include "drivelog/CommLog.h"
#include "logdb/UserLogRow.h"
#include "model/LogSettings.h"
#include "operatelog/OperationLoggerManager.h"

namespace Drive::Bench {

namespace {

OperateLog::OperationLogger::Fields MakeFields(std::minstd_rand& random) {
  const auto number = [&random](unsigned below) { return std::to_wstring(random() % below); };
  return {{L"fileName", L"report " + number(10000) + L".docx"},
          {L"fileSize", number(50000000)},
          {L"fileType", L"docx"},
          {L"result", L"0"},
          {L"speed", number(20000) + L" kB/s"}};
}

}  // namespace

Platform::LocalTime StepClock::NowLocal() const {
  const auto seconds = static_cast<std::time_t>(m_now / 1000);
  const std::tm& time = *std::gmtime(&seconds);
  return {
      time.tm_year + 1900,           time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec,
      static_cast<int>(m_now % 1000)};
}

Product::Product() : m_collector(Testing::CollectorIn(m_folder.Path())) {
  m_system.roaming = m_folder.Wide("roaming");
  m_system.local = m_folder.Wide("local");
  Platform::InstallSystem(&m_system);
  Platform::InstallClock(&m_clock);
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
  Testing::WriteSettings(m_folder.Path() / "local", m_collector.Url(), m_collector.Url());

  auto& logger = Bilog::BILogger::GetInstance();
  logger.InitDataBase(L"user-0123456789");
  g_certPath = std::filesystem::u8path(m_collector.CaPath()).wstring();
  g_deviceId = L"60303ae22b998861bce3b28f33eec1be758a213c86c93c076dbe9f558c11c752";
  g_pcVersion = L"1.2.3.400";
  g_appBrandId = "1";
  g_accountBrandId = "1";
  g_diskType = "0";
  g_userGrade = "3";
  auto data = Testing::SettingsFor(m_collector);
  data.userId = L"user-0123456789";
  logger.SetBiUbaDataPara(data);
}

Product::~Product() {
  Bilog::BiDataBase::GetInstance() = Bilog::BiDataBase();
  CommLog::GetInstance().SetLogFunc({});
  Platform::InstallClock(nullptr);
  Platform::InstallSystem(nullptr);
  Bilog::LogSettings::GetInstance().Reset();
}

void Product::Store(Channel channel, int count) {
  std::minstd_rand random(1);
  const auto pause = [&] { m_clock.Advance(20 + static_cast<std::int64_t>(random() % 5000)); };
  if (channel == Channel::kMaintenance) {
    Bilog::BILoggerManager manager;
    for (int i = 0; i < count; ++i, pause()) {
      manager.AddEvent(16000 + static_cast<int>(random() % 50), L"0", L"upload", MakeFields(random));
    }
    manager.Start();  // its worker stores what waits at once
    while (Oldest(channel, count).size() < static_cast<std::size_t>(count)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return;
  }
  OperateLog::OperationLoggerManager manager;
  Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
  if (channel == Channel::kOperation) {
    manager.SetLogin();
    settings.SetUbaSwitch(0);  // or each event would be stored for both channels
  }
  for (int i = 0; i < count; ++i, pause()) {
    manager.AddEvent(static_cast<OperateLog::OperationBasicEventType>(random() % 77),
                     OperateLog::OperationType{3}, static_cast<OperateLog::OperationActionType>(random() % 5),
                     MakeFields(random));
  }
  manager.SaveAllAndStop();
  settings.SetUbaSwitch(1);
}

std::vector<Bilog::UserLog> Product::Oldest(Channel channel, int count) {
  return Bilog::BiDataBase::GetInstance().executeGetUserLogListCallback(
      count, channel == Channel::kMaintenance ? 1 : 0, channel == Channel::kUba);
}

std::size_t Product::TextBytes(const Bilog::UserLog& record) {
  return (SQLiteDB::MemoryBytes(record) - sizeof(Bilog::UserLog)) / sizeof(wchar_t);
}

}  // namespace Drive::Bench
