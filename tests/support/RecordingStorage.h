// RecordingStorage.h - a storage for BiDataBase that keeps records in memory and remembers the calls.
#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <vector>

#include "drivelog/BiDataBase.h"

namespace Drive::Testing {

// Registers itself in BiDataBase for its own lifetime; the slots are empty again afterwards.
//
// Thread-safety: the operations may be called from any thread.
class RecordingStorage {
 public:
  using Records = std::vector<Bilog::UserLog>;

  RecordingStorage() {
    auto& database = Bilog::BiDataBase::GetInstance();
    database.setInsertUserLogBatchCallbackFunc([this](Records& batch, bool uba) { OnInsert(batch, uba); });
    database.setDeleteUserLogWithIdCallbackFunc([this](int first, int last, int maintenance, bool uba) {
      Erase(uba, [=](const Bilog::UserLog& row) {
        return row.get_IsMaintenanceLog() == maintenance && row.get_Id() >= first && row.get_Id() <= last;
      });
    });
    database.setDeleteAllOperationLogUserLogCallbackFunc([this](bool uba, int maintenance) {
      Erase(uba, [=](const Bilog::UserLog& row) { return row.get_IsMaintenanceLog() == maintenance; });
    });
    database.setGetUserLogListCallbackFunc([this](int count, int maintenance, bool uba) {
      Records result;
      for (Bilog::UserLog& row : Rows(uba)) {
        if (static_cast<int>(result.size()) < count && row.get_IsMaintenanceLog() == maintenance) {
          result.push_back(std::move(row));
        }
      }
      return result;
    });
  }
  ~RecordingStorage() {
    auto& database = Bilog::BiDataBase::GetInstance();
    database = Bilog::BiDataBase();
  }
  RecordingStorage(const RecordingStorage&) = delete;
  RecordingStorage& operator=(const RecordingStorage&) = delete;

  // Records of each insert call so far.
  std::vector<std::size_t> InsertSizes(bool uba) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_insertSizes[uba];
  }
  // What is stored now.
  Records Rows(bool uba) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_rows[uba];
  }

  // Called at the beginning of each insert, on its thread, under no lock.
  std::function<void()> beforeInsert;

 private:
  void OnInsert(const Records& batch, bool uba) {
    if (beforeInsert) {
      beforeInsert();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_insertSizes[uba].push_back(batch.size());
    for (const Bilog::UserLog& record : batch) {
      m_rows[uba].push_back(record);
      m_rows[uba].back().set_Id(++m_lastId[uba]);
    }
  }

  template <typename Predicate>
  void Erase(bool uba, Predicate predicate) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& rows = m_rows[uba];
    rows.erase(std::remove_if(rows.begin(), rows.end(), predicate), rows.end());
  }

  // By table: other, UBA.
  mutable std::mutex m_mutex;  // guards what follows
  std::vector<std::size_t> m_insertSizes[2];
  Records m_rows[2];
  int m_lastId[2] = {0, 0};
};

}  // namespace Drive::Testing
