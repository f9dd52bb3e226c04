// SyncPanelLog.cpp - the client's diagnostic log files, by spdlog.
#include "client/log/SyncPanelLog.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <filesystem>

#include "client/common/FilePath.h"
#include "client/common/ReadSyncConfigFile.h"
#include "client/log/LoggerUtility.h"
#include "platform/EndingLock.h"
#include "platform/System.h"

namespace Drive {

namespace {

constexpr std::size_t kLargestFile = 5 * 1024 * 1024;
// Beside the file that is being written; three in all.
constexpr std::size_t kOlderFiles = 2;
// A file that cannot be opened is tried again after so long: spdlog sleeps between its own tries.
constexpr std::chrono::minutes kPauseAfterFailure{1};

std::wstring DefaultFolder() {
  using Platform::kPathSeparator;
  return LoggerUtility::GetLocalAppDataPath() + kPathSeparator + APP_NAME + kPathSeparator + L"logs";
}

// The logger is made directly: spdlog's registry is destroyed at exit, while threads still write. Its sink
// has no lock of its own: a thread that the system has ended could not give it back.
std::shared_ptr<spdlog::logger> OpenLogger(const std::filesystem::path& file, const std::string& name) {
  std::filesystem::create_directories(file.parent_path());
  // `native` is wide on Windows, where spdlog is built to take such names.
  auto sink =
      std::make_shared<spdlog::sinks::rotating_file_sink_st>(file.native(), kLargestFile, kOlderFiles);
  sink->set_pattern("%Y-%m-%d %H:%M:%S.%e [%n] %v");
  auto logger = std::make_shared<spdlog::logger>(name, std::move(sink));
  logger->set_level(spdlog::level::trace);
  logger->flush_on(spdlog::level::trace);
  logger->set_error_handler([](const std::string&) {});  // instead of a line on the host's terminal
  return logger;
}

// `text` on one line.
std::string OnOneLine(std::string text) {
  for (char& character : text) {
    if (character == '\r' || character == '\n') {
      character = ' ';
    }
  }
  return text;
}

}  // namespace

SyncPanelLog& SyncPanelLog::GetInstance() {
  static SyncPanelLog& instance = *new SyncPanelLog;
  return instance;
}

SyncPanelLog::SyncPanelLog() {
  const auto registerChannel = [this](LogSeverity severity, const wchar_t* fileName, const char* loggerName) {
    m_fileNames[severity] = fileName;
    m_loggerNames[severity] = loggerName;
  };
  registerChannel(LogSeverity::kInfo, L"info.log", "SyncInfoLogger");
  registerChannel(LogSeverity::kDebug, L"debug.log", "SyncDebugLogger");
  registerChannel(LogSeverity::kSync, L"sync.log", "SyncLogger");
  registerChannel(LogSeverity::kError, L"error.log", "SyncErrorLogger");
  registerChannel(LogSeverity::kNet, L"net.log", "SyncNetLogger");
  registerChannel(LogSeverity::kUi, L"traceui.log", "SyncUILogger");
  registerChannel(LogSeverity::kFileInfo, L"fileInfo.log", "SyncFileInfoLogger");
}

void SyncPanelLog::Output(LogSeverity severity, int line, const std::string& location,
                          const std::string& text) {
  try {
    const std::string message = OnOneLine(location + ":" + std::to_string(line) + " " + text);
    const auto lock = Platform::LockUnlessEnding(m_mutex);
    spdlog::logger* const logger = lock.owns_lock() ? Logger(severity) : nullptr;
    if (logger != nullptr) {
      logger->log(spdlog::level::info, message);
    }
  } catch (...) {
    // dropped, as the header says
  }
}

void SyncPanelLog::SetFolder(const std::wstring& folder) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_folder = folder;
  m_channels.clear();
}

// Under the lock; null while the file cannot be opened.
spdlog::logger* SyncPanelLog::Logger(LogSeverity severity) {
  Channel& channel = m_channels[severity];
  const auto now = std::chrono::steady_clock::now();
  if (channel.logger == nullptr && now >= channel.nextTry) {
    channel.nextTry = now + kPauseAfterFailure;
    if (m_folder.empty()) {
      m_folder = DefaultFolder();
    }
    channel.logger =
        OpenLogger(FilePath(m_folder) / FilePath(m_fileNames.at(severity)), m_loggerNames.at(severity));
  }
  return channel.logger.get();
}

}  // namespace Drive
