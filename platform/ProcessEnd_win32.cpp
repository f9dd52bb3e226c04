// ProcessEnd_win32.cpp - threads at the end of the process, Windows.
#include <windows.h>

#include "platform/ProcessEnd.h"

namespace Drive::Platform {

namespace {

using ShutdownInProgress = BOOLEAN(NTAPI*)();

ShutdownInProgress FindShutdownInProgress() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  const FARPROC function = ntdll == nullptr ? nullptr : GetProcAddress(ntdll, "RtlDllShutdownInProgress");
  return reinterpret_cast<ShutdownInProgress>(reinterpret_cast<void (*)()>(function));
}

// Looked up while the library is loaded: at the end of the process is no time to initialise anything.
const ShutdownInProgress shutdownInProgress = FindShutdownInProgress();

}  // namespace

bool ProcessEnd::OtherThreadsAreGone() {
  return shutdownInProgress != nullptr && shutdownInProgress() != FALSE;
}

}  // namespace Drive::Platform
