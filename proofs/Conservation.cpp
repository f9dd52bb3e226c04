// Conservation.cpp - proves that every record is delivered, stored, queued, or discarded by a named rule.
//
// A round is a client over 30 simulated days: sessions of some minutes with bursts and quiet, every fault
// that its surroundings have, and nights in between. Every decision is drawn from the round's seed.
#include <iostream>
#include <random>
#include <sstream>

#include "client/common/SharedGlobals.h"
#include "proofs/SimulatedProduct.h"

namespace Drive::Testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::int64_t kDay = 24LL * 3600 * 1000;
constexpr int kDays = 30;

class Simulation {
 public:
  Simulation(Proof& proof, std::uint64_t seed, const std::filesystem::path& keys)
      : m_random(seed), m_proof(proof), m_product(proof, keys, seed % 4 != 0) {}

  std::int64_t Faults() const { return m_faults; }

  Ledger::Totals Run() {
    const std::int64_t begin = m_product.clock.NowMilliseconds();
    for (int day = 0; day < kDays; ++day) {
      for (int session = Between(1, 2); session > 0; --session) {
        RunSession();
        m_product.Advance(seconds(Between(60, 5 * 3600)));
      }
      const std::int64_t night = begin + (day + 1) * kDay - m_product.clock.NowMilliseconds();
      m_proof.Check(night > 0, "a day is too short for its sessions");
      m_product.Advance(milliseconds(night));
    }
    // The sums are taken in the midst of a session, so that records are stored and queued as well.
    m_product.Start(DrawSettings(), true, 0);
    for (int i = 0; i < 4; ++i) Load(), m_product.Advance(seconds(7));
    m_product.ledger.Check();
    const Ledger::Totals totals = m_product.ledger.Balance();
    m_product.Heal();
    m_product.End(true);
    m_product.ledger.CheckNothingWaits();
    return totals;
  }

 private:
  int Between(int first, int last) {
    return first + static_cast<int>(m_random() % static_cast<std::uint64_t>(last - first + 1));
  }
  bool Chance(int percent) { return Between(1, 100) <= percent; }
  template <typename T>
  T OneOf(std::initializer_list<T> choices) {
    return choices.begin()[Between(0, static_cast<int>(choices.size()) - 1)];
  }

  std::string Text() {
    static const char* const kPieces[] = {"a", "\xE2\x82\xAC", "\"", "\\", " ", "\xF0\x9F\x98\x80", "{", "}",
                                          "0", "\n",           "'"};
    std::string text;
    for (int left = Between(0, 120); left > 0; --left) text += kPieces[Between(0, 10)];
    return text;
  }
  // Hardly compressible.
  std::string LongText() {
    std::string text(300000, ' ');
    for (char& c : text) c = static_cast<char>('0' + m_random() % 75);
    return text;
  }

  Bilog::BiUbaDataType DrawSettings() {
    auto settings = m_product.Settings();
    if (Chance(8)) settings.rsaPublicKey = "";
    settings.operationLogSwitchState = Chance(90);
    settings.accessToken = L"token of session " + std::to_wstring(++m_sessions);
    settings.ubaSwitch = OneOf({0, 1, 1, 1, 1, 2});
    settings.pushLogMaxWaitTime = OneOf({20, 60, 60, 100, 300});
    settings.pushLogSize = OneOf({10, 50, 100, 100});
    settings.maxPushLogCount = OneOf({40, 40, 100, 400});
    settings.logDbSize = OneOf({5, 100, 300, 300, 1000, 1000000});
    return settings;
  }

  void RunSession() {
    if (Chance(3)) m_faults += 1, m_product.InflateFile();
    const bool hasCollector = Chance(92);
    const int unregistered = Chance(5) ? Between(1, 50) : 0;
    m_product.Start(DrawSettings(), hasCollector, unregistered);
    const bool knowsToken = Chance(70);
    m_product.SetMainProcess(Chance(70), knowsToken);
    const int login = Between(0, 5);
    for (int step = Between(6, 16); step > 0; --step) {
      if (step % 6 == login) m_product.LogIn();
      Load();
      if (Chance(25)) Fault();
      if (Chance(6)) Command();
      m_product.Advance(seconds(Chance(85) ? Between(1, 50) : Between(60, 400)));
      if (Chance(40)) m_product.Heal();
    }
    if (Chance(70)) m_product.Heal();
    m_product.End(Chance(50));
  }

  // Bursts and quiet.
  void Load() {
    if (Chance(50)) {
      for (int i = Chance(90) ? Between(1, 40) : Between(40, 400); i > 0; --i) {
        const std::string text = Text();
        const bool isRefused = Chance(1);
        m_product.RecordBi(Between(1, 5), text, isRefused);
      }
    }
    if (Chance(50)) {
      for (int i = Chance(90) ? Between(1, 30) : Between(30, 300); i > 0; --i) {
        const std::string text = Text();
        m_product.RecordOperation(Chance(98) ? Between(0, 76) : 77, text);
      }
    }
    if (Chance(3)) m_product.RecordList(Between(1, 45));
    const int rare = Between(1, 1000);
    if (rare <= 5) m_product.RecordBi(1, LongText());
    if (rare > 995) m_product.RecordOperation(3, LongText());
    if (rare == 500) Flood();
  }

