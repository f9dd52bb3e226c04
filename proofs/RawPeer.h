// RawPeer.h - a TCP server that speaks whatever a script tells it, with TLS or without.
#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "collector/Certificates.h"

namespace Drive::Testing {

// Has a port of loopback from construction to destruction, where connections are refused until the first
// Serve.
//
// Thread-safety: Serve and the destructor belong to one thread. Each connection has a thread of its own,
// which runs the script; the destructor ends its waiting.
class RawPeer {
 public:
  class Connection;
  using Script = std::function<void(Connection&)>;

  // `identity` and the highest version of TLS are those of Connection::StartTls.
  explicit RawPeer(const Collection::Identity& identity, int maxTlsVersion = 0);
  ~RawPeer();
  RawPeer(const RawPeer&) = delete;
  RawPeer& operator=(const RawPeer&) = delete;

  int Port() const { return m_port; }
  std::string Address() const { return "localhost:" + std::to_string(m_port); }

  // New connections meet this script.
  void Serve(Script script);
  bool WaitForConnection(std::chrono::milliseconds limit = {});  // whether there was one

 private:
  using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

  void Accept();

  const Context m_context;
  int m_port = 0;
  int m_listener;

  std::mutex m_mutex;  // guards what follows
  std::condition_variable m_changed;
  Script m_script;
  bool m_hadConnection = false;
  bool m_isStopping = false;
  std::set<int> m_open;  // sockets in use, to be shut down by a stop
  std::vector<std::thread> m_threads;
};

// One accepted connection; closed, if it is not yet, when the script returns.
class RawPeer::Connection {
 public:
  Connection(RawPeer& peer, int socket) : m_peer(peer), m_socket(socket) {}

  bool StartTls();
  // What comes next, at most `most` bytes; empty when the other side or the peer has ended.
  std::string Read(std::size_t most = 16384);
  std::string ReadHeaders();
  void ReadBody(const std::string& headers);
  // False when the other side has gone.
  bool Send(const std::string& bytes);
  // False when the peer stops.
  bool Pause(std::chrono::milliseconds duration);
  // Hands everything over to another port of loopback, both ways, until one side ends.
  void TunnelTo(int port);
  // Ends the TLS session, so that the other side knows that nothing is missing.
  void EndTls();
  // Has the connection end with RST instead of FIN.
  void Reset();

 private:
  RawPeer& m_peer;
  const int m_socket;
  std::unique_ptr<SSL, decltype(&SSL_free)> m_tls{nullptr, &SSL_free};
};

}  // namespace Drive::Testing
