// OperationLoggerTimer.h - uploads the stored operation records.
#pragma once

#include "bilog/SeparateThreadTimer.h"
#include "operatelog/BatchCycle.h"
#include "transport/FittingParts.h"
#include "transport/PushLogRequest.h"

namespace Drive::OperateLog {

// The uploads between one start of the timer and its stop: each tick sends a batch, or holds it back, and
// deletes what was accepted. What was not accepted is tried again with the next tick.
//
// A batch whose body is too large goes out in halves; a single record that is too large by itself is deleted,
// so that it cannot block the channel for ever.
// Thread-safety: TimerHandler belongs to the timer's thread; AbortSoon may be called from any thread.
class OperationUploader {
 public:
  explicit OperationUploader(const BatchSettings& settings);

  // Reads the servers' addresses.
  void Init() { m_request.Init(); }

  // One tick.
  void TimerHandler();

  // Gives a transfer in flight a moment to end, then aborts it and all that follow.
  void AbortSoon();

 private:
  bool PushInParts(const BatchCycle::Batch& batch);
  Bilog::PartResult PushLogs(const BatchCycle::Batch& batch);

  Bilog::PushLogRequest m_request;
  BatchCycle m_cycle;
};

// Owns the timer of the operation channel.
//
// Thread-safety: every operation may be called from any thread.
// Ownership:     each start makes an uploader of its own, which the timer's thread keeps.
class OperationLoggerTimer {
 public:
  ~OperationLoggerTimer() { Stop(); }

  // Reads settings and addresses and starts the timer; a timer that runs already is left as it is.
  void Start();
  void Stop() { m_timer.Stop(); }

 private:
  Bilog::SeparateThreadTimer m_timer;
};

}  // namespace Drive::OperateLog
