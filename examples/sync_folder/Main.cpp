// Main.cpp - sync_folder: a small drive client that logs the files of a real folder.
//
//   walk the folder, record ──► start storing and uploading ──► [follow the folder] ──► wait for delivery
//
// Exit code: 0 everything was delivered, 1 something was not, 2 the command line makes no sense.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <thread>

#include "examples/sync_folder/DeliveryObserver.h"
#include "examples/sync_folder/DeliveryRun.h"
#include "examples/sync_folder/EventRecorder.h"
#include "examples/sync_folder/FolderWalk.h"
#include "examples/sync_folder/FolderWatch.h"
#include "examples/sync_folder/Options.h"
#include "examples/sync_folder/PathText.h"
#include "examples/sync_folder/ProductSetup.h"

namespace SyncFolder {

namespace {

namespace fs = std::filesystem;

constexpr int kDelivered = 0;
constexpr int kNotDelivered = 1;
constexpr int kUsage = 2;
// The worker stores within a moment; a slow machine may take longer.
constexpr std::chrono::seconds kStoreDeadline{15};

// A bound for trees without end, such as a mounted archive.
constexpr std::size_t kMaxFound = 1000000;

volatile std::sig_atomic_t g_interruptions = 0;

extern "C" void CountInterruption(int) { g_interruptions = g_interruptions + 1; }

bool IsInterrupted() { return g_interruptions > 0; }

void RecordWalk(const Options& options, EventRecorder& recorder) {
  const auto begin = std::chrono::steady_clock::now();
  recorder.WalkBegins();
  WalkFolder(options.folder, [&](const FoundEntry& entry) {
    recorder.Found(entry);
    return recorder.FoundCount() < kMaxFound && !IsInterrupted();
  });
  const auto duration =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
  recorder.WalkEnds(duration);

  const RecordedCounts& recorded = recorder.Recorded();
  const std::string folder = NarrowText(options.folder);
  if (recorder.FoundCount() == 0) {
    std::printf("%s is empty\n", folder.c_str());
  }
  std::printf("walked %s: %zu found, %zu unreadable, in %lld ms\n", folder.c_str(), recorder.FoundCount(),
              recorder.UnreadableCount(), static_cast<long long>(duration.count()));
  if (recorder.FoundCount() >= kMaxFound) {
    std::printf("stopped after %zu; what lies beyond was not looked at\n", kMaxFound);
  }
  std::printf(
      "gave %zu files to the list form, which records groups of ten: %zu fill no group and are dropped\n",
      recorded.listed, recorded.dropped);
}

void FollowFolder(const Options& options, EventRecorder& recorder, const DeliveryObserver& observer,
                  ProgressLine& progress) {
  std::printf("following %s; interrupt to end\n", NarrowText(options.folder).c_str());
  Snapshot before = TakeSnapshot(options.folder);
  while (!IsInterrupted()) {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    Snapshot after = TakeSnapshot(options.folder);
    recorder.Changed(Compare(before, after));
    before = std::move(after);
    progress.Show(recorder, observer);
  }
}

void PrintResult(const RecordedCounts& recorded, const ChannelCounts& delivered, const ChannelCounts& left) {
  std::printf("recorded: maintenance=%zu operation=%zu uba=%zu\n", recorded.maintenance, recorded.operation,
              recorded.operation);
  std::printf("delivered: maintenance=%zu operation=%zu uba=%zu; left in database: %zu\n",
              delivered.maintenance, delivered.operation, delivered.uba,
              left.maintenance + left.operation + left.uba);
}

int Run(const Options& options) {
  std::error_code error;
  if (!fs::is_directory(options.folder, error)) {
    std::fprintf(stderr, "%s is not a folder%s%s\n", NarrowText(options.folder).c_str(), error ? ": " : "",
                 error ? error.message().c_str() : "");
    return kUsage;
  }
  std::signal(SIGINT, CountInterruption);
  std::signal(SIGTERM, CountInterruption);

  Product product(options);
  if (!product.IsReady()) {
    return kNotDelivered;
  }
  const DeliveryObserver observer;
  EventRecorder recorder(options.folder, options.limit);
  ProgressLine progress;

  // Recorded before the start: the worker stores what is queued when it starts, and then once a minute.
  RecordWalk(options, recorder);
  product.Start();
  if (options.watch) {
    FollowFolder(options, recorder, observer, progress);
    product.StoreQueuedBiRecords();
  }
  // The interruption that ended the following does not end the delivery; another one does.
  const int seen = options.watch ? g_interruptions : 0;
  const bool delivered = WaitUntilDelivered(product, recorder, observer, progress, options.deadline,
                                            [seen] { return g_interruptions > seen; });
  if (!delivered) {
    const bool stored = WaitUntilBiIsStored(recorder, observer, kStoreDeadline);
    std::fprintf(stderr, "not everything was delivered; %s\n",
                 stored ? "it is stored and waits for the next run"
                        : "what is stored waits for the next run, and BI records were lost");
  }
  product.Stop();
  constexpr std::size_t kAll = 1000000000;
  PrintResult(recorder.Recorded(), observer.Delivered(), observer.Left(kAll));
  return delivered ? kDelivered : kNotDelivered;
}

}  // namespace

}  // namespace SyncFolder

int main(int argc, char** argv) {
  try {
    const SyncFolder::ParsedOptions parsed = SyncFolder::ParseOptions(argc, argv);
    return parsed.options ? SyncFolder::Run(*parsed.options) : parsed.exitCode;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sync_folder: %s\n", error.what());
    return 1;
  }
}
