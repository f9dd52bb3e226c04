// OperationLogger.cpp - the operation facade: the way to the queue and the two upload timers.
#include "drivelog/OperationLogger.h"

#include <exception>
#include <utility>

#include "client/common/SharedGlobals.h"
#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "operatelog/FileInfoGroups.h"
#include "operatelog/OperationLoggerManager.h"
#include "operatelog/OperationLoggerTimer.h"
#include "operatelog/UbaLoggerTimer.h"
#include "platform/ProcessEnd.h"
#include "transport/PushLogRequest.h"

namespace Drive::OperateLog {

namespace {

const char* const kOutputOperationLog = "Drive::OperateLog::OperationLogger::OutputOperationLog";
const char* const kSetSwitch = "Drive::OperateLog::OperationLogger::SetOperationLogSwitchState";
const char* const kStartLoggerTask = "Drive::OperateLog::OperationLogger::StartLoggerTask";
const char* const kStartLogRptTask = "Drive::OperateLog::OperationLogger::StartLogRptTask";
const char* const kStopLoggerTask = "Drive::OperateLog::OperationLogger::StopLoggerTask";
const char* const kDeleteDb = "Drive::OperateLog::OperationLogger::DeleteOperationLogDB";

void Print(int level, int line, const char* location, const std::string& text) {
  CommLog::GetInstance().PrintLog(level, line, location, text);
}

// Runs one operation of the facade. The host never sees an exception of ours.
template <typename Operation>
void Guarded(const char* location, Operation&& operation) {
  try {
    operation();
  } catch (const std::exception& error) {
    Print(LogLevel::kError, __LINE__, location, error.what());
  } catch (...) {
    Print(LogLevel::kError, __LINE__, location, "unknown exception");
  }
}

}  // namespace

OperationLogger& OperationLogger::GetInstance() {
  static OperationLogger instance;
  return instance;
}

// Touches what it needs to its end first, so that all of it outlives this object, and has the libraries of
// the uploads initialised before there is a thread.
OperationLogger::OperationLogger() {
  CommLog::GetInstance();
  Bilog::LogSettings::GetInstance();
  Bilog::BiDataBase::GetInstance();
  SQLiteDB::LogSQLiteDB::GetInstance();
  const Bilog::PushLogRequest initialisesLibraries;
  m_operationTimer = std::make_unique<OperationLoggerTimer>();
  m_ubaTimer = std::make_unique<UbaLoggerTimer>();
  m_queue = std::make_unique<OperationLoggerManager>();
}

// The queue first: it saves what is still queued.
OperationLogger::~OperationLogger() {
  Guarded("Drive::OperateLog::OperationLogger::~OperationLogger", [this] {
    Platform::ProcessEnd::Begin();
    m_queue.reset();
    SQLiteDB::LogSQLiteDB::GetInstance().StoreKeptRecords();
    m_operationTimer.reset();
    m_ubaTimer.reset();
  });
}

void OperationLogger::OutputOperationLog(OperationBasicEventType event, OperationType type,
                                         OperationActionType action) {
  Guarded(kOutputOperationLog, [&] { m_queue->AddEvent(event, type, action, {}); });
}

void OperationLogger::OutputOperationLog(OperationBasicEventType event, OperationType type,
                                         OperationActionType action, Fields fields) {
  Guarded(kOutputOperationLog, [&] { m_queue->AddEvent(event, type, action, fields); });
}

void OperationLogger::OutputOperationLog(OperationBasicEventType event, OperationType type,
                                         OperationActionType action, std::vector<Fields> list) {
  Guarded(kOutputOperationLog, [&] {
    for (std::wstring& group : MakeFileInfoGroups(list)) {
      m_queue->AddEvent(event, type, action, {{L"fileInfos", std::move(group)}});
    }
  });
}

void OperationLogger::SetOperationLogSwitchState(const bool& value) {
  Guarded(kSetSwitch, [&] {
    const bool isOn = value;
    g_operationLogSwitchState = isOn;
    Bilog::LogSettings::GetInstance().SetOperationLogSwitch(isOn);
    if (!isOn) {
      DeleteOperationLogDB();
    }
    Print(LogLevel::kInfo, __LINE__, kSetSwitch,
          std::string("[PushStatusCommand] OperationLogSwitchState:") + (isOn ? "true" : "false"));
  });
}

void OperationLogger::StartLoggerTask() {
  Guarded(kStartLoggerTask, [this] { m_queue->Start(); });
}

void OperationLogger::StartLogRptTask() {
  Guarded(kStartLogRptTask, [this] {
    const Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
    m_queue->SetLogin();
    if (!settings.GetOperationLogSwitch()) {
      Print(LogLevel::kInfo, __LINE__, kStartLogRptTask, "OperationLogSwitchState:false");
      DeleteOperationLogDB();
    }
    if (settings.GetUbaSwitch() == 0) {
      Print(LogLevel::kInfo, __LINE__, kStartLogRptTask, "g_ubaSwitch == 0");
      Bilog::BiDataBase::GetInstance().executeDeleteAllOperationLogUserLogCallback(true, 0);
    }
    m_operationTimer->Start();
    m_ubaTimer->Start();
  });
}

void OperationLogger::StopLoggerTask() {
  Guarded(kStopLoggerTask, [this] {
    m_queue->Stop();
    m_operationTimer->Stop();
    m_ubaTimer->Stop();
  });
}

void OperationLogger::DeleteOperationLogDB() {
  Guarded(kDeleteDb, [] { OperationLoggerManager::DeleteStoredRecords(); });
}

}  // namespace Drive::OperateLog
