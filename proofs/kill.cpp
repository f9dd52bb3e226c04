// kill.cpp - proves that a product may be killed at any moment: nothing stored is lost, and nothing comes
// twice but a batch that was on its way.
//
// A round kills ten products that use the same file one after the other, and lets an eleventh deliver the
// rest.
#include <random>
#include <thread>

#include "proofs/RecordingChildren.h"

int main(int argc, char** argv) {
  using namespace Drive::Testing;
  constexpr int kKills = 10;

  Proof proof("prove_kill", argc, argv);
  RecordingChildren children(proof);
  while (proof.HasTime()) {
    std::mt19937_64 random(proof.NextRound());
    children.BeginRound();
    for (int i = 0; i < kKills; ++i) {
      const auto child = children.Start(RecordingChildren::Mode::kRecord);
      if (random() % 4 != 0) children.AwaitWork();
      std::uniform_int_distribution<int> life(0, 150'000);
      std::this_thread::sleep_for(std::chrono::microseconds(life(random)));
      children.Kill(*child);
      children.Check();
    }
    children.Await(*children.Start(RecordingChildren::Mode::kDeliver));
    children.EndRound(kKills + 1);
    proof.Check(children.RepeatsWhatWasOnItsWay(), "more was repeated than was on its way");
  }
  return children.Finish();
}
