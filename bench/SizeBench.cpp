// SizeBench.cpp - how large the library and its records are, and how long it takes to begin.
//
// Workload: FileBytes stores 10 000 records of Product.h in one channel and divides the size of the database
// file, write-ahead log included, by them; the limit beside it are the bytes of the records' own texts.
// LibraryBytes takes the two shared libraries (the client's part is one) without symbols. LoadTime and
// InitialiseTime are the median of 11 processes (bench/host): loading the library with all that it links, and
// everything that a product calls before its first record, on a new account. LoadedMemory is what loading
// took. WireBytes is in DeliveryBench.cpp.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "bench/HostRun.h"
#include "bench/Product.h"
#include "client/common/SharedGlobals.h"

namespace {

using namespace Drive;
using Bench::Channel;
using Bench::Product;

void Figure(benchmark::State& state, const char* name, double value) {
  for ([[maybe_unused]] auto _ : state) state.SetIterationTime(0);
  state.counters[name] = value;
}

void FileBytes(benchmark::State& state, Channel channel) {
  constexpr int kRecords = 10000;
  Product product;
  product.Store(channel, kRecords);
  double text = 0;
  for (const auto& record : Product::Oldest(channel, kRecords)) {
    text += static_cast<double>(Product::TextBytes(record));
  }
  double bytes = 0;
  for (const char* suffix : {"", "-wal"}) {
    std::error_code missing;
    const auto size = std::filesystem::file_size(g_logDbFullPathWithName.Get() + suffix, missing);
    bytes += missing ? 0.0 : static_cast<double>(size);
  }
  Figure(state, "file_bytes", bytes / kRecords);
  state.counters["limit_file_bytes"] = text / kRecords;
  state.counters["aim_file_bytes"] = 1000;
}

void LibraryBytes(benchmark::State& state, const char* library) {
  const Testing::TempFolder folder;
  const std::string stripped = folder.Narrow("stripped");
  if (std::system(("strip -o " + stripped + " " + library).c_str()) != 0) state.SkipWithError("no strip");
  Figure(state, "stripped_KiB", static_cast<double>(std::filesystem::file_size(stripped)) / 1024);
}

void Median(benchmark::State& state, const char* figure, const char* name, double divisor) {
  static const auto runs = [] {
    std::vector<std::map<std::string, double>> all(11);
    for (auto& run : all) run = Bench::RunHost(0);
    return all;
  }();
  std::vector<double> values;
  for (const auto& run : runs) values.push_back(run.at(name) / divisor);
  std::nth_element(values.begin(), values.begin() + 5, values.end());
  Figure(state, figure, values[5]);
}

void LoadTime(benchmark::State& state) { Median(state, "ms", "load_us", 1000); }
void LoadedMemory(benchmark::State& state) { Median(state, "private_KiB", "loaded_kib", 1); }
void InitialiseTime(benchmark::State& state) { Median(state, "ms", "initialise_us", 1000); }

void Once(benchmark::internal::Benchmark* benchmark) { benchmark->Iterations(1)->UseManualTime(); }

BENCHMARK_CAPTURE(FileBytes, maintenance, Channel::kMaintenance)->Apply(Once);
BENCHMARK_CAPTURE(FileBytes, operation, Channel::kOperation)->Apply(Once);
BENCHMARK_CAPTURE(LibraryBytes, drivelog, BENCH_LIBRARY)->Apply(Once);
BENCHMARK_CAPTURE(LibraryBytes, client, BENCH_CLIENT)->Apply(Once);
BENCHMARK(LoadTime)->Apply(Once);
BENCHMARK(LoadedMemory)->Apply(Once);
BENCHMARK(InitialiseTime)->Apply(Once);

}  // namespace
