// RawPeer.cpp - a TCP server that speaks whatever a script tells it, by sockets and OpenSSL.
#include "proofs/RawPeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace Drive::Testing {

namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void Require(bool done) {
  if (!done) throw std::runtime_error("the raw peer has no socket or no TLS");
}

}  // namespace

RawPeer::RawPeer(const Collection::Identity& identity, int maxTlsVersion)
    : m_context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free),
      m_listener(socket(AF_INET, SOCK_STREAM, 0)) {
  Require(SSL_CTX_use_certificate(m_context.get(), identity.certificate.get()) == 1 &&
          SSL_CTX_use_PrivateKey(m_context.get(), identity.key.get()) == 1);
  SSL_CTX_set_max_proto_version(m_context.get(), maxTlsVersion);
  if (maxTlsVersion != 0) SSL_CTX_set_cipher_list(m_context.get(), "ALL:@SECLEVEL=0");
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  Require(bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
          getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) == 0);
  m_port = ntohs(address.sin_port);
}

RawPeer::~RawPeer() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isStopping = true;
    for (const int open : m_open) shutdown(open, SHUT_RDWR);
  }
  m_changed.notify_all();
  shutdown(m_listener, SHUT_RDWR);  // ends the waiting of accept
  // The first one accepts, and no other is added once it has ended.
  for (std::size_t i = 0; i < m_threads.size(); ++i) m_threads[i].join();
  close(m_listener);
}

void RawPeer::Serve(Script script) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_script = std::move(script);
  if (m_threads.empty()) {
    Require(listen(m_listener, SOMAXCONN) == 0);
    m_threads.emplace_back([this] { Accept(); });
  }
}

bool RawPeer::WaitForConnection(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, limit, [this] { return m_hadConnection; });
}

void RawPeer::Accept() {
  for (;;) {
    const int socket = accept(m_listener, nullptr, nullptr);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (socket >= 0 && m_isStopping) close(socket);
    if (socket < 0 || m_isStopping) return;
    m_open.insert(socket);
    m_hadConnection = true;
    m_changed.notify_all();
    m_threads.emplace_back([this, socket, script = m_script] {
      {
        Connection connection(*this, socket);
        script(connection);
      }
      const std::lock_guard<std::mutex> end(m_mutex);
      m_open.erase(socket);
      close(socket);
    });
  }
}

bool RawPeer::Connection::StartTls() {
  m_tls.reset(SSL_new(m_peer.m_context.get()));
  return SSL_set_fd(m_tls.get(), m_socket) == 1 && SSL_accept(m_tls.get()) == 1;
}

std::string RawPeer::Connection::Read(std::size_t most) {
  std::string bytes(most, '\0');
  const auto count = m_tls != nullptr ? SSL_read(m_tls.get(), bytes.data(), static_cast<int>(most))
                                      : recv(m_socket, bytes.data(), most, 0);
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
  return bytes;
}

std::string RawPeer::Connection::ReadHeaders() {
  std::string text;
  while (text.find("\r\n\r\n") == std::string::npos) {
    const std::string more = Read(1);  // and nothing of what follows
    if (more.empty()) break;
    text += more;
  }
  return text;
}

void RawPeer::Connection::ReadBody(const std::string& headers) {
  const std::size_t length = headers.find("Content-Length: ");
  std::size_t left = length == std::string::npos ? 0 : std::strtoul(&headers[length + 16], nullptr, 10);
  while (left > 0) {
    const std::size_t count = Read(std::min<std::size_t>(left, 16384)).size();
    if (count == 0) break;
    left -= count;
  }
}

bool RawPeer::Connection::Send(const std::string& bytes) {
  if (m_tls != nullptr) return SSL_write(m_tls.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
  return send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<std::ptrdiff_t>(bytes.size());
}

bool RawPeer::Connection::Pause(std::chrono::milliseconds duration) {
  std::unique_lock<std::mutex> lock(m_peer.m_mutex);
  return !m_peer.m_changed.wait_for(lock, duration, [this] { return m_peer.m_isStopping; });
}

void RawPeer::Connection::TunnelTo(int port) {
  const int other = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = Loopback(port);
  bool isOpen = connect(other, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  pollfd ends[2] = {{m_socket, POLLIN, 0}, {other, POLLIN, 0}};
  while (isOpen && poll(ends, 2, -1) > 0) {
    for (int i = 0; i < 2 && isOpen; ++i) {
      char bytes[16384];
      const auto count = ends[i].revents != 0 ? recv(ends[i].fd, bytes, sizeof bytes, 0) : -1;
      isOpen =
          ends[i].revents == 0 ||
          (count > 0 && send(ends[1 - i].fd, bytes, static_cast<std::size_t>(count), MSG_NOSIGNAL) == count);
    }
  }
  close(other);
}

void RawPeer::Connection::EndTls() { SSL_shutdown(m_tls.get()); }

void RawPeer::Connection::Reset() {
  const linger none{1, 0};
  setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
}

}  // namespace Drive::Testing
