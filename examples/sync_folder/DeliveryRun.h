// DeliveryRun.h - the end of a run: waits until everything that was recorded has been delivered.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "examples/sync_folder/DeliveryObserver.h"
#include "examples/sync_folder/EventRecorder.h"
#include "examples/sync_folder/ProductSetup.h"

namespace SyncFolder {

// Prints the counts of the three channels (maintenance/operation/UBA) whenever they have changed, at most
// once a second.
class ProgressLine {
 public:
  void Show(const EventRecorder& recorder, const DeliveryObserver& observer);

 private:
  std::chrono::steady_clock::time_point m_lastShown{};
  std::string m_lastText;
};

// Waits until everything is stored and delivered, `deadline` has passed, or `interrupted` says so; shows the
// progress meanwhile, and ends the hold-back of partial batches when only such are left. True when nothing is
// left.
bool WaitUntilDelivered(Product& product, const EventRecorder& recorder, const DeliveryObserver& observer,
                        ProgressLine& progress, std::chrono::seconds deadline,
                        const std::function<bool()>& interrupted);

// Waits until the worker has stored every BI record, or `deadline` has passed. Those that are queued at the
// end of the process are lost, unlike operation records.
bool WaitUntilBiIsStored(const EventRecorder& recorder, const DeliveryObserver& observer,
                         std::chrono::seconds deadline);

}  // namespace SyncFolder
