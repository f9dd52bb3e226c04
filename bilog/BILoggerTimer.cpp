// BILoggerTimer.cpp - one upload cycle of the BI channel, and the timer that repeats it.
#include "bilog/BILoggerTimer.h"

#include <chrono>
#include <memory>

#include "bilog/BiRecordJson.h"
#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "transport/BodyEncoding.h"
#include "transport/BusyFlag.h"
#include "transport/Identifiers.h"

namespace Drive::Bilog {

namespace {

constexpr std::chrono::milliseconds kPushPeriod{5000};
constexpr int kBiRecord = 1;
constexpr int kDefaultMaxPushLogCount = 40;
const wchar_t* const kServiceTag = L"qmvzomaintqrt";
const wchar_t* const kServicePath = L"/common/qmvzomaintqrt";
const char* const kPushLogs = "Drive::Bilog::BILoggerTimer::PushLogs";
const char* const kPushLogToCloud = "Drive::Bilog::BILoggerTimer::PushLogToCloud";

void DeleteRows(int firstId, int lastId) {
  BiDataBase::GetInstance().executeDeleteUserLogWithIdCallback(firstId, lastId, kBiRecord, false);
}

}  // namespace

void BiUploader::PushLogs() {
  if (!m_idle) {
    return;
  }
  const BusyFlag busy(m_idle);
  const int maxCount = PositiveOr(LogSettings::GetInstance().GetMaxPushLogCount(), kDefaultMaxPushLogCount);
  const std::vector<UserLog> records =
      BiDataBase::GetInstance().executeGetUserLogListCallback(maxCount, kBiRecord, false);
  if (records.empty()) {
    return;
  }
  CommLog::GetInstance().PrintLog(LogLevel::kDebug, 114, kPushLogs,
                                  "vecBilogs size :" + std::to_string(records.size()));
  DeliverInFittingParts(
      records, [this](const std::vector<UserLog>& part) { return PushLogToCloud(part); },
      [](const std::vector<UserLog>& part) { DeleteRows(part.front().get_Id(), part.back().get_Id()); },
      [](const UserLog& record) {
        CommLog::GetInstance().PrintLog(
            LogLevel::kError, __LINE__, kPushLogs,
            "record too large for any request, deleted, Id:" + std::to_string(record.get_Id()));
        DeleteRows(record.get_Id(), record.get_Id());
      });
}

PartResult BiUploader::PushLogToCloud(const std::vector<UserLog>& records) {
  const std::string requestId = MakeRequestId();
  const std::vector<unsigned char> body =
      MakeBiEnvelope(TypeConvert::UTF8ToUnicode(requestId), kServiceTag, MakeBiRecordsJson(records));
  if (body.empty()) {
    return PartResult::kTooLarge;
  }
  CommLog::GetInstance().PrintLog(LogLevel::kDebug, 130, kPushLogToCloud,
                                  "reqData  length is :" + std::to_string(body.size()));
  const bool accepted =
      m_request.PushLogToBiServer(std::string(body.begin(), body.end()), kServicePath, requestId);
  return accepted ? PartResult::kDelivered : PartResult::kFailed;
}

void BiUploader::AbortSoon() { m_request.AbortAfter(PushLogRequest::kStopGrace); }

void BILoggerTimer::Start() {
  const auto uploader = std::make_shared<BiUploader>();
  uploader->Init();
  m_timer.Start(
      kPushPeriod, [uploader] { uploader->PushLogs(); }, [uploader] { uploader->AbortSoon(); });
}

}  // namespace Drive::Bilog
