// network_faults.cpp - uploads to peers that misbehave at every stage end in time, and the next ones arrive.
//
// A round takes each fault of the table once, in a random order: those that end by themselves side by side,
// then those that hang; then the peers let everything through to a collector, and the same uploads arrive. At
// last the upload timers run into all that hangs, and are stopped there.
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <map>

#include "bilog/BILoggerTimer.h"
#include "bilog/BiRecordJson.h"
#include "client/common/GlobalValue.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "collector/DataFolder.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "operatelog/UbaLoggerTimer.h"
#include "proofs/NetworkFaultTable.h"
#include "proofs/Proof.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/RecordingStorage.h"
#include "tests/support/TempFolder.h"
#include "transport/BodyEncoding.h"
#include "transport/PushLogRequest.h"

namespace Drive::Testing {
namespace {

using namespace std::chrono_literals;
using Collection::Channel;
using Collection::ServerCertificate;
using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kLongestUpload = 12s;   // three attempts of half a second to connect and a slow second
constexpr milliseconds kLongestStop = 1500ms;  // the grace for a transfer, and a little
constexpr long kMostGrowth = 1024;             // KiB of the heap

thread_local std::set<int>* reportedEnds = nullptr;  // of the thread's upload

milliseconds Since(Steady::time_point begin) {
  return std::chrono::duration_cast<milliseconds>(Steady::now() - begin);
}

// In use; what lies free between used parts is the allocator's.
long HeapKibibytes() {
  const struct mallinfo2 heap = mallinfo2();
  return static_cast<long>((heap.uordblks + heap.hblkhd) / 1024);
}

// Does something for each element, all at once.
template <typename List, typename Action>
void ForAll(List& list, const Action& action) {
  std::vector<std::thread> threads;
  threads.reserve(list.size());
  for (auto& element : list) threads.emplace_back([&] { action(element); });
  for (std::thread& thread : threads) thread.join();
}

// One fault, the peer that has it, and a client that has this peer for its collector.
struct Trial {
  Trial(NetworkFault its, const Collection::Identity& identity)
      : fault(std::move(its)), peer(identity, fault.maxTlsVersion) {}

  NetworkFault fault;
  RawPeer peer;
  Bilog::PushLogRequest client;
};

class NetworkProof {
 public:
  explicit NetworkProof(Proof& proof) : m_proof(proof) {
    m_system.local = m_folder.Path().wstring();
    Platform::InstallSystem(&m_system);
    g_certPath = std::filesystem::u8path(m_collector.CaPath()).wstring();
    const Collection::DataFolder keys(m_folder.Path() / "collector");
    for (const auto kind : {ServerCertificate::kGood, ServerCertificate::kExpired,
                            ServerCertificate::kWrongHost, ServerCertificate::kForeignAuthority}) {
      m_identities.emplace(kind, keys.Server(keys.Authority(), kind));
    }
    CommLog::GetInstance().SetLogFunc([this](int, int, const std::string&, const std::string& text) {
      Raise(m_longestMessage, static_cast<std::int64_t>(text.size()));
      if (reportedEnds == nullptr) return;
      const std::string kFailed = "PushLogToServer Fail result:";
      if (text.rfind(kFailed, 0) == 0) reportedEnds->insert(std::stoi(text.substr(kFailed.size())));
      if (text.rfind("PushLog Fail, url:", 0) == 0) reportedEnds->insert(NetworkFault::kRefusedByStatus);
      if (text.rfind("PushLog Success", 0) == 0) reportedEnds->insert(NetworkFault::kArrives);
    });
    auto& settings = Bilog::LogSettings::GetInstance();
    settings.SetUserId(L"user-1");
    settings.SetPushWaitTime(5);  // as long as the period of the BI timer
    settings.SetPushSize(1);
    settings.SetUbaSwitch(1);
  }
  ~NetworkProof() {
    CommLog::GetInstance().SetLogFunc(nullptr);
    Platform::InstallSystem(nullptr);
  }

  void Round(std::uint64_t seed) {
    std::mt19937_64 draw(seed);
    m_collector.Reset();
    RawPeer elsewhere(m_identities.at(ServerCertificate::kGood));
    elsewhere.Serve([](RawPeer::Connection&) {});
    TakePeerFaults(draw, elsewhere);
    TakeProxyFaults(draw);
    m_proof.Check(!elsewhere.WaitForConnection(), "a redirection was followed");
    m_proof.Check(m_longestMessage < 66000, "a message keeps too much of a response");
    StopTimersInTheMiddle(draw);
    m_heap.push_back(HeapKibibytes());
  }

