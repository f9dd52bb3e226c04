// UbaLoggerTimer.cpp - one tick of the UBA channel, and the timer that repeats it.
#include "operatelog/UbaLoggerTimer.h"

#include <chrono>
#include <string>
#include <utility>

#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "model/LogSettings.h"
#include "operatelog/UbaEventJson.h"
#include "transport/BodyEncoding.h"
#include "transport/Identifiers.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {

namespace {

const wchar_t* const kServicePath = L"/collector/v1/event";
const char* const kStart = "Drive::OperateLog::UbaLoggerTimer::Start";
const char* const kTimerHandler = "Drive::OperateLog::UbaLoggerTimer::TimerHandler";
const char* const kPushDbLogs = "Drive::OperateLog::UbaLoggerTimer::PushDbLogs";
const char* const kPushLogs = "Drive::OperateLog::UbaLoggerTimer::PushLogs";

void Print(int line, const char* location, const std::string& text) {
  CommLog::GetInstance().PrintLog(LogLevel::kDebug, line, location, text);
}

}  // namespace

UbaUploader::UbaUploader(const BatchSettings& settings, std::shared_ptr<std::atomic<int>> sequence)
    : m_cycle(settings, {true, 103, kPushDbLogs, "vecLogs size:"}), m_sequence(std::move(sequence)) {}

void UbaUploader::TimerHandler() {
  if (!m_cycle.IsComplete()) {
    Print(__LINE__, kTimerHandler, "isCompletePushLog = 0");
  }
  const Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
  const bool isOn = settings.GetOperationLogSwitch();
  if (!isOn) {
    Print(__LINE__, kTimerHandler, "g_operationLogSwitchState = 0");
    m_cycle.Forget();
  }
  // Only 1 is on, but only 0 is reported; this is meant.
  const int ubaSwitch = settings.GetUbaSwitch();
  if (ubaSwitch == 0) {
    Print(__LINE__, kTimerHandler, "g_ubaSwitch = 0");
  }
  if (m_cycle.IsComplete() && isOn && ubaSwitch == 1) {
    m_cycle.PushDbLogs([this](const BatchCycle::Batch& batch) {
      const bool accepted = PushLogs(batch);
      if (accepted) {
        m_cycle.DeleteRows(batch);
      }
      return accepted;
    });
  }
}

bool UbaUploader::PushLogs(const BatchCycle::Batch& batch) {
  const std::string requestId = Bilog::MakeRequestId();
  Print(76, kPushLogs, "UBAOperateLog RequestId:" + requestId);
  int sequence = *m_sequence;
  Json::Value root(Json::objectValue);
  root["events"] = MakeEventsJsonObject(batch, sequence);
  *m_sequence = sequence;
  std::string body;
  Bilog::GzipCompress(Bilog::WriteJson(root), body);  // whatever it holds is posted; this is meant
  Print(92, kPushLogs, "reqData length is :" + std::to_string(body.size()));
  return m_request.PushLogToUbaServer(body, kServicePath, requestId);
}

void UbaUploader::AbortSoon() { m_request.AbortAfter(Bilog::PushLogRequest::kStopGrace); }

void UbaLoggerTimer::Start() {
  const BatchSettings settings = BatchSettings::Current();
  const auto uploader = std::make_shared<UbaUploader>(settings, m_sequence);
  uploader->Init();
  Print(45, kStart, "dbReportFreq = " + std::to_string(settings.period));
  m_timer.Start(
      std::chrono::seconds(settings.period), [uploader] { uploader->TimerHandler(); },
      [uploader] { uploader->AbortSoon(); });
}

}  // namespace Drive::OperateLog
