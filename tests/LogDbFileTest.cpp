// LogDbFileTest.cpp - start-up of the log database: folder, file, size limit, tables, registration.
#include <filesystem>
#include <fstream>

#include "drivelog/BiDataBase.h"
#include "tests/LogDbFixture.h"

namespace Drive::Testing {
namespace {

constexpr std::uintmax_t kMaxFileBytes = 524288000;

class LogDbFileTest : public LogDbTest {
 protected:
  std::vector<std::string> InitMessages() const {
    std::vector<std::string> texts;
    for (const LogMessage& message : m_log.All()) {
      if (message.location == "Drive::SQLiteDB::LogSQLiteDB::InitDataBase") {
        texts.push_back(std::to_string(message.level) + " " + message.text);
      }
    }
    return texts;
  }
};

TEST_F(LogDbFileTest, CreatesFoldersFileAndTables) {
  g_dbFullPath = m_folder.Wide("db") + L"/deeper";
  const std::string path = m_folder.Narrow("db") + "/deeper/Log.db";
  g_logDbFullPathWithName = path;

  ASSERT_TRUE(Database().InitDataBase(L"Log.db"));

  OtherConnection file(path);
  const std::string columns =
      " (Id   INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,Time       VARCHAR,Action    VARCHAR,UserId    "
      "VARCHAR,"
      "DevId      VARCHAR,Code  VARCHAR,Info  VARCHAR,Extend  VARCHAR,TraceId  VARCHAR,UseTime    DOUBLE,"
      "StartTime   DOUBLE,Model  VARCHAR,Romversion  VARCHAR,Appversion  VARCHAR,Reqsize  VARCHAR,Rspsize  "
      "VARCHAR,Logversion  INTEGER,TraceEndFlag  INTEGER,CurModule  VARCHAR,Actiontype  VARCHAR,NextModule  "
      "VARCHAR,ResidenceTime    DOUBLE,OprType  VARCHAR,IsMaintenanceLog  INTEGER NOT NULL)";
  EXPECT_EQ("CREATE TABLE T_UserLog" + columns,
            file.Text("SELECT sql FROM sqlite_master WHERE name = 'T_UserLog'"));
  EXPECT_EQ("CREATE TABLE T_UBAUserLog" + columns,
            file.Text("SELECT sql FROM sqlite_master WHERE name = 'T_UBAUserLog'"));
  EXPECT_EQ("wal", file.Text("PRAGMA journal_mode"));
  EXPECT_EQ((std::vector<std::string>{"2 " + path, "2 filesize =4096", "2 BI Call Back Database Success"}),
            InitMessages());
}

TEST_F(LogDbFileTest, KeepsWhatAFileHolds) {
  Init();
  Insert({Record(L"old")});
  Init();
  EXPECT_EQ("old", Actions());
}

TEST_F(LogDbFileTest, StartsAFileAfreshOnlyAboveTheSizeLimit) {
  Init();
  Insert({Record(L"old")});
  std::filesystem::resize_file(Path(), kMaxFileBytes);  // sparse
  EXPECT_TRUE(Database().InitDataBase(L"Log.db"));
  EXPECT_EQ("old", Actions());

  std::filesystem::resize_file(Path(), kMaxFileBytes + 1);
  std::ofstream(Path() + "-wal") << "left over";
  m_log.Clear();
  EXPECT_TRUE(Database().InitDataBase(L"Log.db"));
  EXPECT_EQ("(null)", Actions());
  EXPECT_EQ("wal", Query("PRAGMA journal_mode"));
  EXPECT_EQ((std::vector<std::string>{"2 " + Path(), "2 filesize =524288001",
                                      "2 delete " + Path() + "success", "2 BI Call Back Database Success"}),
            InitMessages());
}

TEST_F(LogDbFileTest, RegistersNothingWithoutAFolder) {
  Bilog::BiDataBase::GetInstance() = Bilog::BiDataBase();
  std::ofstream(m_folder.Path() / "file") << "in the way";
  g_dbFullPath = m_folder.Wide("file") + L"/db";

  EXPECT_FALSE(Database().InitDataBase(L"Log.db"));

  EXPECT_EQ(std::vector<std::string>{"3 Create database directory failed"}, InitMessages());
  std::vector<Bilog::UserLog> batch{Record(L"lost")};
  m_log.Clear();
  Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, false);
  EXPECT_TRUE(m_log.All().empty());
}

TEST_F(LogDbFileTest, RegistersEvenWhenTheFileCannotBeCreated) {
  std::filesystem::create_directories(Path());  // a folder where the file should be
  g_logDbFullPathWithName = Path();
  EXPECT_FALSE(Database().InitDataBase(L"Other.db"));
  EXPECT_EQ(1U, m_log.Count("Create sync database failed,error code is .14"));
  EXPECT_EQ(1U, m_log.Count("Init database failed."));
  EXPECT_EQ(1U, m_log.Count("BI Call Back Database Success"));

  std::vector<Bilog::UserLog> batch{Record(L"kept")};
  Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, false);
  std::filesystem::remove(Path());
  Bilog::BiDataBase::GetInstance().executeInsertUserLogBatchCallback(batch, false);
  EXPECT_EQ("kept kept", Actions());
  EXPECT_EQ(2U, Bilog::BiDataBase::GetInstance().executeGetUserLogListCallback(9, 0, false).size());
  Bilog::BiDataBase::GetInstance().executeDeleteUserLogWithIdCallback(2, 2, 0, false);
  EXPECT_EQ("kept", Actions());
  Bilog::BiDataBase::GetInstance().executeDeleteAllOperationLogUserLogCallback(false, 0);
  EXPECT_EQ("(null)", Actions());
}

}  // namespace
}  // namespace Drive::Testing
