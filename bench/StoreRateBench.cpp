// StoreRateBench.cpp - how fast records are stored.
//
// Workload: 100 batches of 1000 records of about 400 bytes of text through InsertUserLogBatch, each with its
// connection, row-cap check and commit. The limit beside it, batch by batch in turns, into a file of its own
// in the same folder: the same rows from texts that are UTF-16 already, by one prepared insert in one
// transaction of bare SQLite, with its connection and commit, and the same pragmas (write-ahead log, all else
// as SQLite has it). `kept_open` is the same limit on a connection that stays, which the library does
// without, since a host may end between any two statements.
//
// Counters: rows a second by the median batch; `ratio` is the store's rate to the limit's.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/Database.h"
#include "client/log/TypeConvert.h"
#include "logdb/LogSQLiteDB.h"
#include "logdb/UserLogRow.h"

namespace {

using namespace Drive;
using Clock = std::chrono::steady_clock;

constexpr int kBatches = 100;
constexpr int kBatchSize = 1000;

// Bare SQLite: rows that are ready to be bound.
class BareInserter {
 public:
  explicit BareInserter(const std::vector<Bilog::UserLog>& batch) {
    for (const Bilog::UserLog& record : batch) {
      std::vector<std::u16string>& row = m_rows.emplace_back();
      for (const std::wstring& text :
           {record.get_Time(), record.get_Action(), record.get_UserId(), record.get_DevId(),
            record.get_Code(), record.get_Info(), record.get_Extend(), record.get_TraceId(),
            record.get_Model(), record.get_Romversion(), record.get_Appversion(), record.get_Reqsize(),
            record.get_Rspsize(), record.get_CurModule(), record.get_Actiontype(), record.get_NextModule(),
            record.get_OprType()}) {
        row.push_back(TypeConvert::UnicodeToUTF16(text));
      }
    }
  }

  static SQLiteDB::ConnectionHandle Open(const std::string& path) {
    sqlite3* raw = nullptr;
    if (sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
        SQLITE_OK) {
      std::abort();
    }
    return SQLiteDB::ConnectionHandle(raw);
  }

  void Insert(sqlite3* connection) const {
    static const std::string sql = SQLiteDB::InsertSql("T_UserLog");
    sqlite3_exec(connection, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    sqlite3_stmt* raw = nullptr;
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &raw, nullptr);
    const SQLiteDB::StatementHandle insert(raw);
    for (const std::vector<std::u16string>& row : m_rows) {
      std::size_t next = 0;
      for (const int column : {1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 13, 14, 15, 18, 19, 20, 22}) {
        sqlite3_bind_text16(raw, column, row[next++].c_str(), -1, SQLITE_STATIC);
      }
      sqlite3_bind_double(raw, 9, 0.0);
      sqlite3_bind_double(raw, 10, 0.0);
      for (const int column : {16, 17, 21, 23}) sqlite3_bind_int(raw, column, 0);
      if (sqlite3_step(raw) != SQLITE_DONE) std::abort();
      sqlite3_reset(raw);
    }
    if (sqlite3_exec(connection, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
  }

 private:
  std::vector<std::vector<std::u16string>> m_rows;
};

// Rows a second of the median batch.
double Rate(std::vector<double>& seconds) {
  const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
  std::nth_element(seconds.begin(), middle, seconds.end());
  return kBatchSize / *middle;
}

template <typename Operation>
double Seconds(const Operation& operation) {
  const auto begin = Clock::now();
  operation();
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

void StoreRate(benchmark::State& state) {
  std::vector<Bilog::UserLog> batch = Bench::SampleRecords(kBatchSize);
  const BareInserter bare(batch);
  for (auto _ : state) {
    const Bench::Database limitDatabase;
    const Bench::Database keptOpenDatabase;
    const Bench::Database database;
    const SQLiteDB::ConnectionHandle keptOpen = BareInserter::Open(keptOpenDatabase.Path());
    std::vector<double> seconds;
    std::vector<double> limitSeconds;
    std::vector<double> keptOpenSeconds;
    for (int i = 0; i < kBatches; ++i) {
      seconds.push_back(
          Seconds([&] { SQLiteDB::LogSQLiteDB::GetInstance().InsertUserLogBatch(batch, false); }));
      limitSeconds.push_back(Seconds([&] { bare.Insert(BareInserter::Open(limitDatabase.Path()).get()); }));
      keptOpenSeconds.push_back(Seconds([&] { bare.Insert(keptOpen.get()); }));
    }
    if (database.Rows() != kBatches * kBatchSize || limitDatabase.Rows() != database.Rows()) {
      state.SkipWithError("rows are missing");
      return;
    }
    state.counters["rows_per_s"] = Rate(seconds);
    state.counters["limit_rows_per_s"] = Rate(limitSeconds);
    state.counters["kept_open_rows_per_s"] = Rate(keptOpenSeconds);
    state.counters["ratio"] = state.counters["rows_per_s"] / state.counters["limit_rows_per_s"];
    state.counters["least_ratio"] = 0.8;
  }
}

BENCHMARK(StoreRate)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
