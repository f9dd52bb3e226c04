// exit_while_running.cpp - returns from main while the library's threads are at work.
//
// exit_while_running MODE FOLDER CA_FILE MILLISECONDS
//   idle              all threads run and have nothing to do
//   upload            a request is on its way to a server that does not answer, and a stop waits for it
//   insert            thousands of records are being stored
//   record            threads of the host go on recording, and so does a static object in its destructor
//   queued-bi         1000 operation records are queued, threads run; the BI facade was used first
//   queued-operation  the same, the operation facade was used first
//   queued-unstarted  the same, and no thread was ever started
//   queued-inner      the same, what stands behind the facades was used last, and only the save timer runs
// FOLDER/local holds the client's settings. MILLISECONDS passes between the moment that MODE describes and
// the return from main. The moment of the return is left in FOLDER/returned, as the steady clock's
// nanoseconds, which all processes of a machine share.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "client/common/SharedGlobals.h"
#include "drivelog/BILogger.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"
#include "tests/support/FakeSystem.h"

namespace {

using namespace Drive;
using Bilog::BILogger;
using OperateLog::OperationLogger;
using std::chrono::milliseconds;

std::atomic<bool> isUploading{false};

void Install(const std::filesystem::path& folder) {
  auto& system = *new Testing::FakeSystem;  // threads ask it until the process is gone
  system.roaming = (folder / "roaming").wstring();
  system.local = (folder / "local").wstring();
  Platform::InstallSystem(&system);
}

void Configure(const std::string& caFile) {
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string& message) {
    if (message.rfind("reqData", 0) == 0) {
      isUploading = true;
    }
  });
  BILogger::GetInstance().InitDataBase(L"user");
  g_certPath = std::filesystem::path(caFile).wstring();
  Bilog::BiUbaDataType data;
  data.userId = L"user";
  data.ubaSwitch = 1;
  BILogger::GetInstance().SetBiUbaDataPara(data);
}

void RecordBi(int count) {
  for (int i = 0; i < count; ++i) {
    BILogger::GetInstance().OutputBILog(16001, L"info", L"extend");
  }
}

void RecordOperations(int count) {
  for (int i = 0; i < count; ++i) {
    OperationLogger::GetInstance().OutputOperationLog(
        OperateLog::OperationBasicEventType::kDriveActionNewFile, OperateLog::OperationType::kNone,
        OperateLog::OperationActionType::kBasicOperation);
  }
}

// Static, and constructed before the facades, so it is destroyed behind them.
struct LateHost {
  bool records = false;
  ~LateHost() {
    if (records) {
      RecordBi(1);
      RecordOperations(1);
      BILogger::GetInstance().StopBILoggerTask();
      OperationLogger::GetInstance().StopLoggerTask();
    }
  }
} lateHost;

void StartAll() {
  BILogger::GetInstance().StartBILoggerTask();
  BILogger::GetInstance().StartBILogRptTask();
  OperationLogger::GetInstance().StartLoggerTask();
  OperationLogger::GetInstance().StartLogRptTask();
}

void WaitUntilUploading() {
  RecordBi(10);
  StartAll();
  while (Bilog::BiDataBase::GetInstance().executeGetUserLogListCallback(1, 1, false).empty()) {
    std::this_thread::yield();
  }
  std::thread([] { BILogger::GetInstance().StopBILoggerTask(); }).detach();  // its last run uploads
  while (!isUploading) {
    std::this_thread::yield();
  }
}

void Enter(const std::string& mode, const std::string& caFile) {
  const bool isQueued = mode.rfind("queued-", 0) == 0;
  RecordOperations(isQueued && mode != "queued-bi" ? 1000 : 0);
  if (mode == "queued-inner") {
    OperationLogger::GetInstance().StartLoggerTask();
  }
  Configure(caFile);
  if (mode == "upload") {
    WaitUntilUploading();
  } else if (mode != "queued-unstarted" && mode != "queued-inner") {
    RecordBi(mode == "insert" ? 4000 : 0);
    StartAll();
    RecordOperations(mode == "queued-bi" ? 1000 : 0);
  }
  lateHost.records = mode == "record";
  for (int thread = 0; lateHost.records && thread < 4; ++thread) {
    std::thread([] {
      for (;;) {
        RecordBi(1);
        RecordOperations(1);
      }
    }).detach();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fputs("usage: exit_while_running MODE FOLDER CA_FILE MILLISECONDS\n", stderr);
    return 2;
  }
  Install(argv[2]);
  Enter(argv[1], argv[3]);
  std::this_thread::sleep_for(milliseconds(std::atoi(argv[4])));
  std::ofstream(std::filesystem::path(argv[2]) / "returned")
      << std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  return 0;
}
