// RequestStore.h - what the collector took and what it refused, in SQLite.
#pragma once

#include <json/json.h>
#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "collector/Request.h"
#include "collector/RequestCheck.h"

namespace Drive::Collection {

struct StoredRecord {
  std::int64_t id = 0;  // grows with each record, over all channels
  Channel channel = Channel::kMaintenance;
  std::string requestId;
  std::int64_t receivedMs = 0;  // since 1970-01-01 UTC
  bool replay = false;          // the request's id had been accepted before
  Headers headers;              // of the request
  std::string requestText;      // the whole request as plain JSON
  Json::Value record;
};

struct StoredRefusal {
  std::int64_t id = 0;
  Channel channel = Channel::kMaintenance;
  std::int64_t receivedMs = 0;
  int status = 0;
  std::string reason;
  Headers headers;
};

struct StoredCounts {
  std::int64_t requests = 0;  // accepted, replays included
  std::int64_t records = 0;
  std::int64_t replays = 0;  // accepted requests whose id had been accepted on this channel before
  std::int64_t rejected = 0;
};

// A client that missed the answer sends the same request again. Such a repetition counts as a replay, and its
// records are not stored twice. When a known id comes with another text, the records are stored as well.
//
// Thread-safety: every operation may be called from any thread. All throw std::runtime_error.
class RequestStore {
 public:
  // `database` may be ":memory:".
  explicit RequestStore(const std::filesystem::path& database);

  void Add(Channel channel, const Headers& headers, const Accepted& request);
  void Add(Channel channel, const Headers& headers, const Refused& refusal);

  StoredCounts Counts(Channel channel) const;
  // The newest first, at most `limit`, ids above `since` only; of all channels when none is given.
  std::vector<StoredRecord> Records(std::optional<Channel> channel, std::int64_t limit,
                                    std::int64_t since) const;
  std::vector<StoredRefusal> Rejected(std::int64_t limit) const;
  void Clear();

 private:
  struct ConnectionCloser {
    void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
  };

  mutable std::mutex m_mutex;  // guards the connection, of which statements make use in turn
  std::unique_ptr<sqlite3, ConnectionCloser> m_connection;
};

}  // namespace Drive::Collection
