// RequestStore.cpp - what the collector took and what it refused, in SQLite.
#include "collector/RequestStore.h"

#include <chrono>
#include <stdexcept>

#include "collector/JsonCheck.h"
#include "collector/Statement.h"

namespace Drive::Collection {

namespace {

constexpr char kSchema[] = R"sql(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS request (id INTEGER PRIMARY KEY AUTOINCREMENT, channel INTEGER NOT NULL,
  request_id TEXT NOT NULL, received_ms INTEGER NOT NULL, replay INTEGER NOT NULL, headers TEXT NOT NULL,
  plain TEXT NOT NULL);
CREATE INDEX IF NOT EXISTS request_by_id ON request (channel, request_id);
CREATE TABLE IF NOT EXISTS record (id INTEGER PRIMARY KEY AUTOINCREMENT, request INTEGER NOT NULL,
  channel INTEGER NOT NULL, json TEXT NOT NULL);
CREATE INDEX IF NOT EXISTS record_by_channel ON record (channel, id);
CREATE TABLE IF NOT EXISTS rejected (id INTEGER PRIMARY KEY AUTOINCREMENT, channel INTEGER NOT NULL,
  received_ms INTEGER NOT NULL, status INTEGER NOT NULL, reason TEXT NOT NULL, headers TEXT NOT NULL);
)sql";

// Rolls back unless committed.
class Transaction {
 public:
  explicit Transaction(sqlite3* connection) : m_connection(connection) {
    Statement(m_connection, "BEGIN IMMEDIATE").Step();
  }
  ~Transaction() {
    if (!m_committed) {
      sqlite3_exec(m_connection, "ROLLBACK", nullptr, nullptr, nullptr);
    }
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit() {
    Statement(m_connection, "COMMIT").Step();
    m_committed = true;
  }

 private:
  sqlite3* m_connection;  // borrowed
  bool m_committed = false;
};

std::int64_t Now() {
  using std::chrono::duration_cast;
  return duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

// A list of [name, value] pairs, since a name may come twice.
std::string TextOf(const Headers& headers) {
  Json::Value list(Json::arrayValue);
  for (const Header& header : headers) {
    Json::Value pair(Json::arrayValue);
    pair.append(header.name);
    pair.append(header.value);
    list.append(pair);
  }
  return CompactText(list);
}

Json::Value JsonOf(const std::string& text) {
  Json::Value value;
  const std::unique_ptr<Json::CharReader> reader([] {
    Json::CharReaderBuilder builder;
    builder["stackLimit"] = 2000;
    return builder.newCharReader();
  }());
  reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
  return value;
}

Headers HeadersOf(const std::string& text) {
  Headers headers;
  for (const Json::Value& pair : JsonOf(text)) {
    headers.push_back({pair[0].asString(), pair[1].asString()});
  }
  return headers;
}

std::int64_t Number(Channel channel) { return static_cast<std::int64_t>(channel); }

}  // namespace

RequestStore::RequestStore(const std::filesystem::path& database) {
  sqlite3* connection = nullptr;
  const int result =
      sqlite3_open_v2(database.u8string().c_str(), &connection,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  m_connection.reset(connection);
  if (result != SQLITE_OK || sqlite3_exec(connection, kSchema, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error("cannot use the database " + database.u8string() + ": " +
                             (connection != nullptr ? sqlite3_errmsg(connection) : "no memory"));
  }
}

void RequestStore::Add(Channel channel, const Headers& headers, const Accepted& request) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Transaction transaction(m_connection.get());

  Statement known(
      m_connection.get(),
      "SELECT MAX(plain = ?) FROM request WHERE channel = ? AND request_id = ? HAVING COUNT(*) > 0");
  const bool isReplay = known.Bind(request.plainText).Bind(Number(channel)).Bind(request.requestId).Step();
  const bool isRepetition = isReplay && known.Integer(0) != 0;

  Statement(m_connection.get(),
            "INSERT INTO request (channel, request_id, received_ms, replay, headers, plain) "
            "VALUES (?, ?, ?, ?, ?, ?)")
      .Bind(Number(channel))
      .Bind(request.requestId)
      .Bind(Now())
      .Bind(isReplay ? 1 : 0)
      .Bind(TextOf(headers))
      .Bind(request.plainText)
      .Step();
  const std::int64_t id = sqlite3_last_insert_rowid(m_connection.get());
  for (const Json::Value& record : request.records) {
    if (isRepetition) {
      break;
    }
    Statement(m_connection.get(), "INSERT INTO record (request, channel, json) VALUES (?, ?, ?)")
        .Bind(id)
        .Bind(Number(channel))
        .Bind(CompactText(record))
        .Step();
  }
  transaction.Commit();
}

void RequestStore::Add(Channel channel, const Headers& headers, const Refused& refusal) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Statement(m_connection.get(),
            "INSERT INTO rejected (channel, received_ms, status, reason, headers) VALUES (?, ?, ?, ?, ?)")
      .Bind(Number(channel))
      .Bind(Now())
      .Bind(refusal.status)
      .Bind(refusal.reason)
      .Bind(TextOf(headers))
      .Step();
}

StoredCounts RequestStore::Counts(Channel channel) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Statement statement(m_connection.get(),
                      "SELECT (SELECT COUNT(*) FROM request WHERE channel = ?1),"
                      " (SELECT COUNT(*) FROM record WHERE channel = ?1),"
                      " (SELECT COUNT(*) FROM request WHERE channel = ?1 AND replay = 1),"
                      " (SELECT COUNT(*) FROM rejected WHERE channel = ?1)");
  statement.Bind(Number(channel)).Step();
  return {statement.Integer(0), statement.Integer(1), statement.Integer(2), statement.Integer(3)};
}

std::vector<StoredRecord> RequestStore::Records(std::optional<Channel> channel, std::int64_t limit,
                                                std::int64_t since) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Statement statement(
      m_connection.get(),
      "SELECT record.id, record.channel, request_id, received_ms, replay, headers, plain, json "
      "FROM record JOIN request ON request.id = record.request "
      "WHERE record.channel BETWEEN ? AND ? AND record.id > ? ORDER BY record.id DESC LIMIT ?");
  statement.Bind(Number(channel.value_or(kChannels.front())))
      .Bind(Number(channel.value_or(kChannels.back())))
      .Bind(since)
      .Bind(limit);
  std::vector<StoredRecord> records;
  while (statement.Step()) {
    records.push_back({statement.Integer(0), static_cast<Channel>(statement.Integer(1)), statement.Text(2),
                       statement.Integer(3), statement.Integer(4) != 0, HeadersOf(statement.Text(5)),
                       statement.Text(6), JsonOf(statement.Text(7))});
  }
  return records;
}

std::vector<StoredRefusal> RequestStore::Rejected(std::int64_t limit) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Statement statement(m_connection.get(),
                      "SELECT id, channel, received_ms, status, reason, headers FROM rejected "
                      "ORDER BY id DESC LIMIT ?");
  statement.Bind(limit);
  std::vector<StoredRefusal> refusals;
  while (statement.Step()) {
    refusals.push_back({statement.Integer(0), static_cast<Channel>(statement.Integer(1)),
                        statement.Integer(2), static_cast<int>(statement.Integer(3)), statement.Text(4),
                        HeadersOf(statement.Text(5))});
  }
  return refusals;
}

void RequestStore::Clear() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Transaction transaction(m_connection.get());
  for (const char* sql : {"DELETE FROM record", "DELETE FROM request", "DELETE FROM rejected"}) {
    Statement(m_connection.get(), sql).Step();
  }
  transaction.Commit();
}

}  // namespace Drive::Collection
