// HttpsServer.h - an HTTPS server that gives every request to one function.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "collector/Certificates.h"
#include "collector/Request.h"

namespace Drive::Collection {

struct HttpRequest {
  std::string method;
  std::string path;
  std::map<std::string, std::string> query;
  Headers headers;   // as sent, in no order; a %XX in a value has been decoded by the HTTP library
  std::string body;  // as sent, whatever Content-Encoding says
};

struct HttpReply {
  int status = 200;
  std::string contentType = "text/plain";
  std::string body;
  bool drop = false;  // ends the connection without an answer
};

using HttpHandler = std::function<HttpReply(const HttpRequest&)>;

// Listens from construction to destruction.
//
// Thread-safety: the handler is called from several threads at once.
// Lifetime: the destructor returns when all requests have been answered; one that waits in the handler must
// be woken before.
class HttpsServer {
 public:
  // Port 0 takes a free one. Throws std::runtime_error when it cannot listen.
  HttpsServer(const Identity& identity, const std::string& host, int port, HttpHandler handler);
  ~HttpsServer();
  HttpsServer(const HttpsServer&) = delete;
  HttpsServer& operator=(const HttpsServer&) = delete;

  int Port() const;

 private:
  class Listener;
  std::unique_ptr<Listener> m_listener;
};

}  // namespace Drive::Collection
