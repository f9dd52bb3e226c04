// RecordingChildren.cpp - compares what the children say with what the file and the collector hold.
#include "proofs/RecordingChildren.h"

#include <algorithm>
#include <sstream>
#include <thread>

#include "tests/support/OtherConnection.h"

namespace Drive::Testing {
namespace {

namespace fs = std::filesystem;

constexpr int kBatch = 20;  // records in a request

std::string MarkOf(char kind, int run, int number) {
  return kind + std::to_string(run) + "-" + std::to_string(number);
}

}  // namespace

void RecordingChildren::BeginRound() {
  m_folder.emplace();
  fs::create_directories(m_folder->Path() / "roaming");  // a child may not get as far
  // The settings file too: a child that read it while another writes it would take its rows as delivered.
  WriteSettings(m_folder->Path() / "local", m_collector.Url(), m_collector.Url());
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
  const fs::path diary = m_folder->Path() / ("run-" + std::to_string(m_runs - 1));
  const auto isAtWork = [&diary] {
    std::error_code none;
    const auto size = fs::file_size(diary, none);
    return !none && size >= sizeof("+ start\n- start");
  };
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!isAtWork() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  m_proof.Check(isAtWork(), "a child does not get to work");
}

void RecordingChildren::Kill(ChildProcess& child) {
  child.Kill();
  const int status = child.Wait();
  m_proof.Check(status == ChildProcess::kKilled, "a child ended before: " + std::to_string(status));
  ++m_kills;
}

void RecordingChildren::Await(ChildProcess& child) {
  const int status = child.Wait(std::chrono::minutes(4));
  m_proof.Check(status == 0, "a child ended with status " + std::to_string(status));
}

void RecordingChildren::ReadDiaries() {
  for (; m_diaries < m_runs; ++m_diaries) {
    std::ifstream diary(m_folder->Path() / ("run-" + std::to_string(m_diaries)));
    std::map<std::string, int> begun, ended;
    // A line without an end was being written.
    for (std::string line; std::getline(diary, line) && !diary.eof();) {
      const std::string text = line.substr(2);
      m_proof.Check(line[0] != '!', "a child says " + text);
      if (line[0] == '+') ++begun[text];
      if (line[0] == '-') ++ended[text];
      if (line[0] != '>' && line[0] != '=') continue;
      char kind = 0;
      int first = 0, last = 0;
      std::istringstream(text) >> kind >> first >> last;
      m_inserts[{kind, m_diaries, first, last}] = line[0] == '=';
      for (int number = first; number <= last; ++number) m_fates[MarkOf(kind, m_diaries, number)];
    }
    for (const auto& [step, count] : begun) m_steps[step] += count > ended[step] ? 1 : 0;
    m_onTheWay += (begun["upload"] - ended["delete"]) * kBatch;
  }
}

void RecordingChildren::Count(int Fate::*what, const std::string& mark) {
  const auto fate = m_fates.find(mark);
  m_proof.Check(fate != m_fates.end(), "nobody has recorded " + mark);
  if (fate != m_fates.end()) ++(fate->second.*what);
}

// Of a copy, so that what the killed process has left is recovered by the next one.
void RecordingChildren::CountRows() {
  const fs::path copy = m_folder->Path() / "copy";
  fs::remove_all(copy);
  fs::create_directories(copy);
  for (const auto& file : fs::recursive_directory_iterator(m_folder->Path() / "roaming")) {
    const fs::path name = file.path().filename();
    if (file.is_regular_file() && name != "userLogDB-shm") fs::copy_file(file.path(), copy / name);
  }
  for (auto& [mark, fate] : m_fates) fate.rows = 0;
  try {
    const OtherConnection database((copy / "userLogDB").u8string());
    const std::string verdict = database.Run("PRAGMA integrity_check");
    m_proof.Check(verdict == "ok", "integrity_check: " + verdict);
    for (const auto& [table, kind] :
         {std::pair<std::string, std::string>{"T_UserLog", "substr('ob', IsMaintenanceLog + 1, 1)"},
          {"T_UBAUserLog", "'u'"}}) {
      // A child may be killed before it has made the table.
      if (database.Run("SELECT 1 FROM sqlite_master WHERE name = '" + table + "'").empty()) continue;
      std::istringstream marks(
          database.Run("SELECT group_concat(" + kind + " || ifnull(Action, ''), ' ') FROM " + table));
      for (std::string mark; marks >> mark; ++m_rows) Count(&Fate::rows, mark);
    }
  } catch (const std::runtime_error& error) {
    m_proof.Check(false, error.what());
  }
}

void RecordingChildren::CountDeliveries() {
  for (const auto& stored : m_collector.Records(std::nullopt, INT64_MAX, m_lastRecord)) {
    m_lastRecord = std::max(m_lastRecord, stored.id);
    const Json::Value& record = stored.record;
    const std::string mark =
        stored.channel == Collection::Channel::kMaintenance ? "b" + record["Action"].asString()
        : stored.channel == Collection::Channel::kUba       ? "u" + record["x"]["Action"].asString()
                                                            : "o" + record["event"].asString();
    Count(&Fate::deliveries, mark);
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
      const std::string mark = MarkOf(kind, run, number);
      const Fate& fate = m_fates[mark];
      there += fate.rows + fate.deliveries > 0 ? 1 : 0;
      m_proof.Check(fate.rows <= 1, "twice in the file: " + mark);
    }
    m_proof.Check(there == last - first + 1 || (there == 0 && !isDone),
                  std::to_string(there) + " are there of the records " + MarkOf(kind, run, first) + " to " +
                      std::to_string(last) + (isDone ? ", stored" : ", cut off"));
  }
}

void RecordingChildren::EndRound(int most) {
  Check();
  for (const auto& [mark, fate] : m_fates) {
    m_proof.Check(fate.rows == 0, "left in the file: " + mark);
    m_proof.Check(fate.deliveries <= most, "delivered too often: " + mark);
    m_delivered += fate.deliveries > 0 ? 1 : 0;
    m_repeated += std::max(fate.deliveries - 1, 0);
  }
  for (const auto& [insert, isDone] : m_inserts) {
    m_stored += isDone ? std::get<3>(insert) - std::get<2>(insert) + 1 : 0;
  }
}

int RecordingChildren::Finish(const std::string& more) const {
  m_proof.Check(m_stored > 0 && m_delivered > 0, "nothing was tried");
  std::string steps;
  for (const auto& [step, count] : m_steps) {
    steps += (steps.empty() ? "" : ", ") + std::to_string(count) + " in " + step;
  }
  return m_proof.Finish(std::to_string(m_kills) + " kills (" + steps + "), " + std::to_string(m_stored) +
                        " records stored, " + std::to_string(m_rows) + " rows seen, " +
                        std::to_string(m_delivered) + " delivered, " + std::to_string(m_repeated) +
                        " repeated" + more);
}

}  // namespace Drive::Testing
