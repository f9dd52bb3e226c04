// OperationLoggerManager.cpp - records of operation events, their queue, and its way into the database.
#include "operatelog/OperationLoggerManager.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <utility>
#include <vector>

#include "bilog/RecordQueue.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "commlog/Guarded.h"
#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "operatelog/EventTables.h"
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
  return TypeConvert::StringToWString(Bilog::WriteJson(Bilog::MakeJsonObject(fields)));
}

}  // namespace

struct OperationLoggerManager::State {
  Bilog::RecordQueue queue;
  std::atomic<bool> isLogin{false};
};

OperationLoggerManager::OperationLoggerManager()
    : m_state(std::make_shared<State>()),
      m_systemName(Bilog::GetOsVersionName()),
      m_systemModel(Bilog::GetSystemModel()),
      m_resultCode(Bilog::MakeResultCode(L"0")) {}

OperationLoggerManager::~OperationLoggerManager() { SaveAllAndStop(); }

void OperationLoggerManager::SaveAllAndStop() {
  Guarded("Drive::OperateLog::OperationLoggerManager::SaveAllAndStop", [this] {
    SaveUserlogToDb(*m_state, kNoLimit);
    m_saveTimer.Stop();
  });
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
  record.set_Code(m_resultCode);
  record.set_CurModule(L"TalvikDrive");
  record.set_Extend(MakeExtend(fields));
  record.set_Model(m_systemModel);
  record.set_OprType(std::to_wstring(static_cast<int>(type)));
  record.set_Romversion(m_systemName);
  record.set_TraceId(Bilog::MakeRandomLogId(static_cast<int>(event)));
  record.set_UserId(Bilog::LogSettings::GetInstance().GetUserId());
  record.set_DevId(g_deviceId);
  m_state->queue.Push(std::move(record));
}

void OperationLoggerManager::Start() {
  m_saveTimer.Start(kSavePeriod, [state = m_state] { SaveUserlogToDb(*state, kBatchLimit); });
}

void OperationLoggerManager::Stop() { m_saveTimer.Stop(); }

void OperationLoggerManager::SetLogin() { m_state->isLogin = true; }

void OperationLoggerManager::DeleteStoredRecords() {
  Bilog::BiDataBase& database = Bilog::BiDataBase::GetInstance();
  database.executeDeleteAllOperationLogUserLogCallback(false, 0);
  database.executeDeleteAllOperationLogUserLogCallback(true, 0);
}

void OperationLoggerManager::SaveUserlogToDb(State& state, std::size_t limit) {
  const Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
  std::vector<Bilog::UserLog> batch = state.queue.Pop(limit);
  if (!settings.GetOperationLogSwitch()) {
    Print(LogLevel::kDebug, __LINE__, "g_operationLogSwitchState = 0");
  }
  if (batch.empty() || !settings.GetOperationLogSwitch()) {
    return;
  }
  Bilog::BiDataBase& database = Bilog::BiDataBase::GetInstance();
  database.executeInsertUserLogBatchCallback(batch, false);

  const bool isLogin = state.isLogin;
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
