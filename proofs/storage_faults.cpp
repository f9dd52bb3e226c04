// storage_faults.cpp - proves that the store gets over a failure of any call to the file system: nothing
// stored is lost, what could not be stored comes later, and nothing fails in silence that is not meant to.
//
// A round is the whole sweep. For each operation, on a file in each state, and for each kind of call and of
// failure, the first call fails, then the second, and so on until the operation ends before a failure comes;
// each time alone, and with all that follow. Then the file system is well again, and one more insert must
// leave everything where it belongs.
#include <filesystem>
#include <functional>
#include <map>

#include "client/common/SharedGlobals.h"
#include "logdb/LogSQLiteDB.h"
#include "model/LogSettings.h"
#include "platform/Clock.h"
#include "proofs/Proof.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FaultyVfs.h"
#include "tests/support/OtherConnection.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace Drive;
using namespace Drive::Testing;
using Call = FaultyVfs::Call;
namespace fs = std::filesystem;

// Nobody else uses the file, so there is nothing to wait for.
class HastyClock final : public Platform::Clock {
 public:
  std::int64_t NowMilliseconds() const override { return 0; }
  Platform::LocalTime NowLocal() const override { return {}; }
  bool WaitFor(std::chrono::milliseconds, const Platform::WakeSignal& wake) override {
    return wake.IsRaised();
  }
};

bool IsAsWritten(const LogMessage& message) {
  for (const char* beginning :
       {"Init database failed.", "Create sync database failed,error code is .",
        "Set WAL failed,error code is ", "Open database failed,error code is ",
        "Close database failed,error code is ", "_executeNoQuerySqlCmd failed,error code is ",
        "InsertUserLogBatch failed,error code is ", "DeleteUserLogWithId failed,error code is ",
        "SELECT Id FROM T_UserLog exc error!", "cannot commit - no transaction is active: SQL logic error"}) {
    if (message.text.rfind(beginning, 0) == 0) return true;
  }
  // Of BEGIN and COMMIT: SQLite's message and its text of the code, which are the same here.
  const std::string reason = message.text.substr(0, (message.text.size() - 2) / 2);
  return message.text == reason + ": " + reason && message.location.find("Transaction") != std::string::npos;
}

constexpr struct {
  const char* name;
  Call call;
  int code;
} kFaults[] = {
    {"open", Call::kOpen, SQLITE_CANTOPEN},
    {"open", Call::kOpen, SQLITE_IOERR},
    {"read", Call::kRead, SQLITE_IOERR_READ},
    {"read", Call::kRead, SQLITE_CORRUPT},
    {"write", Call::kWrite, SQLITE_IOERR_WRITE},
    {"write", Call::kWrite, SQLITE_FULL},
    {"sync", Call::kSync, SQLITE_IOERR_FSYNC},
    {"lock", Call::kLock, SQLITE_IOERR_LOCK},
    {"lock", Call::kLock, SQLITE_BUSY},
    {"shared memory", Call::kShare, SQLITE_IOERR_SHMMAP},
    {"size", Call::kSize, SQLITE_IOERR_FSTAT},
    {"truncate", Call::kTruncate, SQLITE_IOERR_TRUNCATE},
    {"delete", Call::kDelete, SQLITE_IOERR_DELETE},
    {"access", Call::kAccess, SQLITE_IOERR_ACCESS},
};

const std::string kRows = "0 1 2 3 4 5 6 7 8 9 ";

struct Operation {
  const char* name;
  std::function<bool()> run;  // false when it says that it has failed
  // What is in the file when it was done and, after a message, when it was not.
  std::string done;
  std::string undone;
};

SQLiteDB::LogSQLiteDB& Store() { return SQLiteDB::LogSQLiteDB::GetInstance(); }

void Insert(const std::wstring& action) {
  std::vector<Bilog::UserLog> batch(1);
  batch[0].set_Action(action);
  batch[0].set_Info(std::wstring(1000, L'x'));
  Store().InsertUserLogBatch(batch, false);
}

class Sweep {
 public:
  explicit Sweep(Proof& proof) : m_proof(proof) {
    g_dbFullPath = m_folder.Wide("db");
    g_logDbFullPathWithName = File();
    for (const char* state : {"db", "missing", "closed", "crashed", "without log"}) {
      fs::create_directories(m_folder.Path() / state);
    }
    Store().InitDataBase(L"Log.db");
    for (wchar_t digit = L'0'; digit < L'9'; ++digit) Insert({digit});
    {
      const OtherConnection secondUser(File());  // keeps the write-ahead log alive
      Insert(L"9");
      Keep("crashed");
    }
    Keep("closed");
    OtherConnection(File()).Run("PRAGMA journal_mode = DELETE");
    Keep("without log");
  }

