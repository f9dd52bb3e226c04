// HttpTransfer.h - one POST request by libcurl, repeatable and abortable.
#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Drive::Bilog {

// The body of a response, of which only the beginning is kept.
struct ResponseText {
  static constexpr std::size_t kMaxKeptBytes = 64 * 1024;
  static constexpr std::size_t kMaxBytes = 16 * 1024 * 1024;

  std::string kept;
  std::size_t received = 0;  // bytes in all
};

// libcurl's write callback; `userData` is a ResponseText. What is beyond kMaxKeptBytes is taken and dropped.
// Beyond kMaxBytes, and without user data, nothing is taken, which fails the transfer.
std::size_t KeepResponse(char* data, std::size_t size, std::size_t count, void* userData) noexcept;

// A cache of looked-up names, for the transfers of one thread: it needs no lock.
//
// Held by their owner, since a thread's own storage is not torn down in order by every compiler.
// Lifetime: outlives the transfers that use it.
class DnsShare {
 public:
  // Made with the first use; null when libcurl has none to give.
  CURLSH* Handle();

 private:
  struct Deleter {
    void operator()(CURLSH* handle) const noexcept { curl_share_cleanup(handle); }
  };
  std::unique_ptr<CURLSH, Deleter> m_handle;
};

// One POST request and what it holds of libcurl.
//
// An attempt ends by itself at the latest: besides the client's limits for connecting and for slow transfers,
// it takes kMaxSeconds at most, and a response is cut off at ResponseText::kMaxBytes
// (CURLE_FILESIZE_EXCEEDED).
//
// Thread-safety: one object belongs to one thread. Lifetime: `body` must outlive the object.
class HttpTransfer {
 public:
  static constexpr long kMaxSeconds = 300;

  // Null when no certificate file is set (which is reported), or libcurl has no handle to give.
  static std::unique_ptr<HttpTransfer> InitCurl(const std::string& body, const std::string& url,
                                                const std::vector<std::string>& headerLines, DnsShare& dns);

  // Makes one attempt. `mustAbort` is asked every 50 ms at the latest; CURLE_ABORTED_BY_CALLBACK when it
  // held.
  CURLcode Perform(const std::function<bool()>& mustAbort);

  // Of the last attempt.
  long ResponseCode() const;
  const std::string& Response() const { return m_response.kept; }

 private:
  struct EasyDeleter {
    void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
  };
  struct MultiDeleter {
    void operator()(CURLM* handle) const noexcept { curl_multi_cleanup(handle); }
  };
  struct ListDeleter {
    void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
  };
  using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

  HttpTransfer() = default;
  bool SetHeaders(const std::vector<std::string>& lines);
  void SetOptions(const std::string& body, const std::string& url, DnsShare& dns);
  void SetCertificateOptions();
  CURLcode Run(const std::function<bool()>& mustAbort);

  // In this order: the easy handle goes first, then what it refers to.
  HeaderList m_headers;
  ResponseText m_response;
  std::unique_ptr<CURLM, MultiDeleter> m_multi;
  std::unique_ptr<CURL, EasyDeleter> m_easy;
};

}  // namespace Drive::Bilog
