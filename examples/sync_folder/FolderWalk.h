// FolderWalk.h - visits everything in a folder, however large or broken it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>

namespace SyncFolder {

// kUnreadable: a folder that cannot be opened, or an entry that the system cannot describe.
enum class EntryKind { kFile, kFolder, kLink, kOther, kUnreadable };

struct FoundEntry {
  std::filesystem::path path;
  EntryKind kind = EntryKind::kOther;
  std::uintmax_t size = 0;  // bytes, of a file
  std::filesystem::file_time_type changed{};
};

// Called for each entry; false ends the walk.
using EntryVisitor = std::function<bool(const FoundEntry& entry)>;

// Visits what is below `root`, a folder before what is in it. Links are shown, not followed, so the walk ends
// on every tree; memory grows with the depth only. Nothing throws but what `visit` throws.
// A folder that cannot be opened is visited twice: as a folder, and as unreadable.
void WalkFolder(const std::filesystem::path& root, const EntryVisitor& visit);

}  // namespace SyncFolder
