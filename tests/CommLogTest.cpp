// CommLogTest.cpp - where diagnostic messages go.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <tuple>

#include "client/log/SyncPanelLog.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

void Print(int level, const std::string& message) {
  CommLog::GetInstance().PrintLog(level, 987, "Some::Place", message);
}

TEST(CommLogTest, SendsEachLevelToItsFileUnlessAFunctionIsInstalled) {
  const TempFolder folder;
  SyncPanelLog::GetInstance().SetFolder(folder.Path().wstring());
  {
    const CapturedLog log;
    Print(-7, "for the function");
    EXPECT_EQ((std::vector<LogMessage>{{-7, 987, "Some::Place", "for the function"}}), log.All());
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
  }
  const std::tuple<int, std::string, std::string> rows[] = {
      {0, "net.log", "[SyncNetLogger] CommLog::PrintLog:29"},
      {1, "debug.log", "[SyncDebugLogger] CommLog::PrintLog:32"},
      {2, "info.log", "[SyncInfoLogger] CommLog::PrintLog:35"},
      {3, "sync.log", "[SyncLogger] CommLog::PrintLog:38"},
      {4, "traceui.log", "[SyncUILogger] CommLog::PrintLog:41"},
      {5, "error.log", "[SyncErrorLogger] CommLog::PrintLog:44"},
      {7, "error.log", "[SyncErrorLogger] CommLog::PrintLog:44"},
      {-1, "error.log", "[SyncErrorLogger] CommLog::PrintLog:44"},
  };
  for (const auto& [level, file, source] : rows) {
    const std::string message = "message of level " + std::to_string(level) + ".";
    Print(level, message);
    std::ostringstream text;
    text << std::ifstream(folder.Path() / file).rdbuf();
    const std::string expected = source + " Some::Place: " + message;
    EXPECT_NE(std::string::npos, text.str().find(expected)) << level << ": " << text.str();
  }
  SyncPanelLog::GetInstance().SetFolder(L"");
}

TEST(CommLogTest, AFunctionMayReportReplaceItselfAndThrow) {
  std::string seen;
  CommLog::GetInstance().SetLogFunc([&seen](int, int, const std::string&, const std::string& message) {
    seen += message + " ";
    if (message != "first") return;
    Print(5, "nested");
    CommLog::GetInstance().SetLogFunc(
        [&seen](int, int, const std::string&, const std::string&) { seen += "replaced"; });
    throw std::runtime_error("not for the caller");
  });
  Print(5, "first");
  Print(5, "second");
  EXPECT_EQ("first nested replaced", seen);
  CommLog::GetInstance().SetLogFunc(nullptr);
}

}  // namespace
}  // namespace Drive::Testing
