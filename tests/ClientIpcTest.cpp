// ClientIpcTest.cpp - requests to a main process that answers, hangs, crashes or is not there.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "client/common/IPCDriveClient.h"
#include "platform/ProcessEnd.h"

namespace Drive::IPC {
namespace {

using namespace std::chrono_literals;

std::string Echo(int command, const std::string& payload) { return std::to_string(command) + ":" + payload; }

std::string Ask(int command, const std::string& payload) {
  std::string reply = "old";
  return IPCDriveClient().GetMessageCommand(reply, command, payload) ? reply : "failed" + reply;
}

class IpcTest : public testing::Test {
 protected:
  void SetUp() override {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    // The same in a test's child, another one in another build's tests.
    const std::string place = std::filesystem::current_path().u8string() +
                              testing::UnitTest::GetInstance()->current_test_info()->name();
    SetIpcEndpointName("test-" + std::to_string(std::hash<std::string>()(place)));
  }
};

TEST_F(IpcTest, TheServersReplyComesBackByteForByte) {
  const IPCDriveServer server([](int command, const std::string& payload) {
    return command == 0 ? throw std::runtime_error("no") : Echo(command, payload);
  });
  ASSERT_TRUE(server.IsListening());
  const std::string bytes("\0\xFF\n", 3);
  const std::string large(1024 * 1024, 'x');
  EXPECT_EQ(Ask(0, "x"), "") << "what throws counts as an empty reply";
  EXPECT_EQ(Ask(-2147483647 - 1, bytes), "-2147483648:" + bytes);
  EXPECT_TRUE(Ask(1, large) == "1:" + large);
  std::thread threads[8];
  for (int i = 1; i <= 8; ++i) {
    threads[i - 1] = std::thread([i] { EXPECT_EQ(Ask(i, "x"), std::to_string(i) + ":x"); });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(IpcTest, OneServerAtATimeAndTheNextTakesOver) {
  if (std::getenv("WINEHOMEDIR") != nullptr) {
    GTEST_SKIP() << "Wine 8 lets a second server have the first one's pipe";
  }
  {
    const IPCDriveServer first(Echo);
    const IPCDriveServer second([](int, const std::string&) { return "second"; });
    EXPECT_FALSE(second.IsListening());
    EXPECT_EQ(Ask(4, "x"), "4:x");
  }
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Ask(4, "x"), "failed");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << "nobody listens: no reason to wait";
  const IPCDriveServer third(Echo);
  EXPECT_EQ(Ask(4, "x"), "4:x");
}

TEST_F(IpcTest, AServerThatCrashedLeavesThePlaceFree) {
  const auto listenAndCrash = [] {
    const IPCDriveServer server(Echo);
    std::_Exit(server.IsListening() ? 0 : 1);
  };
  EXPECT_EXIT(listenAndCrash(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(Ask(4, "x"), "failed");
  const IPCDriveServer server(Echo);
  EXPECT_EQ(Ask(4, "x"), "4:x");
}

// The server's handler never returns, as that of a main process that hangs.
TEST_F(IpcTest, TheEndOfTheProcessEndsAPendingRequest) {
  const auto endWhileARequestIsPending = [] {
    static Platform::WakeSignal& isAsked = *new Platform::WakeSignal;
    static Platform::WakeSignal& never = *new Platform::WakeSignal;
    static const IPCDriveServer& server = *new IPCDriveServer([](int, const std::string&) {
      isAsked.Raise();
      never.WaitFor(1h);
      return std::string();
    });
    std::string reply;
    std::thread client([&reply] { reply = Ask(4, "x"); });
    isAsked.WaitFor(server.IsListening() ? 1min : 0min);
    const auto start = std::chrono::steady_clock::now();
    Platform::ProcessEnd::Begin();
    client.join();
    std::exit(reply == "failed" && std::chrono::steady_clock::now() - start < 2s ? 0 : 1);
  };
  EXPECT_EXIT(endWhileARequestIsPending(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive::IPC
