// RecordingChildren.cpp - compares what the children say with what the file and the collector hold.
#include "proofs/RecordingChildren.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

namespace Drive::Testing {
namespace {

constexpr int kBatch = 20;  // records in a request

// Calls `row` with the two columns of each.
void Query(sqlite3* database, const char* sql, std::function<void(std::string, std::string)> row) {
  const auto call = [](void* function, int, char** values, char**) {
    (*static_cast<decltype(row)*>(function))(values[0], values[1]);
    return 0;
  };
  sqlite3_exec(database, sql, call, &row, nullptr);
}

Collection::Collector::Options OptionsIn(const TempFolder& folder) {
  Collection::Collector::Options options;
  options.dataFolder = folder.Path();
  options.database = ":memory:";
  return options;
}

std::string ActionOf(int run, int number) { return std::to_string(run) + "-" + std::to_string(number); }

}  // namespace

RecordingChildren::RecordingChildren(Proof& proof)
    : m_proof(proof), m_collector(OptionsIn(m_collectorFolder)) {}

void RecordingChildren::BeginRound() {
  m_folder.emplace();
  std::filesystem::create_directories(m_folder->Path() / "roaming");  // a child may not get as far
  // The settings file too: a child that read it while another writes it would take its rows as delivered.
  const std::filesystem::path settings = m_folder->Path() / "local" / "TalvikCloud";
  std::filesystem::create_directories(settings);
  std::ofstream(settings / "SyncSetting.ini")
      << "BaseUri=" << m_collector.Url() << "\nUbaUri=" << m_collector.Url()
      << "\nMacAddressEncrypt=device\n";
  m_collector.Reset();
  m_runs = m_diaries = 0;
  m_inserts.clear();
  m_fates.clear();
}

std::unique_ptr<ChildProcess> RecordingChildren::Start(Mode mode) {
  const std::vector<std::string> arguments{
      m_folder->Path().u8string(), m_collector.CaPath(),     m_collector.RsaPublicKeyHex(),
      std::to_string(kBatch),      std::to_string(m_runs++), mode == Mode::kRecord ? "record" : "deliver"};
  return std::make_unique<ChildProcess>(RECORDING_CHILD, arguments);
}

void RecordingChildren::AwaitWork() const {
  const auto diary = m_folder->Path() / ("run-" + std::to_string(m_runs - 1));
  constexpr std::size_t kStart = sizeof("+ start\n- start");
  for (int i = 0;
       i < 20'000 && (!std::filesystem::exists(diary) || std::filesystem::file_size(diary) < kStart); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void RecordingChildren::Kill(ChildProcess& child) {
  child.Kill();
  m_proof.Check(child.Wait() == ChildProcess::kKilled,
                "a child ended before: " + std::to_string(child.Wait()));
  ++m_kills;
}

void RecordingChildren::Await(ChildProcess& child) {
  m_proof.Check(child.Wait() == 0, "a child ended with status " + std::to_string(child.Wait()));
}

void RecordingChildren::ReadDiaries() {
  for (; m_diaries < m_runs; ++m_diaries) {
    std::ifstream diary(m_folder->Path() / ("run-" + std::to_string(m_diaries)));
    std::map<std::string, int> begun;
    std::map<std::string, int> ended;
    // A line without an end was being written.
    for (std::string line; std::getline(diary, line) && !diary.eof();) {
      const std::string text = line.substr(2);
      m_proof.Check(line[0] != '!', "a child says " + text);
      if (line[0] == '+') ++begun[text];
      if (line[0] == '-') ++ended[text];
      if (line[0] != '>' && line[0] != '=') continue;
      char kind = 0;
      int first = 0;
      int last = 0;
      std::istringstream(text) >> kind >> first >> last;
      m_inserts[{kind, m_diaries, first, last}] = line[0] == '=';
      for (int number = first; number <= last; ++number) m_fates[{kind, ActionOf(m_diaries, number)}];
    }
    for (const auto& [step, count] : begun) m_steps[step] += count > ended[step] ? 1 : 0;
    m_onTheWay += (begun["upload"] - ended["delete"]) * kBatch;
  }
}

void RecordingChildren::Count(int Fate::*what, char kind, const std::string& action) {
  const auto fate = m_fates.find({kind, action});
  m_proof.Check(fate != m_fates.end(), "nobody has recorded " + action);
  if (fate != m_fates.end()) ++(fate->second.*what);
}

// Of a copy, so that what the killed process has left is recovered by the next one.
void RecordingChildren::CountRows() {
  namespace fs = std::filesystem;
  const fs::path copy = m_folder->Path() / "copy";
  fs::remove_all(copy);
  fs::create_directories(copy);
  for (const auto& file : fs::recursive_directory_iterator(m_folder->Path() / "roaming")) {
    const fs::path name = file.path().filename();
    if (file.is_regular_file() && name != "userLogDB-shm") fs::copy_file(file.path(), copy / name);
  }
  sqlite3* database = nullptr;
  sqlite3_open((copy / "userLogDB").u8string().c_str(), &database);
  std::string verdict;
  Query(database, "SELECT '', integrity_check FROM pragma_integrity_check",
        [&](const std::string&, const std::string& line) { verdict += line; });
  m_proof.Check(verdict == "ok", "integrity_check: " + verdict);
  for (auto& [mark, fate] : m_fates) fate.rows = 0;
  for (const char* sql : {"SELECT substr('ob', IsMaintenanceLog + 1, 1), Action FROM T_UserLog",
                          "SELECT 'u', Action FROM T_UBAUserLog"}) {
    Query(database, sql, [this](const std::string& kind, const std::string& action) {
      Count(&Fate::rows, kind[0], action);
      ++m_rows;
    });
  }
  sqlite3_close(database);
}

void RecordingChildren::CountDeliveries() {
  for (const auto& stored : m_collector.Records(std::nullopt, INT64_MAX, m_lastRecord)) {
    m_lastRecord = std::max(m_lastRecord, stored.id);
    const Json::Value& record = stored.record;
    if (stored.channel == Collection::Channel::kMaintenance) {
      Count(&Fate::deliveries, 'b', record["Action"].asString());
    } else if (stored.channel == Collection::Channel::kUba) {
      Count(&Fate::deliveries, 'u', record["x"]["Action"].asString());
    } else {
      Count(&Fate::deliveries, 'o', record["event"].asString());
    }
  }
  for (const auto& refusal : m_collector.Rejected()) m_proof.Check(false, "refused: " + refusal.reason);
}

void RecordingChildren::Check() {
  ReadDiaries();
  CountRows();
  CountDeliveries();  // second: what is not in the file any more has been accepted before
  for (const auto& [insert, isDone] : m_inserts) {
    const auto& [kind, run, first, last] = insert;
    int there = 0;
    for (int number = first; number <= last; ++number) {
      const Fate& fate = m_fates[{kind, ActionOf(run, number)}];
      there += fate.rows + fate.deliveries > 0 ? 1 : 0;
      m_proof.Check(fate.rows <= 1, "twice in the file: " + ActionOf(run, number));
    }
    m_proof.Check(there == last - first + 1 || (there == 0 && !isDone),
                  std::to_string(there) + " are there of the records " + ActionOf(run, first) + " to " +
                      std::to_string(last) + " of kind " + kind + (isDone ? ", stored" : ", cut off"));
  }
}

void RecordingChildren::EndRound(int most) {
  Check();
  for (const auto& [mark, fate] : m_fates) {
    m_proof.Check(fate.rows == 0, "left in the file: " + mark.second);
    m_proof.Check(fate.deliveries <= most, "delivered too often: " + mark.second);
    m_delivered += fate.deliveries > 0 ? 1 : 0;
    m_repeated += std::max(fate.deliveries - 1, 0);
  }
  for (const auto& [insert, isDone] : m_inserts) {
    m_stored += isDone ? std::get<3>(insert) - std::get<2>(insert) + 1 : 0;
  }
}

std::string RecordingChildren::Figures() const {
  std::string steps;
  for (const auto& [step, count] : m_steps) {
    steps += (steps.empty() ? " (" : ", ") + std::to_string(count) + " in " + step;
  }
  return std::to_string(m_kills) + " kills" + steps + "), " + std::to_string(m_stored) + " records stored, " +
         std::to_string(m_rows) + " rows seen, " + std::to_string(m_delivered) + " delivered, " +
         std::to_string(m_repeated) + " repeated";
}

}  // namespace Drive::Testing
