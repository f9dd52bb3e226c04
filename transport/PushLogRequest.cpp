// PushLogRequest.cpp - the HTTPS client of the three upload channels.
#include "transport/PushLogRequest.h"

#include <algorithm>
#include <exception>

#include "client/common/EncryptHelper.h"
#include "client/common/IPCDriveClient.h"
#include "client/common/IniFileHelper.h"
#include "client/common/ReadSyncConfigFile.h"
#include "client/common/SharedGlobals.h"
#include "client/log/LoggerUtility.h"
#include "client/log/SyncPanelLog.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "platform/ProcessEnd.h"
#include "platform/System.h"
#include "transport/HttpTransfer.h"
#include "transport/RequestHeaders.h"

namespace Drive::Bilog {
namespace {

constexpr int kMaxAttempts = 3;
constexpr long kStatusOk = 200;
constexpr long kStatusBadRequest = 400;

void Report(int level, int line, const char* function, const std::string& message) {
  CommLog::GetInstance().PrintLog(level, line, std::string("Drive::Bilog::PushLogRequest::") + function,
                                  message);
}

void InitialiseLibraries() {
  static const bool done = [] {
    EncryptHelper::Initialise();  // first: libcurl would have the crypto library end with the process's exit
    const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK) {
      Report(LogLevel::kError, __LINE__, "PushLogRequest",
             "curl_global_init Fail result:" + std::to_string(result));
    }
    return true;
  }();
  static_cast<void>(done);
}

std::wstring SettingsFilePath() {
  return LoggerUtility::GetLocalAppDataPath() + Platform::kPathSeparator + APP_NAME +
         Platform::kPathSeparator + L"SyncSetting.ini";
}

// What a server sent must not look like lines of ours.
std::string OnOneLine(std::string text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  std::replace_if(text.begin(), text.end(), isControl, ' ');
  return text;
}

bool IsTokenRefused(const HttpTransfer& transfer) {
  return transfer.ResponseCode() == kStatusBadRequest &&
         transfer.Response().find("interface auth failed") != std::string::npos;
}

}  // namespace

PushLogRequest::PushLogRequest() : m_dns(std::make_unique<DnsShare>()) { InitialiseLibraries(); }

PushLogRequest::~PushLogRequest() = default;

void PushLogRequest::Init() {
  try {
    const IniFileHelper settings(SettingsFilePath());
    m_baseUri = TypeConvert::StringToWString(settings.ReadIniValueByKeyTypeString("BaseUri"));
    m_ubaUri = TypeConvert::StringToWString(settings.ReadIniValueByKeyTypeString("UbaUri"));
    m_udid = EncryptHelper::SHA256_Encode(settings.ReadIniValueByKeyTypeString("MacAddressEncrypt"));
    Report(LogLevel::kNet, 43, "Init",
           "{PushLogRequest}baseUriPushLog:" + TypeConvert::UnicodeToUTF8(m_baseUri));
  } catch (const std::exception&) {
    Report(LogLevel::kError, 46, "Init", "Get baseUri error");
  }
}

bool PushLogRequest::PushLogToBiServer(const std::string& body, const std::wstring& path,
                                       const std::string& requestId) {
  if (g_isOffLine) {
    Report(LogLevel::kError, 58, "PushLogToBiServer", "Not net or at disable");
    return false;
  }
  if (m_baseUri.empty()) {
    Report(LogLevel::kInfo, 62, "PushLogToBiServer", "baseUri is empty");
    return true;  // on purpose: without a collector the records count as delivered
  }
  return PushLogToServer(body, TypeConvert::UnicodeToUTF8(m_baseUri + path), CreateReqHeader(requestId),
                         requestId);
}

bool PushLogRequest::PushLogToUbaServer(const std::string& body, const std::wstring& path,
                                        const std::string& requestId) {
  if (g_isOffLine) {
    Report(LogLevel::kError, 76, "PushLogToUbaServer", "Not net or at disable");
    return false;
  }
  // An empty address is not looked at here, unlike above: the attempt fails and the records stay.
  return PushLogToServer(body, TypeConvert::UnicodeToUTF8(m_ubaUri + path),
                         CreateUbaReqHeader(requestId, m_udid), requestId);
}

bool PushLogRequest::PushLogToServer(const std::string& body, const std::string& url,
                                     const std::vector<std::string>& headerLines,
                                     const std::string& requestId) {
  constexpr const char* kFunction = "PushLogToServer";
  const auto transfer = HttpTransfer::InitCurl(body, url, headerLines, *m_dns);
  if (transfer == nullptr) {
    return false;
  }
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    const CURLcode result = transfer->Perform([this] { return MustAbort(); });
    if (result != CURLE_OK) {
      Report(LogLevel::kError, 121, kFunction, "PushLogToServer Fail result:" + std::to_string(result));
      if (result == CURLE_ABORTED_BY_CALLBACK) {
        return false;
      }
      continue;
    }
    if (transfer->ResponseCode() == kStatusOk) {
      Report(LogLevel::kDebug, 129, kFunction, "PushLog Success,url:" + url + " RequestId:" + requestId);
      return true;
    }
    if (IsTokenRefused(*transfer)) {
      Report(LogLevel::kInfo, 134, kFunction, "update at");
      SendAtLostMessage();
      return false;
    }
    Report(LogLevel::kError, 141, kFunction,
           "PushLog Fail, url:" + url + "  RequestId:" + requestId + ",retryCount:" +
               std::to_string(attempt) + ",responseCode:" + std::to_string(transfer->ResponseCode()) +
               ",responseString:" + OnOneLine(transfer->Response()));
  }
  return false;
}

void PushLogRequest::AbortAfter(std::chrono::milliseconds grace) {
  const std::int64_t time = (std::chrono::steady_clock::now() + grace).time_since_epoch().count();
  std::int64_t earliest = m_abortTime.load();
  while (time < earliest && !m_abortTime.compare_exchange_weak(earliest, time)) {
  }
}

bool PushLogRequest::MustAbort() const {
  return Platform::ProcessEnd::HasBegun() ||
         std::chrono::steady_clock::now().time_since_epoch().count() >= m_abortTime.load();
}

void SendAtLostMessage() {
  constexpr const char* kFunction = "SendAtLostMessage";
  Report(LogLevel::kInfo, __LINE__, kFunction, "SendAtLostMessage AT");
  std::string reply;
  IPC::IPCDriveClient().GetMessageCommand(reply, IPC::kCommandRenewAccessToken, "Rt Change At");
  SyncPanelLog::GetInstance().Output(LogSeverity::kDebug, 94,
                                     "Drive::Bilog::PushLogRequest::SendAtLostMessage", "Get New AT");
  if (reply.empty()) {
    return;
  }
  const std::wstring token = TypeConvert::StringToWString(reply);
  g_accessToken = token;
  LogSettings::GetInstance().SetAccessToken(token);
}

}  // namespace Drive::Bilog
