// Ledger.cpp - what is recorded, what the library says of it, what the server took, and the sums.
#include "proofs/Ledger.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"

namespace Drive::Testing {
namespace {

constexpr std::size_t kPopLimit = 100;  // operation records that one tick of the save timer takes
constexpr int kMaxFailures = 20;        // of records, that are named
constexpr std::int64_t kStorePeriods[] = {60000, 10000};
constexpr const char* kLostAnswer = "lost";  // in the place of a request's id
const char* const kMarkLetters = "bou";      // by channel

bool BeginsWith(const std::string& text, const char* beginning) { return text.rfind(beginning, 0) == 0; }

}  // namespace

Ledger::Ledger(Proof& proof, Collection::Collector& collector, const Platform::Clock& clock)
    : m_proof(proof), m_collector(collector), m_clock(clock) {
  CommLog::GetInstance().SetLogFunc([this](int level, int, const std::string& location,
                                           const std::string& text) { OnMessage(level, location, text); });
}

Ledger::~Ledger() {
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
}

void Ledger::Fail(const Key& key, const std::string& what) {
  if (++m_failures > kMaxFailures) return;  // the first ones tell what happened
  m_proof.Check(false, std::string("record ") + kMarkLetters[Index(key.channel)] +
                           std::to_string(key.number) + ": " + what);
}

// What a server has is not lost, whatever becomes of the row.
void Ledger::Discard(const Key& key, const char* rule) {
  Entry& entry = At(key);
  entry.isQueued = false;
  if (entry.arrivals == 0 && entry.rows + entry.kept == 0) entry.rule = rule;
}

std::string Ledger::NextMark(Channel channel) const {
  return std::string("<") + kMarkLetters[Index(channel)] + std::to_string(m_entries[Index(channel)].size()) +
         ">";
}

void Ledger::Add(Channel channel, Entry entry) {
  entry.recordedMs = m_clock.NowMilliseconds();
  m_entries[Index(channel)].push_back(std::move(entry));
}

void Ledger::RecordBi(Texts texts, bool isRefused) {
  m_queues[0].push_back(m_entries[0].size());
  Entry entry;
  entry.texts = std::move(texts);
  entry.isRefused = isRefused;
  Add(Channel::kMaintenance, std::move(entry));
}

void Ledger::RecordOperation(Texts texts, const std::string& action) {
  const std::size_t number = m_entries[Index(Channel::kOperation)].size();
  Entry entry;
  entry.texts = std::move(texts);
  entry.action = action;
  Add(Channel::kOperation, entry);
  Add(Channel::kUba, entry);
  if (action.empty()) {
    Discard({Channel::kOperation, number}, "unknown event");
    Discard({Channel::kUba, number}, "unknown event");
  } else {
    m_queues[1].push_back(number);
  }
}

void Ledger::Count(Channel channel, const char* rule, std::int64_t records) {
  m_totals.recorded[Index(channel)] += records;
  m_totals.discarded[rule] += records;
}

// The library's messages say what it drops where no row tells, and what the client knows of the server.
void Ledger::OnMessage(int level, const std::string& location, const std::string& text) {
  if (level == LogLevel::kDebug && BeginsWith(text, "PushLog Success,url:")) {
    const std::string id = text.substr(text.rfind(" RequestId:") + 11);
    for (const Channel channel : Collection::kChannels) {
      if (text.find(std::string(PathOf(channel)) + " RequestId:") != std::string::npos) Poll(channel, id);
    }
  } else if (level == LogLevel::kDebug && text == "g_operationLogSwitchState = 0" &&
             location == "Drive::OperateLog::OperationLoggerManager::SaveUserlogToDb") {
    DropPopped();
  } else if (level == LogLevel::kError) {
    const std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const std::string tooLarge = "record too large for any request, deleted, Id:";
    if (BeginsWith(text, tooLarge.c_str())) {
      m_tooLarge.insert(std::stoi(text.substr(tooLarge.size())));
      if (location.find("Operation") != std::string::npos) ++m_operationDone;
    }
    for (const char* place : {"SeparateThreadTimer", "BiDataBase::", "BILoggerManager::"}) {
      m_proof.Check(location.find(place) == std::string::npos, "thrown: " + text);
    }
    if (m_isInOperation) m_errors.push_back(text);
  }
}

void Ledger::DropPopped() {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  const std::size_t count = m_queues[1].size();
  for (std::size_t i = 0; i < (conditions.isSavingAll ? count : std::min(count, kPopLimit)); ++i) {
    const std::size_t number = m_queues[1].front();
    m_queues[1].pop_front();
    Discard({Channel::kOperation, number}, "operation switch off when saved");
    Discard({Channel::kUba, number}, "operation switch off when saved");
  }
  m_lastPop[1] = m_clock.NowMilliseconds();
}

Ledger::Key Ledger::KeyOf(const std::string& text, bool uba) const {
  const std::size_t begin = text.find('<');
  const std::size_t channel = begin + 1 < text.size() ? std::string("bo").find(text[begin + 1]) : 2;
  if (begin != std::string::npos && channel < 2) {
    const std::size_t number = std::strtoull(text.c_str() + begin + 2, nullptr, 10);
    const Channel found = channel == 0 ? Channel::kMaintenance : uba ? Channel::kUba : Channel::kOperation;
    if (number < m_entries[Index(found)].size()) return {found, number};
  }
  m_proof.Check(false, "nobody recorded this: " + text);
  throw std::runtime_error("unknown record");
}

void Ledger::LoseQueue(Channel channel, const char* rule) {
  auto& queue = m_queues[channel == Channel::kOperation];
  for (const std::size_t number : queue) Discard({channel, number}, rule);
  queue.clear();
}

void Ledger::TakeUnconfirmed() {
  for (const Channel channel : Collection::kChannels) Poll(channel, kLostAnswer);
}

// Requests of the operation channel carry no texts of a record: the order of the events tells them apart.
Ledger::Key Ledger::KeyOfArrival(Channel channel, const Json::Value& record) {
  if (channel == Channel::kOperation) {
    if (m_operationDone >= m_operationBatch.size())
      return KeyOf("an operation event that was not read", false);
    const Key key = m_operationBatch[m_operationDone++];
    if (record["event"].asString() != At(key).action) Fail(key, "another event has arrived in its place");
    return key;
  }
  const bool uba = channel == Channel::kUba;
  const Json::Value& texts = uba ? record["x"]["Extend"] : record;
  const char* name = !uba ? "Info" : texts.isMember("mark") ? "mark" : "fileInfos";
  const Key key = KeyOf(texts[name].asString(), uba);
  if (!HasTexts(key, texts)) Fail(key, "arrived with other texts");
  return key;
}

// What the server has taken since the last look.
void Ledger::Poll(Channel channel, const std::string& confirmedRequest) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  auto records = m_collector.Records(channel, 1000000, m_seen[Index(channel)]);
  std::reverse(records.begin(), records.end());
  for (const Collection::StoredRecord& each : records) {
    m_seen[Index(channel)] = each.id;
    const Key key = KeyOfArrival(channel, each.record);
    Arrive(key);
    if (each.requestId == confirmedRequest) {
      ++At(key).confirmed;
    } else if (confirmedRequest == kLostAnswer) {
      ++At(key).excuses;
    } else {
      Fail(key, "accepted, but the client takes it for refused");
    }
  }
}

