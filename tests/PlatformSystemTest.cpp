// PlatformSystemTest.cpp - what the real system answers, as far as it is the same everywhere.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/ProcessEnd.h"
#include "platform/System.h"
#include "tests/support/TempFolder.h"

namespace Drive::Platform {
namespace {

using namespace std::chrono_literals;

TEST(SystemTest, CreatesEveryMissingLevelAndRefusesWhatIsThere) {
  const Testing::TempFolder folder;
  const std::wstring path = folder.Wide("one/zw\xC3\xB6lf/\xE4\xB8\x89");
  const System& system = RealSystem();
  EXPECT_EQ(system.CreateDirectoryLevels(path), 0);
  EXPECT_TRUE(
      std::filesystem::is_directory(std::filesystem::u8path(folder.Narrow("one/zw\xC3\xB6lf/\xE4\xB8\x89"))));
  EXPECT_NE(system.CreateDirectoryLevels(path), 0) << "an existing folder is a failure as well";
  std::ofstream(folder.Path() / "file") << "x";
  EXPECT_NE(system.CreateDirectoryLevels(folder.Wide("file/below")), 0);
  EXPECT_NE(system.CreateDirectoryLevels(L""), 0);
}

TEST(SystemTest, EndpointsOfDifferentNamesDiffer) {
  EXPECT_EQ(LocalEndpoint("TalvikCloud"), LocalEndpoint("TalvikCloud"));
  EXPECT_NE(LocalEndpoint("a"), LocalEndpoint("A"));
  EXPECT_NE(LocalEndpoint("a/b"), LocalEndpoint("a%2Fb"));
}

// In a process of its own: the end cannot be taken back.
TEST(ProcessEndTest, WakesEveryPauseAndLimitsPatience) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto endWhileAThreadPauses = [] {
    const bool isQuietBefore = !ProcessEnd::HasBegun() && ProcessEnd::PatienceLeft() == 1500ms;
    bool isWoken = false;
    std::thread pausing([&isWoken] { isWoken = CurrentClock().WaitFor(1h, ProcessEnd::Signal()); });
    ProcessEnd::Begin();
    pausing.join();
    const auto left = ProcessEnd::PatienceLeft();
    SystemClock().WaitFor(2ms, WakeSignal());
    ProcessEnd::Begin();  // the first call counts
    const auto later = ProcessEnd::PatienceLeft();
    std::exit(isQuietBefore && ProcessEnd::HasBegun() && isWoken && later < left && later >= 0ms ? 0 : 1);
  };
  EXPECT_EXIT(endWhileAThreadPauses(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive::Platform
