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
using namespace Drive::OperateLog;

void UseForEver() {
  Drive::Bilog::BiUbaDataType data;
  data.userId = L"user";
  for (;;) {
    BILogger::GetInstance().SetBiUbaDataPara(data);
    for (int i = 0; i < 20; ++i) {
      BILogger::GetInstance().OutputBILog(16001, L"info", L"extend");
      OperationLogger::GetInstance().OutputOperationLog(OperationBasicEventType::kDriveActionNewFile,
                                                        OperationType::kNone,
                                                        OperationActionType::kBasicOperation);
    }
    BILogger::GetInstance().StartBILoggerTask();  // a worker that stores at once
    BILogger::GetInstance().ClearDataBase();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;

  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string&) {});
  const std::wstring user = std::to_wstring(std::atoi(argv[1])) + L"-\u7528\u6237\U0001F600";
  if (!BILogger::GetInstance().InitDataBase(user)) return 3;
  BILogger::GetInstance().StartBILoggerTask();
  BILogger::GetInstance().StartBILogRptTask();
  OperationLogger::GetInstance().StartLoggerTask();
  OperationLogger::GetInstance().StartLogRptTask();
  for (int i = 0; i < 1000; ++i) {
    OperationLogger::GetInstance().OutputOperationLog(OperationBasicEventType::kDriveActionNewFile,
                                                      OperationType::kNone,
                                                      OperationActionType::kBasicOperation);
  }
  if (std::string(argv[3]) == "busy") {
    for (int i = 0; i < 4; ++i) std::thread(UseForEver).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(argv[1])));
  }
  std::ofstream(argv[2])
      << std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  return 0;
}
