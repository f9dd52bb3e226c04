// FillLevelBench.cpp - whether the store slows down as it fills.
//
// Workload: 40 batches of 1000 records of about 400 bytes of text through InsertUserLogBatch, into a table of
// 0, 100 000 and 1 000 000 such rows, and of 1 000 000 whose ids have gaps, as the channels leave them, so
// that they span more than the row cap of 2 000 000. In turns with the limit beside it: the same into a table
// that is emptied before each batch.
//
// A table with gaps is counted once for every tenth of the cap that it grows, and when the process starts:
// `first_ms` is the first batch, which does that.
//
// Counters: ms of the median batch; `ratio` is that to the empty table's; the most that was resident during
// the batches above what was before them, and the most that SQLite held.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "bench/Database.h"
#include "bench/Resident.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"

namespace {

using namespace Drive;

constexpr int kBatches = 40;
constexpr int kBatchSize = 1000;
constexpr int kCap = 2000000;

double Insert(const Bench::Database& database, std::vector<Bilog::UserLog>& batch) {
  database.Use();
  const auto begin = std::chrono::steady_clock::now();
  SQLiteDB::LogSQLiteDB::GetInstance().InsertUserLogBatch(batch, false);
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Copies of a stored record; `step` is the distance of their ids.
void Fill(const Bench::Database& database, std::int64_t rows, std::int64_t step) {
  std::vector<Bilog::UserLog> one = Bench::SampleRecords(1);
  Insert(database, one);
  database.Execute(
      "PRAGMA synchronous=OFF; CREATE TEMP TABLE one AS SELECT * FROM T_UserLog;"
      "DELETE FROM T_UserLog;"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT " +
      std::to_string(rows) + ") INSERT INTO T_UserLog SELECT i * " + std::to_string(step) +
      ", Time, Action, UserId, DevId, Code, Info, Extend, TraceId, UseTime, StartTime, Model,"
      "Romversion, Appversion, Reqsize, Rspsize, Logversion, TraceEndFlag, CurModule, Actiontype,"
      "NextModule, ResidenceTime, OprType, IsMaintenanceLog FROM n, one");
}

void FillLevel(benchmark::State& state) {
  std::vector<Bilog::UserLog> batch = Bench::SampleRecords(kBatchSize);
  Bilog::LogSettings::GetInstance().SetLogDbSize(kCap);
  for (auto _ : state) {
    const Bench::Database empty;
    const Bench::Database filled;
    if (state.range(0) > 0) Fill(filled, state.range(0), state.range(1));
    const double first = Insert(filled, batch);
    const double before = Bench::ResidentMiB("VmRSS");
    const std::int64_t sqliteBefore = sqlite3_memory_used();
    Bench::ResetPeakResident();
    sqlite3_memory_highwater(1);
    std::vector<double> times;
    std::vector<double> limitTimes;
    for (int i = 0; i < kBatches; ++i) {
      times.push_back(Insert(filled, batch));
      empty.Execute("DELETE FROM T_UserLog");
      limitTimes.push_back(Insert(empty, batch));
    }
    state.counters["first_ms"] = first;
    state.counters["batch_ms"] = Median(times);
    state.counters["limit_batch_ms"] = Median(limitTimes);
    state.counters["ratio"] = Median(times) / Median(limitTimes);
    state.counters["aim_ratio"] = 1.2;
    state.counters["aim_peak_MiB"] = 4;  // whatever the rows are
    state.counters["peak_MiB"] = Bench::ResidentMiB("VmHWM") - before;
    state.counters["sqlite_peak_MiB"] =
        static_cast<double>(sqlite3_memory_highwater(0) - sqliteBefore) / (1024.0 * 1024.0);
    if (filled.Rows() != state.range(0) + (kBatches + 1) * kBatchSize) state.SkipWithError("wrong rows");
  }
  Bilog::LogSettings::GetInstance().Reset();
}

BENCHMARK(FillLevel)
    ->ArgNames({"rows", "idStep"})
    ->Args({0, 1})
    ->Args({100000, 1})
    ->Args({1000000, 1})
    ->Args({1000000, 3})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