  // More than the queue's soft bound, and often more than the memory bound of a storage that is full.
  void Flood() {
    if (Chance(60)) m_product.vfs.FailAlways(FaultyVfs::Call::kWrite, SQLITE_FULL);
    for (int i = Between(6000, 17000); i > 0; --i) m_product.RecordBi(2, "flood");
  }

  void Fault() {
    ++m_faults;
    switch (Between(0, 11)) {
      case 0:
        g_isOffLine = true;
        break;
      case 1:
        m_product.collector.Stop();
        break;
      case 2:
        g_certPath = L"";
        break;
      case 3:
        Answer(OneOf({500, 503, 404, 400, 302}), "not now");
        break;
      case 4:
        Answer(400, "interface auth failed");
        break;
      case 5:
        ExpireToken();
        break;
      case 6:
        DropConnections();
        break;
      case 7:
      case 8:
        m_product.clock.HoldDatabase(milliseconds(Between(10, 60000)));
        break;
      case 9:
      case 10:
        FailStorage();
        break;
      default:
        if (Chance(25))
          m_product.LoseAnAnswer(Between(0, 2));
        else if (Chance(20))
          m_product.DeleteFile();
        else if (Chance(20))
          m_product.DamageFile();
        else
          FailStorage();
    }
  }

  void Answer(int status, const char* body) {
    Collection::Fault fault;
    if (Chance(70)) fault.channel = Collection::kChannels[static_cast<std::size_t>(Between(0, 2))];
    fault.status = status;
    fault.body = body;
    fault.count = Between(1, 9);
    m_product.collector.InjectFault(fault);
  }
  void ExpireToken() {
    Collection::Fault fault;
    fault.channel = Channel::kUba;
    fault.untilNewToken = true;
    m_product.collector.InjectFault(fault);
  }
  void DropConnections() {
    Collection::Fault fault;
    fault.drop = true;
    fault.count = Between(1, 9);
    m_product.collector.InjectFault(fault);
  }
  void FailStorage() {
    using Call = FaultyVfs::Call;
    const Call call = OneOf({Call::kOpen, Call::kRead, Call::kWrite, Call::kWrite, Call::kSync, Call::kLock});
    const int code = OneOf({SQLITE_IOERR, SQLITE_FULL, SQLITE_FULL, SQLITE_CORRUPT});
    if (Chance(50))
      m_product.vfs.FailAlways(call, code);
    else
      m_product.vfs.FailOnce(call, Between(1, 40), code);
  }

  void Command() {
    switch (Between(0, 9)) {
      case 0:
        m_product.ClearDataBase();
        break;
      case 1:
        m_product.DeleteOperationLogDB();
        break;
      case 2:
        m_product.DeleteFromAllTables();
        break;
      case 3:
      case 4:
        m_product.Set(DrawSettings());
        break;
      default:
        m_product.SwitchOperationLog(Chance(70));
        break;
    }
  }

  std::mt19937_64 m_random;
  Proof& m_proof;
  SimulatedProduct m_product;
  int m_sessions = 0;
  std::int64_t m_faults = 0;
};

void Add(Ledger::Totals& sum, const Ledger::Totals& round) {
  for (std::size_t i = 0; i < Collection::kChannels.size(); ++i) {
    sum.recorded[i] += round.recorded[i];
    sum.delivered[i] += round.delivered[i];
    sum.stored[i] += round.stored[i];
    sum.waiting[i] += round.waiting[i];
  }
  sum.duplicates += round.duplicates;
  for (const auto& [rule, records] : round.discarded) sum.discarded[rule] += records;
}

std::string Figures(const Ledger::Totals& sum, int rounds, std::int64_t faults) {
  const auto all = [](const std::int64_t(&figures)[3]) {
    return std::to_string(figures[0]) + "/" + std::to_string(figures[1]) + "/" + std::to_string(figures[2]);
  };
  std::ostringstream text;
  text << rounds * kDays << " days, recorded " << all(sum.recorded)
       << " (maintenance/operation/UBA), delivered " << all(sum.delivered) << ", stored " << all(sum.stored)
       << ", queued " << all(sum.waiting) << ", discarded";
  for (const auto& [rule, records] : sum.discarded) text << " " << records << " (" << rule << ")";
  text << ", " << sum.duplicates << " delivered again, " << faults << " faults";
  return text.str();
}

}  // namespace
}  // namespace Drive::Testing

int main(int argc, char** argv) {
  using namespace Drive::Testing;
  Proof proof("prove_conservation", argc, argv);
  const TempFolder keys;
  Ledger::Totals sum;
  std::int64_t faults = 0;
  int rounds = 0;
  while (proof.HasTime()) {
    const std::uint64_t seed = proof.NextRound();
    try {
      Simulation simulation(proof, seed, keys.Path());
      Add(sum, simulation.Run());
      faults += simulation.Faults();
    } catch (const std::exception& error) {
      proof.Check(false, error.what());
    }
    ++rounds;
  }
  return proof.Finish(Figures(sum, rounds, faults));
}
