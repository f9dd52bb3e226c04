// ClientSyncPanelLogTest.cpp - one rotating file a severity, and no harm when it cannot be written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "client/log/SyncPanelLog.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

class SyncPanelLogTest : public testing::Test {
 protected:
  void SetUp() override { m_log.SetFolder(m_temp.Wide("l\xC3\xB6gs/x")); }
  void TearDown() override { m_log.SetFolder(L""); }

  std::string TextOf(const std::string& file) const {
    std::ifstream stream(m_folder / file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  SyncPanelLog& m_log = SyncPanelLog::GetInstance();
  const Testing::TempFolder m_temp;
  const std::filesystem::path m_folder = std::filesystem::u8path(m_temp.Narrow("l\xC3\xB6gs/x"));
};

TEST_F(SyncPanelLogTest, EverySeverityHasItsFileAndName) {
  const std::tuple<LogSeverity, std::string, std::string> rows[] = {
      {LogSeverity::kNet, "net.log", "SyncNetLogger"},
      {LogSeverity::kDebug, "debug.log", "SyncDebugLogger"},
      {LogSeverity::kInfo, "info.log", "SyncInfoLogger"},
      {LogSeverity::kSync, "sync.log", "SyncLogger"},
      {LogSeverity::kUi, "traceui.log", "SyncUILogger"},
      {LogSeverity::kError, "error.log", "SyncErrorLogger"},
      {LogSeverity::kFileInfo, "fileInfo.log", "SyncFileInfoLogger"},
  };
  for (const auto& [severity, file, name] : rows) {
    EXPECT_FALSE(std::filesystem::exists(m_folder / file)) << "opened before its first line";
    m_log.Output(severity, 44, "A::B", "text {} %s\nnext");
    const std::string text = TextOf(file);  // begins with "2024-03-05 07:08:09.045"
    EXPECT_EQ(text.find_first_not_of("0123456789-: ."), 24U);
    EXPECT_EQ(text.substr(24), "[" + name + "] A::B:44 text {} %s next\n");
  }
}

TEST_F(SyncPanelLogTest, DropsLinesThatCannotBeWritten) {
  std::ofstream(m_temp.Path() / "file") << "x";
  m_log.SetFolder(m_temp.Wide("file/below"));
  m_log.Output(LogSeverity::kError, 1, "A", "dropped");
  m_log.Output(static_cast<LogSeverity>(99), 1, "A", "no such severity");
  m_log.SetFolder(m_temp.Wide("l\xC3\xB6gs/x"));
  m_log.Output(LogSeverity::kError, 1, "A", "written");
  EXPECT_NE(TextOf("error.log").find("written"), std::string::npos);
}

}  // namespace
}  // namespace Drive
