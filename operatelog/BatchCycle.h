// BatchCycle.h - reads a batch of stored records and sends it now or holds it back.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::OperateLog {

// Times in seconds.
struct BatchSettings {
  int period = 60;  // between two ticks
  int batchSize = 100;
  int maxWait = 300;  // how long a partial batch is held back

  // Those in force now.
  static BatchSettings Current();
};

// A full batch goes out at once, a partial one when it has been held back for the maximum wait.
constexpr bool ShouldSend(std::size_t count, int batchSize, std::int64_t waited, int maxWait) {
  return count == static_cast<std::size_t>(batchSize) || waited >= maxWait;
}

// What tells the two upload channels apart here.
struct BatchTable {
  bool uba;
  // The message about a batch that a tick left behind.
  int line;
  const char* location;
  const char* text;
};

// One tick after another of an upload channel.
//
// The waiting counts ticks, not time: every tick adds its period, sent or not, and a delivery sets it back
// before that. It starts at the maximum, so the first tick that finds records sends them.
// Surprises: a tick that ended by an exception leaves its batch behind, and the next one tries it again.
// Thread-safety: belongs to the timer's thread.
class BatchCycle {
 public:
  using Batch = std::vector<Bilog::UserLog>;
  // Sends the batch and deletes from the table what was accepted; true when all of it was.
  using Push = std::function<bool(const Batch& batch)>;

  BatchCycle(const BatchSettings& settings, const BatchTable& table);

  // False while PushDbLogs runs.
  bool IsComplete() const { return m_isComplete; }

  void PushDbLogs(const Push& push);

  // Deletes the rows from the batch's first to its last record.
  void DeleteRows(const Batch& batch) const;

  // Lets go of a batch that was left behind.
  void Forget() { m_batch.clear(); }

 private:
  const BatchSettings m_settings;
  const BatchTable m_table;
  Batch m_batch;
  bool m_isComplete = true;
  std::int64_t m_waited;
};

}  // namespace Drive::OperateLog
