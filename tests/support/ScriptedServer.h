// ScriptedServer.h - an HTTP server on loopback that misbehaves exactly as a test wants it to.
#pragma once

#include <openssl/bio.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Clock.h"
#include "tests/support/Certificates.h"

namespace Drive::Testing {

struct BioDeleter {
  void operator()(BIO* bio) const noexcept { BIO_free_all(bio); }
};
using Bio = std::unique_ptr<BIO, BioDeleter>;

// The client's end of one connection, as an answer sees it.
class Peer {
 public:
  Peer(Bio bio, const Platform::WakeSignal& stop) : m_bio(std::move(bio)), m_stop(stop) {}

  // False when the client has gone.
  bool Send(const std::string& bytes);
  // Appends what arrives next; false when the client has gone.
  bool Receive(std::string& bytes);
  // False when the server stops meanwhile.
  bool Pause(std::chrono::milliseconds duration) const { return !m_stop.WaitFor(duration); }

 private:
  Bio m_bio;
  const Platform::WakeSignal& m_stop;
};

// What becomes of a request; the connection is closed behind it.
using Answer = std::function<void(Peer& peer)>;

Answer Status(int code, const std::string& body = {});
Answer Raw(const std::string& bytes);
// Sends `start`, then `block` again and again, with a pause between, until the client goes.
Answer Endless(const std::string& start, const std::string& block, std::chrono::milliseconds pause = {});
// Says nothing until the client goes.
Answer Silence();
// Closes the connection behind the request's head, unread body or not.
inline const Answer kResetInBody;

struct Request {
  std::string head;  // with the blank line at its end
  std::string body;
};

// Serves one request per connection, each connection on a thread of its own.
//
// Surprise: SIGPIPE is ignored in the process once a server has been made.
// Thread-safety: every operation may be called from any thread.
// Lifetime: the destructor waits until every client has gone.
class ScriptedServer {
 public:
  // Without `context` it speaks plain HTTP. Requests behind the script's end get 200.
  explicit ScriptedServer(SslContext context, std::vector<Answer> script = {});
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  // "https://localhost:43211", with another host where one is given.
  std::string Url(const std::string& host = "localhost") const;

  std::vector<Request> Requests() const;
  // Returns when so many requests have arrived.
  void WaitForRequests(std::size_t count) const;

 private:
  void Accept();
  void Serve(Bio connection);
  Answer NextAnswer();
  void Record(Request request);

  SslContext m_context;
  Bio m_acceptor;
  Platform::WakeSignal m_stop;
  mutable std::mutex m_mutex;  // guards the script and the requests
  mutable std::condition_variable m_arrived;
  std::deque<Answer> m_script;
  std::vector<Request> m_requests;
  std::thread m_acceptThread;  // owns m_connectionThreads while it runs
  std::vector<std::thread> m_connectionThreads;
};

}  // namespace Drive::Testing
