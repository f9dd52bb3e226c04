// OperationLoggerManager.cpp - records of operation events, their queue, and its way into the database.
#include "operatelog/OperationLoggerManager.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <iterator>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "operatelog/EventTables.h"
#include "platform/EndingLock.h"
#include "transport/DeviceDescription.h"
#include "transport/Identifiers.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {

namespace {

constexpr std::chrono::milliseconds kSavePeriod{10000};
constexpr std::size_t kBatchLimit = 100;
constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
constexpr int kUbaSwitchOn = 1;
const char* const kSave = "Drive::OperateLog::OperationLoggerManager::SaveUserlogToDb";

void Print(int level, int line, const std::string& text) {
  CommLog::GetInstance().PrintLog(level, line, kSave, text);
}

std::wstring MakeExtend(const OperationLogger::Fields& fields) {
  if (fields.empty()) {
    return L"{}";  // what the writer makes of it, at a fraction of the time
  }
  Json::Value object(Json::objectValue);
  for (const auto& [key, value] : fields) {
    object[TypeConvert::UnicodeToUTF8(key)] = TypeConvert::UnicodeToUTF8(value);
  }
  return TypeConvert::StringToWString(Bilog::WriteJson(object));
}

}  // namespace

struct OperationLoggerManager::Queue {
  std::mutex mutex;                    // guards `records`
  std::deque<Bilog::UserLog> records;  // oldest first
  std::atomic<bool> isLogin{false};

  // What cannot be had because a thread that is gone holds the lock is given up.
  std::vector<Bilog::UserLog> Pop(std::size_t limit) {
    std::vector<Bilog::UserLog> batch;
    const auto lock = Platform::LockUnlessEnding(mutex);
    if (!lock.owns_lock()) {
      Print(LogLevel::kError, __LINE__, "queue is locked by a thread that has ended, its records are lost");
      return batch;
    }
    const auto end = records.begin() + static_cast<std::ptrdiff_t>(std::min(limit, records.size()));
    batch.assign(std::make_move_iterator(records.begin()), std::make_move_iterator(end));
    records.erase(records.begin(), end);
    return batch;
  }
};

OperationLoggerManager::OperationLoggerManager()
    : m_queue(std::make_shared<Queue>()),
      m_systemName(Bilog::GetOsVersionName()),
      m_systemModel(Bilog::GetSystemModel()) {}

OperationLoggerManager::~OperationLoggerManager() {
  try {
    SaveUserlogToDb(*m_queue, kNoLimit);
    m_saveTimer.Stop();
  } catch (const std::exception& error) {
    Print(LogLevel::kError, __LINE__, std::string("queued records not saved: ") + error.what());
  }
}

void OperationLoggerManager::AddEvent(OperationBasicEventType event, OperationType type,
                                      OperationActionType action, const OperationLogger::Fields& fields) {
  const std::wstring_view name = EventName(event);
  if (name.empty()) {
    return;  // an unknown event is dropped on purpose
  }
  Bilog::UserLog record;
  record.set_Time(Bilog::MakeRecordTime());
  record.set_Action(std::wstring(name));
  record.set_Actiontype(std::wstring(ActionKind(action)));
  record.set_Appversion(g_pcVersion);
  record.set_Code(Bilog::MakeResultCode(L"0"));
  record.set_CurModule(L"TalvikDrive");
  record.set_Extend(MakeExtend(fields));
  record.set_Model(m_systemModel);
  record.set_OprType(std::to_wstring(static_cast<int>(type)));
  record.set_Romversion(m_systemName);
  record.set_TraceId(Bilog::MakeRandomLogId(static_cast<int>(event)));
  record.set_UserId(Bilog::LogSettings::GetInstance().GetUserId());
  record.set_DevId(g_deviceId);

  const auto lock = Platform::LockUnlessEnding(m_queue->mutex);
  if (lock.owns_lock()) {
    m_queue->records.push_back(std::move(record));
  }
}

void OperationLoggerManager::Start() {
  m_saveTimer.Start(kSavePeriod, [queue = m_queue] { SaveUserlogToDb(*queue, kBatchLimit); });
}

void OperationLoggerManager::Stop() { m_saveTimer.Stop(); }

void OperationLoggerManager::SetLogin() { m_queue->isLogin = true; }

void OperationLoggerManager::DeleteStoredRecords() {
  Bilog::BiDataBase& database = Bilog::BiDataBase::GetInstance();
  database.executeDeleteAllOperationLogUserLogCallback(false, 0);
  database.executeDeleteAllOperationLogUserLogCallback(true, 0);
}

void OperationLoggerManager::SaveUserlogToDb(Queue& queue, std::size_t limit) {
  const Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
  std::vector<Bilog::UserLog> batch = queue.Pop(limit);
  if (!settings.GetOperationLogSwitch()) {
    Print(LogLevel::kDebug, __LINE__, "g_operationLogSwitchState = 0");
  }
  if (batch.empty() || !settings.GetOperationLogSwitch()) {
    return;
  }
  Bilog::BiDataBase& database = Bilog::BiDataBase::GetInstance();
  database.executeInsertUserLogBatchCallback(batch, false);

  const bool isLogin = queue.isLogin;
  const int ubaSwitch = settings.GetUbaSwitch();
  Print(LogLevel::kDebug, __LINE__, std::string("isLogin == ") + (isLogin ? "1" : "0"));
  Print(LogLevel::kDebug, __LINE__, "g_ubaSwitch == " + std::to_string(ubaSwitch));
  if (!isLogin || ubaSwitch == kUbaSwitchOn) {
    Print(LogLevel::kDebug, __LINE__, "executeInsertUserLogBatchCallback uba");
    database.executeInsertUserLogBatchCallback(batch, true);
  }
  if (!settings.GetOperationLogSwitch()) {
    DeleteStoredRecords();  // the switch's own deletion may have come before the batch was stored
  }
}

}  // namespace Drive::OperateLog
