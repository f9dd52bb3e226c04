// CommLog.cpp - hands diagnostic messages to the host's function or to the client's log files.
#include "drivelog/CommLog.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "client/log/SyncPanelLog.h"
#include "commlog/Guarded.h"
#include "platform/EndingLock.h"

namespace {

constexpr const char* kLocation = "CommLog::PrintLog";

// Set when the destruction of static objects has passed this library's first use of CommLog.
std::atomic<bool> g_isPast{false};
std::atomic<int> g_callsUnderWay{0};

struct CallCounter {
  CallCounter() { ++g_callsUnderWay; }
  ~CallCounter() { --g_callsUnderWay; }
};

// Ends the reporting, and lets the calls under way on other threads end before the host's objects go.
struct PastGuard {
  ~PastGuard() {
    using Drive::Platform::ProcessEnd;
    g_isPast = true;
    ProcessEnd::Begin();
    while (g_callsUnderWay > 0 && !ProcessEnd::OtherThreadsAreGone() &&
           ProcessEnd::PatienceLeft().count() > 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
};

struct Sink {
  Drive::LogSeverity severity;
  int line;
};

Sink SinkOf(int level) {
  switch (level) {
    case 0:
      return {Drive::LogSeverity::kNet, 29};
    case 1:
      return {Drive::LogSeverity::kDebug, 32};
    case 2:
      return {Drive::LogSeverity::kInfo, 35};
    case 3:
      return {Drive::LogSeverity::kSync, 38};
    case 4:
      return {Drive::LogSeverity::kUi, 41};
    default:
      return {Drive::LogSeverity::kError, 44};
  }
}

}  // namespace

struct CommLog::State {
  std::mutex mutex;                         // guards function, never held while it is called
  std::shared_ptr<const LogFunc> function;  // null when there is none; shared with the calls under way
};

CommLog::CommLog() : m_state(new State) {}

CommLog& CommLog::GetInstance() {
  static CommLog& instance = *new CommLog;
  static const PastGuard guard;
  return instance;
}

void CommLog::SetLogFunc(LogFunc function) {
  Drive::Guarded("CommLog::SetLogFunc", [this, &function] {
    auto next = function ? std::make_shared<const LogFunc>(std::move(function)) : nullptr;
    const auto lock = Drive::Platform::LockUnlessEnding(m_state->mutex);
    // Swapped, so that what the previous function owns is destroyed after the unlocking.
    if (lock.owns_lock()) m_state->function.swap(next);
  });
}

void CommLog::PrintLog(int level, int line, const std::string& location, const std::string& message) {
  const CallCounter counter;
  // With the other threads gone, the host's function or the log files may wait for a lock that one of them
  // held.
  if (g_isPast || Drive::Platform::ProcessEnd::OtherThreadsAreGone()) return;
  try {
    std::shared_ptr<const LogFunc> function;
    {
      const auto lock = Drive::Platform::LockUnlessEnding(m_state->mutex);
      if (!lock.owns_lock()) return;
      function = m_state->function;
    }
    if (function != nullptr) {
      (*function)(level, line, location, message);
      return;
    }
    // The caller's line is meant to get lost here: the files name PrintLog as the place.
    const Sink sink = SinkOf(level);
    Drive::SyncPanelLog::GetInstance().Output(sink.severity, sink.line, kLocation, location + ": " + message);
  } catch (...) {
    // There is no road left to report it.
  }
}
