// Proof.h - what the proof programs share: how long they run, from which seed, and what they found.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace Drive::Testing {

// One run of a proof. Its program works in rounds, each from a seed of its own, so that the round of a
// finding can be repeated: `--seed` says the first round's seed, and the next round has the next number.
//
// Thread-safety: Check may be called from any thread, the rest from the main one.
class Proof {
 public:
  // Reads `--seconds N` (default 5) and `--seed N` (default 1); ends the program on other arguments.
  Proof(std::string name, int argc, char** argv);

  // Whether another round may begin: the first one always does.
  bool HasTime() const;

  // Begins a round and returns its seed.
  std::uint64_t NextRound();

  // Reports a promise that does not hold, with the seed of the round.
  void Check(bool holds, const std::string& what);

  // Prints the last line, "NAME: FIGURES; N rounds in T s, N findings", and returns the program's status.
  int Finish(const std::string& figures) const;

 private:
  using Clock = std::chrono::steady_clock;

  std::string m_name;
  std::chrono::seconds m_time{5};
  std::uint64_t m_seed = 1;
  std::uint64_t m_rounds = 0;
  Clock::time_point m_began = Clock::now();

  std::mutex m_mutex;  // guards m_findings and the output
  std::uint64_t m_findings = 0;
};

}  // namespace Drive::Testing
