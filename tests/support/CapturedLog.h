// CapturedLog.h - collects the library's diagnostic messages for as long as a test runs.
#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
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
    return std::tie(a.level, a.line, a.location, a.text) == std::tie(b.level, b.line, b.location, b.text);
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
    std::size_t count = 0;
    for (const LogMessage& message : All()) count += message.text == text ? 1 : 0;
    return count;
  }
  bool Has(const LogMessage& expected) const {
    const auto all = All();
    return std::find(all.begin(), all.end(), expected) != all.end();
  }
  std::vector<LogMessage> OfLevel(int level) const {
    std::vector<LogMessage> found;
    for (const LogMessage& message : All()) {
      if (message.level == level) found.push_back(message);
    }
    return found;
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
