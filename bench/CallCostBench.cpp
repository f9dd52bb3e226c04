// CallCostBench.cpp - what one recording call costs the host's thread.
//
// Workload: 40 000 calls, shared by 1, 4 or 16 threads that make them as fast as they can, for each form that
// hosts use: an operation event without and with a map of five entries, and each form of a BI event. No
// storage: the thousand records that a BI caller stores itself when more than 5000 wait cost their making
// only, and show in the worst call. The limit beside it, call by call in turns so that both meet the same
// machine: copying a ready record of that very form, 24 fields, and pushing it under one mutex.
//
// WhileStoring: 20 000 calls with a map, 10 000 a second over all threads, while the channel's own thread
// stores without a pause, into a real database.
//
// Counters: ns at the percentiles of all calls, and of the limit; `ratio` is that of the medians.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bench/Database.h"
#include "bilog/BILoggerManager.h"
#include "client/common/SharedGlobals.h"
#include "drivelog/BiDataBase.h"
#include "model/LogSettings.h"
#include "operatelog/OperationLoggerManager.h"
#include "platform/Clock.h"

namespace {

using namespace Drive;
using Clock = std::chrono::steady_clock;
using Nanoseconds = std::vector<std::int64_t>;
using std::chrono::milliseconds;

constexpr int kCalls = 40000;
constexpr int kCallsWhileStoring = 20000;
constexpr std::chrono::microseconds kPauseOfOneThread{50};

struct Timed {
  std::function<void(int)> call;
  Nanoseconds times;
};

// Makes `count` of each of the calls in turns, shared by `threads` threads, with a pause behind each.
void Time(int threads, int count, std::chrono::microseconds pause, std::array<Timed, 2>& timed) {
  std::mutex mutex;  // guards the collected times
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&] {
      std::array<Nanoseconds, 2> mine;
      for (Nanoseconds& times : mine) times.resize(static_cast<std::size_t>(count / threads));
      for (int i = 0; i < count / threads; ++i) {
        for (std::size_t which = 0; which < timed.size(); ++which) {
          const auto begin = Clock::now();
          timed[which].call(i);
          mine[which][static_cast<std::size_t>(i)] = std::chrono::nanoseconds(Clock::now() - begin).count();
          if (pause.count() > 0) std::this_thread::sleep_for(pause);
        }
      }
      const std::lock_guard<std::mutex> lock(mutex);
      for (std::size_t which = 0; which < timed.size(); ++which) {
        timed[which].times.insert(timed[which].times.end(), mine[which].begin(), mine[which].end());
      }
    });
  }
  for (std::thread& thread : running) thread.join();
}

double At(double share, Nanoseconds& times) {
  const auto at = times.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(times.size() - 1));
  std::nth_element(times.begin(), at, times.end());
  return static_cast<double>(*at);
}

// What was timed: the library, the limit.
void Report(benchmark::State& state, std::array<Timed, 2>& timed) {
  const struct {
    const char* name;
    double share;
  } kPercentiles[] = {{"p50_ns", 0.5}, {"p99_ns", 0.99}, {"p99.9_ns", 0.999}, {"worst_ns", 1.0}};
  for (const auto& [name, share] : kPercentiles) {
    state.counters[name] = At(share, timed[0].times);
    state.counters[std::string("limit_") + name] = At(share, timed[1].times);
  }
  state.counters["ratio"] = state.counters["p50_ns"] / state.counters["limit_p50_ns"];
}

// The least that any implementation does with such a record.
class Limit {
 public:
  explicit Limit(Bilog::UserLog ready) : m_ready(std::move(ready)) {}
  void operator()(int) {
    Bilog::UserLog record = m_ready;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_records.push_back(std::move(record));
  }

 private:
  const Bilog::UserLog m_ready;
  std::mutex m_mutex;  // guards m_records
  std::deque<Bilog::UserLog> m_records;
};

void Configure() {
  g_deviceId = L"0123456789abcdef0123456789abcdef";
  g_pcVersion = L"1.2.3.400";
  g_countryCode = "DE";
  Bilog::LogSettings::GetInstance().SetUserId(L"user-0123456789");
}

const std::map<std::wstring, std::wstring> kMap = {{L"fileName", L"holiday picture.jpg"},
                                                   {L"fileSize", L"1048576"},
                                                   {L"fileType", L"jpg"},
                                                   {L"result", L"0"},
                                                   {L"status", L"done"}};

enum Form { kOperation, kOperationMap, kFiveTexts, kDuration, kFourTexts, kTwoTexts, kTwoTextsMap, kMapOnly };

// Both channels, and a call of one form.
class Channels {
 public:
  explicit Channels(Form form) : m_form(form) {}

