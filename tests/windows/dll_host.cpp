// dll_host.cpp - a host of the DLL: starts everything, queues 1000 operation records, and returns from main.
//
// dll_host NUMBER MOMENT_FILE
//   The user is "NUMBER-" and characters outside of every code page. The moment of the return is left in
//   MOMENT_FILE, as the steady clock's nanoseconds, which all processes of a machine share.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>

#include "drivelog/BILogger.h"
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"

int main(int argc, char** argv) {
  using Drive::Bilog::BILogger;
  using namespace Drive::OperateLog;
  if (argc != 3) return 2;

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
  std::ofstream(argv[2])
      << std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  return 0;
}
