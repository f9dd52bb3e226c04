// ProductSetup.h - what a product does before and around its logging.
#pragma once

#include <memory>
#include <string>

#include "client/common/IPCDriveClient.h"
#include "examples/sync_folder/Options.h"

namespace SyncFolder {

// Records of one operation or UBA request.
inline constexpr int kReportBatch = 100;
// Records that one tick of the library's save timer moves from its queue into the database.
inline constexpr int kSaveBatch = 100;

// The product around the library: writes the settings files that the library reads, hands over identity and
// settings, and answers as the client's main process while it lives.
//
// Thread-safety: for the main thread.
class Product {
 public:
  explicit Product(const Options& options);

  // False, after a message, when the library cannot work.
  bool IsReady() const { return m_isReady; }

  // Starts storing and uploading. What was recorded before is stored at once.
  void Start();

  // Ends the hold-back of partial operation and UBA batches: stopping saves what the queue still holds (one
  // save batch at most), and the first tick after a start sends whatever is stored.
  void SendPartialBatches();

  // Stores the BI records that wait in the queue, without waiting for the worker's next minute.
  void StoreQueuedBiRecords();

  // Stops the uploads. Records that are still queued stay with the library.
  void Stop();

 private:
  bool WriteSettingsFiles(const Options& options);
  bool SetUpLibrary(const Options& options);

  Drive::IPC::IPCDriveServer m_mainProcess;
  bool m_isReady;
};

}  // namespace SyncFolder
