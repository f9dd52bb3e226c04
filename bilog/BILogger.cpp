// BILogger.cpp - the BI facade: initialisation, settings, and the way to queue and timer.
#include "drivelog/BILogger.h"

#include <array>

#include "bilog/BILoggerManager.h"
#include "bilog/BILoggerTimer.h"
#include "client/common/DeviceModel.h"
#include "client/common/EncryptHelper.h"
#include "client/common/IniFileHelper.h"
#include "client/common/ReadSyncConfigFile.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/Guarded.h"
#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "platform/ProcessEnd.h"
#include "platform/System.h"

namespace Drive::Bilog {

namespace {

// Codes above this one belong to disk operations; two of them concern the other disk type.
constexpr int kLastCodeWithoutDisk = 16000;
constexpr int kCodeDiskOne = 16019;
constexpr int kCodeDiskOneToo = 16020;

const char* const kInitDataBase = "Drive::Bilog::BILogger::InitDataBase";
const char* const kSetBiUbaDataPara = "Drive::Bilog::BILogger::SetBiUbaDataPara";
const char* const kClearDataBase = "Drive::Bilog::BILogger::ClearDataBase";
const char* const kDeviceIdKey = "MacAddressEncrypt";

void Print(int level, int line, const char* location, const std::string& text) {
  CommLog::GetInstance().PrintLog(level, line, location, text);
}

void SetDiskTypeZeroAbove(int code) {
  if (code > kLastCodeWithoutDisk) {
    g_diskType = "0";
  }
}

// Narrow text is UTF-8 everywhere, so the narrow code page and UTF-8 give the same text here.
void ReadDeviceAndVersion() {
  const IniFileHelper config(ReadSyncConfigFile::ReadSyncConfigFileIf::GetConfigFilePath());
  g_pcVersion = TypeConvert::UTF8ToUnicode(config.ReadIniValueByKeyTypeString(PC_VERSION_KEY));
  g_deviceId = TypeConvert::StringToWString(config.ReadIniValueByKeyTypeString(kDeviceIdKey));
}

// The folder of the user's database, and the full name of its file.
void SetDatabasePaths(const std::wstring& logDbPath, const std::wstring& fileName) {
  const Platform::System& system = Platform::CurrentSystem();
  const std::wstring separator = Platform::kPathSeparator;
  const std::string hash = EncryptHelper::SHA256_Encode(TypeConvert::UnicodeToUTF8(logDbPath));
  const std::wstring folder = system.ShortPath(system.RoamingAppDataFolder()) + separator + APP_NAME +
                              separator + TypeConvert::UTF8ToUnicode(hash);
  g_dbFullPath = folder;
  g_logDbFullPathWithName = TypeConvert::UnicodeToUTF8(folder + separator + fileName);
}

void SetCertificatePath() {
  const std::wstring programs = Platform::CurrentSystem().ProgramFilesFolder();
  if (programs.empty()) {
    Print(LogLevel::kError, 195, kInitDataBase, "Get program files fail");
    return;
  }
  std::wstring path = programs;
  for (const wchar_t* level : {L"Talvik", L"Cloud", L"PEM", L"Cacert.pem"}) {
    path.append(Platform::kPathSeparator).append(level);
  }
  g_certPath = path;
}

void SetGlobals(const BiUbaDataType& data) {
  g_rsaPublicKey = data.rsaPublicKey;
  g_operationLogSwitchState = data.operationLogSwitchState;
  g_accessToken = data.accessToken;
  g_pushLogWaitTime = data.pushLogWaitTime;
  g_pushLogSize = data.pushLogSize;
  g_pushLogMaxWaitTime = data.pushLogMaxWaitTime;
  g_ubaSwitch = data.ubaSwitch;
  g_logDbSize = data.logDbSize;
  g_maxPushLogCount = data.maxPushLogCount;
  g_countryCode = data.countryCode;
}

void SetSettings(const BiUbaDataType& data) {
  LogSettings& settings = LogSettings::GetInstance();
  settings.SetRsaPublicKey(data.rsaPublicKey);
  settings.SetOperationLogSwitch(data.operationLogSwitchState);
  settings.SetAccessToken(data.accessToken);
  settings.SetPushWaitTime(data.pushLogWaitTime);
  settings.SetPushSize(data.pushLogSize);
  // Meant so: the maximum wait time becomes the period of the ticks, and the limit of the hold-back stays.
  settings.SetPushWaitTime(data.pushLogMaxWaitTime);
  settings.SetUbaSwitch(data.ubaSwitch);
  settings.SetLogDbSize(data.logDbSize);
  settings.SetMaxPushLogCount(data.maxPushLogCount);
  settings.SetCountryCode(data.countryCode);
}

void PrintSettings() {
  const LogSettings& settings = LogSettings::GetInstance();
  const auto print = [](int line, int level, const char* name, const std::string& value) {
    Print(level, line, kSetBiUbaDataPara, name + value);
  };
  const auto number = [](int value) { return std::to_string(value); };
  print(155, LogLevel::kInfo, "g_operationLogSwitchState = ", number(settings.GetOperationLogSwitch()));
  print(156, LogLevel::kInfo, "g_ubaSwitch = ", number(settings.GetUbaSwitch()));
  print(157, LogLevel::kDebug, "g_rsaPublicKey = ", settings.GetRsaPublicKey());
  print(158, LogLevel::kInfo, "g_pushLogWaitTime = ", number(settings.GetPushWaitTime()));
  print(159, LogLevel::kInfo, "g_pushLogSize = ", number(settings.GetPushSize()));
  print(160, LogLevel::kInfo, "g_pushLogMaxWaitTime = ", number(settings.GetPushMaxWaitTime()));
  print(161, LogLevel::kInfo, "m_logDbSize = ", number(settings.GetLogDbSize()));
  print(162, LogLevel::kInfo, "m_maxPushLogCount = ", number(settings.GetMaxPushLogCount()));
  print(163, LogLevel::kInfo, "g_countryCode = ", settings.GetCountryCode());
}

}  // namespace

// What is left to do when static objects are destroyed.
struct BILoggerEnd {
  BILogger& logger;
  ~BILoggerEnd() {
    Guarded("Drive::Bilog::BILogger::~BILogger", [this] {
      Platform::ProcessEnd::Begin();
      logger.m_timer->Stop();
      SQLiteDB::LogSQLiteDB::GetInstance().StoreKeptRecords();
    });
  }
};

// Never destroyed: when the process ends, a thread of the host may be in a call, and a static object of the
// host may make one later.
BILogger& BILogger::GetInstance() {
  static BILogger& instance = *new BILogger;
  static const BILoggerEnd end{instance};
  return instance;
}

// Touches what it needs to its end first, so that all of it outlives that.
BILogger::BILogger() {
  CommLog::GetInstance();
  LogSettings::GetInstance();
  BiDataBase::GetInstance();
  SQLiteDB::LogSQLiteDB::GetInstance();
  m_timer = std::make_unique<BILoggerTimer>();
  m_manager = std::make_unique<BILoggerManager>();
}

BILogger::~BILogger() = default;

bool BILogger::InitDataBase(std::wstring logDbPath) {
  return Guarded(kInitDataBase, [&] {
    Print(LogLevel::kInfo, 168, kInitDataBase,
          "InitDataBase begin, logDbPath = " + TypeConvert::WStringToString(logDbPath));
    ReadDeviceAndVersion();
    const bool isSignedInUser = LogSettings::GetInstance().GetUserId() == logDbPath;
    const std::wstring fileName = isSignedInUser ? LOG_DB_NAME : logDbPath + L"LogDB";
    SetDatabasePaths(logDbPath, fileName);
    SetCertificatePath();
    Print(LogLevel::kDebug, 197, kInitDataBase, "g_logDbFullPathWithName :" + g_logDbFullPathWithName.Get());
    Print(LogLevel::kInfo, 198, kInitDataBase,
          "InitDataBase Cert Path :" + TypeConvert::UnicodeToUTF8(g_certPath.Get()));
    return SQLiteDB::LogSQLiteDB::GetInstance().InitDataBase(fileName);
  });
}

void BILogger::SetBiUbaDataPara(const BiUbaDataType& data) {
  Guarded(kSetBiUbaDataPara, [&data] {
    if (g_pcVersion.Get().empty() || g_deviceId.Get().empty()) {
      ReadDeviceAndVersion();
    }
    std::array<char, 1024> model{};
    GetDeviceModel(model.data(), model.size());
    g_pcModel = std::string(model.data());
    g_userId = data.userId;
    LogSettings::GetInstance().SetUserId(data.userId);
    if (LogSettings::GetInstance().GetUserId().empty()) {
      Print(LogLevel::kError, 133, kSetBiUbaDataPara, "[BILogger::SetBiUbaDataPara]userid is empty");
    }
    SetGlobals(data);
    SetSettings(data);
    PrintSettings();
  });
}

void BILogger::OutputBILog(const std::wstring& action, const std::wstring& code, const std::wstring& info,
                           const std::wstring& extend, const std::wstring& traceId) {
  Guarded("Drive::Bilog::BILogger::OutputBILog",
          [&] { m_manager->AddEvent(action, code, info, extend, traceId); });
}

// The only overload that knows the codes of disk type "1"; this is meant.
void BILogger::OutputBILog(int code, const std::wstring& resultCode, const std::wstring& info,
                           double useTime) {
  Guarded("Drive::Bilog::BILogger::OutputBILog", [&] {
    if (code == kCodeDiskOne || code == kCodeDiskOneToo) {
      g_diskType = "1";
    } else {
      SetDiskTypeZeroAbove(code);
    }
    m_manager->AddEvent(code, resultCode, info, useTime);
  });
}

void BILogger::OutputBILog(int code, std::wstring resultCode, std::wstring unused, std::wstring info,
                           std::wstring extend) {
  Guarded("Drive::Bilog::BILogger::OutputBILog", [&] {
    SetDiskTypeZeroAbove(code);
    m_manager->AddEvent(code, resultCode, unused, info, extend);
  });
}

void BILogger::OutputBILog(int code, std::wstring info, std::wstring extend) {
  Guarded("Drive::Bilog::BILogger::OutputBILog", [&] {
    SetDiskTypeZeroAbove(code);
    m_manager->AddEvent(code, info, extend);
  });
}

void BILogger::OutputBILog(int code, std::wstring resultCode, std::wstring info,
                           std::map<std::wstring, std::wstring> extend) {
  Guarded("Drive::Bilog::BILogger::OutputBILog", [&] {
    SetDiskTypeZeroAbove(code);
    m_manager->AddEvent(code, resultCode, info, extend);
  });
}

void BILogger::OutputBILog(int code, std::map<std::wstring, std::wstring> extend) {
  Guarded("Drive::Bilog::BILogger::OutputBILog", [&] {
    SetDiskTypeZeroAbove(code);
    m_manager->AddEvent(code, extend);
  });
}

void BILogger::StartBILoggerTask() {
  Guarded("Drive::Bilog::BILogger::StartBILoggerTask", [this] { m_manager->Start(); });
}

void BILogger::StartBILogRptTask() {
  Guarded("Drive::Bilog::BILogger::StartBILogRptTask", [this] { m_timer->Start(); });
}

void BILogger::StopBILoggerTask() {
  Guarded("Drive::Bilog::BILogger::StopBILoggerTask", [this] { m_timer->Stop(); });
}

void BILogger::ClearDataBase() {
  Guarded(kClearDataBase, [] {
    Print(LogLevel::kInfo, 209, kClearDataBase, "ClearDataBase begin");
    BiDataBase& database = BiDataBase::GetInstance();
    database.executeDeleteAllOperationLogUserLogCallback(false, 1);
    database.executeDeleteAllOperationLogUserLogCallback(false, 0);
    database.executeDeleteAllOperationLogUserLogCallback(true, 0);
  });
}

void BILogger::DeleteFromAllTables() {
  Guarded("Drive::Bilog::BILogger::DeleteFromAllTables",
          [] { SQLiteDB::LogSQLiteDB::GetInstance().DeleteFromAllTables(); });
}

}  // namespace Drive::Bilog
