// LedgerStorage.cpp - the ledger between the library and its storage: what each operation may do to the rows.
#include <json/reader.h>
#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "proofs/Ledger.h"

namespace Drive::Testing {
namespace {

constexpr std::size_t kKeptLimit = 10000;   // records of a table that wait in memory
constexpr std::size_t kBodyLimit = 200000;  // bytes of a request's body
sqlite3_vfs* const g_realVfs = sqlite3_vfs_find(nullptr);

Channel ChannelOf(int maintenance, bool uba) {
  return maintenance == 1 ? Channel::kMaintenance : uba ? Channel::kUba : Channel::kOperation;
}

std::string MarkedText(const Bilog::UserLog& record) {
  const std::wstring text = record.get_IsMaintenanceLog() == 1 ? record.get_Info() : record.get_Extend();
  return TypeConvert::UnicodeToUTF8(text.substr(0, 60));
}

Json::Value Parsed(const std::string& text) {
  Json::Value value;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
  return value;
}

}  // namespace

SQLiteDB::ConnectionHandle OpenBesideTheLibrary() {
  sqlite3* raw = nullptr;
  const std::string path = g_logDbFullPathWithName;
  const int code = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, g_realVfs->zName);
  SQLiteDB::ConnectionHandle connection(raw);
  if (code != SQLITE_OK) return nullptr;
  sqlite3_busy_timeout(raw, 20000);
  return connection;
}

void Ledger::Watch() {
  auto& registry = Bilog::BiDataBase::GetInstance();
  const auto storage = std::make_shared<Bilog::BiDataBase>(registry);
  registry.setInsertUserLogBatchCallbackFunc(
      [=](Records& batch, bool uba) { OnInsert(*storage, batch, uba); });
  registry.setDeleteUserLogWithIdCallbackFunc([=](int first, int last, int maintenance, bool uba) {
    OnDelete(*storage, first, last, maintenance, uba);
  });
  registry.setDeleteAllOperationLogUserLogCallbackFunc(
      [=](bool uba, int maintenance) { OnDeleteChannel(*storage, uba, maintenance); });
  registry.setGetUserLogListCallbackFunc(
      [=](int count, int maintenance, bool uba) { return OnRead(*storage, count, maintenance, uba); });
}

// A file that is absent or none of SQLite's holds no rows.
Ledger::Rows Ledger::ReadRows(bool uba, bool comparesTexts) {
  Rows rows;
  const SQLiteDB::ConnectionHandle connection = OpenBesideTheLibrary();
  if (connection == nullptr) return rows;
  const std::string sql = std::string("SELECT Id, iif(IsMaintenanceLog = 1, Info, Extend) FROM ") +
                          (uba ? "T_UBAUserLog" : "T_UserLog");
  sqlite3_stmt* select = nullptr;
  int code = sqlite3_prepare_v2(connection.get(), sql.c_str(), -1, &select, nullptr);
  const SQLiteDB::StatementHandle statement(select);
  if (code == SQLITE_OK) code = sqlite3_step(select);
  for (; code == SQLITE_ROW; code = sqlite3_step(select)) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(select, 1));
    const std::string_view text = bytes != nullptr ? bytes : "";
    const Key key = KeyOf(std::string(text.substr(0, 60)), uba);
    rows.emplace_hint(rows.end(), sqlite3_column_int(select, 0), key);
    if (!comparesTexts) continue;
    Json::Value found = key.channel == Channel::kMaintenance ? Json::Value() : Parsed(std::string(text));
    if (key.channel == Channel::kMaintenance) found["Info"] = std::string(text);
    if (!HasTexts(key, found)) Fail(key, "stored with other texts");
  }
  m_proof.Check(code == SQLITE_DONE || code == SQLITE_NOTADB || code == SQLITE_ERROR,
                std::string("the ledger cannot read: ") + sqlite3_errmsg(connection.get()));
  return rows;
}

// The batch must be what waits in front of its queue: nothing left out, nothing taken twice.
void Ledger::TakeFromQueue(const std::vector<Key>& batch) {
  for (const Key& key : batch) {
    auto& queue = key.channel == Channel::kUba ? m_copies : m_queues[key.channel == Channel::kOperation];
    while (!queue.empty() && queue.front() < key.number) {
      Fail({key.channel, queue.front()}, "left out of the batch that it was due in");
      queue.pop_front();
    }
    if (queue.empty() || queue.front() != key.number) {
      Fail(key, "to be stored, but it does not wait for that");
    } else {
      queue.pop_front();
    }
    At(key).isQueued = false;
    if (key.channel == Channel::kUba) continue;
    m_lastPop[key.channel == Channel::kOperation] = m_clock.NowMilliseconds();
    if (key.channel != Channel::kOperation) continue;
    if (!conditions.isLoggedIn || conditions.ubaSwitch == 1) {
      m_copies.push_back(key.number);
    } else {
      Discard({Channel::kUba, key.number}, "no UBA copy after login without switch 1");
    }
  }
}

