// PushLogRequest.h - the HTTPS client of the three upload channels.
#pragma once

#include <string>

namespace Drive::Bilog {

// placeholder: the room's owner completes it
class PushLogRequest {
 public:
  PushLogRequest();

  void Init();
  bool PushLogToBiServer(const std::string& body, const std::wstring& path, const std::string& requestId);
  bool PushLogToUbaServer(const std::string& body, const std::wstring& path, const std::string& requestId);

  // Aborts the transfer in flight, and every later one, once `grace` of real time has passed. Any thread.
  void AbortAfter(std::chrono::milliseconds grace);
};

}  // namespace Drive::Bilog
