// CommLogTest.cpp - where diagnostic messages go.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "client/log/SyncPanelLog.h"
#include "drivelog/CommLog.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

class CommLogTest : public testing::Test {
 protected:
  CommLogTest() { SyncPanelLog::GetInstance().SetFolder(m_folder.Path().wstring()); }
  ~CommLogTest() override {
    CommLog::GetInstance().SetLogFunc(nullptr);
    SyncPanelLog::GetInstance().SetFolder(L"");
  }

  std::string FileText(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(m_folder.Path() / name).rdbuf();
    return text.str();
  }

  TempFolder m_folder;
};

TEST_F(CommLogTest, SendsEachLevelToItsFile) {
  CommLog::GetInstance().SetLogFunc(nullptr);
  const struct {
    int level;
    std::string file;
    std::string line;
  } rows[] = {{0, "net.log", "29"},   {1, "debug.log", "32"},   {2, "info.log", "35"},
              {3, "sync.log", "38"},  {4, "traceui.log", "41"}, {5, "error.log", "44"},
              {7, "error.log", "44"}, {-1, "error.log", "44"}};
  for (const auto& row : rows) {
    const std::string message = "message of level " + std::to_string(row.level) + ".";
    CommLog::GetInstance().PrintLog(row.level, 987, "Some::Place", message);
    const std::string text = FileText(row.file);
    const std::string expected = "CommLog::PrintLog:" + row.line + " Some::Place: " + message;
    EXPECT_NE(std::string::npos, text.find(expected)) << row.level << ": " << text;
    EXPECT_EQ(std::string::npos, text.find("987"));
  }
}

TEST_F(CommLogTest, HandsEverythingToAnInstalledFunctionAndNothingToTheFiles) {
  CapturedLog log;
  CommLog::GetInstance().PrintLog(-7, 123, "A", "B");
  const std::vector<LogMessage> messages = log.All();
  ASSERT_EQ(1U, messages.size());
  EXPECT_EQ(-7, messages[0].level);
  EXPECT_EQ(123, messages[0].line);
  EXPECT_EQ("A", messages[0].location);
  EXPECT_EQ("B", messages[0].text);
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path()));
}

TEST_F(CommLogTest, AFunctionMayReportReplaceItselfAndThrow) {
  std::string seen;
  CommLog::GetInstance().SetLogFunc([&seen](int, int, const std::string&, const std::string& message) {
    seen += message + " ";
    if (message != "first") return;
    CommLog::GetInstance().PrintLog(5, 1, "A", "nested");
    CommLog::GetInstance().SetLogFunc(
        [&seen](int, int, const std::string&, const std::string&) { seen += "replaced"; });
    throw std::runtime_error("not for the caller");
  });
  CommLog::GetInstance().PrintLog(5, 1, "A", "first");
  CommLog::GetInstance().PrintLog(5, 1, "A", "second");
  EXPECT_EQ("first nested replaced", seen);
}

int g_inTime = 0;

// What is registered before CommLog's first use runs after its end, and the other way round.
[[noreturn]] void EndWithReports() {
  std::atexit([] {
    CommLog::GetInstance().PrintLog(5, 1, "A", "late");
    std::_Exit(g_inTime == 1 ? 0 : 1);
  });
  CommLog::GetInstance().SetLogFunc([](int, int, const std::string&, const std::string& message) {
    if (message == "late") std::_Exit(2);
    ++g_inTime;
  });
  std::atexit([] { CommLog::GetInstance().PrintLog(5, 1, "A", "in time"); });
  std::exit(3);
}

TEST_F(CommLogTest, DropsMessagesOfTheLateEndOfTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(EndWithReports(), testing::ExitedWithCode(0), "");
}

TEST_F(CommLogTest, ServesManyThreadsWhileTheFunctionChanges) {
  std::atomic<int> seen{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int n = 0; n < 500; ++n) CommLog::GetInstance().PrintLog(5, n, "A", "message");
    });
  }
  for (int i = 0; i < 100; ++i) {
    CommLog::GetInstance().SetLogFunc([&seen](int, int, const std::string&, const std::string&) { ++seen; });
  }
  for (std::thread& thread : threads) thread.join();
  const int before = seen;
  CommLog::GetInstance().PrintLog(5, 1, "A", "last");
  EXPECT_EQ(before + 1, seen);
}

}  // namespace
}  // namespace Drive::Testing
