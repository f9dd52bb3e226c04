// BusyHandler.h - how long a statement waits for a lock that somebody else holds.
#pragma once

namespace Drive::SQLiteDB {

// SQLite's busy callback: waits 10 to 100 ms, then asks for another try, 100 times in all. Once the process
// ends it asks only as long as anybody may wait then.
int WaitForDatabaseLock(void* connection, int invocations);

}  // namespace Drive::SQLiteDB
