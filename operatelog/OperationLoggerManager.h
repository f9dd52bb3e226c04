// OperationLoggerManager.h - turns operation events into records, queues and saves them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "bilog/SeparateThreadTimer.h"
#include "drivelog/OperationLogger.h"
#include "drivelog/UserLog.h"

namespace Drive::OperateLog {

// The queue between the host's threads and the database, and the timer that empties it: up to 100 records
// every 10 s, in one batch a table.
//
// A batch goes to the operation table, and to the UBA table as well before the login, and after it while the
// UBA switch is 1. This asymmetry is meant. With the operation switch off it goes nowhere and is lost.
// Surprises: a record without an action is dropped without a message. A switch that is turned off while a
//            batch is being saved empties the tables once more.
// Thread-safety: every operation may be called from any thread.
// Ownership:     the timer's thread shares the queue, so it never outlives it.
// Lifetime:      destruction is SaveAllAndStop.
class OperationLoggerManager {
 public:
  OperationLoggerManager();
  ~OperationLoggerManager();
  OperationLoggerManager(const OperationLoggerManager&) = delete;
  OperationLoggerManager& operator=(const OperationLoggerManager&) = delete;

  // Takes an event down on the caller's thread and queues it; its record is made when it is saved.
  void AddEvent(OperationBasicEventType event, OperationType type, OperationActionType action,
                const OperationLogger::Fields& fields);

  // Starts and stops the save timer.
  void Start();
  void Stop();

  // Saves everything queued, in one batch a table, and stops the save timer.
  void SaveAllAndStop();

  // Remembers that the user has logged in.
  void SetLogin();

  // Deletes every stored record of both tables.
  static void DeleteStoredRecords();

 private:
  struct Event;
  struct State;
  static Bilog::UserLog MakeRecord(const State& state, const Event& event, std::string_view fields);
  static void SaveUserlogToDb(State& state, std::size_t limit);

  const std::shared_ptr<State> m_state;  // the queue; shared with the timer's thread
  Bilog::SeparateThreadTimer m_saveTimer;
};

}  // namespace Drive::OperateLog
