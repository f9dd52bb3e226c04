// LogSQLiteDB.h - the SQLite file in which records wait for their upload.
#pragma once

#include <array>
#include <mutex>
#include <string>
#include <vector>

#include "drivelog/UserLog.h"
#include "logdb/KeptRecords.h"
#include "logdb/RowCap.h"

namespace Drive::SQLiteDB {

class Connection;
class PendingMessages;

// Stores records of all channels, reads them back oldest first, and deletes them.
//
// Surprises: there is no lasting connection: every operation opens its own, works in one transaction and
//            closes it. Nothing is reported to the caller; CommLog has the messages, told when the operation
//            has given up its lock. A batch that the database cannot take (locked, full, unreadable) waits
//            in memory, bounded, and is stored before the next one; a record that the database refuses is
//            skipped. A file that has gone, or holds no tables, is created again by the next insert.
// Thread-safety: every operation may be called from any thread; the record operations run one at a time, but
//            for DeleteFromAllTables.
// Lifetime: one instance, created on first use, never destroyed.
class LogSQLiteDB {
 public:
  static LogSQLiteDB& GetInstance();

  // Creates what is missing of the folder g_dbFullPath, the file `fileName` in it and the tables; starts a
  // file of more than 500 MiB afresh, with all its records lost. Registers the record operations with
  // BiDataBase even after a failure, since each of them then tries again. False after a failure.
  //
  // The file is looked for by folder and name, but created, measured and deleted as g_logDbFullPathWithName;
  // the client keeps the two naming the same file.
  bool InitDataBase(const std::wstring& fileName);

  // Creates or opens the file and makes it write ahead. False after a failure.
  bool CreateDb(const std::string& path);

  // False after a failure.
  bool CreateTables();

  // Appends a batch; a table that has reached the row cap first loses its oldest tenth. Waits for a locked
  // file, some 5 s.
  void InsertUserLogBatch(std::vector<Bilog::UserLog>& batch, bool uba);

  // The oldest records of a channel, at most `count`; what could be read after a failure. Records that still
  // wait in memory are not among them.
  std::vector<Bilog::UserLog> GetUserLogList(int count, int maintenance, bool uba);

  // Deletes a channel's records with firstId <= Id <= lastId. Waits for a locked file, some 40 s, as all
  // deletions do.
  void DeleteUserLogWithId(int firstId, int lastId, int maintenance, bool uba);

  // Deletes a channel's records, those in memory included.
  void DeleteAllOperationLogUserLog(bool uba, int maintenance);

  // Empties both tables and forgets the records in memory. Does not wait for the other operations of this
  // process; SQLite's own lock orders it behind an insert that is under way.
  void DeleteFromAllTables();

  // Stores the records in memory; for the end of the process. What cannot be stored then is lost with it.
  void StoreKeptRecords();

 private:
  // What belongs to one table.
  struct Table {
    RowCap cap;        // under m_mutex
    KeptRecords kept;  // locks for itself
  };

  LogSQLiteDB() = default;
  Table& TableFor(bool uba) { return m_tables[uba ? 1 : 0]; }

  // Start-up.
  // Creates the file, or starts it afresh when it is too large, and its tables. False after a failure.
  bool PrepareFile(const std::wstring& folder, const std::wstring& fileName);
  void ForgetCounts();
  void RegisterOperations();
  bool CreateDb(const std::string& path, PendingMessages& messages);

  // Parts of an insert, under m_mutex.
  // False when nothing of the batch was stored, for a reason that lies in the database; it is reported.
  bool StoreBatch(const std::vector<Bilog::UserLog>& batch, bool uba, PendingMessages& messages);
  // Creates the file again when it has gone or is empty. False when that fails; it is reported.
  bool RestoreMissingFile(PendingMessages& messages);
  // Cuts the table when it has reached the row cap.
  void CheckDbSize(Connection& connection, bool uba);

  std::mutex m_mutex;             // the record operations hold it for their whole duration
  std::array<Table, 2> m_tables;  // by channel flag
};

}  // namespace Drive::SQLiteDB
