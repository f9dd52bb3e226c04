// RowCapBench.cpp - the row-cap check of an insert.
//
// Workload: one check of a table with 1 000 000 rows of about 400 bytes of text, a cap of 2 000 000, and a
// fresh connection for each check, as every insert has one. Once with ids in a row, once with ids that have
// gaps (each channel's rows go by themselves, so that the ids of what is left span more than the cap).
// NaiveCount fetches all ids to count them; it is what the bound must agree with, and the limit beside it.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "logdb/RowCap.h"
#include "logdb/SqliteHandles.h"
#include "logdb/UserLogRow.h"

namespace {

using Drive::SQLiteDB::ConnectionHandle;

constexpr std::int64_t kRows = 1000000;
constexpr std::int64_t kCap = 2000000;

ConnectionHandle Open(const std::string& path) {
  sqlite3* raw = nullptr;
  if (sqlite3_open(path.c_str(), &raw) != SQLITE_OK) std::abort();
  return ConnectionHandle(raw);
}

// A database with kRows rows; `step` is the distance of their ids. Removed at exit.
class FilledDatabase {
 public:
  explicit FilledDatabase(int step)
      : m_path((std::filesystem::temp_directory_path() /
                ("drivelog-bench-row-cap-" + std::to_string(step) + ".db"))
                   .string()) {
    Remove();
    const ConnectionHandle connection = Open(m_path);
    const std::string sql =
        "PRAGMA journal_mode=WAL; PRAGMA synchronous=OFF;" + Drive::SQLiteDB::CreateTableSql("T_UserLog") +
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT " + std::to_string(kRows) +
        ") INSERT INTO T_UserLog (Id, Info, IsMaintenanceLog) SELECT i * " + std::to_string(step) +
        ", hex(zeroblob(200)), i % 2 FROM n";
    if (sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
  }
  ~FilledDatabase() { Remove(); }
  FilledDatabase(const FilledDatabase&) = delete;
  FilledDatabase& operator=(const FilledDatabase&) = delete;

  const std::string& Path() const { return m_path; }

 private:
  void Remove() const {
    for (const char* suffix : {"", "-wal", "-shm"}) std::remove((m_path + suffix).c_str());
  }

  std::string m_path;
};

const std::string& PathOf(std::int64_t step) {
  static const FilledDatabase inARow(1);
  static const FilledDatabase withGaps(3);
  return step == 1 ? inARow.Path() : withGaps.Path();
}

void NaiveCount(benchmark::State& state) {
  const std::string& path = PathOf(state.range(0));
  const std::int64_t before = sqlite3_memory_used();
  sqlite3_memory_highwater(1);
  for ([[maybe_unused]] auto _ : state) {
    const ConnectionHandle connection = Open(path);
    char** table = nullptr;
    int rows = 0;
    int columns = 0;
    if (sqlite3_get_table(connection.get(), "SELECT Id FROM T_UserLog", &table, &rows, &columns, nullptr) !=
            SQLITE_OK ||
        rows != kRows) {
      state.SkipWithError("wrong count");
    }
    sqlite3_free_table(table);
  }
  state.counters["peakMiB"] = static_cast<double>(sqlite3_memory_highwater(0) - before) / (1024.0 * 1024.0);
}

void Bound(benchmark::State& state) {
  const std::string& path = PathOf(state.range(0));
  const std::int64_t before = sqlite3_memory_used();
  sqlite3_memory_highwater(1);
  // As in the store, what a count has found lives on from check to check.
  Drive::SQLiteDB::RowCap rowCap;
  for ([[maybe_unused]] auto _ : state) {
    const ConnectionHandle connection = Open(path);
    if (rowCap.IsReached(connection.get(), "T_UserLog", kCap) != false) state.SkipWithError("wrong answer");
  }
  state.counters["peakMiB"] = static_cast<double>(sqlite3_memory_highwater(0) - before) / (1024.0 * 1024.0);
}

// The count that a table with gaps needs once for every tenth of the cap that it grows.
void BoundThatCounts(benchmark::State& state) {
  const std::string& path = PathOf(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    const ConnectionHandle connection = Open(path);
    Drive::SQLiteDB::RowCap rowCap;
    if (rowCap.IsReached(connection.get(), "T_UserLog", kCap) != false) state.SkipWithError("wrong answer");
  }
}

BENCHMARK(NaiveCount)->ArgName("idStep")->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond);
BENCHMARK(Bound)->ArgName("idStep")->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BoundThatCounts)->ArgName("idStep")->Arg(3)->Unit(benchmark::kMillisecond);

}  // namespace
