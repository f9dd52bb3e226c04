// ProcessEnd_posix.cpp - threads at the end of the process, POSIX.
#include "platform/ProcessEnd.h"

namespace Drive::Platform {

// Threads run on beside the exit handlers until the process is gone.
bool ProcessEnd::OtherThreadsAreGone() { return false; }

}  // namespace Drive::Platform
