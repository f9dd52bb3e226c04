// RecordingChildren.h - processes that record into one database file, and the book of their records.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "proofs/Proof.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

// The children of a round use one file, one after the other or side by side, and upload to one collector.
class RecordingChildren {
 public:
  explicit RecordingChildren(Proof& proof) : m_proof(proof) {}

  // A new file, and a collector that has nothing.
  void BeginRound();

  // Starts one more: one that records until it is killed, or one that ends with status 0 when the file is
  // empty.
  enum class Mode { kRecord, kDeliver };
  std::unique_ptr<ChildProcess> Start(Mode mode);

  // Waits until the last one that was started is at work.
  void AwaitWork() const;

  // Kills it, or waits for its end by itself.
  void Kill(ChildProcess& child);
  void Await(ChildProcess& child);

  // While no child runs: the file is sound; every insert is in the file or at the collector as a whole, or,
  // unless it was said to be done, not at all; no record is in the file twice or comes from nowhere. The file
  // is left as it is, for the next child to recover.
  void Check();

  // The same; the file is empty, and no record was delivered more often than `most` times.
  void EndRound(int most);

  // In all rounds no more was delivered again than killed children had sent and not yet deleted.
  bool RepeatsWhatWasOnItsWay() const { return m_repeated <= m_onTheWay; }

  // The end of the proof, which fails where nothing was stored or delivered; `more` is added to the figures.
  int Finish(const std::string& more = "") const;

 private:
  struct Fate {
    int rows = 0;
    int deliveries = 0;
  };

  void ReadDiaries();
  void CountRows();
  void CountDeliveries();
  void Count(int Fate::*what, const std::string& mark);

  Proof& m_proof;
  TempFolder m_collectorFolder;
  Collection::Collector m_collector{CollectorIn(m_collectorFolder.Path())};

  // Of the round.
  std::optional<TempFolder> m_folder;
  int m_runs = 0;
  int m_diaries = 0;                                          // that are read
  std::int64_t m_lastRecord = 0;                              // of the collector's that are counted
  std::map<std::tuple<char, int, int, int>, bool> m_inserts;  // kind, run, first, last: whether it was done
  std::map<std::string, Fate> m_fates;                        // by kind and Action, such as "b0-17"

  // Of all rounds.
  std::map<std::string, int> m_steps;  // in which children were killed
  std::int64_t m_kills = 0;
  std::int64_t m_stored = 0;
  std::int64_t m_rows = 0;
  std::int64_t m_delivered = 0;
  std::int64_t m_repeated = 0;
  std::int64_t m_onTheWay = 0;
};

}  // namespace Drive::Testing
