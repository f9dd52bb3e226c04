// LogSQLiteDB.h - the SQLite file in which records wait for their upload.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::SQLiteDB {

// placeholder: the room's owner completes it
class LogSQLiteDB {
 public:
  static LogSQLiteDB& GetInstance();

  bool InitDataBase(const std::wstring& fileName);

  void InsertUserLogBatch(std::vector<Bilog::UserLog>& batch, bool uba);
  std::vector<Bilog::UserLog> GetUserLogList(int count, int maintenance, bool uba);
  void DeleteUserLogWithId(int firstId, int lastId, int maintenance, bool uba);
  void DeleteAllOperationLogUserLog(bool uba, int maintenance);
  void DeleteFromAllTables();

  // Stores what InsertUserLogBatch had to keep in memory; for the end of the process.
  void StoreKeptRecords();
};

}  // namespace Drive::SQLiteDB
