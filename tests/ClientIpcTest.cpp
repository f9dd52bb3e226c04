// ClientIpcTest.cpp - requests to a main process that answers, hangs, crashes or is not there.
#include <gtest/gtest.h>
#include <nng/nng.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "client/common/EncryptHelper.h"
#include "client/common/IPCDriveClient.h"
#include "platform/ProcessEnd.h"
#include "platform/System.h"

namespace Drive::IPC {
namespace {

using namespace std::chrono_literals;

std::string endpointName;  // of the test that runs

std::string Echo(int command, const std::string& payload) { return std::to_string(command) + ":" + payload; }

// Connects to the endpoint as no client does; false when it cannot.
bool ConnectAndLeave(std::string bytes) {
  // Kept, as the client keeps its own: nng may look at it after its connection is closed.
  static auto& dialers = *new std::vector<nng_stream_dialer*>;
  nng_stream_dialer*& dialer = dialers.emplace_back();
  nng_aio* aio = nullptr;
  nng_aio_alloc(&aio, nullptr, nullptr);
  nng_stream_dialer_alloc(&dialer, Platform::LocalEndpoint(endpointName).c_str());
  nng_stream_dialer_dial(dialer, aio);
  nng_aio_wait(aio);
  const bool isConnected = nng_aio_result(aio) == 0;
  if (isConnected) {
    auto* const stream = static_cast<nng_stream*>(nng_aio_get_output(aio, 0));
    nng_iov part{bytes.data(), bytes.size()};
    nng_aio_set_iov(aio, 1, &part);
    if (!bytes.empty()) {
      nng_stream_send(stream, aio);
      nng_aio_wait(aio);
    }
    nng_stream_free(stream);
  }
  nng_aio_free(aio);
  return isConnected;
}

class IpcTest : public testing::Test {
 protected:
  void SetUp() override {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    endpointName = "test-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    SetIpcEndpointName(endpointName);
  }

  static std::string Ask(int command, const std::string& payload) {
    std::string reply = "old";
    return IPCDriveClient().GetMessageCommand(reply, command, payload) ? reply : "failed" + reply;
  }
};

TEST_F(IpcTest, TheServersReplyComesBackByteForByte) {
  const IPCDriveServer server(Echo);
  ASSERT_TRUE(server.IsListening());
  const std::string bytes("\0\xFF\n", 3);
  EXPECT_EQ(Ask(kCommandRenewAccessToken, "Rt Change At"), "4:Rt Change At");
  EXPECT_EQ(Ask(-2147483647 - 1, bytes), "-2147483648:" + bytes);
  EXPECT_EQ(Ask(1, ""), "1:");
  const std::string large(1024 * 1024, 'x');
  EXPECT_TRUE(Ask(1, large) == "1:" + large);
}

TEST_F(IpcTest, AHandlerThatThrowsGivesAnEmptyReplyAndTheServerGoesOn) {
  const IPCDriveServer server([](int command, const std::string& payload) -> std::string {
    if (command == 0) {
      throw std::runtime_error("no");
    }
    return payload;
  });
  EXPECT_EQ(Ask(0, "x"), "");
  EXPECT_EQ(Ask(1, "x"), "x");
}

TEST_F(IpcTest, WithoutAServerARequestFailsSoon) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Ask(4, "x"), "failed");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

TEST_F(IpcTest, OneServerAtATimeAndTheNextTakesOver) {
  {
    const IPCDriveServer first(Echo);
    const IPCDriveServer second([](int, const std::string&) { return std::string("second"); });
    EXPECT_TRUE(first.IsListening());
    EXPECT_FALSE(second.IsListening());
    EXPECT_EQ(Ask(4, "x"), "4:x");
  }
  EXPECT_EQ(Ask(4, "x"), "failed");
  const IPCDriveServer third(Echo);
  EXPECT_EQ(Ask(4, "x"), "4:x");
}

TEST_F(IpcTest, ManyThreadsAskAtOnce) {
  const IPCDriveServer server(Echo);
  std::string replies[8];
  std::thread threads[8];
  for (int i = 0; i < 8; ++i) {
    threads[i] = std::thread([i, &reply = replies[i]] { IPCDriveClient().GetMessageCommand(reply, i, "x"); });
  }
  for (int i = 0; i < 8; ++i) {
    threads[i].join();
    EXPECT_EQ(replies[i], std::to_string(i) + ":x");
  }
}

TEST_F(IpcTest, PeersThatConnectAndGoAwayDoNoHarm) {
  const IPCDriveServer server(Echo);
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(ConnectAndLeave(i % 2 == 0 ? "" : "garbage"));
  }
  EXPECT_EQ(Ask(4, "x"), "4:x");
}

TEST_F(IpcTest, AServerThatCrashedLeavesThePlaceFree) {
  // The child must use the same name, another build's tests must not.
  const std::string place = std::filesystem::current_path().u8string();
  SetIpcEndpointName("crash-" + EncryptHelper::SHA256_Encode(place).substr(0, 16));
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
    bool isAnswered = true;
    std::thread client([&isAnswered] {
      std::string reply;
      isAnswered = IPCDriveClient().GetMessageCommand(reply, 4, "x");
    });
    isAsked.WaitFor(server.IsListening() ? 1min : 0min);
    const auto start = std::chrono::steady_clock::now();
    Platform::ProcessEnd::Begin();
    client.join();
    std::exit(!isAnswered && std::chrono::steady_clock::now() - start < 2s ? 0 : 1);
  };
  EXPECT_EXIT(endWhileARequestIsPending(), testing::ExitedWithCode(0), "");
}

TEST_F(IpcTest, AProcessMayEndInTheMiddleOfARequest) {
  const auto endAtOnce = [] {
    static Platform::WakeSignal& isAsked = *new Platform::WakeSignal;
    static const IPCDriveServer& server = *new IPCDriveServer([](int, const std::string&) {
      isAsked.Raise();
      const Platform::WakeSignal never;
      never.WaitFor(1h);
      return std::string();
    });
    std::thread([] {
      std::string reply;
      IPCDriveClient().GetMessageCommand(reply, 4, "x");
    }).detach();
    isAsked.WaitFor(server.IsListening() ? 1min : 0min);
    std::exit(0);
  };
  EXPECT_EXIT(endAtOnce(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Drive::IPC
