// FaultyVfs.h - a SQLite file system that fails when the test says so.
#pragma once

#include <sqlite3.h>

#include <string>

namespace Drive::Testing {

// Stands before SQLite's default file system while it lives.
//
// Thread-safety: that of a plain value; one instance at a time.
class FaultyVfs {
 public:
  enum class Call { kNone, kOpen, kRead, kWrite, kSync, kLock };

  FaultyVfs();
  ~FaultyVfs();
  FaultyVfs(const FaultyVfs&) = delete;
  FaultyVfs& operator=(const FaultyVfs&) = delete;

  // Lets the n-th such call from now (1: the next) return `code`, and all later ones as well if it is
  // lasting.
  enum class Duration { kOnce, kLasting };
  void Fail(Call call, int n, int code, Duration duration);
  void Heal() { Fail(Call::kNone, 0, SQLITE_OK, Duration::kOnce); }

  // Whether a call has failed since the last Fail.
  bool HasFailed() const { return m_hasFailed; }

  // For the file operations: the code that this call is to return, SQLITE_OK when it is to work.
  int CodeFor(Call call);
  sqlite3_vfs* Real() const { return m_real; }

 private:
  sqlite3_vfs* m_real;
  sqlite3_vfs m_vfs;
  Call m_call = Call::kNone;
  int m_left = 0;
  int m_code = SQLITE_OK;
  Duration m_duration = Duration::kOnce;
  bool m_hasFailed = false;
};

}  // namespace Drive::Testing
