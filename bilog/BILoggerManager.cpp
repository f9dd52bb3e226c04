// BILoggerManager.cpp - records of BI events, their queue, and the worker that drains it.
#include "bilog/BILoggerManager.h"

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "bilog/RecordQueue.h"
#include "client/common/SharedGlobals.h"
#include "client/log/LoggerUtility.h"
#include "client/log/TypeConvert.h"
#include "commlog/Guarded.h"
#include "drivelog/BiDataBase.h"
#include "model/LogSettings.h"
#include "model/UserLogFields.h"
#include "platform/Clock.h"
#include "platform/KeepLoaded.h"
#include "transport/DeviceDescription.h"
#include "transport/Identifiers.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {

namespace {

constexpr std::size_t kSoftBound = 5000;
constexpr std::size_t kBatchSize = 1000;
constexpr std::chrono::milliseconds kWorkerPeriod{60000};
constexpr std::chrono::milliseconds kBatchPause{1};
constexpr double kNoDuration = 1.0;
constexpr int kBiRecord = 1;
const wchar_t* const kSuccessCode = L"004_00000";
const wchar_t* const kSuccessInfo = L"Operation success";

// The action's name and the trace identifier of an event that has a code.
UserLog MakeCodeRecord(int code, const std::wstring& resultCode, const std::wstring& info, double useTime) {
  UserLog record;
  record.set_Action(TypeConvert::StringToWString(LoggerUtility::GetUplogType(code)));
  record.set_TraceId(MakeRandomLogId(code));
  record.set_Code(resultCode);
  record.set_Info(info);
  record.set_UseTime(useTime);
  return record;
}

std::wstring ExtendFromText(const std::wstring& text) {
  return TypeConvert::UTF8ToUnicode(WithBrandText(TypeConvert::UnicodeToUTF8(text)));
}

std::wstring ExtendFromMap(const BILoggerManager::ExtendMap& map) {
  Json::Value object = MakeJsonObject(map);
  SetBrandMembers(object);
  return TypeConvert::UTF8ToUnicode(WriteJson(object));
}

void Store(std::vector<UserLog>& batch) {
  BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, false);
}

}  // namespace

struct BILoggerManager::State {
  RecordQueue queue;
  Platform::WakeSignal stopped;  // raised by the manager's end
};

BILoggerManager::BILoggerManager()
    : m_state(std::make_shared<State>()), m_systemName(GetOsVersionName()), m_systemModel(GetSystemModel()) {}

BILoggerManager::~BILoggerManager() { m_state->stopped.Raise(); }

void BILoggerManager::Start() {
  Platform::KeepLoaded();
  std::thread(Work, m_state).detach();
}

void BILoggerManager::AddEvent(const std::wstring& action, const std::wstring& code, const std::wstring& info,
                               const std::wstring& extend, const std::wstring& traceId) {
  UserLog record;
  record.set_Action(action);
  record.set_Code(code);
  record.set_Info(info);
  record.set_Extend(ExtendFromText(extend));
  record.set_TraceId(traceId);
  record.set_UseTime(kNoDuration);
  Append(std::move(record));
}

void BILoggerManager::AddEvent(int code, const std::wstring& resultCode, const std::wstring& info,
                               double useTime) {
  UserLog record = MakeCodeRecord(code, resultCode, info, useTime);
  record.set_Extend(ExtendFromText({}));
  Append(std::move(record));
}

// The second text is dropped; this is meant.
void BILoggerManager::AddEvent(int code, const std::wstring& resultCode, const std::wstring& /*unused*/,
                               const std::wstring& info, const std::wstring& extend) {
  UserLog record = MakeCodeRecord(code, resultCode, info, kNoDuration);
  record.set_Extend(ExtendFromText(extend));
  Append(std::move(record));
}

void BILoggerManager::AddEvent(int code, const std::wstring& info, const std::wstring& extend) {
  UserLog record = MakeCodeRecord(code, kSuccessCode, info, kNoDuration);
  record.set_Extend(ExtendFromText(extend));
  Append(std::move(record));
}

void BILoggerManager::AddEvent(int code, const std::wstring& resultCode, const std::wstring& info,
                               const ExtendMap& extend) {
  UserLog record = MakeCodeRecord(code, resultCode, info, kNoDuration);
  record.set_Extend(ExtendFromMap(extend));
  Append(std::move(record));
}

void BILoggerManager::AddEvent(int code, const ExtendMap& extend) {
  AddEvent(code, kSuccessCode, kSuccessInfo, extend);
}

// Fills what all events have in common, and queues the record.
void BILoggerManager::Append(UserLog record) {
  record.set_Time(MakeRecordTime());
  record.set_UserId(LogSettings::GetInstance().GetUserId());
  record.set_DevId(g_deviceId.Get());
  record.set_StartTime(static_cast<double>(Platform::CurrentClock().NowMilliseconds()));
  record.set_IsMaintenanceLog(kBiRecord);
  record.set_Romversion(m_systemName);
  record.set_Appversion(g_pcVersion.Get());
  record.set_Model(m_systemModel);

  // Two producers may both flush; each takes records of its own.
  if (m_state->queue.Size() > kSoftBound) {
    std::vector<UserLog> oldest = m_state->queue.Pop(kBatchSize);
    Store(oldest);
  }
  m_state->queue.Push(std::move(record));
}

void BILoggerManager::Drain(State& state) {
  for (;;) {
    std::vector<UserLog> batch = state.queue.Pop(kBatchSize);
    for (UserLog& record : batch) {
      if ((record.*UserLogFields::kUserId).empty()) {
        record.set_UserId(LogSettings::GetInstance().GetUserId());
      }
    }
    if (!batch.empty()) {
      Store(batch);
    }
    if (batch.size() < kBatchSize || Platform::CurrentClock().WaitFor(kBatchPause, state.stopped)) {
      return;
    }
  }
}

void BILoggerManager::Work(const std::shared_ptr<State>& state) {
  do {
    Guarded("Drive::Bilog::BILoggerManager::Work", [&state] { Drain(*state); });
  } while (!Platform::CurrentClock().WaitFor(kWorkerPeriod, state->stopped));
}

}  // namespace Drive::Bilog
