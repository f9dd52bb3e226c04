// BiDataBase.h - the four operations by which records reach their storage and come back.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "drivelog/Export.h"
#include "drivelog/UserLog.h"

namespace Drive::Bilog {

// Registry of the storage operations. BILogger::InitDataBase registers the library's own SQLite store; a host
// may put its own storage here, or copy the instance, register functions that observe, and forward to the
// copy.
//
// An empty slot is no error: records given to it are dropped without a message, reads return nothing.
//
// Thread-safety: every operation may be called from any thread; a stored function is called under no lock,
//                from several of the library's threads at once.
// Ownership:     a function that is replaced lives until the calls of it that are under way have ended. A
//                copy of the registry holds copies of the functions.
// Exceptions:    what a stored function throws is caught and reported through CommLog. Storing one needs
//                memory; without, the slot keeps what it held, and that is reported.
class DRIVELOG_API BiDataBase {
 public:
  using InsertUserLogBatchFunc = std::function<void(std::vector<UserLog>& batch, bool uba)>;
  using DeleteUserLogWithIdFunc = std::function<void(int firstId, int lastId, int maintenance, bool uba)>;
  using DeleteAllOperationLogUserLogFunc = std::function<void(bool uba, int maintenance)>;
  using GetUserLogListFunc = std::function<std::vector<UserLog>(int count, int maintenance, bool uba)>;

  // The instance that the library uses; created on first use, never destroyed.
  static BiDataBase& GetInstance();

  BiDataBase();
  BiDataBase(const BiDataBase& other);
  BiDataBase& operator=(const BiDataBase& other);
  ~BiDataBase();

  // Each replaces what its slot held; an empty function empties the slot.
  void setInsertUserLogBatchCallbackFunc(InsertUserLogBatchFunc function);
  void setDeleteUserLogWithIdCallbackFunc(DeleteUserLogWithIdFunc function);
  void setDeleteAllOperationLogUserLogCallbackFunc(DeleteAllOperationLogUserLogFunc function);
  void setGetUserLogListCallbackFunc(GetUserLogListFunc function);

  // Stores `batch` in the UBA table (uba) or the other one. Failures are the storage's to report; the
  // library's own store keeps in memory, bounded, what the database cannot take at the moment.
  void executeInsertUserLogBatchCallback(std::vector<UserLog>& batch, bool uba);

  // Deletes the rows of one channel whose Id lies between firstId and lastId, both included.
  void executeDeleteUserLogWithIdCallback(int firstId, int lastId, int maintenance, bool uba);

  // Deletes all rows of one channel, delivered or not.
  void executeDeleteAllOperationLogUserLogCallback(bool uba, int maintenance);

  // The oldest rows of one channel, at most `count`, by ascending Id; none after a failure.
  std::vector<UserLog> executeGetUserLogListCallback(int count, int maintenance, bool uba);

 private:
  template <typename Function>
  using Slot = std::shared_ptr<const Function>;  // shared with the calls under way; null when empty

  mutable std::mutex m_mutex;  // guards the four slots, never held while one is called
  Slot<InsertUserLogBatchFunc> m_insertUserLogBatch;
  Slot<DeleteUserLogWithIdFunc> m_deleteUserLogWithId;
  Slot<DeleteAllOperationLogUserLogFunc> m_deleteAllOperationLogUserLog;
  Slot<GetUserLogListFunc> m_getUserLogList;
};

}  // namespace Drive::Bilog