  int Finish() {
    std::string growth = "heap not compared";  // the first rounds fill caches
    if (m_heap.size() > 3) {
      const long kibibytes = m_heap.back() - m_heap[2];
      growth = "heap +" + std::to_string(kibibytes) + " KiB after the third round";
      m_proof.Check(kibibytes <= kMostGrowth, growth);
    }
    return m_proof.Finish(std::to_string(m_faults) + " faults, " + std::to_string(m_failed) +
                          " uploads failed, " + std::to_string(m_delivered) + " delivered, longest upload " +
                          std::to_string(m_longestUpload) + " ms, longest stop " +
                          std::to_string(m_longestStop) + " ms, " + growth);
  }

 private:
  using Trials = std::vector<std::unique_ptr<Trial>>;

  // Of those that hang, only the limits make an end; the others must not need them.
  static void SetLimits(bool areShort) {
    GlobalValue::GetInstatnce().SetTimeoutConnect(areShort ? 500 : 20000);
    GlobalValue::GetInstatnce().SetLimitLowSpeed(1000);
    GlobalValue::GetInstatnce().SetTimeoutLowSpeed(areShort ? 1 : 30);
  }

  void Configure(const std::string& address) { WriteSettings(m_folder.Path(), address, m_collector.Url()); }

  int CollectorPort() const { return std::stoi(m_collector.Url().substr(m_collector.Url().rfind(':') + 1)); }

  RawPeer::Script ToCollector() const {
    return [port = CollectorPort()](RawPeer::Connection& connection) { connection.TunnelTo(port); };
  }

  Trials Prepare(std::vector<NetworkFault> faults, std::mt19937_64& draw, const std::string& address = "") {
    std::shuffle(faults.begin(), faults.end(), draw);
    Trials trials;
    for (NetworkFault& fault : faults) {
      const auto& identity = m_identities.at(fault.certificate);
      trials.push_back(std::make_unique<Trial>(std::move(fault), identity));
      Trial& trial = *trials.back();
      if (trial.fault.script) trial.peer.Serve(trial.fault.script);
      Configure(address.empty() ? "https://" + trial.peer.Address() : address);
      trial.client.Init();
    }
    m_faults += static_cast<int>(faults.size());
    return trials;
  }

  // What the collector accepts.
  static std::string GoodBody(const std::string& requestId) {
    const auto body = Bilog::MakeBiEnvelope(TypeConvert::UTF8ToUnicode(requestId), L"qmvzomaintqrt",
                                            Bilog::MakeBiRecordsJson({Bilog::UserLog()}));
    return {body.begin(), body.end()};
  }

  void Upload(Trial& trial, const std::set<int>& expected, bool isLarge) {
    const std::string requestId = "id-" + std::to_string(++m_uploads);
    const std::string body = isLarge ? std::string(3 << 20, 'x') : GoodBody(requestId);
    std::set<int> ends;
    reportedEnds = &ends;
    const auto begin = Steady::now();
    const bool isAccepted = trial.client.PushLogToBiServer(body, L"/common/qmvzomaintqrt", requestId);
    const milliseconds duration = Since(begin);
    reportedEnds = nullptr;
    Raise(m_longestUpload, duration.count());
    ++(isAccepted ? m_delivered : m_failed);
    const std::string what = "a peer that " + trial.fault.name + ": ";
    m_proof.Check(duration < kLongestUpload, what + std::to_string(duration.count()) + " ms");
    m_proof.Check(isAccepted == (ends.count(NetworkFault::kArrives) != 0), what + "reported wrongly");
    m_proof.Check(!ends.empty(), what + "no end is reported");
    for (const int end : ends) {
      m_proof.Check(expected.count(end) != 0, what + "ends with " + std::to_string(end));
    }
  }

  void TakePeerFaults(std::mt19937_64& draw, const RawPeer& elsewhere) {
    auto faults = PeerFaults(draw, "https://" + elsewhere.Address() + "/");
    const Trials trials = Prepare(std::move(faults), draw);
    for (const bool hanging : {false, true}) {
      SetLimits(hanging);
      ForAll(trials, [&](const auto& trial) {
        if (trial->fault.Hangs() == hanging) Upload(*trial, trial->fault.ends, trial->fault.isLarge);
      });
    }
    SetLimits(false);
    for (const auto& trial : trials) {
      m_proof.Check(!trial->fault.script || trial->peer.WaitForConnection(),
                    trial->fault.name + ": nobody came");
      trial->peer.Serve(ToCollector());
    }
    ForAll(trials, [&](const auto& trial) { Upload(*trial, {NetworkFault::kArrives}, false); });
    const auto accepted = m_collector.Counts(Channel::kMaintenance).stored.records;
    m_proof.Check(accepted == static_cast<std::int64_t>(trials.size()), "not every next upload came");
  }

