// EventRecorder.h - turns what is found and what happens in a folder into log records.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "drivelog/OperationLogger.h"
#include "examples/sync_folder/FolderWalk.h"
#include "examples/sync_folder/FolderWatch.h"

namespace SyncFolder {

// The names of the example's event codes, under which BI records are sent.
std::map<int, std::string> UploadTypeNames();

// What was recorded so far. Every operation record becomes a UBA record as well.
struct RecordedCounts {
  std::size_t maintenance = 0;
  std::size_t operation = 0;
  std::size_t listed = 0;   // files given to the list form, which records them in groups of ten
  std::size_t dropped = 0;  // files of its last, incomplete group, which it leaves out
};

// Records BI events and operation events, a bounded number of them.
//
// Of the things that a walk finds, the first `limit` have a BI event each, and the first quarter of these an
// operation event; the rest is summed up in one BI event. The first `limit` files are given to the list form,
// and all files are counted by type in one operation event. So a walk records limit + 3 BI events and
// 0.35 x limit + 1 operation events at most, and keeps no more than `limit` files in memory.
// Thread-safety: for one thread.
class EventRecorder {
 public:
  EventRecorder(std::filesystem::path root, std::size_t limit);

  void WalkBegins();
  void Found(const FoundEntry& entry);
  void WalkEnds(std::chrono::milliseconds duration);

  // One look at the folder while it is followed: the first `limit` changes have events of their own.
  void Changed(const std::vector<Change>& changes);

  const RecordedCounts& Recorded() const { return m_recorded; }
  std::size_t FoundCount() const { return m_found; }
  std::size_t UnreadableCount() const { return m_unreadable; }

 private:
  using Fields = Drive::OperateLog::OperationLogger::Fields;

  void RecordFoundBiEvent(const FoundEntry& entry);
  void RecordOperation(const Change& change, Drive::OperateLog::OperationType type);
  void CountFile(const FoundEntry& entry);
  void CountByType();
  void RecordListedFiles();
  void RecordCountsByType();
  std::wstring RelativeName(const std::filesystem::path& path) const;

  const std::filesystem::path m_root;
  const std::size_t m_limit;
  const std::wstring m_traceId;  // ties the events of one run together
  RecordedCounts m_recorded;
  std::size_t m_found = 0;
  std::size_t m_unreadable = 0;
  std::size_t m_restCount = 0;
  std::uintmax_t m_restBytes = 0;
  std::vector<Fields> m_listedFiles;
  std::vector<Fields> m_uncountedFiles;  // files not yet in the totals
  std::size_t m_uncountable = 0;         // files that no total can hold
  std::map<std::wstring, Fields> m_countsByType;
};

}  // namespace SyncFolder
