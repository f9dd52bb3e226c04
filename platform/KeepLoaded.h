// KeepLoaded.h - keeps the library in the process while threads of its own run its code.
#pragma once

namespace Drive::Platform {

// From the first call on, a host that unloads the library leaves its code and data where they are until the
// process ends. To be called before a thread is detached: unloading cannot wait for such a thread.
//
// Thread-safety: may be called from any thread.
void KeepLoaded();

}  // namespace Drive::Platform
