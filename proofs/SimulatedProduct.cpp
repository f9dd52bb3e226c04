// SimulatedProduct.cpp - sessions of the simulated client, its events, and the faults around it.
#include "proofs/SimulatedProduct.h"

#include <algorithm>
#include <fstream>
#include <functional>

#include "bilog/BILoggerManager.h"
#include "bilog/BILoggerTimer.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "drivelog/BILogger.h"
#include "drivelog/OperationLogger.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "operatelog/EventTables.h"
#include "operatelog/FileInfoGroups.h"
#include "operatelog/OperationLoggerManager.h"
#include "operatelog/OperationLoggerTimer.h"
#include "operatelog/UbaLoggerTimer.h"

namespace Drive::Testing {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kOffset{700};
constexpr std::uintmax_t kTooManyBytes = 600000000;

std::string NameOf(OperateLog::OperationBasicEventType type) {
  return TypeConvert::UnicodeToUTF8(std::wstring(OperateLog::EventName(type)));
}

std::filesystem::path DatabaseFile() { return std::filesystem::u8path(g_logDbFullPathWithName.Get()); }

}  // namespace

struct SimulatedProduct::Parts {
  Bilog::BILoggerManager bi;
  Bilog::BILoggerTimer biTimer;
  OperateLog::OperationLoggerTimer operationTimer;
  OperateLog::UbaLoggerTimer ubaTimer;
  OperateLog::OperationLoggerManager operation;
  bool isReporting = false;
};

SimulatedProduct::SimulatedProduct(Proof& proof, const std::filesystem::path& keys, bool isStaggered)
    : collector(CollectorIn(keys)),
      ledger(proof, collector, clock),
      m_proof(proof),
      m_isStaggered(isStaggered) {
  system.roaming = folder.Wide("roaming");
  system.local = folder.Wide("local");
  Platform::InstallSystem(&system);
  IPC::SetIpcEndpointName("drivelog-proof-" + std::to_string(std::hash<std::string>{}(folder.Narrow(""))));
  g_deviceId = L"device-1";
}

SimulatedProduct::~SimulatedProduct() {
  Bilog::BiDataBase::GetInstance() = Bilog::BiDataBase();
  Platform::InstallSystem(nullptr);
}

void SimulatedProduct::Set(const Bilog::BiUbaDataType& settings) {
  Bilog::BILogger::GetInstance().SetBiUbaDataPara(settings);
  ledger.conditions.rowCap = settings.logDbSize;
  ledger.conditions.ubaSwitch = settings.ubaSwitch;
}

// One more thread of the library runs.
void SimulatedProduct::Started() {
  clock.manual.WaitForWaiters(++m_threads);
  if (m_isStaggered) clock.manual.Advance(kOffset);
}

void SimulatedProduct::Start(const Bilog::BiUbaDataType& settings, bool hasCollector, int unregistered) {
  WriteSettings(folder.Path() / "local", hasCollector ? collector.Url() : "", collector.Url());
  Set(settings);
  ledger.conditions.hasCollector = hasCollector;
  ledger.conditions.isLoggedIn = false;
  m_parts = std::make_unique<Parts>();
  if (unregistered > 0) Bilog::BiDataBase::GetInstance() = Bilog::BiDataBase();
  for (int i = 0; i < unregistered; ++i) RecordBi(1, "too early");
  m_parts->bi.Start();  // which empties its queue at once
  Started();
  ledger.LoseQueue(Channel::kMaintenance, "storage not registered");
  ledger.conditions.storingSince[0] = clock.NowMilliseconds();

  const bool isTooLarge =
      std::filesystem::exists(DatabaseFile()) && std::filesystem::file_size(DatabaseFile()) >= kTooManyBytes;
  if (isTooLarge) {
    ledger.LoseFile("file above 500 MiB at the start");
    m_isDamaged = false;  // a new file replaces it
  }
  Bilog::BILogger::GetInstance().InitDataBase(L"user-1");
  ledger.Watch();
  g_certPath = std::filesystem::u8path(collector.CaPath()).wstring();
  const auto connection = OpenBesideTheLibrary();
  ledger.conditions.hasTrigger =
      connection != nullptr &&
      sqlite3_exec(connection.get(),
                   "CREATE TRIGGER IF NOT EXISTS refuse BEFORE INSERT ON T_UserLog WHEN NEW.Info LIKE "
                   "'%refuse me%' BEGIN SELECT RAISE(ABORT, 'refused'); END",
                   nullptr, nullptr, nullptr) == SQLITE_OK;

  m_parts->biTimer.Start();
  Started();
  m_parts->operation.Start();
  Started();
  ledger.conditions.storingSince[1] = clock.NowMilliseconds();
}

