// FaultyVfs.cpp - puts itself before a few operations of the real file system's files.
#include "tests/support/FaultyVfs.h"

#include <map>

namespace Drive::Testing {
namespace {

using Call = FaultyVfs::Call;
using Methods = sqlite3_io_methods;

FaultyVfs* g_instance = nullptr;
sqlite3_vfs* const g_realVfs = sqlite3_vfs_find(nullptr);

struct Table {
  Methods faulty;
  Methods real;
};

template <auto kMethod, Call kCall, typename... Arguments>
int Forward(sqlite3_file* file, Arguments... arguments) {
  const int code = g_instance->CodeFor(kCall);
  const Methods& real = reinterpret_cast<const Table*>(file->pMethods)->real;
  return code == SQLITE_OK ? (real.*kMethod)(file, arguments...) : code;
}

// Nothing is made durable: no test pulls the plug, and waiting for the disk takes most of the time.
int Sync(sqlite3_file* /*file*/, int /*flags*/) { return g_instance->CodeFor(Call::kSync); }

// No unlocking fails, so SQLite does not look whether it has.
int ShareLock(sqlite3_file* file, int offset, int count, int flags) {
  const Methods& real = reinterpret_cast<const Table*>(file->pMethods)->real;
  const int code = (flags & SQLITE_SHM_LOCK) != 0 ? g_instance->CodeFor(Call::kLock) : SQLITE_OK;
  return code == SQLITE_OK ? real.xShmLock(file, offset, count, flags) : code;
}

Methods Faulty(Methods methods) {
  methods.iVersion = 2;  // without memory mapping, so that every read comes by here
  methods.xRead = Forward<&Methods::xRead, Call::kRead>;
  methods.xFileSize = Forward<&Methods::xFileSize, Call::kSize>;
  methods.xWrite = Forward<&Methods::xWrite, Call::kWrite>;
  methods.xTruncate = Forward<&Methods::xTruncate, Call::kTruncate>;
  methods.xSync = Sync;
  methods.xLock = Forward<&Methods::xLock, Call::kLock>;
  methods.xCheckReservedLock = Forward<&Methods::xCheckReservedLock, Call::kLock>;
  methods.xShmLock = ShareLock;
  methods.xShmMap = Forward<&Methods::xShmMap, Call::kShare>;
  return methods;
}

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  file->pMethods = nullptr;
  int code = g_instance->CodeFor(Call::kOpen);
  if (code == SQLITE_OK) code = g_realVfs->xOpen(g_realVfs, name, file, flags, outFlags);
  if (code != SQLITE_OK) return code;
  static std::map<const Methods*, Table> tables;  // the database and its log have different ones
  const Methods* real = file->pMethods;
  file->pMethods = &tables.insert({real, {Faulty(*real), *real}}).first->second.faulty;
  return code;
}

int Delete(sqlite3_vfs* /*vfs*/, const char* name, int /*syncFolder*/) {
  const int code = g_instance->CodeFor(Call::kDelete);
  return code == SQLITE_OK ? g_realVfs->xDelete(g_realVfs, name, 0) : code;
}

int Access(sqlite3_vfs* /*vfs*/, const char* name, int flags, int* result) {
  const int code = g_instance->CodeFor(Call::kAccess);
  return code == SQLITE_OK ? g_realVfs->xAccess(g_realVfs, name, flags, result) : code;
}

// SQLite's own pauses between tries, up to 10 s in all.
int Sleep(sqlite3_vfs* /*vfs*/, int microseconds) { return microseconds; }

}  // namespace

FaultyVfs::FaultyVfs() : m_vfs(*g_realVfs) {
  g_instance = this;
  m_vfs.zName = "faulty";
  m_vfs.xOpen = Open;
  m_vfs.xDelete = Delete;
  m_vfs.xAccess = Access;
  m_vfs.xSleep = Sleep;
  sqlite3_vfs_register(&m_vfs, 1);
}

FaultyVfs::~FaultyVfs() {
  sqlite3_vfs_unregister(&m_vfs);
  sqlite3_vfs_register(g_realVfs, 1);
}

void FaultyVfs::FailOnce(Call call, int n, int code) {
  m_call = call;
  m_left = n;
  m_code = code;
  m_isLasting = false;
  m_failures = 0;
}

void FaultyVfs::FailFrom(Call call, int n, int code) {
  FailOnce(call, n, code);
  m_isLasting = true;
}

int FaultyVfs::CodeFor(Call call) {
  if (call != m_call || --m_left > 0) return SQLITE_OK;
  ++m_failures;
  if (!m_isLasting) m_call = Call::kNone;
  return m_code;
}

}  // namespace Drive::Testing
