// KeepLoaded_win32.cpp - staying loaded, Windows.
#include <windows.h>

#include "platform/KeepLoaded.h"

namespace Drive::Platform {

void KeepLoaded() {
  static const wchar_t insideThisModule = 0;
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     &insideThisModule, &module);
}

}  // namespace Drive::Platform