// As the operation facade's StartLogRptTask.
void SimulatedProduct::LogIn() {
  if (m_parts->isReporting) return;
  m_parts->operation.SetLogin();
  ledger.conditions.isLoggedIn = true;
  const Bilog::LogSettings& settings = Bilog::LogSettings::GetInstance();
  if (!settings.GetOperationLogSwitch()) {
    ledger.Clear("operation switch off", OperateLog::OperationLoggerManager::DeleteStoredRecords);
  }
  if (settings.GetUbaSwitch() == 0) {
    ledger.Clear("UBA switch 0 at login", [] {
      Bilog::BiDataBase::GetInstance().executeDeleteAllOperationLogUserLogCallback(true, 0);
    });
  }
  m_parts->operationTimer.Start();
  Started();
  m_parts->ubaTimer.Start();
  Started();
  m_parts->isReporting = true;
}

void SimulatedProduct::End(bool isOrderly) {
  ledger.Check();
  if (isOrderly) {
    m_parts->operation.Stop();
    m_parts->operationTimer.Stop();
    m_parts->ubaTimer.Stop();
    m_parts->biTimer.Stop();
  }
  ledger.conditions.isSavingAll = true;
  m_parts.reset();
  ledger.conditions.isSavingAll = false;
  ledger.conditions.storingSince[0] = ledger.conditions.storingSince[1] = -1;
  ledger.StoreKept([] { SQLiteDB::LogSQLiteDB::GetInstance().StoreKeptRecords(); });
  ledger.LoseQueue(Channel::kMaintenance, "BI queue at its manager's end");
  ledger.Check();
  m_threads = 0;
}

void SimulatedProduct::SwitchOperationLog(bool isOn) {
  ledger.Clear("operation switch off",
               [&] { OperateLog::OperationLogger::GetInstance().SetOperationLogSwitchState(isOn); });
}

void SimulatedProduct::ClearDataBase() {
  ledger.Clear("cleared by the host", [] { Bilog::BILogger::GetInstance().ClearDataBase(); });
}

void SimulatedProduct::DeleteOperationLogDB() {
  ledger.Clear("cleared by the host",
               [] { OperateLog::OperationLogger::GetInstance().DeleteOperationLogDB(); });
}

void SimulatedProduct::DeleteFromAllTables() {
  ledger.Wipe("cleared by the host", [] { Bilog::BILogger::GetInstance().DeleteFromAllTables(); });
}

void SimulatedProduct::RecordBi(int form, const std::string& text, bool isRefused) {
  const std::string info = ledger.NextMark(Channel::kMaintenance) + text + (isRefused ? "refuse me" : "");
  ledger.RecordBi({{"Info", info}}, isRefused);
  const std::wstring wide = TypeConvert::UTF8ToUnicode(info);
  Bilog::BILoggerManager& manager = m_parts->bi;
  switch (form) {
    case 1:
      return manager.AddEvent(L"action", L"0", wide, L"extend", L"trace");
    case 2:
      return manager.AddEvent(16001, L"0", wide, 0.5);
    case 3:
      return manager.AddEvent(16001, L"0", L"unused", wide, L"{\"a\":1}");
    case 4:
      return manager.AddEvent(7, wide, L"");
    default:
      return manager.AddEvent(7, L"1", wide, {{L"key", L"value"}});
  }
}

