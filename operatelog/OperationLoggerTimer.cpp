// OperationLoggerTimer.cpp - one tick of the operation channel, and the timer that repeats it.
#include "operatelog/OperationLoggerTimer.h"

#include <chrono>
#include <memory>
#include <string>

#include "client/log/TypeConvert.h"
#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "model/EventJson.h"
#include "model/LogSettings.h"
#include "operatelog/OperationEnvelope.h"
#include "platform/Clock.h"
#include "transport/Identifiers.h"

namespace Drive::OperateLog {

namespace {

const wchar_t* const kServicePath = L"/common/qmvzooperqrt";
const char* const kTimerHandler = "Drive::OperateLog::OperationLoggerTimer::TimerHandler";
const char* const kPushDbLogs = "Drive::OperateLog::OperationLoggerTimer::PushDbLogs";
const char* const kPushLogs = "Drive::OperateLog::OperationLoggerTimer::PushLogs";

void Print(int level, int line, const char* location, const std::string& text) {
  CommLog::GetInstance().PrintLog(level, line, location, text);
}

Header MakeHeader(const std::string& requestId) {
  Header header;
  header.SetRequestId(TypeConvert::UTF8ToUnicode(requestId));
  header.SetTimestamp(std::to_wstring(Platform::CurrentClock().NowMilliseconds()));
  return header;
}

}  // namespace

OperationUploader::OperationUploader(const BatchSettings& settings)
    : m_cycle(settings, {false, __LINE__, kPushDbLogs, "m_vecLogs size:"}) {}

void OperationUploader::TimerHandler() {
  if (!m_cycle.IsComplete()) {
    Print(LogLevel::kDebug, __LINE__, kTimerHandler, "m_isCompletePushLog = 0");
  }
  const bool isOn = Bilog::LogSettings::GetInstance().GetOperationLogSwitch();
  if (!isOn) {
    Print(LogLevel::kDebug, __LINE__, kTimerHandler, "g_operationLogSwitchState = 0");
    m_cycle.Forget();
  }
  if (m_cycle.IsComplete() && isOn) {
    m_cycle.PushDbLogs([this](const BatchCycle::Batch& batch) { return PushInParts(batch); });
  }
}

bool OperationUploader::PushInParts(const BatchCycle::Batch& batch) {
  return Bilog::DeliverInFittingParts(
      batch, [this](const BatchCycle::Batch& part) { return PushLogs(part); },
      [this](const BatchCycle::Batch& part) { m_cycle.DeleteRows(part); },
      [this](const Bilog::UserLog& record) {
        Print(LogLevel::kError, __LINE__, kPushDbLogs,
              "record too large for any request, deleted, Id:" + std::to_string(record.get_Id()));
        m_cycle.DeleteRows({record});
      });
}

Bilog::PartResult OperationUploader::PushLogs(const BatchCycle::Batch& batch) {
  const std::string requestId = Bilog::MakeRequestId();
  Print(LogLevel::kDebug, __LINE__, kPushLogs, "OperateLog RequestId:" + requestId);
  const std::string rsaPublicKey = Bilog::LogSettings::GetInstance().GetRsaPublicKey();
  if (rsaPublicKey.empty()) {
    Print(LogLevel::kInfo, __LINE__, kPushLogs, "g_rsaPublicKey is null");
    return Bilog::PartResult::kFailed;
  }
  const OperationEnvelope envelope =
      MakeOperationEnvelope(MakeHeader(requestId), MakeEventPayload(batch), rsaPublicKey);
  switch (envelope.status) {
    case OperationEnvelope::Status::kTooLarge:
      return Bilog::PartResult::kTooLarge;
    case OperationEnvelope::Status::kFailed:
      Print(LogLevel::kError, __LINE__, kPushLogs, envelope.failure);
      return Bilog::PartResult::kFailed;
    case OperationEnvelope::Status::kMade:
      break;
  }
  Print(LogLevel::kDebug, __LINE__, kPushLogs, "reqData  length is :" + std::to_string(envelope.body.size()));
  const bool accepted = m_request.PushLogToBiServer(envelope.body, kServicePath, requestId);
  return accepted ? Bilog::PartResult::kDelivered : Bilog::PartResult::kFailed;
}

void OperationUploader::AbortSoon() { m_request.AbortAfter(Bilog::PushLogRequest::kStopGrace); }

void OperationLoggerTimer::Start() {
  const BatchSettings settings = BatchSettings::Current();
  const auto uploader = std::make_shared<OperationUploader>(settings);
  uploader->Init();
  m_timer.Start(
      std::chrono::seconds(settings.period), [uploader] { uploader->TimerHandler(); },
      [uploader] { uploader->AbortSoon(); });
}

}  // namespace Drive::OperateLog
