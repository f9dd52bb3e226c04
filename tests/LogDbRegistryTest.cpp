// LogDbRegistryTest.cpp - the callback registry and the exported row and table types.
#include <sqlite3.h>

#include <stdexcept>

#include "drivelog/BiDataBase.h"
#include "drivelog/DbTable.h"
#include "drivelog/SqlLiteEntity.h"
#include "drivelog/TalvikSyncFileException.h"
#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

using Bilog::BiDataBase;
using Bilog::UserLog;

TEST(BiDataBaseTest, EmptySlotsDropQuietly) {
  CapturedLog log;
  BiDataBase registry;
  std::vector<UserLog> batch(2);
  registry.executeInsertUserLogBatchCallback(batch, true);
  registry.executeDeleteUserLogWithIdCallback(1, 2, 3, true);
  registry.executeDeleteAllOperationLogUserLogCallback(true, 1);
  EXPECT_TRUE(registry.executeGetUserLogListCallback(9, 0, false).empty());
  EXPECT_TRUE(log.All().empty());
}

TEST(BiDataBaseTest, ForwardsToTheLastFunctionAndCopiesSlots) {
  std::string calls;
  BiDataBase registry;
  registry.setInsertUserLogBatchCallbackFunc([&](auto&, bool) { calls += "replaced "; });
  registry.setInsertUserLogBatchCallbackFunc([&](std::vector<UserLog>& batch, bool uba) {
    calls += "insert " + std::to_string(batch.size()) + (uba ? " uba " : " ");
    batch.clear();
  });
  registry.setDeleteUserLogWithIdCallbackFunc([&](int first, int last, int maintenance, bool uba) {
    calls += "delete " + std::to_string(first * 100 + last * 10 + maintenance) + (uba ? " uba " : " ");
  });
  registry.setDeleteAllOperationLogUserLogCallbackFunc([&](bool uba, int maintenance) {
    calls += "all " + std::to_string(maintenance) + (uba ? " uba " : " ");
  });
  registry.setGetUserLogListCallbackFunc([](int count, int maintenance, bool) {
    return std::vector<UserLog>(static_cast<std::size_t>(count * 10 + maintenance));
  });
  BiDataBase copy;
  copy = registry;
  registry = BiDataBase();
  const BiDataBase& alias = copy;
  copy = alias;

  std::vector<UserLog> batch(2);
  copy.executeInsertUserLogBatchCallback(batch, true);
  registry.executeInsertUserLogBatchCallback(batch, true);
  copy.executeDeleteUserLogWithIdCallback(1, 2, 3, false);
  BiDataBase(copy).executeDeleteAllOperationLogUserLogCallback(true, 7);
  EXPECT_EQ("insert 2 uba delete 123 all 7 uba ", calls);
  EXPECT_TRUE(batch.empty());
  EXPECT_EQ(21U, copy.executeGetUserLogListCallback(2, 1, false).size());
}

TEST(BiDataBaseTest, CatchesAndReportsWhatAFunctionThrows) {
  CapturedLog log;
  BiDataBase registry;
  registry.setGetUserLogListCallbackFunc(
      [](int, int, bool) -> std::vector<UserLog> { throw std::runtime_error("broken"); });
  registry.setDeleteAllOperationLogUserLogCallbackFunc([](bool, int) { throw 5; });
  EXPECT_TRUE(registry.executeGetUserLogListCallback(1, 0, false).empty());
  registry.executeDeleteAllOperationLogUserLogCallback(true, 0);
  const std::vector<LogMessage> messages = log.OfLevel(5);
  ASSERT_EQ(2U, messages.size());
  EXPECT_EQ("Drive::Bilog::BiDataBase::executeGetUserLogListCallback", messages[0].location);
  EXPECT_EQ("broken", messages[0].text);
}

// A function that replaces itself must not be destroyed while it runs, nor meet the registry's lock.
TEST(BiDataBaseTest, AFunctionMayReplaceItself) {
  BiDataBase registry;
  const auto marker = std::make_shared<int>(0);
  registry.setDeleteAllOperationLogUserLogCallbackFunc([&registry, marker](bool, int) {
    registry.setDeleteAllOperationLogUserLogCallbackFunc(nullptr);
    ++*marker;
  });
  registry.executeDeleteAllOperationLogUserLogCallback(true, 0);
  registry.executeDeleteAllOperationLogUserLogCallback(true, 0);
  EXPECT_EQ(1, *marker);
  EXPECT_EQ(1, marker.use_count());
}

TEST(SqlLiteEntityTest, FindsValuesWhateverTheCaseOfTheirNames) {
  sqlite3* connection = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &connection));
  sqlite3_stmt* row = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_prepare_v2(connection, "SELECT 'text', 5", -1, &row, nullptr));
  ASSERT_EQ(SQLITE_ROW, sqlite3_step(row));
  SQLiteDB::SqlLiteEntity entity;
  {
    const SQLiteDB::LogSqlLiteValue first(sqlite3_column_value(row, 0));
    const SQLiteDB::LogSqlLiteValue second(sqlite3_column_value(row, 1));
    entity.SetValue(L"NAME\x00C4", second);
    entity.SetValue(L"Name\x00C4", first);
    entity.SetValue(L"name\x00E4", second);  // another letter, not another case of it
  }
  sqlite3_finalize(row);
  sqlite3_close(connection);

  SQLiteDB::SqlLiteEntity copy(entity);
  entity = SQLiteDB::SqlLiteEntity();
  const SQLiteDB::LogSqlLiteValue found = copy.GetValue(L"nAmE\x00C4");
  EXPECT_EQ(SQLITE_TEXT, found.Type());
  EXPECT_STREQ("text", reinterpret_cast<const char*>(sqlite3_value_text(found.Value())));
  EXPECT_EQ(5, sqlite3_value_int(copy.GetValue(L"NAME\x00E4").Value()));
  copy.SetValue(L"empty", SQLiteDB::LogSqlLiteValue());
  EXPECT_EQ(SQLITE_NULL, copy.GetValue(L"Empty").Type());
  try {
    copy.GetValue(L"other");
    FAIL() << "must throw";
  } catch (const TalvikSyncFileException& error) {
    EXPECT_STREQ("The value of the field cannot be found!", error.what());
  }
}

TEST(DbTableTest, NumbersColumnsInTheOrderOfTheirAddition) {
  Common::Model::DbTable table;
  Common::Model::DbColumn column;
  for (int i = 0; i < 3; ++i) {
    table.addColumn(column);
    EXPECT_EQ(i, column.ordinal);
  }
  EXPECT_EQ(0, table.columns.front().ordinal);
  EXPECT_EQ(2, table.columns.back().ordinal);
}

}  // namespace
}  // namespace Drive::Testing
