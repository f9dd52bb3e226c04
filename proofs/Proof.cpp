// Proof.cpp - what the proof programs share: how long they run, from which seed, and what they found.
#include "proofs/Proof.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <utility>

namespace Drive::Testing {

Proof::Proof(std::string name, int argc, char** argv) : m_name(std::move(name)) {
  CLI::App app(m_name);
  int seconds = 5;
  app.add_option("--seconds", seconds, "how long new rounds begin")->check(CLI::NonNegativeNumber);
  app.add_option("--seed", m_seed, "the first round's seed");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::exit(app.exit(error));
  }
  m_time = std::chrono::seconds(seconds);
}

bool Proof::HasTime() const { return m_rounds == 0 || Clock::now() - m_began < m_time; }

std::uint64_t Proof::NextRound() { return m_seed + m_rounds++; }

void Proof::Check(bool holds, const std::string& what) {
  if (holds) {
    return;
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  ++m_findings;
  std::cerr << m_name << ": seed " << m_seed + m_rounds - 1 << ": " << what << std::endl;
}

int Proof::Finish(const std::string& figures) const {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_began);
  std::cout << m_name << ": " << figures << "; " << m_rounds << " rounds in " << seconds.count() << " s, "
            << m_findings << " findings" << std::endl;
  return m_findings == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace Drive::Testing
