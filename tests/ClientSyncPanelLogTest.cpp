// ClientSyncPanelLogTest.cpp - one rotating file a severity, and no harm when it cannot be written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "client/log/SyncPanelLog.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

std::string TextOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// The one line of `text`, with zeros for the digits of its time and the same end on every platform.
std::string WithoutTime(std::string text) {
  constexpr std::size_t kTimeSize = 23;
  for (std::size_t i = 0; i < text.size() && i < kTimeSize; ++i) {
    text[i] = std::isdigit(static_cast<unsigned char>(text[i])) != 0 ? '0' : text[i];
  }
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

class SyncPanelLogTest : public testing::Test {
 protected:
  void SetUp() override { SyncPanelLog::GetInstance().SetFolder(m_temp.Wide("l\xC3\xB6gs/x")); }
  void TearDown() override { SyncPanelLog::GetInstance().SetFolder(L""); }

  const Testing::TempFolder m_temp;
  const std::filesystem::path m_folder = std::filesystem::u8path(m_temp.Narrow("l\xC3\xB6gs/x"));
};

TEST_F(SyncPanelLogTest, EverySeverityHasItsFileAndName) {
  struct {
    LogSeverity severity;
    std::string file;
    std::string name;
  } const rows[] = {
      {LogSeverity::kNet, "net.log", "SyncNetLogger"},
      {LogSeverity::kDebug, "debug.log", "SyncDebugLogger"},
      {LogSeverity::kInfo, "info.log", "SyncInfoLogger"},
      {LogSeverity::kSync, "sync.log", "SyncLogger"},
      {LogSeverity::kUi, "traceui.log", "SyncUILogger"},
      {LogSeverity::kError, "error.log", "SyncErrorLogger"},
      {LogSeverity::kFileInfo, "fileInfo.log", "SyncFileInfoLogger"},
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(std::filesystem::exists(m_folder / row.file)) << "opened before its first line";
    SyncPanelLog::GetInstance().Output(row.severity, 44, "A::B", "text {} %s\nnext");
    EXPECT_EQ(WithoutTime(TextOf(m_folder / row.file)),
              "0000-00-00 00:00:00.000 [" + row.name + "] A::B:44 text {} %s next\n");
  }
}

TEST_F(SyncPanelLogTest, KeepsThreeFilesOfBoundedSize) {
  const std::string text(1024 * 1024, 'x');
  for (int line = 0; line < 22; ++line) {
    SyncPanelLog::GetInstance().Output(LogSeverity::kError, line, "A", text);
  }
  std::uintmax_t files = 0;
  for (const auto& file : std::filesystem::directory_iterator(m_folder)) {
    EXPECT_LE(file.file_size(), 5U * 1024 * 1024) << file.path();
    ++files;
  }
  EXPECT_EQ(files, 3U);
  EXPECT_NE(TextOf(m_folder / "error.log").find(" A:21 "), std::string::npos) << "the last line is kept";
}

TEST_F(SyncPanelLogTest, DropsLinesThatCannotBeWritten) {
  std::ofstream(m_temp.Path() / "file") << "x";
  SyncPanelLog& log = SyncPanelLog::GetInstance();
  log.SetFolder(m_temp.Wide("file/below"));
  log.Output(LogSeverity::kError, 1, "A", "dropped");
  log.Output(static_cast<LogSeverity>(99), 1, "A", "no such severity");
  log.SetFolder(m_temp.Wide("l\xC3\xB6gs/x"));
  log.Output(LogSeverity::kError, 1, "A", "written");
  EXPECT_NE(TextOf(m_folder / "error.log").find("written"), std::string::npos);
}

TEST_F(SyncPanelLogTest, IsThereAfterEverythingElseIsDestroyed) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  static std::filesystem::path file;
  file = m_folder / "error.log";
  const auto writeAtExit = [] {
    std::atexit([] {
      SyncPanelLog::GetInstance().Output(LogSeverity::kError, 1, "A", "last words");
      std::_Exit(TextOf(file).find("last words") == std::string::npos ? 1 : 0);
    });
    SyncPanelLog::GetInstance().Output(LogSeverity::kError, 1, "A", "first words");
    std::exit(2);
  };
  EXPECT_EXIT(writeAtExit(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive
