// dll_unload.cpp - a host that unloads a logging plug-in again and again, while the library's threads run.
//
// Exit code: 0 the library was unloaded exactly when it had no threads.
#include <windows.h>

namespace {

bool IsLibraryLoaded() { return GetModuleHandleW(L"drivelog.dll") != nullptr; }

}  // namespace

int main() {
  const HMODULE idle = LoadLibraryW(L"dll_plugin.dll");
  if (idle == nullptr || !IsLibraryLoaded()) return 2;
  FreeLibrary(idle);
  if (IsLibraryLoaded()) return 3;

  for (int i = 0; i < 20; ++i) {
    const HMODULE plugin = LoadLibraryW(L"dll_plugin.dll");
    if (plugin == nullptr) return 4;
    reinterpret_cast<void (*)()>(reinterpret_cast<void*>(GetProcAddress(plugin, "StartLogging")))();
    FreeLibrary(plugin);
    if (!IsLibraryLoaded()) return 5;
    Sleep(10);  // the workers meet unmapped code now, or never
  }
  return 0;
}
