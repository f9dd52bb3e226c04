// BurstBench.cpp - the memory that a burst of records takes.
//
// Workload: four threads record 100 000 events with a map of five entries, of about 400 bytes of text as
// records, as fast as they can, while the channel's own thread stores into a real database on the disk: the
// clock goes on by one period of it again and again, in no real time. Then it goes on until all is stored. A
// program of its own, so that what other benchmarks leave behind does not count.
//
// What the rules fix: the operation channel stores 100 records every 10 s, so that nearly the whole burst
// waits in memory, for 10 000 s; callers of the BI channel store 1000 records themselves when more than 5000
// wait.
//
// Counters: resident MiB at the start and at the peak, and how much more at the end than at the start;
// `limit_peak_MiB` is the text of the records alone; `ratio` is what the burst took at its peak to that;
// `waiting_bytes` is what one record took, of those that waited when the last one had been recorded.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "bench/Database.h"
#include "bench/Resident.h"
#include "bilog/BILoggerManager.h"
#include "client/common/SharedGlobals.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "operatelog/OperationLoggerManager.h"
#include "tests/support/ManualClock.h"

namespace {

using namespace Drive;
using Fields = std::map<std::wstring, std::wstring>;

constexpr int kThreads = 4;
constexpr int kRecords = 100000;

Fields FieldsOf(int number) {
  const std::wstring text = std::to_wstring(10000 + number);
  return {{L"fileName", L"holiday picture " + text + L".jpg"},
          {L"fileSize", L"1048" + text},
          {L"path", L"/Pictures/2024/by the sea/with all of us"},
          {L"result", L"0"},
          {L"status", L"done"}};
}

void Configure() {
  g_deviceId = L"0123456789abcdef0123456789abcdef";
  g_pcVersion = L"1.2.3.400";
  Bilog::LogSettings::GetInstance().SetUserId(L"user-0123456789");
}

// Text of the stored records, in MiB.
double StoredTextMiB(int maintenance) {
  const auto records = SQLiteDB::LogSQLiteDB::GetInstance().GetUserLogList(1000, maintenance, false);
  std::size_t bytes = 0;
  for (const Bilog::UserLog& record : records) {
    for (const std::wstring& text :
         {record.get_Time(), record.get_Action(), record.get_UserId(), record.get_DevId(), record.get_Code(),
          record.get_Info(), record.get_Extend(), record.get_TraceId(), record.get_Model(),
          record.get_Romversion(), record.get_Appversion(), record.get_CurModule(), record.get_Actiontype(),
          record.get_OprType()}) {
      bytes += text.size();
    }
  }
  return static_cast<double>(bytes) / static_cast<double>(records.size()) * kRecords / (1024.0 * 1024.0);
}

// `record` records the event of a number. `period` is that of the channel's own thread, which waits already.
void Burst(benchmark::State& state, Testing::ManualClock& clock, std::chrono::seconds period, int maintenance,
           const Bench::Database& database, const std::function<void(int)>& record) {
  record(0);  // whatever is made once
  clock.Advance(period);
  const double start = Bench::ResidentMiB("VmRSS");
  Bench::ResetPeakResident();

  std::vector<std::thread> threads;
  std::atomic<int> running{kThreads};
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kRecords / kThreads; ++i) record(thread * (kRecords / kThreads) + i);
      --running;
    });
  }
  while (running > 0) clock.Advance(period);
  for (std::thread& thread : threads) thread.join();
  const std::int64_t waiting = kRecords + 1 - database.Rows();
  const double behind = Bench::ResidentMiB("VmRSS");

  while (database.Rows() < kRecords + 1) {
    for (int i = 0; i < 100; ++i) clock.Advance(period);
  }
  const double peak = Bench::ResidentMiB("VmHWM");
  state.counters["start_MiB"] = start;
  state.counters["peak_MiB"] = peak;
  state.counters["aim_peak_MiB"] = 60;
  state.counters["kept_MiB"] = Bench::ResidentMiB("VmRSS") - start;
  state.counters["aim_kept_MiB"] = 4;
  state.counters["limit_peak_MiB"] = StoredTextMiB(maintenance);
  state.counters["ratio"] = (peak - start) / state.counters["limit_peak_MiB"];
  if (waiting > kRecords / 2) {
    state.counters["waiting_bytes"] = (behind - start) * 1024 * 1024 / static_cast<double>(waiting);
  }
}

void OperationBurst(benchmark::State& state) {
  Configure();
  for (auto _ : state) {
    Testing::ManualClock clock;
    const Bench::Database database;
    OperateLog::OperationLoggerManager manager;
    manager.SetLogin();
    manager.Start();
    clock.WaitForWaiters(1);
    Burst(state, clock, std::chrono::seconds(10), 0, database, [&manager](int i) {
      manager.AddEvent(static_cast<OperateLog::OperationBasicEventType>(i % 77), OperateLog::OperationType{0},
                       OperateLog::OperationActionType{0}, FieldsOf(i));
    });
    manager.SaveAllAndStop();
  }
}

void BiBurst(benchmark::State& state) {
  Configure();
  for (auto _ : state) {
    auto& clock = *new Testing::ManualClock;  // the worker may still ask it when it is told to end
    const Bench::Database database;
    Bilog::BILoggerManager manager;
    manager.Start();
    clock.WaitForWaiters(1);
    Burst(state, clock, std::chrono::seconds(60), 1, database, [&manager](int i) {
      manager.AddEvent(16000 + i % 100, L"0", L"synchronised in the background", FieldsOf(i));
    });
  }
}

BENCHMARK(OperationBurst)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BiBurst)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
