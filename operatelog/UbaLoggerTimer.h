// UbaLoggerTimer.h - uploads the stored UBA records.
#pragma once

#include <atomic>
#include <memory>

#include "bilog/SeparateThreadTimer.h"
#include "operatelog/BatchCycle.h"
#include "transport/PushLogRequest.h"

namespace Drive::OperateLog {

// The uploads between one start of the timer and its stop, as OperationUploader's.
//
// Thread-safety: TimerHandler belongs to the timer's thread; AbortSoon may be called from any thread.
// Ownership:     the event sequence is shared with the uploads before and after.
class UbaUploader {
 public:
  UbaUploader(const BatchSettings& settings, std::shared_ptr<std::atomic<int>> sequence);

  // Reads the servers' addresses.
  void Init() { m_request.Init(); }

  // One tick.
  void TimerHandler();

  // Gives a transfer in flight a moment to end, then aborts it and all that follow.
  void AbortSoon();

 private:
  bool PushLogs(const BatchCycle::Batch& batch);

  Bilog::PushLogRequest m_request;
  BatchCycle m_cycle;
  const std::shared_ptr<std::atomic<int>> m_sequence;
};

// Owns the timer of the UBA channel.
//
// Thread-safety: every operation may be called from any thread.
// Ownership:     each start makes an uploader of its own, which the timer's thread keeps.
class UbaLoggerTimer {
 public:
  ~UbaLoggerTimer() { Stop(); }

  // Reads settings and addresses and starts the timer; a timer that runs already is left as it is.
  void Start();
  void Stop() { m_timer.Stop(); }

 private:
  Bilog::SeparateThreadTimer m_timer;
  const std::shared_ptr<std::atomic<int>> m_sequence = std::make_shared<std::atomic<int>>(0);
};

}  // namespace Drive::OperateLog
