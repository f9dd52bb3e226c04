// BILoggerManager.cpp - records of BI events, their queue, and the worker that drains it.
#include "bilog/BILoggerManager.h"

#include <chrono>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "client/log/LoggerUtility.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "platform/Clock.h"
#include "platform/ProcessEnd.h"
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
  Json::Value object(Json::objectValue);
  for (const auto& [key, value] : map) {
    object[TypeConvert::UnicodeToUTF8(key)] = TypeConvert::UnicodeToUTF8(value);
  }
  SetBrandMembers(object);
  return TypeConvert::UTF8ToUnicode(WriteJson(object));
}

void Store(std::vector<UserLog>& batch) {
  BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, false);
}

}  // namespace

struct BILoggerManager::Queue {
  std::mutex mutex;              // guards `records`
  std::deque<UserLog> records;   // oldest first
  Platform::WakeSignal stopped;  // raised by the manager's end

  std::size_t Size() {
    const std::lock_guard<std::mutex> lock(mutex);
    return records.size();
  }

  void Push(UserLog record) {
    const std::lock_guard<std::mutex> lock(mutex);
    records.push_back(std::move(record));
  }

  std::optional<UserLog> Pop() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (records.empty()) {
      return std::nullopt;
    }
    std::optional<UserLog> record(std::move(records.front()));
    records.pop_front();
    return record;
  }

  // The oldest records, at most a batch of them.
  std::vector<UserLog> PopBatch() {
    std::vector<UserLog> batch;
    batch.reserve(kBatchSize);
    while (batch.size() < kBatchSize) {
      auto record = Pop();
      if (!record) {
        break;
      }
      batch.push_back(std::move(*record));
    }
    return batch;
  }
};

BILoggerManager::BILoggerManager()
    : m_queue(std::make_shared<Queue>()), m_systemName(GetOsVersionName()), m_systemModel(GetSystemModel()) {}

BILoggerManager::~BILoggerManager() {
  if (!Platform::ProcessEnd::OtherThreadsAreGone()) {
    m_queue->stopped.Raise();
  }
}

void BILoggerManager::Start() { std::thread(Work, m_queue).detach(); }

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
  if (m_queue->Size() > kSoftBound) {
    std::vector<UserLog> oldest = m_queue->PopBatch();
    Store(oldest);
  }
  m_queue->Push(std::move(record));
}

void BILoggerManager::Work(const std::shared_ptr<Queue>& queue) {
  const auto drain = [&queue] {
    for (;;) {
      std::vector<UserLog> batch = queue->PopBatch();
      if (batch.empty()) {
        return;
      }
      for (UserLog& record : batch) {
        if (record.get_UserId().empty()) {
          record.set_UserId(LogSettings::GetInstance().GetUserId());
        }
      }
      Store(batch);
      if (batch.size() < kBatchSize || Platform::CurrentClock().WaitFor(kBatchPause, queue->stopped)) {
        return;
      }
    }
  };
  do {
    try {
      drain();
    } catch (const std::exception& error) {
      CommLog::GetInstance().PrintLog(LogLevel::kError, __LINE__, "Drive::Bilog::BILoggerManager::Work",
                                      std::string("records not stored: ") + error.what());
    }
  } while (!Platform::CurrentClock().WaitFor(kWorkerPeriod, queue->stopped));
}

}  // namespace Drive::Bilog
