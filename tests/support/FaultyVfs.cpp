// FaultyVfs.cpp - forwards every file operation to the real file system, unless it is to fail.
#include "tests/support/FaultyVfs.h"

namespace Drive::Testing {
namespace {

using Call = FaultyVfs::Call;

FaultyVfs* g_instance = nullptr;

// A file of ours with the real one right behind it.
struct File {
  sqlite3_file base;
  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<File*>(file)->Real(); }

template <typename Operation>
int Try(Call call, const Operation& operation) {
  const int code = g_instance->CodeFor(call);
  return code == SQLITE_OK ? operation() : code;
}

// An operation of the real file, with the same arguments.
template <auto kMethod, Call kCall, typename... Arguments>
int Forward(sqlite3_file* file, Arguments... arguments) {
  sqlite3_file* real = Real(file);
  return Try(kCall, [&] { return (real->pMethods->*kMethod)(real, arguments...); });
}

using Methods = sqlite3_io_methods;

// Nothing is made durable: no test pulls the plug, and waiting for the disk takes most of the time.
int Sync(sqlite3_file* /*file*/, int /*flags*/) {
  return Try(Call::kSync, [] { return SQLITE_OK; });
}

void ShmBarrier(sqlite3_file* file) { Real(file)->pMethods->xShmBarrier(Real(file)); }

// Version 2: without memory mapping, so that every read comes by here.
const Methods kMethods = {2,
                          Forward<&Methods::xClose, Call::kNone>,
                          Forward<&Methods::xRead, Call::kRead, void*, int, sqlite3_int64>,
                          Forward<&Methods::xWrite, Call::kWrite, const void*, int, sqlite3_int64>,
                          Forward<&Methods::xTruncate, Call::kWrite, sqlite3_int64>,
                          Sync,
                          Forward<&Methods::xFileSize, Call::kRead, sqlite3_int64*>,
                          Forward<&Methods::xLock, Call::kLock, int>,
                          Forward<&Methods::xUnlock, Call::kNone, int>,
                          Forward<&Methods::xCheckReservedLock, Call::kLock, int*>,
                          Forward<&Methods::xFileControl, Call::kNone, int, void*>,
                          Forward<&Methods::xSectorSize, Call::kNone>,
                          Forward<&Methods::xDeviceCharacteristics, Call::kNone>,
                          Forward<&Methods::xShmMap, Call::kOpen, int, int, int, void volatile**>,
                          Forward<&Methods::xShmLock, Call::kLock, int, int, int>,
                          ShmBarrier,
                          Forward<&Methods::xShmUnmap, Call::kNone, int>,
                          nullptr,
                          nullptr};

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  file->pMethods = nullptr;
  const int code = Try(Call::kOpen, [&] {
    sqlite3_vfs* real = g_instance->Real();
    return real->xOpen(real, name, Real(file), flags, outFlags);
  });
  if (code == SQLITE_OK) file->pMethods = &kMethods;
  return code;
}

// SQLite's own pauses between tries, up to 10 s in all.
int Sleep(sqlite3_vfs* /*vfs*/, int microseconds) { return microseconds; }

}  // namespace

FaultyVfs::FaultyVfs() : m_real(sqlite3_vfs_find(nullptr)), m_vfs(*m_real) {
  g_instance = this;
  m_vfs.zName = "faulty";
  m_vfs.pNext = nullptr;
  m_vfs.szOsFile = static_cast<int>(sizeof(File)) + m_real->szOsFile;
  m_vfs.xOpen = Open;
  m_vfs.xSleep = Sleep;
  sqlite3_vfs_register(&m_vfs, 1);
}

FaultyVfs::~FaultyVfs() {
  sqlite3_vfs_unregister(&m_vfs);
  sqlite3_vfs_register(m_real, 1);
  g_instance = nullptr;
}

void FaultyVfs::Fail(Call call, int n, int code, Duration duration) {
  m_call = call;
  m_left = n;
  m_code = code;
  m_duration = duration;
  m_hasFailed = false;
}

int FaultyVfs::CodeFor(Call call) {
  if (m_call == Call::kNone || call != m_call || --m_left > 0) return SQLITE_OK;
  if (m_left < 0 && m_duration == Duration::kOnce) return SQLITE_OK;
  m_hasFailed = true;
  return m_code;
}

}  // namespace Drive::Testing
