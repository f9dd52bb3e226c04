// ExamplesDeliveryTest.cpp - what the example client counts as stored, delivered and left.
#include <gtest/gtest.h>

#include <string>

#include "drivelog/BiDataBase.h"
#include "examples/sync_folder/DeliveryObserver.h"
#include "tests/support/RecordingStorage.h"

namespace SyncFolder {
namespace {

using Drive::Bilog::BiDataBase;
using Drive::Bilog::UserLog;

std::vector<UserLog> Batch(std::size_t size, int maintenance) {
  UserLog record;
  record.set_IsMaintenanceLog(maintenance);
  return std::vector<UserLog>(size, record);
}

std::string Text(const ChannelCounts& counts) {
  return std::to_string(counts.maintenance) + "/" + std::to_string(counts.operation) + "/" +
         std::to_string(counts.uba);
}

TEST(DeliveryObserverTest, CountsByChannelAndForwards) {
  const Drive::Testing::RecordingStorage storage;
  const DeliveryObserver observer;
  BiDataBase& database = BiDataBase::GetInstance();

  // Two channels share a table, so the range of one holds rows of the other.
  for (const int maintenance : {1, 0, 1, 0}) {
    std::vector<UserLog> batch = Batch(2, maintenance);
    database.executeInsertUserLogBatchCallback(batch, false);
  }
  std::vector<UserLog> batch = Batch(3, 0);
  database.executeInsertUserLogBatchCallback(batch, true);
  EXPECT_EQ(Text(observer.Stored()), "4/4/3");

  const std::vector<UserLog> sent = database.executeGetUserLogListCallback(3, 1, false);
  ASSERT_EQ(sent.size(), 3U);
  // A batch may be accepted part by part.
  database.executeDeleteUserLogWithIdCallback(sent[0].get_Id(), sent[1].get_Id(), 1, false);
  EXPECT_EQ(Text(observer.Delivered()), "2/0/0");
  database.executeDeleteUserLogWithIdCallback(sent[2].get_Id(), sent[2].get_Id(), 1, false);
  EXPECT_EQ(Text(observer.Delivered()), "3/0/0");
  EXPECT_EQ(Text(observer.Left(10)), "1/4/3");
  EXPECT_EQ(Text(observer.Left(2)), "1/2/2");
}

}  // namespace
}  // namespace SyncFolder
