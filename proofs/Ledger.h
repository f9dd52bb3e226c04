// Ledger.h - accounts for every record of a simulated host, from the moment it is recorded.
#pragma once

#include <json/value.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "collector/Collector.h"
#include "drivelog/BiDataBase.h"
#include "logdb/SqliteHandles.h"
#include "platform/Clock.h"
#include "proofs/Proof.h"

namespace Drive::Testing {

using Collection::Channel;

// A connection to the library's database that the simulated faults of the file system leave alone; empty when
// there is no file.
SQLiteDB::ConnectionHandle OpenBesideTheLibrary();

// Knows where each record is, and by which named rule it may leave. It stands between the library and its
// storage, and compares after every operation what really happened to the rows, read from the file by itself,
// with what the rules say; what the server took must be what was recorded, text for text. An operation event
// counts as two records: one of the operation channel, one of the UBA channel.
//
// Thread-safety: the storage operations and messages come from the library's threads; the rest is called by
//                the host's thread while none of them runs.
class Ledger {
 public:
  using Texts = std::map<std::string, std::string>;

  // What the rules depend on, as the host knows it.
  struct Conditions {
    int rowCap = 0;
    int ubaSwitch = 0;
    bool isLoggedIn = false;
    bool hasCollector = false;                // of BI and operation records
    bool isSavingAll = false;                 // the operation queue's end
    bool hasTrigger = false;                  // the database refuses what is marked so
    std::int64_t storingSince[2] = {-1, -1};  // by queue, BI and operation: when its thread began; -1: none
  };
  struct Totals {
    std::int64_t recorded[3] = {}, delivered[3] = {}, stored[3] = {}, waiting[3] = {};  // by channel
    std::int64_t duplicates = 0;
    std::map<std::string, std::int64_t> discarded;  // by rule
  };

  Ledger(Proof& proof, Collection::Collector& collector, const Platform::Clock& clock);
  ~Ledger();
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;

  Conditions conditions;

  // The mark of the next record of a channel, to be the beginning of one of its texts.
  std::string NextMark(Channel channel) const;
  // Before the event is handed over. `action`: of an operation event; an empty one is dropped by rule.
  void RecordBi(Texts texts, bool isRefused);
  void RecordOperation(Texts texts, const std::string& action);
  void Count(Channel channel, const char* rule, std::int64_t records);  // that never were queued

  // Puts itself before the storage that is registered.
  void Watch();
  // Runs an operation that deletes channels, or all tables, by this rule.
  void Clear(const char* rule, const std::function<void()>& operation);
  void Wipe(const char* rule, const std::function<void()>& operation);
  // Runs an operation that stores what waits in memory.
  void StoreKept(const std::function<void()>& operation);
  void LoseQueue(Channel channel, const char* rule);
  void LoseFile(const char* rule);
  // Takes note of requests that the server accepted without the client's knowledge.
  void TakeUnconfirmed();

  // Compares all that can be compared while no thread of the library runs.
  void Check();
  // Behind the end of a session in good health.
  void CheckNothingWaits();
  // The sums, where every record has its place.
  Totals Balance();

 private:
  struct Key {
    Channel channel;
    std::size_t number;
    friend bool operator==(const Key& a, const Key& b) {
      return std::tie(a.channel, a.number) == std::tie(b.channel, b.number);
    }
  };
  struct Entry {
    Texts texts;
    std::string action;
    std::int64_t recordedMs = 0;
    bool isRefused = false;  // by the database
    bool isQueued = true;
    bool isCut = false;  // by the row cap, perhaps while its request was under way
    int kept = 0;        // times in memory, waiting for the database
    int rows = 0;
    int arrivals = 0;
    int confirmed = 0;  // arrivals that the client knows of, without the rows that it has deleted for them
    int excuses = 0;    // reasons for another arrival
    const char* rule = nullptr;
  };
  using Records = std::vector<Bilog::UserLog>;
  using Rows = std::map<int, Key>;  // by id

  Entry& At(const Key& key) { return m_entries[Index(key.channel)][key.number]; }
  static std::size_t Index(Channel channel) { return static_cast<std::size_t>(channel); }
  void Fail(const Key& key, const std::string& what);
  void Discard(const Key& key, const char* rule);
  void Add(Channel channel, Entry entry);

  void OnMessage(int level, const std::string& location, const std::string& text);
  void OnInsert(Bilog::BiDataBase& storage, Records& batch, bool uba);
  void OnDelete(Bilog::BiDataBase& storage, int first, int last, int maintenance, bool uba);
  void OnDeleteChannel(Bilog::BiDataBase& storage, bool uba, int maintenance);
  Records OnRead(Bilog::BiDataBase& storage, int count, int maintenance, bool uba);

  template <typename Operation>
  void Run(const Operation& operation) {
    m_errors.clear();
    m_isInOperation = true;
    operation();
    m_isInOperation = false;
  }
  void TakeFromQueue(const std::vector<Key>& batch);
  void SettleInsert(const std::vector<Key>& batch, bool uba);
  void Keep(const std::vector<Key>& batch, bool uba);
  void SettleClear(bool uba, const std::function<bool(Channel)>& isMeant);
  void Leave(int id, const Key& key);  // a row that was deleted as delivered
  void DropPopped();
  void Poll(Channel channel, const std::string& confirmedRequest);
  Key KeyOfArrival(Channel channel, const Json::Value& record);
  void Arrive(const Key& key);
  Key KeyOf(const std::string& text, bool uba) const;
  Rows ReadRows(bool uba, bool comparesTexts = false);
  bool HasTexts(const Key& key, const Json::Value& found);

  Proof& m_proof;
  Collection::Collector& m_collector;
  const Platform::Clock& m_clock;

  std::recursive_mutex m_mutex;  // guards what follows, and orders the storage operations
  std::vector<Entry> m_entries[3];
  std::deque<std::size_t> m_queues[2];  // BI, operation
  std::int64_t m_lastPop[2] = {0, 0};
  std::deque<std::size_t> m_copies;  // operation records whose copy is due in the UBA table
  std::deque<Key> m_kept[2];         // by table
  Rows m_rows[2];
  std::vector<Key> m_operationBatch;  // last read, and how much of it is done; its requests carry no texts
  std::size_t m_operationDone = 0;
  std::int64_t m_seen[3] = {0, 0, 0};  // the last record of the server
  std::set<int> m_tooLarge;            // ids of the other table that the library said it deletes
  const char* m_clearRule = nullptr;
  bool m_isInOperation = false;
  std::vector<std::string> m_errors;  // of the operation under way
  Totals m_totals;
  int m_failures = 0;
};

}  // namespace Drive::Testing
