// RecordingStorage.h - a storage for BiDataBase that keeps records in memory and remembers the calls.
#pragma once

#include <algorithm>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "drivelog/BiDataBase.h"

namespace Drive::Testing {

// Registers itself in BiDataBase for its own lifetime; the slots are empty again afterwards.
//
// Thread-safety: the operations may be called from any thread.
class RecordingStorage {
 public:
  struct Insert {
    std::vector<Bilog::UserLog> records;
    bool uba;
  };

  RecordingStorage() {
    auto& database = Bilog::BiDataBase::GetInstance();
    database.setInsertUserLogBatchCallbackFunc(
        [this](std::vector<Bilog::UserLog>& batch, bool uba) { OnInsert(batch, uba); });
    database.setDeleteUserLogWithIdCallbackFunc([this](int first, int last, int maintenance, bool uba) {
      Erase(uba, [=](const Bilog::UserLog& row) {
        return row.get_IsMaintenanceLog() == maintenance && row.get_Id() >= first && row.get_Id() <= last;
      });
    });
    database.setDeleteAllOperationLogUserLogCallbackFunc([this](bool uba, int maintenance) {
      Erase(uba, [=](const Bilog::UserLog& row) { return row.get_IsMaintenanceLog() == maintenance; });
    });
    database.setGetUserLogListCallbackFunc(
        [this](int count, int maintenance, bool uba) { return OnRead(count, maintenance, uba); });
  }
  ~RecordingStorage() {
    auto& database = Bilog::BiDataBase::GetInstance();
    database.setInsertUserLogBatchCallbackFunc({});
    database.setDeleteUserLogWithIdCallbackFunc({});
    database.setDeleteAllOperationLogUserLogCallbackFunc({});
    database.setGetUserLogListCallbackFunc({});
  }
  RecordingStorage(const RecordingStorage&) = delete;
  RecordingStorage& operator=(const RecordingStorage&) = delete;

  // The insert calls so far.
  std::vector<Insert> Inserts() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_inserts;
  }
  std::vector<std::size_t> InsertSizes(bool uba) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::size_t> sizes;
    for (const Insert& insert : m_inserts) {
      if (insert.uba == uba) {
        sizes.push_back(insert.records.size());
      }
    }
    return sizes;
  }
  // What is stored now.
  std::vector<Bilog::UserLog> Rows(bool uba) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_rows[uba].begin(), m_rows[uba].end()};
  }

  // Called at the beginning of each insert, on its thread, under no lock.
  std::function<void()> beforeInsert;

 private:
  void OnInsert(const std::vector<Bilog::UserLog>& batch, bool uba) {
    if (beforeInsert) {
      beforeInsert();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_inserts.push_back({batch, uba});
    for (const Bilog::UserLog& record : batch) {
      m_rows[uba].push_back(record);
      m_rows[uba].back().set_Id(++m_lastId[uba]);
    }
  }

  std::vector<Bilog::UserLog> OnRead(int count, int maintenance, bool uba) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Bilog::UserLog> result;
    for (const Bilog::UserLog& row : m_rows[uba]) {
      if (static_cast<int>(result.size()) < count && row.get_IsMaintenanceLog() == maintenance) {
        result.push_back(row);
      }
    }
    return result;
  }

  template <typename Predicate>
  void Erase(bool uba, Predicate predicate) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& rows = m_rows[uba];
    rows.erase(std::remove_if(rows.begin(), rows.end(), predicate), rows.end());
  }

  mutable std::mutex m_mutex;  // guards what follows
  std::vector<Insert> m_inserts;
  std::deque<Bilog::UserLog> m_rows[2];  // by table: other, UBA
  int m_lastId[2] = {0, 0};
};

}  // namespace Drive::Testing