  void TakeProxyFaults(std::mt19937_64& draw) {
    const Trials trials = Prepare(ProxyFaults(CollectorPort()), draw, m_collector.Url());
    for (const auto& trial : trials) {
      SetLimits(trial->fault.Hangs());
      GlobalValue::GetInstatnce().SetSystemProxy(trial->peer.Address());
      Upload(*trial, trial->fault.ends, false);
      GlobalValue::GetInstatnce().SetSystemProxy("");
      m_proof.Check(trial->peer.WaitForConnection(), trial->fault.name + ": nobody came");
    }
    const std::string name = "https://" + std::string(64, 'x') + ".invalid";  // no look-up leaves the machine
    const Trials nowhere = Prepare({{"has a name that is none", {6}, {}}}, draw, name);
    SetLimits(false);
    Upload(*nowhere.front(), {6}, false);
  }

  void StopTimersInTheMiddle(std::mt19937_64& draw) {
    SetLimits(false);  // so that only the stops make an end
    ManualClock clock;
    RecordingStorage storage;
    for (const bool uba : {false, true}) {
      std::vector<Bilog::UserLog> batch(1);
      batch[0].set_IsMaintenanceLog(uba ? 0 : 1);
      Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, uba);
    }
    auto faults = PeerFaults(draw, "");
    faults.erase(
        std::remove_if(faults.begin(), faults.end(), [](const auto& fault) { return !fault.Hangs(); }),
        faults.end());
    std::vector<Bilog::BILoggerTimer> timers(faults.size());
    const Trials trials = Prepare(std::move(faults), draw);
    for (std::size_t i = 0; i < trials.size(); ++i) {
      Configure("https://" + trials[i]->peer.Address());
      timers[i].Start();
    }
    OperateLog::UbaLoggerTimer other;
    other.Start();
    clock.WaitForWaiters(timers.size() + 1);

    std::thread tick([&clock] { clock.Advance(5s); });
    for (const auto& trial : trials) {
      m_proof.Check(trial->peer.WaitForConnection(10s), trial->fault.name + ": no timer came");
    }
    m_proof.Check(m_collector.WaitForAttempts(Channel::kUba, 1, 10s), "no other timer went on");
    std::thread stop([&] { Stop(other); });
    ForAll(timers, [&](auto& timer) { Stop(timer); });
    stop.join();
    tick.join();
    m_proof.Check(storage.Rows(true).empty(), "the other timer has not delivered");
    m_proof.Check(storage.Rows(false).size() == 1, "a record is lost");

    const std::size_t chosen = draw() % trials.size();
    trials[chosen]->peer.Serve(ToCollector());
    Configure("https://" + trials[chosen]->peer.Address());
    timers[chosen].Start();
    clock.WaitForWaiters(1);
    clock.Advance(5s);
    m_proof.Check(storage.Rows(false).empty(), "the next tick has not delivered");
    timers[chosen].Stop();
  }

  template <typename Timer>
  void Stop(Timer& timer) {
    const auto begin = Steady::now();
    timer.Stop();
    const milliseconds duration = Since(begin);
    Raise(m_longestStop, duration.count());
    m_proof.Check(duration < kLongestStop, "a stop takes " + std::to_string(duration.count()) + " ms");
  }

  static void Raise(std::atomic<std::int64_t>& longest, std::int64_t value) {
    for (std::int64_t before = longest; before < value && !longest.compare_exchange_weak(before, value);) {
    }
  }

  Proof& m_proof;
  TempFolder m_folder;
  FakeSystem m_system;
  Collection::Collector m_collector{CollectorIn(m_folder.Path())};
  std::map<ServerCertificate, Collection::Identity> m_identities;
  int m_faults = 0;
  std::atomic<int> m_uploads{0}, m_failed{0}, m_delivered{0};
  std::atomic<std::int64_t> m_longestUpload{0}, m_longestStop{0}, m_longestMessage{0};
  std::vector<long> m_heap;  // after each round
};

}  // namespace
}  // namespace Drive::Testing

int main(int argc, char** argv) {
  Drive::Testing::Proof proof("prove_network_faults", argc, argv);
  Drive::Testing::NetworkProof network(proof);
  while (proof.HasTime()) network.Round(proof.NextRound());
  return network.Finish();
}
