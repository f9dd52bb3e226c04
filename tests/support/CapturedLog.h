// CapturedLog.h - collects the library's diagnostic messages for as long as a test runs.
#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "drivelog/CommLog.h"

namespace Drive::Testing {

struct LogMessage {
  int level = 0;
  int line = 0;
  std::string location;
  std::string text;

  friend bool operator==(const LogMessage& a, const LogMessage& b) {
    return a.level == b.level && a.line == b.line && a.location == b.location && a.text == b.text;
  }
};

// Installs itself as CommLog's function, and an empty function when it goes.
//
// Thread-safety: every operation may be called from any thread.
// Ownership: CommLog's function shares the list, so a thread that still reports when the test ends is
// harmless.
class CapturedLog {
 public:
  CapturedLog() {
    CommLog::GetInstance().SetLogFunc(
        [list = m_list](int level, int line, const std::string& location, const std::string& text) {
          const std::lock_guard<std::mutex> lock(list->mutex);
          list->messages.push_back({level, line, location, text});
        });
  }
  ~CapturedLog() { CommLog::GetInstance().SetLogFunc(nullptr); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  std::vector<LogMessage> All() const {
    const std::lock_guard<std::mutex> lock(m_list->mutex);
    return m_list->messages;
  }

  // Messages of exactly this text.
  std::size_t Count(const std::string& text) const {
    const std::lock_guard<std::mutex> lock(m_list->mutex);
    return static_cast<std::size_t>(std::count_if(m_list->messages.begin(), m_list->messages.end(),
                                                  [&](const LogMessage& m) { return m.text == text; }));
  }

  // Whether exactly this message came.
  bool Has(const LogMessage& message) const {
    const std::lock_guard<std::mutex> lock(m_list->mutex);
    return std::count(m_list->messages.begin(), m_list->messages.end(), message) != 0;
  }

  // Messages of this level.
  std::vector<LogMessage> OfLevel(int level) const {
    std::vector<LogMessage> found;
    for (LogMessage& message : All()) {
      if (message.level == level) found.push_back(std::move(message));
    }
    return found;
  }

  // Whether any message holds `part`.
  bool Contains(const std::string& part) const {
    const std::lock_guard<std::mutex> lock(m_list->mutex);
    return std::any_of(m_list->messages.begin(), m_list->messages.end(),
                       [&](const LogMessage& m) { return m.text.find(part) != std::string::npos; });
  }

  void Clear() {
    const std::lock_guard<std::mutex> lock(m_list->mutex);
    m_list->messages.clear();
  }

 private:
  struct List {
    std::mutex mutex;  // guards messages
    std::vector<LogMessage> messages;
  };
  std::shared_ptr<List> m_list = std::make_shared<List>();  // shared with CommLog's function
};

}  // namespace Drive::Testing
