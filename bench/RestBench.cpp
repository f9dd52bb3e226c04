// RestBench.cpp - what the library costs a host when nothing happens.
//
// Workload: a process of its own (bench/host) starts all five threads with a minute as the upload timers'
// period, an empty database and no server, and rests for 60 s of real time, from 12.5 s after the start.
// Counted are the kernel's voluntary context switches of all threads but the main one (a thread that waits
// inside of a tick, say for the disk, counts again), bytes that went to the disk, the process's CPU time, and
// what private memory and open handles it has more than before it loaded the library, the libraries that this
// one uses included. The limit beside the wake-ups are the periods: 5 s of the BI upload timer, 10 s of the
// save timer, 60 s of the other three.
#include <benchmark/benchmark.h>

#include "bench/HostRun.h"

namespace {

constexpr int kSeconds = 60;
constexpr double kPerHour = 3600.0 / kSeconds;

const std::map<std::string, double>& Rest() {
  static const auto values = Drive::Bench::RunHost(kSeconds);
  return values;
}

void Figure(benchmark::State& state, const char* name, double value) {
  for ([[maybe_unused]] auto _ : state) state.SetIterationTime(kSeconds);
  state.counters[name] = value;
}

void RestWakeUps(benchmark::State& state) {
  constexpr double kLimit = kSeconds / 5.0 + kSeconds / 10.0 + 3 * kSeconds / 60.0;
  Figure(state, "an_hour", Rest().at("wake_ups") * kPerHour);
  state.counters["limit_an_hour"] = state.counters["aim_an_hour"] = kLimit * kPerHour;
}

void RestDiskWrites(benchmark::State& state) {
  Figure(state, "bytes_an_hour", Rest().at("written_bytes") * kPerHour);
  state.counters["calls"] = Rest().at("write_calls") * kPerHour;
}

void RestCpu(benchmark::State& state) { Figure(state, "ms_an_hour", Rest().at("cpu_us") * kPerHour / 1000); }
void RestMemory(benchmark::State& state) { Figure(state, "private_KiB", Rest().at("private_kib")); }
void RestHandles(benchmark::State& state) { Figure(state, "open_handles", Rest().at("handles")); }

void Once(benchmark::internal::Benchmark* benchmark) { benchmark->Iterations(1)->UseManualTime(); }

BENCHMARK(RestWakeUps)->Apply(Once);
BENCHMARK(RestDiskWrites)->Apply(Once);
BENCHMARK(RestCpu)->Apply(Once);
BENCHMARK(RestMemory)->Apply(Once);
BENCHMARK(RestHandles)->Apply(Once);

}  // namespace
