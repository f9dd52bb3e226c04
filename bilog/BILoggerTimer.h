// BILoggerTimer.h - uploads the stored BI records every 5 seconds.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "bilog/SeparateThreadTimer.h"
#include "drivelog/UserLog.h"
#include "transport/FittingParts.h"
#include "transport/PushLogRequest.h"

namespace Drive::Bilog {

// One upload cycle after another: reads the oldest stored records, posts them, deletes what was accepted.
// What was not accepted is sent again in the next cycle.
//
// A batch whose body is too large goes out in halves; a single record that is too large by itself is deleted,
// so that it cannot block the channel for ever.
// Thread-safety: PushLogs belongs to the timer's thread; AbortSoon may be called from any thread.
class BiUploader {
 public:
  // Reads the servers' addresses.
  void Init() { m_request.Init(); }

  // One cycle.
  void PushLogs();

  // Gives a transfer in flight a moment to end, then aborts it and all that follow.
  void AbortSoon();

 private:
  PartResult PushLogToCloud(const std::vector<UserLog>& records);

  PushLogRequest m_request;
  bool m_idle = true;  // no cycle is running
};

// Owns the timer of the BI channel.
//
// Thread-safety: every operation may be called from any thread.
// Ownership:     each start makes an uploader of its own, which the timer's thread keeps.
class BILoggerTimer {
 public:
  ~BILoggerTimer() { Stop(); }

  // Reads the settings file and starts the timer; a timer that runs already is left as it is.
  void Start();
  void Stop() { m_timer.Stop(); }

 private:
  SeparateThreadTimer m_timer;
};

}  // namespace Drive::Bilog
