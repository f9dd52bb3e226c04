// DeliveryObserver.h - counts what the library stores and delivers.
#pragma once

#include <cstddef>
#include <memory>

namespace SyncFolder {

// One number for each upload channel.
struct ChannelCounts {
  std::size_t maintenance = 0;
  std::size_t operation = 0;
  std::size_t uba = 0;
};

// Stands between the library and its storage: every call is counted and forwarded.
//
// Made once, after BILogger::InitDataBase has registered the storage and before anything is started.
// Surprises: "delivered" is what the library deletes after an upload, rows of an earlier run included.
// Thread-safety: every operation may be called from any thread.
// Ownership: the registered functions share what they count with; the library's threads may call them until
//            the process is gone.
class DeliveryObserver {
 public:
  DeliveryObserver();

  ChannelCounts Stored() const;
  ChannelCounts Delivered() const;

  // Rows of each channel in the database, at most `limit` of each: reading them is the only way to count.
  ChannelCounts Left(std::size_t limit) const;

 private:
  struct Shared;
  std::shared_ptr<Shared> m_shared;
};

}  // namespace SyncFolder
