// IPCDriveClient.h - request and reply between the client's processes.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace Drive::IPC {

// The command that asks the main process for a new access token; the reply is the token.
inline constexpr int kCommandRenewAccessToken = 4;

// Asks the main process. Every request is a connection of its own, so the main process may come and go.
//
// Thread-safety: every operation may be called from any thread.
class IPCDriveClient {
 public:
  // Sends the command and waits for the reply, 5 s at most. False, with `reply` empty, when there is no main
  // process, it does not answer, or this process begins to end.
  bool GetMessageCommand(std::string& reply, int command, const std::string& payload);
};

// Answers the other processes; the main process owns one.
//
// The handler runs on a thread of the server, one request at a time; what it throws counts as an empty reply.
// Lifetime: the destructor returns when no handler runs any more.
class IPCDriveServer {
 public:
  using Handler = std::function<std::string(int command, const std::string& payload)>;

  explicit IPCDriveServer(Handler handler);
  ~IPCDriveServer();

  // False when the endpoint could not be opened (another main process runs).
  bool IsListening() const;

 private:
  struct Listener;
  std::unique_ptr<Listener> m_listener;
};

// Replaces the endpoint's name, so that tests and several clients of one user stay apart. Default: APP_NAME.
void SetIpcEndpointName(const std::string& name);

}  // namespace Drive::IPC
