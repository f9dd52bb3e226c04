// BiDataBase.cpp - the slots of the storage operations.
#include "drivelog/BiDataBase.h"

#include <utility>

#include "commlog/Guarded.h"
#include "platform/EndingLock.h"

namespace Drive::Bilog {
namespace {

template <typename Function>
void Store(std::mutex& mutex, std::shared_ptr<const Function>& slot, Function function) {
  Guarded("Drive::Bilog::BiDataBase", [&] {
    auto next = function ? std::make_shared<const Function>(std::move(function)) : nullptr;
    const auto lock = Platform::LockUnlessEnding(mutex);
    // Swapped, so that what the previous function owns is destroyed after the unlocking.
    if (lock.owns_lock()) slot.swap(next);
  });
}

template <typename Function>
std::shared_ptr<const Function> Load(std::mutex& mutex, const std::shared_ptr<const Function>& slot) {
  const auto lock = Platform::LockUnlessEnding(mutex);
  return lock.owns_lock() ? slot : nullptr;
}

template <typename Function>
Function Copy(std::mutex& mutex, const std::shared_ptr<const Function>& slot) {
  const auto function = Load(mutex, slot);
  return function != nullptr ? *function : Function();
}

// Calls what the slot holds, under no lock. Nothing escapes; after a failure the result is a default one.
template <typename Result, typename Function, typename... Arguments>
Result Call(std::mutex& mutex, const std::shared_ptr<const Function>& slot, const char* location,
            Arguments&... arguments) {
  return Guarded(location, [&] {
    const auto function = Load(mutex, slot);
    return function != nullptr ? (*function)(arguments...) : Result();
  });
}

}  // namespace

BiDataBase& BiDataBase::GetInstance() {
  static BiDataBase& instance = *new BiDataBase;
  return instance;
}

BiDataBase::BiDataBase() = default;
BiDataBase::~BiDataBase() = default;

BiDataBase::BiDataBase(const BiDataBase& other) { *this = other; }

BiDataBase& BiDataBase::operator=(const BiDataBase& other) {
  if (this == &other) return *this;
  setInsertUserLogBatchCallbackFunc(Copy(other.m_mutex, other.m_insertUserLogBatch));
  setDeleteUserLogWithIdCallbackFunc(Copy(other.m_mutex, other.m_deleteUserLogWithId));
  setDeleteAllOperationLogUserLogCallbackFunc(Copy(other.m_mutex, other.m_deleteAllOperationLogUserLog));
  setGetUserLogListCallbackFunc(Copy(other.m_mutex, other.m_getUserLogList));
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