void SimulatedProduct::RecordOperation(int event, const std::string& text) {
  using namespace OperateLog;
  const Ledger::Texts texts = {{"mark", ledger.NextMark(Channel::kOperation)}, {"text", text}};
  const auto type = static_cast<OperationBasicEventType>(event);
  ledger.RecordOperation(texts, NameOf(type));
  OperationLogger::Fields fields;
  for (const auto& [name, value] : texts)
    fields[TypeConvert::UTF8ToUnicode(name)] = TypeConvert::UTF8ToUnicode(value);
  m_parts->operation.AddEvent(type, OperationType{3}, OperationActionType::kSwitchPage, fields);
}

// As the operation facade's list form, with a mark for each group of ten.
void SimulatedProduct::RecordList(int maps) {
  using namespace OperateLog;
  constexpr auto kType = OperationBasicEventType::kDriveActionNewFile;
  for (; maps > 0; maps -= 10) {
    const std::wstring mark = TypeConvert::UTF8ToUnicode(ledger.NextMark(Channel::kOperation));
    const std::vector<OperationLogger::Fields> list(static_cast<std::size_t>(std::min(maps, 10)),
                                                    {{L"n", mark}});
    const auto groups = MakeFileInfoGroups(list);
    m_proof.Check(groups.size() == (maps < 10 ? 0 : 1), "a list has another number of groups");
    for (const std::wstring& group : groups) {
      ledger.RecordOperation({{"fileInfos", TypeConvert::UnicodeToUTF8(group)}}, NameOf(kType));
      m_parts->operation.AddEvent(kType, {}, {}, {{L"fileInfos", group}});
    }
    if (maps < 10) ledger.Count(Channel::kOperation, "list entries that fill no group", maps);
  }
}

void SimulatedProduct::Advance(milliseconds duration) { clock.manual.Advance(duration); }

// The server takes the last request of a timer that stops, which waits a second for the answer.
void SimulatedProduct::LoseAnAnswer(int timer) {
  if (!m_parts->isReporting) timer = 0;
  collector.ClearFaults();
  Collection::Fault slow;
  slow.delay = std::chrono::minutes(1);
  collector.InjectFault(slow);
  --m_threads;
  if (timer == 0) m_parts->biTimer.Stop();
  if (timer == 1) m_parts->operationTimer.Stop();
  if (timer == 2) m_parts->ubaTimer.Stop();
  collector.Stop();
  collector.Start();
  collector.ClearFaults();
  ledger.TakeUnconfirmed();
  if (timer == 0) m_parts->biTimer.Start();
  if (timer == 1) m_parts->operationTimer.Start();
  if (timer == 2) m_parts->ubaTimer.Start();
  Started();
}

void SimulatedProduct::SetMainProcess(bool isThere, bool knowsToken) {
  m_mainProcess.reset();
  if (!isThere) return;
  m_mainProcess.emplace([this, knowsToken](int, const std::string&) {
    return knowsToken ? "token of the main process " + std::to_string(++m_tokens) : "";
  });
}

void SimulatedProduct::LoseFile(const char* rule) {
  clock.LetGo();
  const std::string path = DatabaseFile().u8string();
  for (const char* suffix : {"", "-wal", "-shm"})
    std::filesystem::remove(std::filesystem::u8path(path + suffix));
  ledger.LoseFile(rule);
  ledger.conditions.hasTrigger = false;
}

void SimulatedProduct::DeleteFile() { LoseFile("file deleted from outside"); }

void SimulatedProduct::DamageFile() {
  LoseFile("file damaged from outside");
  std::ofstream(DatabaseFile(), std::ios::binary) << std::string(20000, 'x');
  m_isDamaged = true;
}

void SimulatedProduct::InflateFile() {
  if (std::filesystem::exists(DatabaseFile())) std::filesystem::resize_file(DatabaseFile(), kTooManyBytes);
}

void SimulatedProduct::Heal() {
  if (std::exchange(m_isDamaged, false)) std::filesystem::remove(DatabaseFile());
  vfs.Heal();
  clock.LetGo();
  g_isOffLine = false;
  g_certPath = std::filesystem::u8path(collector.CaPath()).wstring();
  collector.ClearFaults();
  collector.Start();
}

}  // namespace Drive::Testing
