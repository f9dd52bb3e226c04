// OperationLoggerManager.cpp - records of operation events, their queue, and its way into the database.
#include "operatelog/OperationLoggerManager.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <utility>
#include <vector>

#include "bilog/EventMoment.h"
#include "bilog/EventQueue.h"
#include "bilog/PackedTexts.h"
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

}  // namespace

// What is taken down of one event on the host's thread, with the keys and values of its fields; the rest of
// the work is the timer's.
struct OperationLoggerManager::Event {
  Bilog::EventMoment moment;
  OperationBasicEventType event{};
  OperationType type{};
  OperationActionType action{};
};

struct OperationLoggerManager::State {
  Bilog::EventQueue<Event> queue;
  std::atomic<bool> isLogin{false};
  // The same for every record of the process.
  const std::wstring systemName = Bilog::GetOsVersionName();
  const std::wstring systemModel = Bilog::GetSystemModel();
  const std::wstring resultCode = Bilog::MakeResultCode(L"0");
};

OperationLoggerManager::OperationLoggerManager() : m_state(std::make_shared<State>()) {}

OperationLoggerManager::~OperationLoggerManager() { SaveAllAndStop(); }

void OperationLoggerManager::SaveAllAndStop() {
  Guarded("Drive::OperateLog::OperationLoggerManager::SaveAllAndStop", [this] {
    SaveUserlogToDb(*m_state, kNoLimit);
    m_saveTimer.Stop();
  });
}

void OperationLoggerManager::AddEvent(OperationBasicEventType event, OperationType type,
                                      OperationActionType action, const OperationLogger::Fields& fields) {
  if (EventName(event).empty()) {
    return;  // an unknown event is dropped on purpose
  }
  m_state->queue.Push({Bilog::EventMoment::Now(), event, type, action}, Bilog::PackTexts({}, fields));
}

Bilog::UserLog OperationLoggerManager::MakeRecord(const State& state, const Event& event,
                                                  std::string_view fields) {
  Bilog::UserLog record;
  event.moment.Describe(record);
  record.set_Action(std::wstring(EventName(event.event)));
  record.set_Actiontype(std::wstring(ActionKind(event.action)));
  record.set_Code(state.resultCode);
  record.set_CurModule(L"TalvikDrive");
  record.set_Extend(
      TypeConvert::StringToWString(Bilog::WriteJson(Bilog::MapOf(Bilog::UnpackTexts(fields), 0))));
  record.set_Model(state.systemModel);
  record.set_OprType(std::to_wstring(static_cast<int>(event.type)));
  record.set_Romversion(state.systemName);
  record.set_TraceId(event.moment.LogId(static_cast<int>(event.event)));
  return record;
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
  const auto blocks = state.queue.Pop(limit);
  if (!settings.GetOperationLogSwitch()) {
    Print(LogLevel::kDebug, __LINE__, "g_operationLogSwitchState = 0");
  }
  if (blocks.empty() || !settings.GetOperationLogSwitch()) {
    return;
  }
  std::vector<Bilog::UserLog> batch;
  for (const auto& block : blocks) {
    block.ForEach([&](const Event& event, std::string_view fields) {
      // One that is too large for the memory must not take the others with it.
      Guarded(kSave, [&] { batch.push_back(MakeRecord(state, event, fields)); });
    });
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
