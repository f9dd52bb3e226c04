// HttpTransfer.cpp - one POST request by libcurl, repeatable and abortable.
//
// The multi interface runs the transfer, since it alone can be left at any moment: the easy one asks its
// progress callback only once a second while nothing arrives.
#include "transport/HttpTransfer.h"

#include <algorithm>
#include <exception>

#include "client/common/GlobalValue.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"

namespace Drive::Bilog {
namespace {

constexpr long kDnsCacheSeconds = 300;
constexpr int kPollMilliseconds = 50;

// Keeps an easy handle in a multi handle for as long as an attempt takes.
class Attachment {
 public:
  Attachment(CURLM* multi, CURL* easy)
      : m_multi(multi), m_easy(easy), m_result(curl_multi_add_handle(multi, easy)) {}
  ~Attachment() { curl_multi_remove_handle(m_multi, m_easy); }
  Attachment(const Attachment&) = delete;
  Attachment& operator=(const Attachment&) = delete;

  bool Succeeded() const { return m_result == CURLM_OK; }

 private:
  CURLM* m_multi;
  CURL* m_easy;
  CURLMcode m_result;
};

}  // namespace

std::size_t KeepResponse(char* data, std::size_t size, std::size_t count, void* userData) noexcept {
  if (userData == nullptr) {
    return 0;
  }
  auto& response = *static_cast<ResponseText*>(userData);
  const std::size_t bytes = size * count;
  response.received += bytes;
  if (response.received > ResponseText::kMaxBytes) {
    return 0;
  }
  try {
    response.kept.append(data,
                         std::min<std::size_t>(bytes, ResponseText::kMaxKeptBytes - response.kept.size()));
  } catch (const std::exception&) {  // no memory: must not be thrown through libcurl
    return 0;
  }
  return bytes;
}

CURLSH* DnsShare::Handle() {
  if (m_handle == nullptr) {
    m_handle.reset(curl_share_init());
    if (m_handle != nullptr) {
      curl_share_setopt(m_handle.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
    }
  }
  return m_handle.get();
}

std::unique_ptr<HttpTransfer> HttpTransfer::InitCurl(const std::string& body, const std::string& url,
                                                     const std::vector<std::string>& headerLines,
                                                     DnsShare& dns) {
  if (g_certPath.Get().empty()) {
    CommLog::GetInstance().PrintLog(LogLevel::kError, 238, "Drive::Bilog::PushLogRequest::InitCurl",
                                    "Path of certfile is empty");
    return nullptr;
  }
  std::unique_ptr<HttpTransfer> transfer(new HttpTransfer);
  transfer->m_multi.reset(curl_multi_init());
  transfer->m_easy.reset(curl_easy_init());
  if (transfer->m_multi == nullptr || transfer->m_easy == nullptr || !transfer->SetHeaders(headerLines)) {
    return nullptr;
  }
  transfer->SetOptions(body, url, dns);
  return transfer;
}

bool HttpTransfer::SetHeaders(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    curl_slist* const longer = curl_slist_append(m_headers.get(), line.c_str());
    if (longer == nullptr) {
      return false;
    }
    static_cast<void>(m_headers.release());  // `longer` is the same list, or its new head
    m_headers.reset(longer);
  }
  return true;
}

void HttpTransfer::SetOptions(const std::string& body, const std::string& url, DnsShare& dns) {
  const GlobalValue& global = GlobalValue::GetInstatnce();
  CURL* const easy = m_easy.get();
  curl_easy_setopt(easy, CURLOPT_SHARE, dns.Handle());
  curl_easy_setopt(easy, CURLOPT_DNS_CACHE_TIMEOUT, kDnsCacheSeconds);
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, m_headers.get());
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &KeepResponse);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &m_response);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  SetCertificateOptions();
  if (const std::string proxy = global.GetSystemProxy(); !proxy.empty()) {
    curl_easy_setopt(easy, CURLOPT_PROXY, proxy.c_str());
    curl_easy_setopt(easy, CURLOPT_PROXYTYPE, static_cast<long>(CURLPROXY_HTTP));
  }
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, global.GetTimeoutConnect());
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, global.GetLimitLowSpeed());
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, global.GetTimeoutLowSpeed());
  curl_easy_setopt(easy, CURLOPT_POST, 1L);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));

  // What keeps every transfer finite and within its own protocols.
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, kMaxSeconds);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "https,http");
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // an abort does not wait for the look-up of a name
}

void HttpTransfer::SetCertificateOptions() {
  CURL* const easy = m_easy.get();
  const bool trustsSystem = GlobalValue::GetInstatnce().GetIsUseLocalCertificate();
  if (!trustsSystem) {
    curl_easy_setopt(easy, CURLOPT_SSLCERTTYPE, "PEM");
  }
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  if (trustsSystem) {
    curl_easy_setopt(easy, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NATIVE_CA));
    return;
  }
  const std::string certificates = TypeConvert::UnicodeToUTF8(g_certPath);
  curl_easy_setopt(easy, CURLOPT_CAINFO, certificates.c_str());
  // Some builds of libcurl would trust the system's folder of certificates besides.
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
}

CURLcode HttpTransfer::Perform(const std::function<bool()>& mustAbort) {
  m_response = ResponseText{};
  const Attachment attachment(m_multi.get(), m_easy.get());
  return attachment.Succeeded() ? Run(mustAbort) : CURLE_FAILED_INIT;
}

CURLcode HttpTransfer::Run(const std::function<bool()>& mustAbort) {
  for (;;) {
    if (mustAbort()) {
      return CURLE_ABORTED_BY_CALLBACK;
    }
    int running = 0;
    if (curl_multi_perform(m_multi.get(), &running) != CURLM_OK) {
      return CURLE_FAILED_INIT;
    }
    int waiting = 0;
    if (const CURLMsg* const message = curl_multi_info_read(m_multi.get(), &waiting)) {
      return m_response.received > ResponseText::kMaxBytes ? CURLE_FILESIZE_EXCEEDED : message->data.result;
    }
    if (curl_multi_poll(m_multi.get(), nullptr, 0, kPollMilliseconds, nullptr) != CURLM_OK) {
      return CURLE_FAILED_INIT;
    }
  }
}

long HttpTransfer::ResponseCode() const {
  long code = 0;
  curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &code);
  return code;
}

}  // namespace Drive::Bilog
