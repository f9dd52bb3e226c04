// FolderWatch.h - tells what happened to a folder between two looks at it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <vector>

namespace SyncFolder {

enum class ChangeKind { kCreated, kEdited, kRenamed, kMoved, kDeleted };

struct Change {
  ChangeKind kind = ChangeKind::kCreated;
  bool isFolder = false;
  std::filesystem::path path;     // where it is now, or where it was when it is deleted
  std::filesystem::path oldPath;  // where it was before it was renamed or moved
  std::uintmax_t size = 0;
};

struct SnapshotEntry {
  bool isFolder = false;
  std::uintmax_t size = 0;
  std::filesystem::file_time_type changed{};
};

// Files and folders of one moment by path.
using Snapshot = std::map<std::filesystem::path, SnapshotEntry>;

// Entries that a snapshot holds at most; what is beyond them is not followed.
inline constexpr std::size_t kMaxSnapshotEntries = 200000;

Snapshot TakeSnapshot(const std::filesystem::path& root);

// What lies between the two snapshots.
//
// A file or folder counts as renamed (same parent) or moved when another of the same kind, size and time of
// change is gone; snapshots know no better identity that every system has. What is inside a renamed or moved
// folder is not told a second time. A folder's own time of change tells nothing: folders are never edited.
std::vector<Change> Compare(const Snapshot& before, const Snapshot& after);

}  // namespace SyncFolder
