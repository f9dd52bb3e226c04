// HttpsServer.cpp - cpp-httplib's server, made to hand over requests as they were sent.
#include "collector/HttpsServer.h"

#include <httplib.h>

#include <algorithm>
#include <exception>
#include <future>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

namespace Drive::Collection {

namespace {

constexpr int kBothDirections = 2;  // SHUT_RDWR of one system, SD_BOTH of the other
constexpr std::size_t kMaxBodyBytes = std::size_t{64} << 20;
constexpr std::size_t kRequestsPerConnection = 1000;
constexpr int kIdleConnectionSeconds = 1;  // a stop waits for idle connections

// No name on the wire holds a colon.
constexpr char kHiddenPrefix[] = "hidden:";

// The library would decompress the body, or refuse it, before anyone could check it. It passes its own
// request, which is no constant, as one.
void HideContentEncoding(const httplib::Request& request) {
  auto& headers = const_cast<httplib::Request&>(request).headers;
  std::vector<std::pair<std::string, std::string>> hidden;
  const auto [first, last] = headers.equal_range("Content-Encoding");
  for (auto header = first; header != last; ++header) {
    hidden.emplace_back(kHiddenPrefix + header->first, header->second);
  }
  headers.erase(first, last);
  headers.insert(hidden.begin(), hidden.end());
}

HttpRequest Convert(const httplib::Request& from) {
  HttpRequest to{from.method, from.path, {}, {}, from.body};
  to.query.insert(from.params.begin(), from.params.end());
  const std::string hiddenPrefix = kHiddenPrefix;
  for (const auto& [name, value] : from.headers) {
    if (name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT") {
      continue;  // the library's own additions
    }
    const bool isHidden = name.compare(0, hiddenPrefix.size(), hiddenPrefix) == 0;
    to.headers.push_back({isHidden ? name.substr(hiddenPrefix.size()) : name, value});
  }
  return to;
}

// One request that nobody sent.
class RehearsedRequest final : public httplib::Stream {
 public:
  bool is_readable() const override { return true; }
  bool is_writable() const override { return true; }
  ssize_t read(char* bytes, size_t size) override {
    const std::size_t count = std::min(size, m_left.size());
    m_left.copy(bytes, count);
    m_left.remove_prefix(count);
    return static_cast<ssize_t>(count);
  }
  ssize_t write(const char* /*bytes*/, size_t size) override { return static_cast<ssize_t>(size); }
  void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  socket_t socket() const override { return INVALID_SOCKET; }

 private:
  std::string_view m_left = "GET / HTTP/1.1\r\n\r\n";
};

// The library makes its tables with the first request it reads. Read here once, before there are workers, the
// tables are ordered before all that workers do: a thread sanitizer does not see the order that a library
// built without it keeps by itself.
class Rehearsal : private httplib::Server {
 public:
  Rehearsal() {
    RehearsedRequest request;
    bool isClosed = false;
    process_request(request, true, isClosed, nullptr);
  }
};

}  // namespace

class HttpsServer::Listener {
 public:
  Listener(const Identity& identity, const std::string& host, int port, HttpHandler handler)
      : m_server(identity.certificate.get(), identity.key.get()), m_handler(std::move(handler)) {
    static const Rehearsal rehearsal;
    if (!m_server.is_valid()) {
      throw std::runtime_error("the TLS library does not take the server's certificate");
    }
    m_server.set_payload_max_length(kMaxBodyBytes);
    m_server.set_keep_alive_max_count(kRequestsPerConnection);
    m_server.set_keep_alive_timeout(kIdleConnectionSeconds);
    m_server.set_tcp_nodelay(true);
    m_server.set_pre_routing_handler([](const httplib::Request& request, httplib::Response&) {
      HideContentEncoding(request);
      return httplib::Server::HandlerResponse::Unhandled;
    });
    const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
      Answer(request, response);
    };
    m_server.Get("/.*", answer);
    m_server.Post("/.*", httplib::Server::Handler(answer));
    m_server.Delete("/.*", httplib::Server::Handler(answer));
    Bind(host, port);
    Listen();
  }

  ~Listener() {
    m_server.stop();
    m_thread.join();
  }

  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int Port() const { return m_port; }

 private:
  void Bind(const std::string& host, int port) {
    // The library lets several servers share a port, and requests would then go to any of them.
    if (port != 0 && httplib::Client(host, port).Get("/").error() != httplib::Error::Connection) {
      throw std::runtime_error("port " + std::to_string(port) + " is in use");
    }
    m_port = port == 0 ? m_server.bind_to_any_port(host) : m_server.bind_to_port(host, port) ? port : -1;
    if (m_port <= 0) {
      throw std::runtime_error("cannot listen on " + host + ":" + std::to_string(port));
    }
  }

  // Returns when the server runs, since an earlier stop would be lost on it.
  void Listen() {
    std::promise<void> running;
    m_server.new_task_queue = [&running] {
      auto queue = std::make_unique<httplib::ThreadPool>(CPPHTTPLIB_THREAD_POOL_COUNT);
      running.set_value();
      return queue.release();
    };
    m_thread = std::thread([this] { m_server.listen_after_bind(); });
    running.get_future().wait();
  }

  void Answer(const httplib::Request& request, httplib::Response& response) {
    HttpReply reply;
    try {
      reply = m_handler(Convert(request));
    } catch (const std::exception& error) {
      reply = {500, "text/plain", std::string("the collector failed: ") + error.what(), false};
    }
    if (reply.drop) {
      ::shutdown(static_cast<socket_t>(SSL_get_fd(request.ssl)), kBothDirections);
    }
    response.status = reply.status;
    response.set_content(reply.body, reply.contentType);
  }

  httplib::SSLServer m_server;
  HttpHandler m_handler;
  int m_port = 0;
  std::thread m_thread;
};

HttpsServer::HttpsServer(const Identity& identity, const std::string& host, int port, HttpHandler handler)
    : m_listener(std::make_unique<Listener>(identity, host, port, std::move(handler))) {}

HttpsServer::~HttpsServer() = default;

int HttpsServer::Port() const { return m_listener->Port(); }

}  // namespace Drive::Collection
