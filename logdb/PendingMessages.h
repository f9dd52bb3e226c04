// PendingMessages.h - the messages of one database operation, told when its locks are gone.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"

namespace Drive::SQLiteDB {

// Collects messages and hands them to CommLog when it is destroyed: a host's log function may call the
// library again, which must not meet a lock that its own thread holds. Declare it before the lock.
//
// Thread-safety: one object belongs to one thread.
class PendingMessages {
 public:
  PendingMessages() = default;
  ~PendingMessages() {
    try {
      for (const Message& message : m_messages) {
        CommLog::GetInstance().PrintLog(message.level, message.line, message.location, message.text);
      }
    } catch (...) {
      // Only for lack of memory.
    }
  }
  PendingMessages(const PendingMessages&) = delete;
  PendingMessages& operator=(const PendingMessages&) = delete;

  void Error(int line, const char* location, std::string text) {
    m_messages.push_back({LogLevel::kError, line, location, std::move(text)});
  }
  void Info(int line, const char* location, std::string text) {
    m_messages.push_back({LogLevel::kInfo, line, location, std::move(text)});
  }

 private:
  struct Message {
    int level;
    int line;
    const char* location;
    std::string text;
  };
  std::vector<Message> m_messages;
};

}  // namespace Drive::SQLiteDB
