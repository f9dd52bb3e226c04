// ScriptedServer.cpp - an HTTP server on loopback that misbehaves exactly as a test wants it to.
#include "tests/support/ScriptedServer.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace Drive::Testing {
namespace {

std::size_t BodyLength(const std::string& head) {
  const std::string name = "Content-Length: ";
  const auto start = head.find(name);
  return start == std::string::npos ? 0 : std::strtoull(head.c_str() + start + name.size(), nullptr, 10);
}

}  // namespace

bool Peer::Send(const std::string& bytes) {
  return BIO_write(m_bio.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
}

bool Peer::Receive(std::string& bytes) {
  std::array<char, 64 * 1024> buffer;
  const int count = BIO_read(m_bio.get(), buffer.data(), static_cast<int>(buffer.size()));
  if (count <= 0) {
    return false;
  }
  bytes.append(buffer.data(), static_cast<std::size_t>(count));
  return true;
}

Answer Status(int code, const std::string& body) {
  return Raw("HTTP/1.1 " + std::to_string(code) + " Scripted\r\nConnection: close\r\nContent-Length: " +
             std::to_string(body.size()) + "\r\n\r\n" + body);
}

Answer Raw(const std::string& bytes) {
  return [bytes](Peer& peer) { peer.Send(bytes); };
}

Answer Endless(const std::string& start, const std::string& block, std::chrono::milliseconds pause) {
  return [=](Peer& peer) {
    bool goesOn = peer.Send(start);
    while (goesOn) {
      goesOn = peer.Send(block) && peer.Pause(pause);
    }
  };
}

Answer Silence() {
  return [](Peer& peer) {
    std::string ignored;
    while (peer.Receive(ignored)) {
    }
  };
}

ScriptedServer::ScriptedServer(SslContext context, std::vector<Answer> script)
    : m_context(std::move(context)),
      m_acceptor(BIO_new_accept("127.0.0.1:0")),
      m_script(script.begin(), script.end()) {
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN);
#endif
  if (m_acceptor == nullptr || BIO_do_accept(m_acceptor.get()) <= 0) {
    throw std::runtime_error("no port to listen on");
  }
  m_acceptThread = std::thread([this] { Accept(); });
}

ScriptedServer::~ScriptedServer() {
  m_stop.Raise();
  // A connection of our own ends the wait for the next one.
  const Bio waker(
      BIO_new_connect(("127.0.0.1:" + std::string(BIO_get_accept_port(m_acceptor.get()))).c_str()));
  BIO_do_connect(waker.get());
  m_acceptThread.join();
  for (std::thread& thread : m_connectionThreads) {
    thread.join();
  }
}

std::string ScriptedServer::Url(const std::string& host) const {
  const std::string scheme = m_context == nullptr ? "http://" : "https://";
  return scheme + host + ":" + BIO_get_accept_port(m_acceptor.get());
}

std::vector<Request> ScriptedServer::Requests() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_requests;
}

void ScriptedServer::WaitForRequests(std::size_t count) const {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_arrived.wait(lock, [&] { return m_requests.size() >= count; });
}

void ScriptedServer::Accept() {
  while (BIO_do_accept(m_acceptor.get()) > 0 && !m_stop.IsRaised()) {
    m_connectionThreads.emplace_back([this, raw = BIO_pop(m_acceptor.get())] { Serve(Bio(raw)); });
  }
}

void ScriptedServer::Serve(Bio connection) {
  if (m_context != nullptr) {
    connection.reset(BIO_push(BIO_new_ssl(m_context.get(), 0), connection.release()));
  }
  Peer peer(std::move(connection), m_stop);
  Request request;
  std::size_t end = std::string::npos;
  while ((end = request.head.find("\r\n\r\n")) == std::string::npos) {
    if (!peer.Receive(request.head)) {
      return;
    }
  }
  request.body = request.head.substr(end + 4);
  request.head.resize(end + 4);
  const std::size_t length = BodyLength(request.head);

  const Answer answer = NextAnswer();
  while (answer != nullptr && request.body.size() < length && peer.Receive(request.body)) {
  }
  Record(std::move(request));
  if (answer != nullptr) {
    answer(peer);
  }
}

Answer ScriptedServer::NextAnswer() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_script.empty()) {
    return Status(200);
  }
  Answer answer = std::move(m_script.front());
  m_script.pop_front();
  return answer;
}

void ScriptedServer::Record(Request request) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_requests.push_back(std::move(request));
  m_arrived.notify_all();
}

}  // namespace Drive::Testing
