// SimulatedProduct.h - the whole library in a simulated client, with everything around it that can go wrong.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "client/common/IPCDriveClient.h"
#include "drivelog/BiUbaDataType.h"
#include "proofs/Ledger.h"
#include "proofs/LockingClock.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/FaultyVfs.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {

// One client, from session to session. Its parts are those that the two facades own, used as they use them.
class SimulatedProduct {
 public:
  // `keys`: folder of the server's keys. Threads of a staggered product never wake at the same moment.
  SimulatedProduct(Proof& proof, const std::filesystem::path& keys, bool isStaggered);
  ~SimulatedProduct();
  SimulatedProduct(const SimulatedProduct&) = delete;
  SimulatedProduct& operator=(const SimulatedProduct&) = delete;

  bool IsRunning() const { return m_parts != nullptr; }
  // A session of the client; `unregistered` events are recorded before there is a storage.
  void Start(const Bilog::BiUbaDataType& settings, bool hasCollector, int unregistered);
  void LogIn();
  void End(bool isOrderly);

  void Set(const Bilog::BiUbaDataType& settings);
  void SwitchOperationLog(bool isOn);
  void ClearDataBase();
  void DeleteOperationLogDB();
  void DeleteFromAllTables();

  void RecordBi(int form, const std::string& text, bool isRefused = false);
  void RecordOperation(int event, const std::string& text);
  void RecordList(int maps);
  void Advance(std::chrono::milliseconds duration);

  // What goes wrong around it.
  void LoseAnAnswer(int timer);
  void SetMainProcess(bool isThere, bool knowsToken);
  void DeleteFile();
  void DamageFile();
  void InflateFile();  // above the size at which a start begins a new one
  void Heal();

  Bilog::BiUbaDataType Settings() const { return SettingsFor(collector); }

  TempFolder folder;
  FakeSystem system;
  FaultyVfs vfs;
  LockingClock clock;
  Collection::Collector collector;
  Ledger ledger;

 private:
  struct Parts;
  void Started();
  void LoseFile(const char* rule);

  Proof& m_proof;
  const bool m_isStaggered;
  std::unique_ptr<Parts> m_parts;
  std::size_t m_threads = 0;
  bool m_isDamaged = false;
  int m_tokens = 0;
  std::optional<IPC::IPCDriveServer> m_mainProcess;
};

}  // namespace Drive::Testing
