// LogDbFileTest.cpp - start-up of the log database, the registry, and the exported row type.
#include <fstream>
#include <stdexcept>

#include "drivelog/BiDataBase.h"
#include "drivelog/SqlLiteEntity.h"
#include "drivelog/TalvikSyncFileException.h"
#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

class LogDbFileTest : public LogDbTest {
 protected:
  void SetUp() override { m_registry = Bilog::BiDataBase(); }

  // Starts the database; its result, and the messages with their levels.
  Texts Init() {
    m_log.Clear();
    Texts texts{Database().InitDataBase(L"Log.db") ? "true" : "false"};
    for (const LogMessage& message : m_log.All()) {
      texts.push_back(std::to_string(message.level) + " " + message.text);
    }
    return texts;
  }

  Bilog::BiDataBase& m_registry = Bilog::BiDataBase::GetInstance();
};

TEST_F(LogDbFileTest, CreatesFoldersFileAndTables) {
  EXPECT_EQ((Texts{"true", "2 " + Path(), "2 filesize =4096", "2 BI Call Back Database Success"}), Init());
  for (const std::string table : {"T_UserLog", "T_UBAUserLog"}) {
    EXPECT_EQ("CREATE TABLE " + table +
                  " (Id   INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,Time       VARCHAR,Action    VARCHAR,"
                  "UserId    VARCHAR,DevId      VARCHAR,Code  VARCHAR,Info  VARCHAR,Extend  VARCHAR,"
                  "TraceId  VARCHAR,UseTime    DOUBLE,StartTime   DOUBLE,Model  VARCHAR,Romversion  VARCHAR,"
                  "Appversion  VARCHAR,Reqsize  VARCHAR,Rspsize  VARCHAR,Logversion  INTEGER,TraceEndFlag  "
                  "INTEGER,CurModule  VARCHAR,Actiontype  VARCHAR,NextModule  VARCHAR,ResidenceTime    "
                  "DOUBLE,OprType  VARCHAR,IsMaintenanceLog  INTEGER NOT NULL)",
              Run("SELECT sql FROM sqlite_master WHERE name = '" + table + "'"));
  }
  EXPECT_EQ("wal", Run("PRAGMA journal_mode"));
}

TEST_F(LogDbFileTest, StartsAFileAfreshOnlyAboveTheSizeLimit) {
  Init();
  Insert({Record(L"old")});
  std::filesystem::resize_file(Path(), 524288000);  // sparse
  Init();
  EXPECT_EQ("old", Actions());

  std::filesystem::resize_file(Path(), 524288001);
  std::ofstream(Path() + "-wal") << "left over";
  EXPECT_EQ((Texts{"true", "2 " + Path(), "2 filesize =524288001", "2 delete " + Path() + "success",
                   "2 BI Call Back Database Success"}),
            Init());
  EXPECT_EQ("", Actions());
}

// Only without a folder nothing is registered.
TEST_F(LogDbFileTest, RegistersEvenWhenTheFileCannotBeCreated) {
  std::vector<Bilog::UserLog> batch{Record(L"kept")};
  std::ofstream(m_folder.Path() / "file") << "in the way";
  g_dbFullPath = m_folder.Wide("file") + L"/db";
  EXPECT_EQ((Texts{"false", "3 Create database directory failed"}), Init());
  m_registry.executeInsertUserLogBatchCallback(batch, false);

  g_dbFullPath = m_folder.Path().wstring();
  std::filesystem::create_directories(Path());  // a folder where the file should be
  EXPECT_EQ((Texts{"false", "5 Create sync database failed,error code is .14", "2 " + Path(), "2 filesize =0",
                   "5 Init database failed.", "2 BI Call Back Database Success"}),
            Init());
  m_registry.executeInsertUserLogBatchCallback(batch, false);
  std::filesystem::remove(Path());
  m_registry.executeInsertUserLogBatchCallback(batch, false);
  EXPECT_EQ("kept kept", Actions());
  EXPECT_EQ(2U, m_registry.executeGetUserLogListCallback(9, 0, false).size());
  m_registry.executeDeleteUserLogWithIdCallback(2, 2, 0, false);
  EXPECT_EQ("kept", Actions());
  m_registry.executeDeleteAllOperationLogUserLogCallback(false, 0);
  EXPECT_EQ("", Actions());
}

TEST(BiDataBaseTest, AFunctionMayKeepACountThrowAndReplaceItself) {
  const CapturedLog log;
  Bilog::BiDataBase registry;
  const auto marker = std::make_shared<int>(0);
  registry.setGetUserLogListCallbackFunc([&registry, marker, n = 0](int, int, bool) mutable {
    if (++n == 2) registry.setGetUserLogListCallbackFunc(nullptr);
    ++*marker;
    throw std::runtime_error("broken");
    return std::vector<Bilog::UserLog>();
  });
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(registry.executeGetUserLogListCallback(1, 0, false).empty());
  EXPECT_EQ(2, *marker);
  EXPECT_EQ(1, marker.use_count());
  ASSERT_EQ(2U, log.OfLevel(5).size());
  EXPECT_EQ("Drive::Bilog::BiDataBase::executeGetUserLogListCallback", log.All()[0].location);
  EXPECT_EQ("broken", log.All()[0].text);
}

TEST(SqlLiteEntityTest, FindsValuesWhateverTheCaseOfTheirNames) {
  const OtherConnection connection(":memory:");
  sqlite3_stmt* row = nullptr;
  sqlite3_prepare_v2(connection.Handle(), "SELECT 4, 5", -1, &row, nullptr);
  SQLiteDB::StatementHandle statement(row);
  ASSERT_EQ(SQLITE_ROW, sqlite3_step(row));
  SQLiteDB::SqlLiteEntity entity;
  entity.SetValue(L"Name\x00C4", SQLiteDB::LogSqlLiteValue(sqlite3_column_value(row, 0)));
  entity.SetValue(L"name\x00E4", SQLiteDB::LogSqlLiteValue(sqlite3_column_value(row, 1)));  // another letter
  statement.reset();
  EXPECT_EQ(4, sqlite3_value_int(SQLiteDB::SqlLiteEntity(entity).GetValue(L"nAmE\x00C4").Value()));
  EXPECT_THROW(entity.GetValue(L"other"), TalvikSyncFileException);
}

}  // namespace
}  // namespace Drive::Testing
