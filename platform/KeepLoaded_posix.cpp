// KeepLoaded_posix.cpp - staying loaded, POSIX.
#include "platform/KeepLoaded.h"

namespace Drive::Platform {

// The shared library is linked with a mark that keeps it from ever being unloaded.
void KeepLoaded() {}

}  // namespace Drive::Platform
