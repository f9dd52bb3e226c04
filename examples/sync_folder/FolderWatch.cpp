// FolderWatch.cpp - snapshots of a folder and their differences.
#include "examples/sync_folder/FolderWatch.h"

#include <algorithm>
#include <tuple>

#include "examples/sync_folder/FolderWalk.h"

namespace SyncFolder {

namespace fs = std::filesystem;

namespace {

bool IsInside(const fs::path& path, const fs::path& folder) {
  return std::distance(path.begin(), path.end()) > std::distance(folder.begin(), folder.end()) &&
         std::equal(folder.begin(), folder.end(), path.begin());
}

void RemoveInside(Snapshot& snapshot, const fs::path& folder) {
  // What is inside a folder follows it directly in the order of paths.
  auto entry = snapshot.upper_bound(folder);
  while (entry != snapshot.end() && IsInside(entry->first, folder)) {
    entry = snapshot.erase(entry);
  }
}

using Likeness = std::tuple<bool, std::uintmax_t, fs::file_time_type>;

Likeness LikenessOf(const SnapshotEntry& entry) { return {entry.isFolder, entry.size, entry.changed}; }

std::map<Likeness, std::vector<fs::path>> ByLikeness(const Snapshot& snapshot) {
  std::map<Likeness, std::vector<fs::path>> paths;
  for (const auto& [path, entry] : snapshot) {
    paths[LikenessOf(entry)].push_back(path);
  }
  return paths;
}

// The one among `candidates` that is still gone; one that kept its name is the better guess.
Snapshot::iterator FindFormer(Snapshot& gone, const std::vector<fs::path>& candidates, const fs::path& name) {
  auto best = gone.end();
  for (const fs::path& candidate : candidates) {
    const auto found = gone.find(candidate);
    if (found != gone.end() && (best == gone.end() || candidate.filename() == name)) {
      best = found;
    }
  }
  return best;
}

// Takes what was renamed or moved out of both lists. The order of paths puts a folder before its content.
void TakeRelocated(Snapshot& gone, Snapshot& created, std::vector<Change>& changes) {
  const std::map<Likeness, std::vector<fs::path>> candidates = ByLikeness(gone);
  for (auto entry = created.begin(); entry != created.end();) {
    const auto alike = candidates.find(LikenessOf(entry->second));
    const auto former =
        alike == candidates.end() ? gone.end() : FindFormer(gone, alike->second, entry->first.filename());
    if (former == gone.end()) {
      ++entry;
      continue;
    }
    const bool sameParent = former->first.parent_path() == entry->first.parent_path();
    changes.push_back({sameParent ? ChangeKind::kRenamed : ChangeKind::kMoved, entry->second.isFolder,
                       entry->first, former->first, entry->second.size});
    if (entry->second.isFolder) {
      RemoveInside(gone, former->first);
      RemoveInside(created, entry->first);
    }
    gone.erase(former);
    entry = created.erase(entry);
  }
}

}  // namespace

Snapshot TakeSnapshot(const fs::path& root) {
  Snapshot snapshot;
  WalkFolder(root, [&](const FoundEntry& found) {
    if (found.kind == EntryKind::kFile || found.kind == EntryKind::kFolder) {
      snapshot[found.path] = {found.kind == EntryKind::kFolder, found.size, found.changed};
    }
    return snapshot.size() < kMaxSnapshotEntries;
  });
  return snapshot;
}

std::vector<Change> Compare(const Snapshot& before, const Snapshot& after) {
  Snapshot gone;
  Snapshot created;
  std::vector<Change> changes;
  for (const auto& [path, entry] : before) {
    const auto now = after.find(path);
    if (now == after.end() || now->second.isFolder != entry.isFolder) {
      gone.emplace(path, entry);
    }
  }
  for (const auto& [path, entry] : after) {
    const auto former = before.find(path);
    if (former == before.end() || former->second.isFolder != entry.isFolder) {
      created.emplace(path, entry);
    } else if (!entry.isFolder && LikenessOf(former->second) != LikenessOf(entry)) {
      changes.push_back({ChangeKind::kEdited, false, path, {}, entry.size});
    }
  }
  TakeRelocated(gone, created, changes);
  for (const auto& [path, entry] : created) {
    changes.push_back({ChangeKind::kCreated, entry.isFolder, path, {}, entry.size});
  }
  for (const auto& [path, entry] : gone) {
    changes.push_back({ChangeKind::kDeleted, entry.isFolder, path, {}, entry.size});
  }
  return changes;
}

}  // namespace SyncFolder
