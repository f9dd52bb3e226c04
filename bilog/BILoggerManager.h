// BILoggerManager.h - turns BI events into records, queues them, and moves them into the database.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::Bilog {

// The queue between the host's threads and the database, and its worker.
//
// Only what belongs to the moment is taken down on the host's thread; the record is made where it is stored.
// The worker drains the queue in batches of 1000, then sleeps 60 s; a new record does not wake it. A producer
// that finds more than 5000 records waiting stores the oldest 1000 itself.
// Thread-safety: every operation may be called from any thread.
// Ownership:     the worker shares the queue, so it never outlives it.
// Lifetime:      destruction ends the worker; records still queued are lost.
class BILoggerManager {
 public:
  using ExtendMap = std::map<std::wstring, std::wstring>;

  BILoggerManager();
  ~BILoggerManager();
  BILoggerManager(const BILoggerManager&) = delete;
  BILoggerManager& operator=(const BILoggerManager&) = delete;

  // Starts a worker. A second one is harmless: both drain the same queue.
  void Start();

  // One for each OutputBILog of the facade.
  void AddEvent(const std::wstring& action, const std::wstring& code, const std::wstring& info,
                const std::wstring& extend, const std::wstring& traceId);
  void AddEvent(int code, const std::wstring& resultCode, const std::wstring& info, double useTime);
  void AddEvent(int code, const std::wstring& resultCode, const std::wstring& unused,
                const std::wstring& info, const std::wstring& extend);
  void AddEvent(int code, const std::wstring& info, const std::wstring& extend);
  void AddEvent(int code, const std::wstring& resultCode, const std::wstring& info, const ExtendMap& extend);
  void AddEvent(int code, const ExtendMap& extend);

 private:
  struct Event;
  struct State;
  static void Work(const std::shared_ptr<State>& state);
  static void Drain(State& state);
  // The oldest events, as the records that they become.
  static std::vector<UserLog> PopBatch(State& state);
  static UserLog MakeRecord(const State& state, const Event& event, std::string_view packed);
  static void Append(State& state, Event event, const std::string& texts);

  void AddText(int code, const std::wstring& resultCode, const std::wstring& info, const std::wstring& extend,
               double useTime);

  const std::shared_ptr<State> m_state;  // the queue; shared with the workers
};

}  // namespace Drive::Bilog