void Ledger::OnInsert(Bilog::BiDataBase& storage, Records& batch, bool uba) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  std::vector<Key> keys;
  for (const Bilog::UserLog& record : batch) keys.push_back(KeyOf(MarkedText(record), uba));
  TakeFromQueue(keys);
  Run([&] { storage.executeInsertUserLogBatchCallback(batch, uba); });
  SettleInsert(keys, uba);
}

void Ledger::StoreKept(const std::function<void()>& operation) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  const bool hasKept[] = {!m_kept[0].empty(), !m_kept[1].empty()};
  Run(operation);
  for (const bool uba : {false, true}) {
    if (hasKept[uba]) SettleInsert({}, uba);
  }
}

// Everything of a batch is stored, behind what waited in memory, and the row cap has cut its tenth before; or
// nothing is, and the batch waits in memory.
void Ledger::SettleInsert(const std::vector<Key>& batch, bool uba) {
  const Rows before = std::exchange(m_rows[uba], ReadRows(uba));
  const Rows& after = m_rows[uba];
  std::vector<Key> due(m_kept[uba].begin(), m_kept[uba].end());
  due.insert(due.end(), batch.begin(), batch.end());
  const auto firstRefused = std::stable_partition(due.begin(), due.end(), [this](const Key& key) {
    return !conditions.hasTrigger || !At(key).isRefused;
  });
  const std::vector<Key> refused(firstRefused, due.end());
  due.erase(firstRefused, due.end());
  std::vector<Key> came;
  for (const auto& [id, key] : after) {
    if (before.count(id) == 0) came.push_back(key);
  }
  const bool isUnhurt = std::all_of(m_errors.begin(), m_errors.end(), [](const std::string& error) {
    return error.find("error code is 19,reason:refused") != std::string::npos;
  });
  const bool isStored = !came.empty() || (due.empty() && isUnhurt);
  m_proof.Check(isStored || !m_errors.empty(), "a batch is not stored, and nothing said");
  for (const Key& key : isStored&& came != due ? due : std::vector<Key>()) {
    const bool isMissing = std::find(came.begin(), came.end(), key) == came.end();
    Fail(key, isMissing ? "not stored with its batch" : "stored with a batch that is another than its own");
  }

  const int cap = conditions.rowCap;
  std::size_t cut = isStored && cap >= 10 && before.size() >= static_cast<std::size_t>(cap) ? cap / 10 : 0;
  for (const auto& [id, key] : before) {
    const bool isCut = cut > 0;
    cut -= isCut ? 1 : 0;
    if (after.count(id) != 0) {
      if (isCut && isUnhurt) Fail(key, "not cut, though the row cap was reached");
      continue;
    }
    if (!isCut) Fail(key, "gone with an insert, though the row cap was not reached");
    --At(key).rows;
    At(key).isCut = true;
    Discard(key, "row cap");
  }
  for (const Key& key : came) ++At(key).rows;
  if (!isStored) return Keep(batch, uba);
  for (const Key& key : m_kept[uba]) --At(key).kept;
  m_kept[uba].clear();
  for (const Key& key : refused) Discard(key, "refused by the database");
}

void Ledger::Keep(const std::vector<Key>& batch, bool uba) {
  for (const Key& key : batch) ++At(key).kept;
  auto& kept = m_kept[uba];
  kept.insert(kept.end(), batch.begin(), batch.end());
  const std::size_t excess = kept.size() > kKeptLimit ? kept.size() - kKeptLimit : 0;
  const std::string said = "InsertUserLogBatch dropped " + std::to_string(excess) + " records";
  m_proof.Check(
      excess == 0 || std::any_of(m_errors.begin(), m_errors.end(),
                                 [&](const std::string& error) { return error.rfind(said, 0) == 0; }),
      "not said: " + said);
  for (std::size_t i = 0; i < excess; ++i) {
    --At(kept.front()).kept;
    Discard(kept.front(), "memory bound while the database cannot be written");
    kept.pop_front();
  }
}

