// ExamplesFolderTest.cpp - what the example client finds in a folder, and what it sees happen there.
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "examples/sync_folder/FolderWalk.h"
#include "examples/sync_folder/FolderWatch.h"
#include "tests/support/TempFolder.h"

namespace SyncFolder {
namespace {

namespace fs = std::filesystem;
using Drive::Testing::TempFolder;

using Seen = std::multiset<std::string>;

// Path, kind and size of what is visited; `visitor` may interfere, and end the walk.
Seen Walk(const fs::path& root, const EntryVisitor& visitor) {
  Seen seen;
  WalkFolder(root, [&](const FoundEntry& entry) {
    seen.insert(entry.path.lexically_relative(root).generic_u8string() + ":" +
                std::to_string(static_cast<int>(entry.kind)) + ":" + std::to_string(entry.size));
    return visitor(entry);
  });
  return seen;
}

TEST(FolderWalkTest, ShowsEverythingOnceAndOutlivesWhatItCannotRead) {
  const TempFolder folder;
  fs::create_directories(folder.Path() / "a" / "deep");
  fs::create_directories(folder.Path() / "vanishing");
  std::ofstream(folder.Path() / "a" / "deep" / "file.txt") << "12345";
  std::ofstream(folder.Path() / "last.txt").close();

  const Seen seen = Walk(folder.Path(), [](const FoundEntry& entry) {
    return entry.path.filename() != "vanishing" || entry.kind == EntryKind::kUnreadable ||
           fs::remove(entry.path);
  });
  EXPECT_EQ(seen, (Seen{"a/deep/file.txt:0:5", "a/deep:1:0", "a:1:0", "last.txt:0:0", "vanishing:1:0",
                        "vanishing:4:0"}));
  EXPECT_EQ(Walk(folder.Path(), [](const FoundEntry&) { return false; }).size(), 1U);
  EXPECT_EQ(Walk(folder.Path() / "missing", [](const FoundEntry&) { return true; }), Seen{".:4:0"});
}

TEST(FolderWalkTest, DoesNotFollowLinks) {
  const TempFolder folder;
  std::error_code error;
  fs::create_directory_symlink(folder.Path(), folder.Path() / "loop", error);
  if (error) {
    GTEST_SKIP() << "links are not to be had here: " << error.message();
  }
  fs::create_symlink("nowhere", folder.Path() / "broken");
  EXPECT_EQ(Walk(folder.Path(), [](const FoundEntry&) { return true; }), (Seen{"broken:2:0", "loop:2:0"}));
}

SnapshotEntry File(std::uintmax_t size, int changed) {
  return {false, size, fs::file_time_type(std::chrono::seconds(changed))};
}
SnapshotEntry Folder(int changed) { return {true, 0, fs::file_time_type(std::chrono::seconds(changed))}; }

struct WatchCase {
  const char* name;
  Snapshot before;
  Snapshot after;
  std::set<std::string> changes;  // kind, "/" for a folder, path and old path
};

std::string Text(const Change& change) {
  static const char* const kKinds[] = {"created", "edited", "renamed", "moved", "deleted"};
  std::string text = kKinds[static_cast<int>(change.kind)];
  text += (change.isFolder ? " /" : " ") + change.path.generic_u8string();
  return change.oldPath.empty() ? text : text + " < " + change.oldPath.generic_u8string();
}

TEST(FolderWatchTest, TellsWhatHappenedBetweenTwoLooks) {
  const std::vector<WatchCase> cases = {
      {"created", {}, {{"a", File(1, 1)}, {"d", Folder(2)}}, {"created a", "created /d"}},
      {"deleted", {{"a", File(1, 1)}, {"d", Folder(2)}}, {}, {"deleted /d", "deleted a"}},
      {"edited: size or time",
       {{"a", File(1, 1)}, {"b", File(1, 1)}},
       {{"a", File(2, 1)}, {"b", File(1, 2)}},
       {"edited a", "edited b"}},
      {"a folder's time is no edit", {{"d", Folder(1)}}, {{"d", Folder(9)}}, {}},
      {"renamed", {{"d/a", File(7, 3)}}, {{"d/b", File(7, 3)}}, {"renamed d/b < d/a"}},
      {"moved", {{"a", File(7, 3)}}, {{"d/a", File(7, 3)}}, {"moved d/a < a"}},
      {"of two alike the one that kept its name",
       {{"x", File(7, 3)}, {"z", File(7, 3)}},
       {{"d/z", File(7, 3)}},
       {"moved d/z < z", "deleted x"}},
      {"one gone file explains one new one",
       {{"a", File(7, 3)}},
       {{"b", File(7, 3)}, {"c", File(7, 3)}},
       {"renamed b < a", "created c"}},
      {"a renamed folder is told once",
       {{"old", Folder(5)}, {"old/s", Folder(2)}, {"old/s/b", File(2, 2)}, {"oldest", File(9, 9)}},
       {{"new", Folder(5)}, {"new/s", Folder(2)}, {"new/s/b", File(2, 2)}, {"oldest", File(9, 9)}},
       {"renamed /new < old"}},
      {"a file that became a folder", {{"a", File(0, 1)}}, {{"a", Folder(1)}}, {"created /a", "deleted a"}},
  };
  for (const WatchCase& testCase : cases) {
    std::set<std::string> texts;
    for (const Change& change : Compare(testCase.before, testCase.after)) {
      EXPECT_TRUE(texts.insert(Text(change)).second) << testCase.name;
    }
    EXPECT_EQ(texts, testCase.changes) << testCase.name;
  }
}

}  // namespace
}  // namespace SyncFolder
