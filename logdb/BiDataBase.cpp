// BiDataBase.cpp - the slots of the storage operations.
#include "drivelog/BiDataBase.h"

#include <exception>
#include <utility>

#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "platform/EndingLock.h"

namespace Drive::Bilog {
namespace {

template <typename Function>
void Store(std::mutex& mutex, Function& slot, Function function) {
  const auto lock = Platform::LockUnlessEnding(mutex);
  // Swapped, so that what the previous function owns is destroyed after the unlocking.
  if (lock.owns_lock()) slot.swap(function);
}

template <typename Function>
Function Load(std::mutex& mutex, const Function& slot) {
  const auto lock = Platform::LockUnlessEnding(mutex);
  return lock.owns_lock() ? slot : Function();
}

void Report(int line, const char* location, const char* text) {
  CommLog::GetInstance().PrintLog(LogLevel::kError, line, location, text);
}

// Calls what the slot holds, under no lock. Nothing escapes; after a failure the result is a default one.
template <typename Result, typename Function, typename... Arguments>
Result Call(std::mutex& mutex, const Function& slot, const char* location, Arguments&... arguments) {
  try {
    if (const Function function = Load(mutex, slot)) return function(arguments...);
  } catch (const std::exception& error) {
    Report(__LINE__, location, error.what());
  } catch (...) {
    Report(__LINE__, location, "unknown exception");
  }
  return Result();
}

}  // namespace

BiDataBase& BiDataBase::GetInstance() {
  static BiDataBase& instance = *new BiDataBase;
  return instance;
}

BiDataBase::BiDataBase() = default;
BiDataBase::~BiDataBase() = default;

BiDataBase::BiDataBase(const BiDataBase& other)
    : m_insertUserLogBatch(Load(other.m_mutex, other.m_insertUserLogBatch)),
      m_deleteUserLogWithId(Load(other.m_mutex, other.m_deleteUserLogWithId)),
      m_deleteAllOperationLogUserLog(Load(other.m_mutex, other.m_deleteAllOperationLogUserLog)),
      m_getUserLogList(Load(other.m_mutex, other.m_getUserLogList)) {}

BiDataBase& BiDataBase::operator=(const BiDataBase& other) {
  if (this == &other) return *this;
  setInsertUserLogBatchCallbackFunc(Load(other.m_mutex, other.m_insertUserLogBatch));
  setDeleteUserLogWithIdCallbackFunc(Load(other.m_mutex, other.m_deleteUserLogWithId));
  setDeleteAllOperationLogUserLogCallbackFunc(Load(other.m_mutex, other.m_deleteAllOperationLogUserLog));
  setGetUserLogListCallbackFunc(Load(other.m_mutex, other.m_getUserLogList));
  return *this;
}

void BiDataBase::setInsertUserLogBatchCallbackFunc(InsertUserLogBatchFunc function) {
  Store(m_mutex, m_insertUserLogBatch, std::move(function));
}

void BiDataBase::setDeleteUserLogWithIdCallbackFunc(DeleteUserLogWithIdFunc function) {
  Store(m_mutex, m_deleteUserLogWithId, std::move(function));
}

void BiDataBase::setDeleteAllOperationLogUserLogCallbackFunc(DeleteAllOperationLogUserLogFunc function) {
  Store(m_mutex, m_deleteAllOperationLogUserLog, std::move(function));
}

void BiDataBase::setGetUserLogListCallbackFunc(GetUserLogListFunc function) {
  Store(m_mutex, m_getUserLogList, std::move(function));
}

void BiDataBase::executeInsertUserLogBatchCallback(std::vector<UserLog>& batch, bool uba) {
  Call<void>(m_mutex, m_insertUserLogBatch, "Drive::Bilog::BiDataBase::executeInsertUserLogBatchCallback",
             batch, uba);
}

void BiDataBase::executeDeleteUserLogWithIdCallback(int firstId, int lastId, int maintenance, bool uba) {
  Call<void>(m_mutex, m_deleteUserLogWithId, "Drive::Bilog::BiDataBase::executeDeleteUserLogWithIdCallback",
             firstId, lastId, maintenance, uba);
}

void BiDataBase::executeDeleteAllOperationLogUserLogCallback(bool uba, int maintenance) {
  Call<void>(m_mutex, m_deleteAllOperationLogUserLog,
             "Drive::Bilog::BiDataBase::executeDeleteAllOperationLogUserLogCallback", uba, maintenance);
}

std::vector<UserLog> BiDataBase::executeGetUserLogListCallback(int count, int maintenance, bool uba) {
  return Call<std::vector<UserLog>>(m_mutex, m_getUserLogList,
                                    "Drive::Bilog::BiDataBase::executeGetUserLogListCallback", count,
                                    maintenance, uba);
}

}  // namespace Drive::Bilog
