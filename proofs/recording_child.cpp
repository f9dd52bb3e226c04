// recording_child.cpp - a product in fast motion: records, stores and uploads, until it is killed or done.
//
// recording_child FOLDER CA_FILE RSA_KEY BATCH RUN MODE
//   record   records for minutes, until it is killed
//   deliver  ends when nothing is left in the file
//   FOLDER/local holds the client's settings. A request holds up to BATCH records. An error message ends the
//   process with status 3. What it does is told in FOLDER/run-RUN line by line, so that nothing said goes
//   with the process:
//     + start, - start     a step begins, ends: start, insert, delete, upload
//     > b 1 20             an insert of the records 1 to 20 begins; b: BI, o: operation, u: UBA
//     = b 1 20             these are stored
//     ! text               an error message
//   The field Action of every record is "RUN-NUMBER".
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "drivelog/BILogger.h"
#include "drivelog/BiDataBase.h"
#include "drivelog/CommLog.h"
#include "drivelog/OperationLogger.h"
#include "logdb/LogSQLiteDB.h"
#include "platform/Clock.h"
#include "tests/support/FakeSystem.h"

namespace {

using namespace Drive;

// Real time, but that the library's periods take thousandths of themselves. A wait for a lock does not.
class FastClock final : public Platform::Clock {
 public:
  std::int64_t NowMilliseconds() const override { return Platform::SystemClock().NowMilliseconds(); }
  Platform::LocalTime NowLocal() const override { return Platform::SystemClock().NowLocal(); }
  bool WaitFor(std::chrono::milliseconds duration, const Platform::WakeSignal& wake) override {
    const bool isPeriod = duration >= std::chrono::seconds(1);
    return Platform::SystemClock().WaitFor(isPeriod ? duration / 1000 : duration, wake);
  }
};

// Never destroyed: threads tell until the process is gone.
std::ofstream& diary = *new std::ofstream;
std::mutex& diaryMutex = *new std::mutex;

void Tell(const std::string& line) {
  const std::lock_guard<std::mutex> lock(diaryMutex);
  diary << line << std::endl;
}

// The store's own insert, between two lines about it.
void Insert(std::vector<Bilog::UserLog>& batch, bool uba) {
  const char kind = batch.front().get_IsMaintenanceLog() == 1 ? 'b' : uba ? 'u' : 'o';
  for (Bilog::UserLog& record : batch) {
    const std::wstring extend = record.get_Extend();  // {"fileName":"RUN-NUMBER"}, and not always sent
    if (kind == 'o') record.set_Action(extend.substr(13, extend.size() - 15));
  }
  const auto number = [](const Bilog::UserLog& record) {
    const std::string action = TypeConvert::UnicodeToUTF8(record.get_Action());
    return action.substr(action.find('-') + 1);
  };
  const std::string range = kind + (" " + number(batch.front()) + " " + number(batch.back()));
  Tell("+ insert\n> " + range);
  SQLiteDB::LogSQLiteDB::GetInstance().InsertUserLogBatch(batch, uba);
  Tell("= " + range + "\n- insert");
}

void Configure(char** argv) {
  Platform::InstallClock(new FastClock);  // threads ask it until the process is gone, and the system below
  const std::filesystem::path folder = argv[1];
  auto& system = *new Testing::FakeSystem;
  system.roaming = (folder / "roaming").wstring();
  system.local = (folder / "local").wstring();
  Platform::InstallSystem(&system);
  CommLog::GetInstance().SetLogFunc([](int level, int, const std::string& location, const std::string& text) {
    // Of processes that create the file at the same time, one sets its mode.
    const bool isError = level == 5 && text.rfind("Set WAL failed,error code is 5", 0) != 0;
    if (isError) Tell("! " + location + ": " + text), std::_Exit(3);
    if (text.rfind("reqData", 0) == 0) Tell("+ upload");
    if (text.rfind("PushLog", 0) == 0) Tell("- upload");
  });
  Bilog::BILogger::GetInstance().InitDataBase(L"user");
  g_certPath = std::filesystem::path(argv[2]).wstring();
  Bilog::BiUbaDataType data;
  data.userId = L"user";
  data.rsaPublicKey = argv[3];
  data.accessToken = L"token";
  data.pushLogSize = std::atoi(argv[4]);
  data.maxPushLogCount = data.pushLogSize;
  data.pushLogMaxWaitTime = 10;
  data.ubaSwitch = 1;
  Bilog::BILogger::GetInstance().SetBiUbaDataPara(data);
  auto& database = Bilog::BiDataBase::GetInstance();
  database.setInsertUserLogBatchCallbackFunc(Insert);
  database.setDeleteUserLogWithIdCallbackFunc([](int first, int last, int maintenance, bool uba) {
    Tell("+ delete");
    SQLiteDB::LogSQLiteDB::GetInstance().DeleteUserLogWithId(first, last, maintenance, uba);
    Tell("- delete");
  });
}

bool IsAllDelivered() {
  const auto isEmpty = [](int maintenance, bool uba) {
    return Bilog::BiDataBase::GetInstance().executeGetUserLogListCallback(1, maintenance, uba).empty();
  };
  return isEmpty(1, false) && isEmpty(0, false) && isEmpty(0, true);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) return 2;
  const std::wstring prefix = std::to_wstring(std::atoi(argv[5])) + L"-";
  const bool records = std::string(argv[6]) == "record";
  diary.open(std::filesystem::path(argv[1]) / ("run-" + std::string(argv[5])));
  Tell("+ start");
  Configure(argv);
  auto& bi = Bilog::BILogger::GetInstance();
  auto& operation = OperateLog::OperationLogger::GetInstance();
  bi.StartBILoggerTask();
  bi.StartBILogRptTask();
  operation.StartLoggerTask();
  operation.StartLogRptTask();
  Tell("- start");
  for (int number = 1; records && number < 100'000; ++number) {  // for longer than it may live
    const std::wstring mark = prefix + std::to_wstring(number);
    bi.OutputBILog(mark, L"0", L"info", L"", L"trace");
    operation.OutputOperationLog(OperateLog::OperationBasicEventType::kDriveActionNewFile,
                                 OperateLog::OperationType::kNone,
                                 OperateLog::OperationActionType::kBasicOperation, {{L"fileName", mark}});
    if (number % 4 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(4));
  }
  while (!IsAllDelivered()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  CommLog::GetInstance().SetLogFunc(nullptr);  // another process may have delivered what this one is sending
  return 0;
}
