// exit_with_queued_records.cpp - returns from main with 1000 operation records in the queue.
//
// exit_with_queued_records FOLDER ORDER
//   bi         the BI facade is used first, the timers run
//   operation  the operation facade is used first, the timers run
//   idle       as `operation`, and no timer was ever started
//   inner      the singletons behind the facades are used last
#include <cstdio>
#include <filesystem>
#include <string>

#include "drivelog/BILogger.h"
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"
#include "tests/support/FakeSystem.h"

namespace {

using Drive::Bilog::BILogger;
using Drive::OperateLog::OperationLogger;

constexpr int kRecords = 1000;

void Record() {
  for (int i = 0; i < kRecords; ++i) {
    OperationLogger::GetInstance().OutputOperationLog(
        Drive::OperateLog::OperationBasicEventType::kDriveActionNewFile,
        Drive::OperateLog::OperationType::kNone, Drive::OperateLog::OperationActionType::kBasicOperation);
  }
}

void StartTimers() {
  BILogger::GetInstance().StartBILoggerTask();
  BILogger::GetInstance().StartBILogRptTask();
  OperationLogger::GetInstance().StartLoggerTask();
  OperationLogger::GetInstance().StartLogRptTask();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: exit_with_queued_records FOLDER ORDER\n", stderr);
    return 2;
  }
  auto& system = *new Drive::Testing::FakeSystem;  // threads ask it until the process is gone
  system.roaming = (std::filesystem::path(argv[1]) / "roaming").wstring();
  system.local = (std::filesystem::path(argv[1]) / "local").wstring();
  Drive::Platform::InstallSystem(&system);

  const std::string order = argv[2];
  if (order == "bi") {
    BILogger::GetInstance().InitDataBase(L"user");
    StartTimers();
    Record();
  } else if (order == "inner") {
    Record();
    OperationLogger::GetInstance().StartLoggerTask();
    CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
    BILogger::GetInstance().InitDataBase(L"user");
  } else {
    Record();
    BILogger::GetInstance().InitDataBase(L"user");
    if (order == "operation") {
      StartTimers();
    }
  }
  return 0;
}
