// DeliveryRun.cpp - progress, and the decision when only partial batches are left.
#include "examples/sync_folder/DeliveryRun.h"

#include <cstdio>
#include <string>
#include <thread>

namespace SyncFolder {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookAgain{200};
// A partial batch goes out with the first tick after a restart, one second later. One that the collector
// refuses is tried again with every tick, so a second restart is seldom of use.
constexpr std::chrono::seconds kBetweenRestarts{10};

std::string Describe(const ChannelCounts& counts) {
  return std::to_string(counts.maintenance) + "/" + std::to_string(counts.operation) + "/" +
         std::to_string(counts.uba);
}

// Whether the counts hold everything that was recorded. An empty database does not say so: records that it
// could not take wait in the library's memory.
bool Holds(const ChannelCounts& counts, const RecordedCounts& recorded) {
  return counts.maintenance >= recorded.maintenance && counts.operation >= recorded.operation &&
         counts.uba >= recorded.operation;
}

// Whether what is still queued and what is stored fit into one batch of each channel, so that no timer would
// send them before the hold-back ends.
bool OnlyPartialBatchesAreLeft(const RecordedCounts& recorded, const DeliveryObserver& observer) {
  constexpr std::size_t kBatch = kReportBatch < kSaveBatch ? kReportBatch : kSaveBatch;
  const std::size_t stored = observer.Stored().operation;
  const std::size_t queued = recorded.operation > stored ? recorded.operation - stored : 0;
  const ChannelCounts left = observer.Left(kBatch + 1);
  return queued + left.operation + left.uba > 0 && queued + left.operation <= kBatch &&
         queued + left.uba <= kBatch;
}

}  // namespace

void ProgressLine::Show(const EventRecorder& recorder, const DeliveryObserver& observer) {
  const auto now = SteadyClock::now();
  if (now - m_lastShown < std::chrono::seconds(1)) {
    return;
  }
  const RecordedCounts& recorded = recorder.Recorded();
  const ChannelCounts queued{recorded.maintenance, recorded.operation, recorded.operation};
  const std::string text = "  found " + std::to_string(recorder.FoundCount()) + "; queued " +
                           Describe(queued) + ", stored " + Describe(observer.Stored()) + ", delivered " +
                           Describe(observer.Delivered());
  if (text != m_lastText) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
    m_lastShown = now;
    m_lastText = text;
  }
}

bool WaitUntilDelivered(Product& product, const EventRecorder& recorder, const DeliveryObserver& observer,
                        ProgressLine& progress, std::chrono::seconds deadline,
                        const std::function<bool()>& interrupted) {
  const auto end = SteadyClock::now() + deadline;
  auto restartFrom = SteadyClock::now();
  while (SteadyClock::now() < end && !interrupted()) {
    progress.Show(recorder, observer);
    const ChannelCounts left = observer.Left(1);
    if (Holds(observer.Delivered(), recorder.Recorded()) &&
        left.maintenance + left.operation + left.uba == 0) {
      return true;
    }
    if (SteadyClock::now() >= restartFrom && OnlyPartialBatchesAreLeft(recorder.Recorded(), observer)) {
      product.SendPartialBatches();
      restartFrom = SteadyClock::now() + kBetweenRestarts;
    }
    std::this_thread::sleep_for(kLookAgain);
  }
  return false;
}

bool WaitUntilBiIsStored(const EventRecorder& recorder, const DeliveryObserver& observer,
                         std::chrono::seconds deadline) {
  const auto end = SteadyClock::now() + deadline;
  while (observer.Stored().maintenance < recorder.Recorded().maintenance) {
    if (SteadyClock::now() >= end) {
      return false;
    }
    std::this_thread::sleep_for(kLookAgain);
  }
  return true;
}

}  // namespace SyncFolder
