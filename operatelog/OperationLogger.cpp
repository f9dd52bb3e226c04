// OperationLogger.cpp - the operation facade: the way to the queue and the two upload timers.
#include "drivelog/OperationLogger.h"

#include <utility>

#include "client/common/SharedGlobals.h"
#include "commlog/Guarded.h"
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

}  // namespace

// What is left to do when static objects are destroyed. The queue first: it saves what it holds.
struct OperationLoggerEnd {
  OperationLogger& logger;
  ~OperationLoggerEnd() {
    Guarded("Drive::OperateLog::OperationLogger::~OperationLogger", [this] {
      Platform::ProcessEnd::Begin();
      logger.m_queue->SaveAllAndStop();
      SQLiteDB::LogSQLiteDB::GetInstance().StoreKeptRecords();
      logger.m_operationTimer->Stop();
      logger.m_ubaTimer->Stop();
    });
  }
};

// Never destroyed: when the process ends, a thread of the host may be in a call, and a static object of the
// host may make one later.
OperationLogger& OperationLogger::GetInstance() {
  static OperationLogger& instance = *new OperationLogger;
  static const OperationLoggerEnd end{instance};
  return instance;
}

// Touches what it needs to its end first, so that all of it outlives that, and has the libraries of the
// uploads initialised before there is a thread.
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

OperationLogger::~OperationLogger() = default;

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
