// DeliveryObserver.cpp - observing functions in the library's storage registry.
#include "examples/sync_folder/DeliveryObserver.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "drivelog/BiDataBase.h"

namespace SyncFolder {

using Drive::Bilog::BiDataBase;
using Drive::Bilog::UserLog;

struct DeliveryObserver::Shared {
  BiDataBase storage = BiDataBase::GetInstance();  // the functions that were registered before

  mutable std::mutex mutex;  // guards what follows
  ChannelCounts stored;
  ChannelCounts delivered;
  std::vector<int> lastRead[3];  // identifiers that a channel's timer read last, to count a range of them
};

namespace {

std::size_t ChannelIndex(int maintenance, bool uba) { return uba ? 2U : (maintenance == 1 ? 0U : 1U); }

std::size_t& CountOf(ChannelCounts& counts, std::size_t channel) {
  return channel == 0 ? counts.maintenance : (channel == 1 ? counts.operation : counts.uba);
}

}  // namespace

DeliveryObserver::DeliveryObserver() : m_shared(std::make_shared<Shared>()) {
  BiDataBase& registry = BiDataBase::GetInstance();
  const std::shared_ptr<Shared> shared = m_shared;

  registry.setInsertUserLogBatchCallbackFunc([shared](std::vector<UserLog>& batch, bool uba) {
    ChannelCounts inBatch;
    for (const UserLog& record : batch) {
      ++CountOf(inBatch, ChannelIndex(record.get_IsMaintenanceLog(), uba));
    }
    shared->storage.executeInsertUserLogBatchCallback(batch, uba);
    const std::lock_guard<std::mutex> lock(shared->mutex);
    shared->stored.maintenance += inBatch.maintenance;
    shared->stored.operation += inBatch.operation;
    shared->stored.uba += inBatch.uba;
  });

  registry.setGetUserLogListCallbackFunc([shared](int count, int maintenance, bool uba) {
    std::vector<UserLog> records = shared->storage.executeGetUserLogListCallback(count, maintenance, uba);
    const std::lock_guard<std::mutex> lock(shared->mutex);
    std::vector<int>& lastRead = shared->lastRead[ChannelIndex(maintenance, uba)];
    lastRead.clear();
    for (const UserLog& record : records) {
      lastRead.push_back(record.get_Id());
    }
    return records;
  });

  registry.setDeleteUserLogWithIdCallbackFunc([shared](int firstId, int lastId, int maintenance, bool uba) {
    shared->storage.executeDeleteUserLogWithIdCallback(firstId, lastId, maintenance, uba);
    const std::lock_guard<std::mutex> lock(shared->mutex);
    const std::size_t channel = ChannelIndex(maintenance, uba);
    const std::vector<int>& lastRead = shared->lastRead[channel];
    CountOf(shared->delivered, channel) += static_cast<std::size_t>(std::count_if(
        lastRead.begin(), lastRead.end(), [&](int id) { return firstId <= id && id <= lastId; }));
  });
}

ChannelCounts DeliveryObserver::Stored() const {
  const std::lock_guard<std::mutex> lock(m_shared->mutex);
  return m_shared->stored;
}

ChannelCounts DeliveryObserver::Delivered() const {
  const std::lock_guard<std::mutex> lock(m_shared->mutex);
  return m_shared->delivered;
}

ChannelCounts DeliveryObserver::Left(std::size_t limit) const {
  const int count = static_cast<int>(limit);
  BiDataBase& storage = m_shared->storage;
  return {storage.executeGetUserLogListCallback(count, 1, false).size(),
          storage.executeGetUserLogListCallback(count, 0, false).size(),
          storage.executeGetUserLogListCallback(count, 0, true).size()};
}

}  // namespace SyncFolder
