// BatchCycle.cpp - the hold-back of partial batches.
#include "operatelog/BatchCycle.h"

#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "transport/BusyFlag.h"

namespace Drive::OperateLog {

namespace {

constexpr int kOperationRecord = 0;  // value of IsMaintenanceLog in both tables

}  // namespace

BatchSettings BatchSettings::Current() {
  const BatchSettings defaults;
  const Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
  BatchSettings current;
  current.period = Bilog::PositiveOr(settings.GetPushWaitTime(), defaults.period);
  current.batchSize = Bilog::PositiveOr(settings.GetPushSize(), defaults.batchSize);
  current.maxWait = Bilog::PositiveOr(settings.GetPushMaxWaitTime(), defaults.maxWait);
  return current;
}

BatchCycle::BatchCycle(const BatchSettings& settings, const BatchTable& table)
    : m_settings(settings), m_table(table), m_waited(settings.maxWait) {}

void BatchCycle::PushDbLogs(const Push& push) {
  const Bilog::BusyFlag busy(m_isComplete);
  if (!m_batch.empty()) {
    CommLog::GetInstance().PrintLog(LogLevel::kDebug, m_table.line, m_table.location,
                                    m_table.text + std::to_string(m_batch.size()));
  } else {
    m_batch = Bilog::BiDataBase::GetInstance().executeGetUserLogListCallback(m_settings.batchSize,
                                                                             kOperationRecord, m_table.uba);
  }
  if (!m_batch.empty() && ShouldSend(m_batch.size(), m_settings.batchSize, m_waited, m_settings.maxWait) &&
      push(m_batch)) {
    m_waited = 0;
  }
  m_waited += m_settings.period;
  m_batch.clear();
}

// By range on purpose: ids only grow, so nothing else lies in between.
void BatchCycle::DeleteRows(const Batch& batch) const {
  Bilog::BiDataBase::GetInstance().executeDeleteUserLogWithIdCallback(
      batch.front().get_Id(), batch.back().get_Id(), kOperationRecord, m_table.uba);
}

}  // namespace Drive::OperateLog
