// Collector.h - the development collection service: takes uploads over HTTPS, checks and keeps them.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "collector/Cipher.h"
#include "collector/DataFolder.h"
#include "collector/FaultPlan.h"
#include "collector/HttpsServer.h"
#include "collector/Request.h"
#include "collector/RequestCheck.h"
#include "collector/RequestStore.h"

namespace Drive::Collection {

// Plays both collection services, as a program or inside a test. An upload that is what a client of the
// library sends is answered with 200, any other with 422 and the reason, so that the client keeps its rows;
// a fault of the plan comes before both. The rest of its paths are the JSON interface of Api.h.
//
// The HTTP library makes the whole process ignore SIGPIPE.
//
// Thread-safety: every operation may be called from any thread, Start and Stop from one at a time.
// Lifetime: it serves from construction; the destructor stops it.
class Collector {
 public:
  struct Options {
    std::filesystem::path dataFolder;  // keys and certificates, see DataFolder.h
    std::string database;              // a file, or ":memory:"; empty: in the data folder
    std::string host = "127.0.0.1";
    int port = 0;  // 0: a free one
    ServerCertificate certificate = ServerCertificate::kGood;
    std::string expectedToken;  // access token that UBA uploads must carry; empty: any
    DeflateRule deflateRule = DeflateRule::kAsZlibMakes;
    std::vector<Fault> faults;
  };

  struct ChannelCounts {
    std::int64_t attempts = 0;  // requests that came, those that met a fault included
    StoredCounts stored;
  };

  // Throws std::runtime_error or std::invalid_argument, which say what is wrong.
  explicit Collector(const Options& options);
  ~Collector();
  Collector(const Collector&) = delete;
  Collector& operator=(const Collector&) = delete;

  // An absent service for a while: Stop ends delays and closes the port, Start serves on the same port again.
  void Start();
  void Stop();

  std::string Url() const;     // without a slash at its end
  std::string CaPath() const;  // UTF-8
  std::string RsaPublicKeyHex() const { return m_rsaKey.PublicKeyHex(); }

  ChannelCounts Counts(Channel channel) const;
  std::vector<StoredRecord> Records(std::optional<Channel> channel, std::int64_t limit = 1000,
                                    std::int64_t since = 0) const;
  std::vector<StoredRefusal> Rejected(std::int64_t limit = 1000) const { return m_store.Rejected(limit); }
  // Forgets all requests and counts; faults stay.
  void Reset();

  // Waits until that many requests have come to the channel; false when it takes longer than `limit`.
  bool WaitForAttempts(Channel channel, std::int64_t attempts, std::chrono::milliseconds limit);

  void InjectFault(const Fault& fault) { m_faults.Add(fault); }
  void ClearFaults() { m_faults.Clear(); }
  std::vector<Fault> PendingFaults() const { return m_faults.Pending(); }

 private:
  HttpReply Answer(const HttpRequest& request);
  HttpReply TakeUpload(Channel channel, const HttpRequest& request);
  void Delay(std::chrono::milliseconds delay);

  const Options m_options;
  const DataFolder m_folder;
  const Identity m_identity;
  const RsaKey m_rsaKey;
  RequestStore m_store;
  FaultPlan m_faults;
  int m_port;

  mutable std::mutex m_mutex;  // guards the two below
  std::condition_variable m_changed;
  std::array<std::int64_t, kChannels.size()> m_attempts{};
  bool m_stopping = false;

  std::unique_ptr<HttpsServer> m_server;  // none while stopped
};

}  // namespace Drive::Collection
