// processes.cpp - proves that several products may use one database file at once: nothing stored is lost, and
// a record is delivered again only by another product that had read it before it was deleted.
//
// A round kills four products that record and deliver, all at once, and lets four others deliver the rest.
#include <sqlite3.h>

#include <thread>

#include "proofs/RecordingChildren.h"

int main(int argc, char** argv) {
  using namespace Drive::Testing;
  using Mode = RecordingChildren::Mode;
  constexpr int kProcesses = 4;

  Proof proof("prove_processes", argc, argv);
  RecordingChildren children(proof);
  const auto startAll = [&children](Mode mode) {
    std::vector<std::unique_ptr<ChildProcess>> all;
    for (int i = 0; i < kProcesses; ++i) all.push_back(children.Start(mode));
    return all;
  };
  while (proof.HasTime()) {
    proof.NextRound();
    children.BeginRound();
    const auto killed = startAll(Mode::kRecord);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    for (const auto& child : killed) children.Kill(*child);
    children.Check();
    for (const auto& child : startAll(Mode::kDeliver)) children.Await(*child);
    children.EndRound(2 * kProcesses);  // who has delivered a record deletes it before reading again
  }
  return children.Finish(std::string(", SQLite ") + sqlite3_libversion());
}
