// Connection.h - one connection to the log database, and the transaction on it.
#pragma once

#include <string>

#include "logdb/PendingMessages.h"
#include "logdb/SqliteHandles.h"

namespace Drive::SQLiteDB {

// A connection for one operation, to the file that g_logDbFullPathWithName names.
//
// Surprises: a failed opening is reported and leaves an object on which every statement fails; the caller
//            need not look. The file is never created here. Messages name the steps by the names under which
//            they are searched for in the clients' logs: LogSQLiteDB::_connectDb and so on.
// Thread-safety: one object belongs to one thread.
class Connection {
 public:
  enum class Access { kReadWrite, kReadOnly };

  Connection(Access access, PendingMessages& messages);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool IsOpen() const { return m_isOpen; }
  sqlite3* Handle() const { return m_handle.get(); }
  PendingMessages& Messages() const { return m_messages; }

  // Whether statements are committed one by one, since no transaction is open.
  bool IsAutoCommit() const;

  // SQLite's text of the last failure.
  std::string Reason() const;

  // Runs SQL that returns no rows. When it is locked out it runs three times in all, with a pause of 10 s
  // after the second and the third, on top of the busy handler's waiting. SQLite's result code; a failure is
  // reported.
  int Execute(const std::string& sql);

  // Empty when it fails.
  StatementHandle Prepare(const std::string& sql);

 private:
  PendingMessages& m_messages;
  ConnectionHandle m_handle;
  bool m_isOpen = false;
};

// A transaction that is rolled back unless it was committed.
//
// Surprises: a beginning or commit that fails is reported; who only reads or deletes need not look, since the
//            statements then do what they can, each for itself.
class Transaction {
 public:
  enum class Kind {
    kDeferred,  // locks with its first statement
    kImmediate  // takes the write lock at once, waiting for it, so that no later statement is locked out
  };

  Transaction(Connection& connection, Kind kind);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  bool HasBegun() const { return m_hasBegun; }

  // False when nothing was committed.
  bool Commit();

 private:
  Connection& m_connection;
  bool m_hasBegun;
};

}  // namespace Drive::SQLiteDB
