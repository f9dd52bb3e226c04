// BILoggerManager.cpp - records of BI events, their queue, and the worker that drains it.
#include "bilog/BILoggerManager.h"

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "bilog/EventMoment.h"
#include "bilog/EventQueue.h"
#include "bilog/PackedTexts.h"
#include "client/log/LoggerUtility.h"
#include "client/log/TypeConvert.h"
#include "commlog/Guarded.h"
#include "drivelog/BiDataBase.h"
#include "model/LogSettings.h"
#include "model/UserLogFields.h"
#include "platform/Clock.h"
#include "platform/KeepLoaded.h"
#include "transport/DeviceDescription.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {

namespace {

constexpr std::size_t kSoftBound = 5000;
constexpr std::size_t kBatchSize = 1000;
constexpr std::chrono::milliseconds kWorkerPeriod{60000};
constexpr std::chrono::milliseconds kBatchPause{1};
constexpr double kNoDuration = 1.0;
constexpr int kBiRecord = 1;
constexpr const char* kMakeLocation = "Drive::Bilog::BILoggerManager::MakeRecord";
const wchar_t* const kSuccessCode = L"004_00000";
const wchar_t* const kSuccessInfo = L"Operation success";

}  // namespace

// What is taken down of one event on the host's thread; the rest of the work is the worker's.
struct BILoggerManager::Event {
  enum class Kind : unsigned char { kTexts, kCodeAndText, kCodeAndMap };

  EventMoment moment;
  double useTime = kNoDuration;
  int code = 0;              // but for kTexts, where the caller gives action and trace identifier
  Kind kind = Kind::kTexts;  // its texts: action, code, info, then: extend, traceId; extend; keys and values
};

namespace {

// The host may replace the table of names, so a name is looked up when the event happens.
std::wstring ActionName(int code) { return TypeConvert::StringToWString(LoggerUtility::GetUplogType(code)); }

std::wstring ExtendFromText(const std::string& text, const Brand& brand) {
  return TypeConvert::UTF8ToUnicode(WithBrandText(text, brand));
}

std::wstring ExtendFromMap(std::map<std::string, std::string> members, const Brand& brand) {
  for (const auto& [key, value] : brand) {
    members[key] = value;
  }
  return TypeConvert::UTF8ToUnicode(WriteJson(members));
}

void Store(std::vector<UserLog>& batch) {
  BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, false);
}

}  // namespace

struct BILoggerManager::State {
  EventQueue<Event> queue;
  // The same for every record of the process.
  const std::wstring systemName = GetOsVersionName();
  const std::wstring systemModel = GetSystemModel();
  Platform::WakeSignal stopped;  // raised by the manager's end
};

BILoggerManager::BILoggerManager() : m_state(std::make_shared<State>()) {}

BILoggerManager::~BILoggerManager() { m_state->stopped.Raise(); }

void BILoggerManager::Start() {
  Platform::KeepLoaded();
  std::thread(Work, m_state).detach();
}

void BILoggerManager::AddEvent(const std::wstring& action, const std::wstring& code, const std::wstring& info,
                               const std::wstring& extend, const std::wstring& traceId) {
  Append(*m_state, {EventMoment::Now(), kNoDuration, 0, Event::Kind::kTexts},
         PackTexts({action, code, info, extend, traceId}, {}));
}

void BILoggerManager::AddEvent(int code, const std::wstring& resultCode, const std::wstring& info,
                               double useTime) {
  AddText(code, resultCode, info, {}, useTime);
}

// The second text is dropped; this is meant.
void BILoggerManager::AddEvent(int code, const std::wstring& resultCode, const std::wstring& /*unused*/,
                               const std::wstring& info, const std::wstring& extend) {
  AddText(code, resultCode, info, extend, kNoDuration);
}

void BILoggerManager::AddEvent(int code, const std::wstring& info, const std::wstring& extend) {
  AddText(code, kSuccessCode, info, extend, kNoDuration);
}

void BILoggerManager::AddEvent(int code, const std::wstring& resultCode, const std::wstring& info,
                               const ExtendMap& extend) {
  const std::wstring action = ActionName(code);
  Append(*m_state, {EventMoment::Now(), kNoDuration, code, Event::Kind::kCodeAndMap},
         PackTexts({action, resultCode, info}, extend));
}

void BILoggerManager::AddEvent(int code, const ExtendMap& extend) {
  AddEvent(code, kSuccessCode, kSuccessInfo, extend);
}

void BILoggerManager::AddText(int code, const std::wstring& resultCode, const std::wstring& info,
                              const std::wstring& extend, double useTime) {
  const std::wstring action = ActionName(code);
  Append(*m_state, {EventMoment::Now(), useTime, code, Event::Kind::kCodeAndText},
         PackTexts({action, resultCode, info, extend}, {}));
}

UserLog BILoggerManager::MakeRecord(const State& state, const Event& event, std::string_view packed) {
  const EventMoment& moment = event.moment;
  const bool hasCode = event.kind != Event::Kind::kTexts;
  const std::vector<std::string> texts = UnpackTexts(packed);
  UserLog record;
  moment.Describe(record);
  record.set_Action(TypeConvert::UTF8ToUnicode(texts[0]));
  record.set_Code(TypeConvert::UTF8ToUnicode(texts[1]));
  record.set_Info(TypeConvert::UTF8ToUnicode(texts[2]));
  record.set_TraceId(hasCode ? moment.LogId(event.code) : TypeConvert::UTF8ToUnicode(texts[4]));
  if (event.kind == Event::Kind::kCodeAndMap) {
    record.set_Extend(ExtendFromMap(MapOf(texts, 3), moment.origin->brand));
  } else {
    record.set_Extend(ExtendFromText(texts[3], moment.origin->brand));
  }
  record.set_UseTime(event.useTime);
  record.set_StartTime(static_cast<double>(moment.milliseconds));
  record.set_IsMaintenanceLog(kBiRecord);
  record.set_Romversion(state.systemName);
  record.set_Model(state.systemModel);
  return record;
}

std::vector<UserLog> BILoggerManager::PopBatch(State& state) {
  std::vector<UserLog> batch;
  for (const auto& block : state.queue.Pop(kBatchSize)) {
    block.ForEach([&](const Event& event, std::string_view texts) {
      // One that is too large for the memory must not take the others with it.
      Guarded(kMakeLocation, [&] { batch.push_back(MakeRecord(state, event, texts)); });
    });
  }
  return batch;
}

void BILoggerManager::Append(State& state, Event event, const std::string& texts) {
  // Two producers may both flush; each takes records of its own.
  if (state.queue.Size() > kSoftBound) {
    std::vector<UserLog> oldest = PopBatch(state);
    Store(oldest);
  }
  state.queue.Push(std::move(event), texts);
}

void BILoggerManager::Drain(State& state) {
  for (;;) {
    std::vector<UserLog> batch = PopBatch(state);
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
