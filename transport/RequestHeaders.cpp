// RequestHeaders.cpp - the header lines of the upload requests.
#include "transport/RequestHeaders.h"

#include <algorithm>
#include <utility>

#include "client/common/EncryptHelper.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "transport/DeviceDescription.h"

namespace Drive::Bilog {
namespace {

using Headers = std::vector<std::pair<const char*, std::string>>;

std::vector<std::string> ToLines(Headers headers) {
  std::vector<std::string> lines;
  lines.reserve(headers.size());
  for (auto& [name, value] : headers) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    value.erase(std::remove_if(value.begin(), value.end(), isControl), value.end());
    lines.push_back(std::string(name) + ":" + value);
  }
  return lines;
}

std::string TokenCredential() {
  const std::wstring token = LogSettings::GetInstance().GetAccessToken();
  const std::string credential =
      "8:null:null:null:" + TypeConvert::UnicodeToUTF8(TypeConvert::UrlEncode(token));
  return EncryptHelper::Base64Encode(reinterpret_cast<const unsigned char*>(credential.data()),
                                     credential.size(), true);
}

}  // namespace

std::vector<std::string> CreateReqHeader(const std::string& requestId) {
  return ToLines({{"Content-Type", "application/json"},
                  {"Request-Id", requestId},
                  {"App-Ver", "1.1.1.1"},
                  {"App-Id", "com.talvik.cloud.pc"},
                  {"Sdk-Name", "OrvellePC"},
                  {"Sdk-Ver", "1"},
                  {"Device-Type", "OrvellePC"},
                  {"x-zq-client-mode", "frontend"},
                  {"x-zq-os-brand", "Windows"}});
}

std::vector<std::string> CreateUbaReqHeader(const std::string& requestId, const std::string& udid) {
  constexpr const char* kLocation = "Drive::Bilog::PushLogRequest::CreateUbaReqHeader";
  const std::string model = g_pcModel;
  const std::string version = TypeConvert::UnicodeToUTF8(g_pcVersion);
  CommLog::GetInstance().PrintLog(LogLevel::kDebug, 186, kLocation, "g_pcModel = " + model);
  CommLog::GetInstance().PrintLog(LogLevel::kDebug, 188, kLocation, "g_pcVersion = " + version);

  return ToLines({{"Content-Type", "application/json"},
                  {"Content-Encoding", "gzip"},
                  {"X-ReqID", requestId},
                  {"X-AppID", "com.talvik.cloud.pc"},
                  {"X-Model", model},
                  {"X-AppVer", version},
                  {"X-UDID", udid},
                  {"X-AccountID", TypeConvert::UnicodeToUTF8(LogSettings::GetInstance().GetUserId())},
                  {"User-Agent", TypeConvert::UnicodeToUTF8(g_userAgent) + version},
                  {"X-RomVer", TypeConvert::UnicodeToUTF8(GetOsVersionName())},
                  {"X-Lang", "zh_CN"},
                  {"X-DeliveryPlace", "CN"},
                  {"Authorization", TokenCredential()},
                  {"X-zq-auth-version", "1"},
                  {"x-zq-client-mode", "frontend"},
                  {"x-zq-os-brand", "Windows"}});
}

}  // namespace Drive::Bilog
