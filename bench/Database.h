// Database.h - a log database in a folder of its own, and records to store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drivelog/UserLog.h"
#include "logdb/SqliteHandles.h"
#include "tests/support/TempFolder.h"

namespace Drive::Bench {

// The store's database while this object is the last one made, hooked up for the recording channels.
class Database {
 public:
  Database();
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Makes this the store's database again.
  void Use() const;

  const std::string& Path() const { return m_path; }
  std::int64_t Rows() const;

  // Runs SQL on a connection of its own.
  void Execute(const std::string& sql) const;

 private:
  SQLiteDB::ConnectionHandle Open() const;

  Testing::TempFolder m_folder;
  std::string m_path;
};

// Operation records of about 400 bytes of text, as events with a map of five entries give.
std::vector<Bilog::UserLog> SampleRecords(int count);

}  // namespace Drive::Bench
