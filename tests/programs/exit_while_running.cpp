// exit_while_running.cpp - returns from main while the library's threads are at work.
//
// exit_while_running MODE FOLDER BASE_URI CA_FILE MILLISECONDS
//   idle    all threads run and have nothing to do
//   upload  a request is on its way to a server that does not answer
//   insert  thousands of records are being stored
// MILLISECONDS passes between the moment that MODE describes and the return from main. The moment of the
// return is left in FOLDER/returned, as the steady clock's nanoseconds, which all processes of a machine
// share.
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
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ManualClock.h"

namespace {

using std::chrono::milliseconds;

std::atomic<bool> uploading{false};

void Configure(const std::filesystem::path& folder, const std::string& baseUri, const std::string& caFile) {
  auto& system = *new Drive::Testing::FakeSystem;  // threads ask it until the process is gone
  system.roaming = (folder / "roaming").wstring();
  system.local = (folder / "local").wstring();
  Drive::Platform::InstallSystem(&system);
  std::filesystem::create_directories(folder / "local" / "TalvikCloud");
  std::ofstream(folder / "local" / "TalvikCloud" / "SyncSetting.ini")
      << "BaseUri=" << baseUri << "\nUbaUri=" << baseUri << "\nMacAddressEncrypt=device\n";

  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string& message) {
    if (message.rfind("reqData", 0) == 0) {
      uploading = true;
    }
  });
  auto& logger = Drive::Bilog::BILogger::GetInstance();
  logger.InitDataBase(L"user");
  Drive::g_certPath = std::filesystem::path(caFile).wstring();
  Drive::Bilog::BiUbaDataType data;
  data.userId = L"user";
  data.ubaSwitch = 1;
  logger.SetBiUbaDataPara(data);
}

void Record(int count) {
  for (int i = 0; i < count; ++i) {
    Drive::Bilog::BILogger::GetInstance().OutputBILog(16001, L"info", L"extend");
  }
}

void StartAll() {
  auto& bi = Drive::Bilog::BILogger::GetInstance();
  auto& operation = Drive::OperateLog::OperationLogger::GetInstance();
  bi.StartBILoggerTask();
  bi.StartBILogRptTask();
  operation.StartLoggerTask();
  operation.StartLogRptTask();
}

void WaitUntilUploading() {
  auto& clock = *new Drive::Testing::ManualClock;
  Record(10);
  StartAll();
  clock.WaitForWaiters(5);
  std::thread([&clock] { clock.Advance(milliseconds(5000)); }).detach();
  while (!uploading) {
    std::this_thread::yield();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fputs("usage: exit_while_running MODE FOLDER BASE_URI CA_FILE MILLISECONDS\n", stderr);
    return 2;
  }
  const std::string mode = argv[1];
  Configure(argv[2], argv[3], argv[4]);
  if (mode == "upload") {
    WaitUntilUploading();
  } else {
    Record(mode == "insert" ? 4000 : 0);
    StartAll();
  }
  std::this_thread::sleep_for(milliseconds(std::atoi(argv[5])));
  std::ofstream(std::filesystem::path(argv[2]) / "returned")
      << std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  return 0;
}
