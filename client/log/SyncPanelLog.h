// SyncPanelLog.h - the client's diagnostic log files, one a severity.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace spdlog {
class logger;
}

namespace Drive {

enum class LogSeverity : int {
  kNet = 0,
  kDebug = 1,
  kInfo = 2,
  kSync = 3,
  kUi = 4,
  kError = 5,
  kFileInfo = 6
};

// Writes each severity to its own rotating file (three of 5 MiB) in one folder.
//
// A file is opened with its first line. A line that cannot be written is dropped: the log of faults must not
// become one. Lines are flushed as they are written.
// Thread-safety: every operation may be called from any thread. Lifetime: the instance is never destroyed.
class SyncPanelLog {
 public:
  static SyncPanelLog& GetInstance();

  // Appends one line: time, severity's logger name, location, line, text.
  void Output(LogSeverity severity, int line, const std::string& location, const std::string& text);

  // Writes to files in this folder from now on. Default: "TalvikCloud/logs" in the user's local application
  // data.
  void SetFolder(const std::wstring& folder);

 private:
  struct Channel {
    std::shared_ptr<spdlog::logger> logger;
    std::chrono::steady_clock::time_point nextTry{};
  };

  SyncPanelLog();
  spdlog::logger* Logger(LogSeverity severity);

  std::map<LogSeverity, std::wstring> m_fileNames;
  std::map<LogSeverity, std::string> m_loggerNames;
  std::mutex m_mutex;  // guards what follows, and the writing
  std::wstring m_folder;
  std::map<LogSeverity, Channel> m_channels;
};

}  // namespace Drive
