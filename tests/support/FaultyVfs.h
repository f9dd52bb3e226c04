// FaultyVfs.h - a SQLite file system that fails when the test says so.
#pragma once

#include <sqlite3.h>

namespace Drive::Testing {

// Stands before SQLite's default file system while it lives. One instance at a time, used by one thread.
class FaultyVfs {
 public:
  enum class Call { kNone, kOpen, kRead, kWrite, kSync, kLock, kShare, kSize, kTruncate, kDelete, kAccess };

  FaultyVfs();
  ~FaultyVfs();
  FaultyVfs(const FaultyVfs&) = delete;
  FaultyVfs& operator=(const FaultyVfs&) = delete;

  // Lets the n-th such call from now (1: the next) return `code`, alone or with all that follow.
  void FailOnce(Call call, int n, int code);
  void FailFrom(Call call, int n, int code);
  void FailAlways(Call call, int code) { FailFrom(call, 1, code); }
  void Heal() { m_call = Call::kNone; }

  // How many calls have failed since the last FailOnce or FailFrom.
  int Failures() const { return m_failures; }

  // For the file operations: what this call is to return.
  int CodeFor(Call call);

 private:
  sqlite3_vfs m_vfs;
  Call m_call = Call::kNone;
  int m_left = 0;
  int m_code = SQLITE_OK;
  bool m_isLasting = false;
  int m_failures = 0;
};

}  // namespace Drive::Testing