  void operator()(int i) {
    using namespace OperateLog;
    const auto event = static_cast<OperationBasicEventType>(i % 77);
    switch (m_form) {
      case kOperation:
        return m_operation.AddEvent(event, OperationType{0}, OperationActionType{0}, {});
      case kOperationMap:
        return m_operation.AddEvent(event, OperationType{0}, OperationActionType{0}, kMap);
      case kFiveTexts:
        return m_bi.AddEvent(L"action", L"0", L"info text", L"extend text", L"trace");
      case kDuration:
        return m_bi.AddEvent(16000 + i % 100, L"0", L"info text", 0.5);
      case kFourTexts:
        return m_bi.AddEvent(16000 + i % 100, L"0", L"", L"info text", L"extend text");
      case kTwoTexts:
        return m_bi.AddEvent(16000 + i % 100, L"info text", L"extend text");
      case kTwoTextsMap:
        return m_bi.AddEvent(16000 + i % 100, L"0", L"info text", kMap);
      case kMapOnly:
        return m_bi.AddEvent(16000 + i % 100, kMap);
    }
  }

  void Start() {
    m_operation.Start();
    m_bi.Start();
  }
  void SaveOperations() { m_operation.SaveAllAndStop(); }

 private:
  const Form m_form;
  OperateLog::OperationLoggerManager m_operation;
  Bilog::BILoggerManager m_bi;
};

// A record as the form makes it.
Bilog::UserLog ReadyRecord(Form form) {
  std::vector<Bilog::UserLog> stored;
  auto& database = Bilog::BiDataBase::GetInstance();
  database.setInsertUserLogBatchCallbackFunc(
      [&stored](std::vector<Bilog::UserLog>& batch, bool) { stored = batch; });
  {
    // The operation channel saves at its end, the BI channel's callers when more than 5000 records wait.
    Channels channels(form);
    for (int i = 0; i < 5002 && stored.empty(); ++i) channels(3);
    channels.SaveOperations();
  }
  database = Bilog::BiDataBase();
  return stored.at(0);
}

void CallCost(benchmark::State& state, Form form) {
  Configure();
  const int threads = static_cast<int>(state.range(0));
  Limit limit(ReadyRecord(form));
  for (auto _ : state) {
    Channels channels(form);
    std::array<Timed, 2> timed{Timed{std::ref(channels), {}}, Timed{std::ref(limit), {}}};
    Time(threads, kCalls, {}, timed);
    Report(state, timed);
    state.counters["aim_ratio"] = 2;
    if (threads == 1) state.counters["aim_p50_ns"] = 2000;
  }
}

// Makes the periods of the library's threads so short that they never rest.
class RestlessClock final : public Platform::Clock {
 public:
  RestlessClock() { Platform::InstallClock(this); }
  ~RestlessClock() override { Platform::InstallClock(nullptr); }
  std::int64_t NowMilliseconds() const override { return Platform::SystemClock().NowMilliseconds(); }
  Platform::LocalTime NowLocal() const override { return Platform::SystemClock().NowLocal(); }
  bool WaitFor(milliseconds duration, const Platform::WakeSignal& wake) override {
    return Platform::SystemClock().WaitFor(std::min(duration, milliseconds(1)), wake);
  }
};

void WhileStoring(benchmark::State& state, Form form) {
  Configure();
  const int threads = static_cast<int>(state.range(0));
  Limit limit(ReadyRecord(form));
  static RestlessClock& clock = *new RestlessClock;  // a BI worker that is told to end may still ask it
  Platform::InstallClock(&clock);
  for (auto _ : state) {
    const Bench::Database database;
    Channels channels(form);
    std::array<Timed, 2> timed{Timed{std::ref(channels), {}}, Timed{std::ref(limit), {}}};
    channels.Start();
    Time(threads, kCallsWhileStoring, threads * kPauseOfOneThread, timed);
    channels.SaveOperations();
    // A BI worker that is told to end stores nothing more.
    while (database.Rows() < kCallsWhileStoring) std::this_thread::sleep_for(milliseconds(10));
    Report(state, timed);
    state.counters["aim_p99.9_ns"] = 50000;
  }
  Platform::InstallClock(nullptr);
}

void Threads(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1)->Arg(4)->Arg(16)->ArgName("threads")->Iterations(1)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(CallCost, operation, kOperation)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, operation_map_of_5, kOperationMap)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, bi_five_texts, kFiveTexts)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, bi_duration, kDuration)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, bi_four_texts, kFourTexts)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, bi_two_texts, kTwoTexts)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, bi_two_texts_and_map_of_5, kTwoTextsMap)->Apply(Threads);
BENCHMARK_CAPTURE(CallCost, bi_map_of_5, kMapOnly)->Apply(Threads);
BENCHMARK_CAPTURE(WhileStoring, operation_map_of_5, kOperationMap)->Apply(Threads);
BENCHMARK_CAPTURE(WhileStoring, bi_two_texts_and_map_of_5, kTwoTextsMap)->Apply(Threads);

}  // namespace
