// CallCostBench.cpp - what one recording call costs the host's thread.
//
// Workload: each thread makes 20 000 calls as fast as it can, records pile up in the queue. Once for each
// form that hosts use: an operation event without and with a map of five entries, and each form of a BI
// event. There is no storage: the thousand records that a BI caller stores itself when more than 5000 wait
// cost their moves only, and show in the highest percentiles. The limit beside it: setting the same 24 fields
// from ready texts and pushing the record under one mutex. Counters: ns at the percentiles, over all threads'
// calls; `ratio` is median to the limit's median.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bilog/BILoggerManager.h"
#include "client/common/SharedGlobals.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/OperationLogger.h"
#include "model/LogSettings.h"
#include "operatelog/OperationLoggerManager.h"

namespace {

using namespace Drive;
using Clock = std::chrono::steady_clock;
using Nanoseconds = std::vector<std::int64_t>;

constexpr int kCallsPerThread = 20000;

struct Percentiles {
  double p50, p99, p999, worst;
};

// Times each call of `threads` threads; `call` gets the number of the call.
Percentiles Measure(int threads, const std::function<void(int)>& call) {
  std::vector<Nanoseconds> times(static_cast<std::size_t>(threads));
  std::vector<std::thread> running;
  for (Nanoseconds& mine : times) {
    running.emplace_back([&mine, &call] {
      mine.reserve(kCallsPerThread);
      for (int i = 0; i < kCallsPerThread; ++i) {
        const auto begin = Clock::now();
        call(i);
        mine.push_back(std::chrono::nanoseconds(Clock::now() - begin).count());
      }
    });
  }
  for (std::thread& thread : running) {
    thread.join();
  }
  Nanoseconds all;
  for (const Nanoseconds& each : times) {
    all.insert(all.end(), each.begin(), each.end());
  }
  std::sort(all.begin(), all.end());
  const auto at = [&all](double share) {
    return static_cast<double>(all[static_cast<std::size_t>(share * static_cast<double>(all.size() - 1))]);
  };
  return {at(0.5), at(0.99), at(0.999), at(1.0)};
}

// The least that any implementation does.
class Limit {
 public:
  void operator()(int) {
    Bilog::UserLog record;
    record.set_Time(m_text);
    record.set_Action(m_text);
    record.set_UserId(m_text);
    record.set_DevId(m_text);
    record.set_Code(m_short);
    record.set_Info(m_short);
    record.set_Extend(m_short);
    record.set_TraceId(m_text);
    record.set_UseTime(1.0);
    record.set_StartTime(1.0);
    record.set_Model(m_short);
    record.set_Romversion(m_text);
    record.set_Appversion(m_short);
    record.set_CurModule(m_text);
    record.set_Actiontype(m_text);
    record.set_OprType(m_short);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_records.push_back(std::move(record));
  }

 private:
  const std::wstring m_text = L"Drive.action.newFile 23";
  const std::wstring m_short = L"1.2.3";
  std::mutex m_mutex;  // guards m_records
  std::deque<Bilog::UserLog> m_records;
};

void Report(benchmark::State& state, const Percentiles& got, const Percentiles& limit) {
  state.counters["p50_ns"] = got.p50;
  state.counters["p99_ns"] = got.p99;
  state.counters["p99.9_ns"] = got.p999;
  state.counters["worst_ns"] = got.worst;
  state.counters["limit_p50_ns"] = limit.p50;
  state.counters["ratio"] = got.p50 / limit.p50;
}

void Configure() {
  g_deviceId = L"0123456789abcdef0123456789abcdef";
  g_pcVersion = L"1.2.3.400";
  Bilog::LogSettings::GetInstance().SetUserId(L"user-0123456789");
}

const std::map<std::wstring, std::wstring> kMap = {{L"fileName", L"holiday picture.jpg"},
                                                   {L"fileSize", L"1048576"},
                                                   {L"fileType", L"jpg"},
                                                   {L"result", L"0"},
                                                   {L"status", L"done"}};

void OperationCall(benchmark::State& state, const std::map<std::wstring, std::wstring>& map) {
  Configure();
  for (auto _ : state) {
    Limit limit;
    const int threads = static_cast<int>(state.range(0));
    const Percentiles least = Measure(threads, std::ref(limit));
    OperateLog::OperationLoggerManager manager;
    const Percentiles got = Measure(threads, [&](int i) {
      manager.AddEvent(static_cast<OperateLog::OperationBasicEventType>(i % 77), OperateLog::OperationType{0},
                       OperateLog::OperationActionType{0}, map);
    });
    Report(state, got, least);
  }
}

enum BiForm { kFiveTexts, kDuration, kFourTexts, kTwoTexts, kTwoTextsAndMap, kMapOnly };

void BiCall(benchmark::State& state, BiForm form) {
  Configure();
  for (auto _ : state) {
    Limit limit;
    const int threads = static_cast<int>(state.range(0));
    const Percentiles least = Measure(threads, std::ref(limit));
    Bilog::BILoggerManager manager;
    const Percentiles got = Measure(threads, [&](int i) {
      switch (form) {
        case kFiveTexts:
          return manager.AddEvent(L"action", L"0", L"info text", L"extend text", L"trace");
        case kDuration:
          return manager.AddEvent(i, L"0", L"info text", 0.5);
        case kFourTexts:
          return manager.AddEvent(i, L"0", L"", L"info text", L"extend text");
        case kTwoTexts:
          return manager.AddEvent(i, L"info text", L"extend text");
        case kTwoTextsAndMap:
          return manager.AddEvent(i, L"0", L"info text", kMap);
        case kMapOnly:
          return manager.AddEvent(i, kMap);
      }
    });
    Report(state, got, least);
  }
}

void Threads(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1)->Arg(4)->Arg(16)->ArgName("threads")->Iterations(1)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(OperationCall, without_map, {})->Apply(Threads);
BENCHMARK_CAPTURE(OperationCall, with_map_of_5, kMap)->Apply(Threads);
BENCHMARK_CAPTURE(BiCall, five_texts, kFiveTexts)->Apply(Threads);
BENCHMARK_CAPTURE(BiCall, duration, kDuration)->Apply(Threads);
BENCHMARK_CAPTURE(BiCall, four_texts, kFourTexts)->Apply(Threads);
BENCHMARK_CAPTURE(BiCall, two_texts, kTwoTexts)->Apply(Threads);
BENCHMARK_CAPTURE(BiCall, two_texts_and_map, kTwoTextsAndMap)->Apply(Threads);
BENCHMARK_CAPTURE(BiCall, map_only, kMapOnly)->Apply(Threads);

}  // namespace