  void Run() {
    const auto init = [] { return Store().InitDataBase(L"Log.db"); };
    const auto insert = [] { return Insert(L"new"), true; };
    const auto cut = [] {
      Bilog::LogSettings::GetInstance().SetLogDbSize(10);
      Insert(L"new");
      Bilog::LogSettings::GetInstance().SetLogDbSize(1000);
      return true;
    };
    const auto read = [this] { return Read(); };
    const auto erase = [] { return Store().DeleteUserLogWithId(1, 5, 0, false), true; };
    for (const char* state : {"closed", "crashed", "without log"}) {
      Run({"start-up", init, kRows, kRows}, state);
      Run({"insert", insert, kRows + "new ", kRows + "new "}, state);
      Run({"insert that cuts", cut, kRows.substr(2) + "new ", kRows + "new "}, state);
      Run({"read", read, kRows, kRows}, state);
      Run({"delete", erase, kRows.substr(10), kRows}, state);
    }
    Run({"start-up", init, "", ""}, "missing");
    Run({"insert", insert, "new ", "new "}, "missing");
  }

  std::string Figures() const {
    std::string figures = std::to_string(m_tries) + " operations, " + std::to_string(m_undone) +
                          " not done at once, " + std::to_string(m_twice) + " stored twice; calls failed:";
    for (const auto& [name, count] : m_failures) figures += " " + std::to_string(count) + " " + name + ",";
    figures.pop_back();
    return figures;
  }

 private:
  std::string File() const { return m_folder.Narrow("db/Log.db"); }
  void Copy(const fs::path& from, const fs::path& to) const {
    for (const char* name : {"Log.db", "Log.db-wal", "Log.db-shm", "Log.db-journal"}) {
      fs::remove(to / name);
      if (fs::exists(from / name) && name != std::string("Log.db-shm")) fs::copy_file(from / name, to / name);
    }
  }
  void Keep(const char* state) const { Copy(m_folder.Path() / "db", m_folder.Path() / state); }

  // The actions in order, and what is wrong with the file.
  std::string Rows() const {
    try {
      const OtherConnection file(File());
      const std::string verdict = file.Run("PRAGMA integrity_check");
      return file.Run("SELECT group_concat(Action, ' ') FROM (SELECT Action FROM T_UserLog ORDER BY Id)") +
             (verdict == "ok" ? "" : " " + verdict);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  // A read may end early and in silence, but with the oldest records.
  bool Read() {
    std::string rows;
    for (const Bilog::UserLog& record : Store().GetUserLogList(99, 0, false)) {
      rows.append(1, static_cast<char>(record.get_Action()[0])).append(" ");
    }
    m_proof.Check(kRows.rfind(rows, 0) == 0, "read " + rows);
    return true;
  }

  void Run(const Operation& operation, const char* state) {
    for (const auto& fault : kFaults) {
      for (const auto fail : {&FaultyVfs::FailOnce, &FaultyVfs::FailFrom}) {
        int failures = 1;
        for (int n = 1; failures > 0; ++n) {
          const std::string name = std::string(operation.name) + ", " + state + ", " + fault.name + " " +
                                   std::to_string(n) + (fail == &FaultyVfs::FailOnce ? "" : " and later") +
                                   ", code " + std::to_string(fault.code) + ": ";
          Copy(m_folder.Path() / state, m_folder.Path() / "db");
          (m_vfs.*fail)(fault.call, n, fault.code);
          Try(operation, fault.call, name);
          failures = m_vfs.Failures();
          m_failures[fault.name] += failures;
        }
      }
    }
  }

  void Try(const Operation& operation, Call call, const std::string& name) {
    ++m_tries;
    m_log.Clear();
    const bool says = operation.run();
    m_vfs.Heal();
    const auto errors = m_log.OfLevel(5);
    for (const LogMessage& error : errors) {
      m_proof.Check(IsAsWritten(error), name + "the message " + error.location + ": " + error.text);
    }
    m_proof.Check(says || !errors.empty(), name + "failed in silence");

    m_log.Clear();
    Insert(L"after");
    for (const LogMessage& error : m_log.OfLevel(5)) m_proof.Check(false, name + "and later " + error.text);
    const std::string rows = Rows();
    const bool hasWaited =
        m_log.Count("InsertUserLogBatch stored 1 records that had waited for the database") > 0;
    const bool isDone = rows == operation.done + "after" && !hasWaited;
    // A commit whose sync failed may stand after all, once the log is recovered; nobody can know.
    const bool isTwice = rows == operation.done + "new after" && hasWaited && call == Call::kSync;
    m_proof.Check(isDone || isTwice || rows == operation.undone + "after", name + "the file holds " + rows);
    m_proof.Check(isDone || !errors.empty(), name + "not done, and no message");
    m_twice += isTwice ? 1 : 0;
    m_undone += isDone ? 0 : 1;
  }

  Proof& m_proof;
  TempFolder m_folder;
  FaultyVfs m_vfs;
  CapturedLog m_log;
  int m_tries = 0;
  int m_undone = 0;
  int m_twice = 0;
  std::map<std::string, int> m_failures;
};

}  // namespace

int main(int argc, char** argv) {
  Proof proof("prove_storage_faults", argc, argv);
  Platform::InstallClock(new HastyClock);
  Sweep sweep(proof);
  while (proof.HasTime()) {
    proof.NextRound();
    sweep.Run();
  }
  return proof.Finish(sweep.Figures());
}
