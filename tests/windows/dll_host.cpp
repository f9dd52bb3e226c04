// dll_host.cpp - a host of the DLL: starts everything, queues 1000 operation records, and returns from main.
//
// dll_host NUMBER MOMENT_FILE MODE
//   queued  does nothing else
//   busy    returns while other threads use the library, so that the system ends them under any of its locks
//   The user is "NUMBER-" and characters outside of every code page. The moment of the return is left in
//   MOMENT_FILE, as the steady clock's nanoseconds, which all processes of a machine share.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "drivelog/BILogger.h"
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"

namespace {

using Drive::Bilog::BILogger;
using Drive::OperateLog::OperationLogger;

void RecordOperation() {
  OperationLogger::GetInstance().OutputOperationLog(
      Drive::OperateLog::OperationBasicEventType::kDriveActionNewFile,
      Drive::OperateLog::OperationType::kNone, Drive::OperateLog::OperationActionType::kBasicOperation);
}

void UseForEver() {
  for (;;) {
    BILogger::GetInstance().SetBiUbaDataPara({});
    for (int i = 0; i < 20; ++i) {
      BILogger::GetInstance().OutputBILog(16001, L"info", L"extend");
      RecordOperation();
    }
    BILogger::GetInstance().StartBILoggerTask();  // a worker that stores at once
    BILogger::GetInstance().ClearDataBase();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
  const int number = std::atoi(argv[1]);
  if (!BILogger::GetInstance().InitDataBase(std::to_wstring(number) + L"-\u7528\u6237\U0001F600")) return 3;
  BILogger::GetInstance().StartBILoggerTask();
  BILogger::GetInstance().StartBILogRptTask();
  OperationLogger::GetInstance().StartLoggerTask();
  OperationLogger::GetInstance().StartLogRptTask();
  for (int i = 0; i < 1000; ++i) RecordOperation();
  if (std::string(argv[3]) == "busy") {
    for (int i = 0; i < 4; ++i) std::thread(UseForEver).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(number));
  }
  std::ofstream(argv[2])
      << std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  return 0;
}
