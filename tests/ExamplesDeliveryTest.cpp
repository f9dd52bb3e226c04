// ExamplesDeliveryTest.cpp - what the example client counts as stored, delivered and left.
#include <gtest/gtest.h>

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

TEST(DeliveryObserverTest, CountsByChannelAndForwards) {
  const Drive::Testing::RecordingStorage storage;
  const DeliveryObserver observer;
  BiDataBase& database = BiDataBase::GetInstance();

  // Two channels share a table, so the range of one holds rows of the other.
  for (int round = 0; round < 2; ++round) {
    for (const int maintenance : {1, 0}) {
      std::vector<UserLog> batch = Batch(2, maintenance);
      database.executeInsertUserLogBatchCallback(batch, false);
    }
  }
  std::vector<UserLog> batch = Batch(3, 0);
  database.executeInsertUserLogBatchCallback(batch, true);
  EXPECT_EQ(observer.Stored().maintenance, 4U);
  EXPECT_EQ(observer.Stored().operation, 4U);
  EXPECT_EQ(observer.Stored().uba, 3U);

  const std::vector<UserLog> sent = database.executeGetUserLogListCallback(3, 1, false);
  ASSERT_EQ(sent.size(), 3U);
  database.executeDeleteUserLogWithIdCallback(sent.front().get_Id(), sent.back().get_Id(), 1, false);
  EXPECT_EQ(observer.Delivered().maintenance, 3U);
  EXPECT_EQ(observer.Delivered().operation, 0U);

  const ChannelCounts left = observer.Left(10);
  EXPECT_EQ(left.maintenance, 1U);
  EXPECT_EQ(left.operation, 4U);
  EXPECT_EQ(left.uba, 3U);
  EXPECT_EQ(observer.Left(1).operation, 1U);
}

TEST(DeliveryObserverTest, CountsTheAcceptedPartOfABatch) {
  const Drive::Testing::RecordingStorage storage;
  const DeliveryObserver observer;
  BiDataBase& database = BiDataBase::GetInstance();
  std::vector<UserLog> batch = Batch(4, 0);
  database.executeInsertUserLogBatchCallback(batch, true);

  const std::vector<UserLog> sent = database.executeGetUserLogListCallback(100, 0, true);
  database.executeDeleteUserLogWithIdCallback(sent[0].get_Id(), sent[1].get_Id(), 0, true);
  EXPECT_EQ(observer.Delivered().uba, 2U);
  database.executeDeleteUserLogWithIdCallback(sent[2].get_Id(), sent[3].get_Id(), 0, true);
  EXPECT_EQ(observer.Delivered().uba, 4U);
  EXPECT_EQ(observer.Left(10).uba, 0U);
}

}  // namespace
}  // namespace SyncFolder