Ledger::Records Ledger::OnRead(Bilog::BiDataBase& storage, int count, int maintenance, bool uba) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  Records records = storage.executeGetUserLogListCallback(count, maintenance, uba);
  std::vector<Key> keys;
  for (const Bilog::UserLog& record : records) {
    keys.push_back(KeyOf(MarkedText(record), uba));
    const auto row = m_rows[uba].find(record.get_Id());
    if (row == m_rows[uba].end() || !(row->second == keys.back())) Fail(keys.back(), "read, but not stored");
  }
  if (maintenance == 0 && !uba) {
    m_operationBatch = std::move(keys);
    m_operationDone = 0;
  }
  return records;
}

void Ledger::OnDelete(Bilog::BiDataBase& storage, int first, int last, int maintenance, bool uba) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  Run([&] { storage.executeDeleteUserLogWithIdCallback(first, last, maintenance, uba); });
  const Rows before = std::exchange(m_rows[uba], ReadRows(uba));
  for (const auto& [id, key] : before) {
    const bool isMeant = id >= first && id <= last && key.channel == ChannelOf(maintenance, uba);
    const bool isGone = m_rows[uba].count(id) == 0;
    if (isGone && !isMeant) Fail(key, "deleted with rows that it is none of");
    if (isGone) Leave(id, key);
    if (isGone || !isMeant) continue;
    if (m_errors.empty()) Fail(key, "not deleted, and nothing said");
    Entry& entry = At(key);
    if (entry.confirmed > 0) {
      --entry.confirmed;
      ++entry.excuses;
    }
  }
}

void Ledger::Leave(int id, const Key& key) {
  Entry& entry = At(key);
  --entry.rows;
  const bool isTooLarge = key.channel != Channel::kUba && m_tooLarge.erase(id) != 0;
  if (entry.confirmed > 0) {
    --entry.confirmed;
  } else if (isTooLarge) {
    const bool isLarge = std::any_of(entry.texts.begin(), entry.texts.end(),
                                     [](const auto& text) { return text.second.size() > kBodyLimit; });
    if (!isLarge) Fail(key, "deleted as too large, which it is not");
    Discard(key, "too large for any request");
  } else if (key.channel != Channel::kUba && !conditions.hasCollector) {
    Discard(key, "no collector configured");
  } else {
    Fail(key, "deleted, though no server has accepted it");
  }
}

void Ledger::Clear(const char* rule, const std::function<void()>& operation) {
  m_clearRule = rule;
  operation();
  m_clearRule = nullptr;
}

void Ledger::Wipe(const char* rule, const std::function<void()>& operation) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  m_clearRule = rule;
  Run(operation);
  for (const bool uba : {false, true}) SettleClear(uba, [](Channel) { return true; });
  m_clearRule = nullptr;
}

void Ledger::OnDeleteChannel(Bilog::BiDataBase& storage, bool uba, int maintenance) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  Run([&] { storage.executeDeleteAllOperationLogUserLogCallback(uba, maintenance); });
  SettleClear(uba, [&](Channel channel) { return channel == ChannelOf(maintenance, uba); });
}

void Ledger::SettleClear(bool uba, const std::function<bool(Channel)>& isMeant) {
  m_proof.Check(m_clearRule != nullptr, "records were deleted without a reason");
  auto& kept = m_kept[uba];
  const auto gone =
      std::stable_partition(kept.begin(), kept.end(), [&](const Key& key) { return !isMeant(key.channel); });
  std::for_each(gone, kept.end(), [&](const Key& key) {
    --At(key).kept;
    Discard(key, m_clearRule);
  });
  kept.erase(gone, kept.end());
  const Rows before = std::exchange(m_rows[uba], ReadRows(uba));
  for (const auto& [id, key] : before) {
    const bool isGone = m_rows[uba].count(id) == 0;
    if (isGone && !isMeant(key.channel)) Fail(key, "deleted with a channel that is not its own");
    if (!isGone && isMeant(key.channel) && m_errors.empty()) Fail(key, "not deleted, and nothing said");
    if (!isGone) continue;
    --At(key).rows;
    Discard(key, m_clearRule);
  }
}

void Ledger::LoseFile(const char* rule) {
  m_tooLarge.clear();
  for (Rows& rows : m_rows) {
    for (const auto& [id, key] : std::exchange(rows, {})) {
      --At(key).rows;
      Discard(key, rule);
    }
  }
}

}  // namespace Drive::Testing
