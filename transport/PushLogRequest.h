// PushLogRequest.h - the HTTPS client of the three upload channels.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Drive::Bilog {

class DnsShare;

// Posts encoded bodies to the two collectors, up to three attempts each, and renews an access token that the
// collector refuses.
//
// Surprises: with no BI collector configured a push to it succeeds, so that its records do not pile up.
//            A transfer ends when the process begins to end, see Platform::ProcessEnd.
// Thread-safety: AbortAfter may be called from any thread at any time; the rest belongs to one thread at a
//            time. Different objects may push at the same time.
// Exceptions: none but std::bad_alloc; a failure is reported through CommLog and returned as false.
class PushLogRequest {
 public:
  // What a stop leaves a transfer in flight, for AbortAfter.
  static constexpr std::chrono::milliseconds kStopGrace{1000};

  // Initialises libcurl and, before it, the crypto library; once in the process, never undone.
  PushLogRequest();
  ~PushLogRequest();
  PushLogRequest(const PushLogRequest&) = delete;
  PushLogRequest& operator=(const PushLogRequest&) = delete;

  // Reads the collectors' addresses and the device's identifier from the client's settings file. What the
  // file lacks is empty; a failure is reported.
  void Init();

  // Posts `body` to the address of a collector followed by `path`; true when it was accepted.
  bool PushLogToBiServer(const std::string& body, const std::wstring& path, const std::string& requestId);
  bool PushLogToUbaServer(const std::string& body, const std::wstring& path, const std::string& requestId);

  // Aborts the transfer in flight, and every later one, once `grace` of real time has passed. The earliest
  // call counts.
  void AbortAfter(std::chrono::milliseconds grace);

 private:
  bool PushLogToServer(const std::string& body, const std::string& url,
                       const std::vector<std::string>& headerLines, const std::string& requestId);
  bool MustAbort() const;

  std::wstring m_baseUri;  // of the collector of BI and operation records
  std::wstring m_ubaUri;   // of the collector of UBA records
  std::string m_udid;      // SHA-256 text of the settings file's device identifier

  const std::unique_ptr<DnsShare> m_dns;             // of the thread that pushes
  std::atomic<std::int64_t> m_abortTime{INT64_MAX};  // ticks of the steady clock
};

// Asks the client's main process for a new access token. An empty reply changes nothing.
void SendAtLostMessage();

}  // namespace Drive::Bilog