void Ledger::Arrive(const Key& key) {
  Entry& entry = At(key);
  if (entry.isCut) {
    entry.rule = nullptr;  // the server has it
  } else if (entry.rule != nullptr || (entry.rows == 0 && entry.arrivals > 0)) {
    Fail(key, "arrived, though it was gone");
  }
  if (++entry.arrivals > 1) ++m_totals.duplicates;
  if (entry.arrivals > 1 + entry.excuses) Fail(key, "arrived again without a reason");
}

bool Ledger::HasTexts(const Key& key, const Json::Value& found) {
  const Texts& texts = At(key).texts;
  return std::all_of(texts.begin(), texts.end(), [&](const auto& text) {
    return found.isObject() && found[text.first].isString() && found[text.first].asString() == text.second;
  });
}

void Ledger::Check() {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  for (const Channel channel : Collection::kChannels) Poll(channel, "");
  for (const auto& refusal : m_collector.Rejected()) m_proof.Check(false, "refused: " + refusal.reason);
  m_collector.Reset();
  for (const bool uba : {false, true})
    m_proof.Check(ReadRows(uba, true) == m_rows[uba], "a table has changed by itself");
  m_proof.Check(m_copies.empty(), "a UBA copy was not made");
  for (const int queue : {0, 1}) {
    if (m_queues[queue].empty() || conditions.storingSince[queue] < 0) continue;
    const Key front{queue == 0 ? Channel::kMaintenance : Channel::kOperation, m_queues[queue].front()};
    const std::int64_t since =
        std::max({At(front).recordedMs, conditions.storingSince[queue], m_lastPop[queue]});
    if (m_clock.NowMilliseconds() - since > kStorePeriods[queue] + 100)
      Fail(front, "waits too long in its queue");
  }
}

void Ledger::CheckNothingWaits() {
  for (const auto& kept : m_kept) m_proof.Check(kept.empty(), "records still wait for the database");
  for (const auto& queue : m_queues) m_proof.Check(queue.empty(), "records are still queued");
}

Ledger::Totals Ledger::Balance() {
  for (const Channel channel : Collection::kChannels) {
    const std::size_t i = Index(channel);
    for (std::size_t number = 0; number < m_entries[i].size(); ++number) {
      const Entry& entry = m_entries[i][number];
      ++m_totals.recorded[i];
      if (entry.arrivals > 0) {
        ++m_totals.delivered[i];
      } else if (entry.rows > 0) {
        ++m_totals.stored[i];
      } else if (entry.kept > 0 || entry.isQueued) {
        ++m_totals.waiting[i];
      } else if (entry.rule != nullptr) {
        ++m_totals.discarded[entry.rule];
      } else {
        Fail({channel, number}, "is nowhere, and no rule has discarded it");
      }
    }
  }
  return m_totals;
}

}  // namespace Drive::Testing
