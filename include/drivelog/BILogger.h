// BILogger.h - entry point of the maintenance ("BI") channel, and of the library's initialisation.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "drivelog/BiUbaDataType.h"
#include "drivelog/Export.h"

namespace Drive::Bilog {

class BILoggerManager;
class BILoggerTimer;

// Records BI events and uploads them.
//
// A host calls InitDataBase, then SetBiUbaDataPara, then StartBILoggerTask and StartBILogRptTask, and
// OutputBILog whenever something happens.
//
// Way of a record: OutputBILog queues it; a worker moves the queue into the database every 60 s; the upload
//   timer sends the oldest stored records every 5 s and deletes what the server accepted.
// What is lost: records that are still queued when the process ends (at most the last 60 s); the oldest
//   tenth of a table that reached the row cap; a file of more than 500 MiB at start-up; a record too large
//   for any request. Everything else waits until the server takes it.
// Failures: no operation throws or reports a failure to its caller, InitDataBase apart; CommLog has the
//   messages.
// Thread-safety: OutputBILog may be called from any thread, and so may the other operations, which are meant
//   for the host's start and end.
// Lifetime: one instance, created on first use; it ends its upload timer when the process ends. Calls after
//   that are harmless; what they record is lost.
class DRIVELOG_API BILogger {
 public:
  static BILogger& GetInstance();
  virtual ~BILogger();

  BILogger(const BILogger&) = delete;
  BILogger& operator=(const BILogger&) = delete;

  // Fixes where the database and the certificate are, and opens or creates the database. `logDbPath` names
  // the user's database: the folder's name is its hash. False when the database cannot be used; the library
  // goes on and tries again with every operation.
  bool InitDataBase(std::wstring logDbPath);

  // Takes over the host's identity and settings. The library's timers take `pushLogMaxWaitTime` as the period
  // of their ticks; how long a partial batch is held back (300 s) is not configurable.
  void SetBiUbaDataPara(const BiUbaDataType& data);

  // Records one event. Cheap: builds the record and queues it. Only when more than 5000 records wait does the
  // caller store 1000 of them itself.
  // A `code` is turned into the action's name; durations are in the unit of the host's choice, 1.0 where none
  // is given. The map becomes the JSON text of the record's extension data.
  void OutputBILog(const std::wstring& action, const std::wstring& code, const std::wstring& info,
                   const std::wstring& extend, const std::wstring& traceId);
  void OutputBILog(int code, const std::wstring& resultCode, const std::wstring& info, double useTime);
  // `unused` is stored nowhere.
  void OutputBILog(int code, std::wstring resultCode, std::wstring unused, std::wstring info,
                   std::wstring extend);
  void OutputBILog(int code, std::wstring info, std::wstring extend);
  void OutputBILog(int code, std::wstring resultCode, std::wstring info,
                   std::map<std::wstring, std::wstring> extend);
  void OutputBILog(int code, std::map<std::wstring, std::wstring> extend);

  // Starts the worker that stores queued records; it stores at once what is queued already. It runs until the
  // process ends.
  void StartBILoggerTask();

  // Starts the upload timer, and reads the servers' addresses for it. Does nothing while it runs.
  void StartBILogRptTask();

  // Stops the upload timer, not the worker. A transfer in flight is given a moment to end, then aborted; its
  // rows stay. Returns when the timer's thread has ended.
  void StopBILoggerTask();

  // Deletes all stored records of every channel.
  void ClearDataBase();

  // Empties both tables, without waiting for an operation under way in this process.
  void DeleteFromAllTables();

 private:
  friend struct BILoggerEnd;  // runs when the process ends

  BILogger();

  std::unique_ptr<BILoggerTimer> m_timer;
  std::unique_ptr<BILoggerManager> m_manager;
};

}  // namespace Drive::Bilog
