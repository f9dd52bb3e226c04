// ProductSetup.cpp - settings files, certificate, and the library's start and stop.
#include "examples/sync_folder/ProductSetup.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <system_error>

#include "client/common/EncryptHelper.h"
#include "client/common/IniFileHelper.h"
#include "client/common/ReadSyncConfigFile.h"
#include "client/common/SharedGlobals.h"
#include "client/log/LoggerUtility.h"
#include "client/log/TypeConvert.h"
#include "drivelog/BILogger.h"
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"
#include "examples/sync_folder/EventRecorder.h"
#include "examples/sync_folder/PathText.h"

namespace SyncFolder {

namespace fs = std::filesystem;
using Drive::TypeConvert;
using Drive::Bilog::BILogger;
using Drive::OperateLog::OperationLogger;

namespace {

constexpr const char* kVersion = "1.0.0";
constexpr int kErrorLevel = 5;

// An access token as the account service of a product would issue it, a new one for every request.
std::string IssueAccessToken() {
  static std::atomic<int> number{0};
  return "example-token-" + std::to_string(++number);
}

std::string AnswerOtherProcesses(int command, const std::string&) {
  return command == Drive::IPC::kCommandRenewAccessToken ? IssueAccessToken() : std::string();
}

// All messages, or the errors alone: then a collector that is away says so once, not with every attempt.
void ShowDiagnostics(bool verbose) {
  struct LastError {
    std::mutex mutex;  // guards text
    std::string text;
  };
  const auto last = std::make_shared<LastError>();  // the library's threads report until the process is gone
  CommLog::GetInstance().SetLogFunc(
      [verbose, last](int level, int line, const std::string& location, const std::string& message) {
        if (!verbose) {
          const std::lock_guard<std::mutex> lock(last->mutex);
          if (level != kErrorLevel || message == last->text) {
            return;
          }
          last->text = message;
        }
        std::fprintf(stderr, "  [%d] %s:%d %s\n", level, location.c_str(), line, message.c_str());
      });
}

// A device identifier is made once and kept: records of one machine belong together.
std::string MakeDeviceId() {
  std::array<unsigned char, 16> bytes{};
  Drive::EncryptHelper::GetSecureRandom(bytes.data(), bytes.size());
  return Drive::EncryptHelper::CharToHexStr(bytes.data(), bytes.size());
}

// What an installer does: puts the bundle where the library looks for it, unless one is there. Where there is
// no folder of programs, the shared value says where the bundle is (UseCertificate).
bool InstallCertificate(const fs::path& certificate) {
  const char* const programs = std::getenv("ProgramFiles");
  if (programs == nullptr) {
    return true;
  }
  const fs::path folder = fs::path(programs) / "Talvik" / "Cloud" / "PEM";
  std::error_code error;
  fs::create_directories(folder, error);
  fs::copy_file(certificate, folder / "Cacert.pem", fs::copy_options::skip_existing, error);
  return !error;
}

// BILogger::InitDataBase has chosen a path by then. The example's bundle takes its place only when no product
// is installed there.
void UseCertificate(const fs::path& certificate) {
  std::error_code ignored;
  const std::wstring chosen = Drive::g_certPath.Get();
  if (chosen.empty() || !fs::exists(fs::path(chosen), ignored)) {
    Drive::g_certPath.Set(WideText(fs::absolute(certificate, ignored)));
  }
}

// Values of the client's own library. A library that holds that part itself, as the DLL on Windows does, does
// not see them: its uploads have no user agent then but the version, and its BI records codes for names.
void SetClientValues() {
  Drive::g_userAgent.Set(L"sync_folder/");
  Drive::LoggerUtility::SetUplogTypes(UploadTypeNames());
}

bool WriteValues(const fs::path& file,
                 const std::initializer_list<std::pair<const char*, std::string>>& values) {
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  Drive::IniFileHelper ini(WideText(file));
  for (const auto& [key, value] : values) {
    if (!ini.WriteIniValue(key, value)) {
      std::fprintf(stderr, "cannot write %s\n", NarrowText(file).c_str());
      return false;
    }
  }
  return true;
}

}  // namespace

Product::Product(const Options& options)
    : m_mainProcess(AnswerOtherProcesses), m_isReady(WriteSettingsFiles(options) && SetUpLibrary(options)) {}

bool Product::WriteSettingsFiles(const Options& options) {
  const fs::path config(Drive::ReadSyncConfigFile::ReadSyncConfigFileIf::GetConfigFilePath());
  const fs::path settings =
      fs::path(Drive::LoggerUtility::GetLocalAppDataPath()) / Drive::APP_NAME / "SyncSetting.ini";

  std::string deviceId =
      Drive::IniFileHelper(WideText(config)).ReadIniValueByKeyTypeString("MacAddressEncrypt");
  if (deviceId.empty()) {
    deviceId = MakeDeviceId();
  }
  return WriteValues(config, {{Drive::PC_VERSION_KEY, kVersion}, {"MacAddressEncrypt", deviceId}}) &&
         WriteValues(
             settings,
             {{"BaseUri", options.baseUri}, {"UbaUri", options.ubaUri}, {"MacAddressEncrypt", deviceId}});
}

bool Product::SetUpLibrary(const Options& options) {
  ShowDiagnostics(options.verbose);
  if (!m_mainProcess.IsListening()) {
    std::fprintf(stderr, "another main process answers already; it will be asked for tokens\n");
  }
  if (!InstallCertificate(options.certificate)) {
    std::fprintf(stderr, "cannot install the certificate bundle %s\n",
                 NarrowText(options.certificate).c_str());
    return false;
  }

  const std::wstring user = TypeConvert::UTF8ToUnicode(options.user);
  if (!BILogger::GetInstance().InitDataBase(user)) {
    std::fprintf(stderr, "the log database cannot be opened\n");
    return false;
  }
  UseCertificate(options.certificate);
  SetClientValues();

  Drive::Bilog::BiUbaDataType data;
  data.userId = user;
  data.rsaPublicKey = options.rsaKey;
  data.accessToken = TypeConvert::UTF8ToUnicode(IssueAccessToken());
  data.pushLogSize = kReportBatch;
  data.pushLogMaxWaitTime = 1;  // a look at the database every second, so that a run is over soon
  data.ubaSwitch = 1;
  data.maxPushLogCount = 200;
  data.countryCode = "CN";
  BILogger::GetInstance().SetBiUbaDataPara(data);
  return true;
}

void Product::Start() {
  BILogger::GetInstance().StartBILoggerTask();
  BILogger::GetInstance().StartBILogRptTask();
  OperationLogger::GetInstance().StartLoggerTask();
  OperationLogger::GetInstance().StartLogRptTask();
}

void Product::SendPartialBatches() {
  OperationLogger::GetInstance().StopLoggerTask();
  OperationLogger::GetInstance().StartLoggerTask();
  OperationLogger::GetInstance().StartLogRptTask();
}

void Product::StoreQueuedBiRecords() {
  // A second worker is allowed, and every worker begins by emptying the queue.
  BILogger::GetInstance().StartBILoggerTask();
}

void Product::Stop() {
  BILogger::GetInstance().StopBILoggerTask();
  OperationLogger::GetInstance().StopLoggerTask();
}

}  // namespace SyncFolder
