// FolderWalk.cpp - a walk over a stack of open folders.
#include "examples/sync_folder/FolderWalk.h"

#include <system_error>
#include <vector>

namespace SyncFolder {

namespace fs = std::filesystem;

namespace {

FoundEntry Describe(const fs::directory_entry& entry) {
  FoundEntry found;
  found.path = entry.path();
  std::error_code error;
  const fs::file_status status = entry.symlink_status(error);
  if (error) {
    found.kind = EntryKind::kUnreadable;
    return found;
  }
  if (fs::is_symlink(status)) {
    found.kind = EntryKind::kLink;
    return found;
  }
  if (fs::is_directory(status)) {
    found.kind = EntryKind::kFolder;
  } else if (fs::is_regular_file(status)) {
    found.kind = EntryKind::kFile;
    const std::uintmax_t size = entry.file_size(error);
    found.size = error ? 0 : size;
  }
  const fs::file_time_type changed = entry.last_write_time(error);
  found.changed = error ? fs::file_time_type{} : changed;
  return found;
}

FoundEntry Unreadable(const fs::path& path) {
  FoundEntry found;
  found.path = path;
  found.kind = EntryKind::kUnreadable;
  return found;
}

}  // namespace

// Not recursive_directory_iterator: after an error in one folder that one gives up the whole tree.
void WalkFolder(const fs::path& root, const EntryVisitor& visit) {
  struct OpenFolder {
    fs::path path;
    fs::directory_iterator next;
  };
  std::vector<OpenFolder> open;
  std::error_code error;

  const auto enter = [&](const fs::path& folder) {
    fs::directory_iterator first(folder, error);
    if (error) {
      return visit(Unreadable(folder));
    }
    open.push_back({folder, std::move(first)});
    return true;
  };

  bool goOn = enter(root);
  while (goOn && !open.empty()) {
    OpenFolder& folder = open.back();
    if (folder.next == fs::directory_iterator()) {
      open.pop_back();
      continue;
    }
    const FoundEntry found = Describe(*folder.next);
    folder.next.increment(error);
    if (error) {
      // The rest of this folder is lost, not the rest of the tree.
      folder.next = fs::directory_iterator();
      goOn = visit(Unreadable(folder.path));
    }
    goOn = goOn && visit(found);
    if (goOn && found.kind == EntryKind::kFolder) {
      goOn = enter(found.path);
    }
  }
}

}  // namespace SyncFolder
