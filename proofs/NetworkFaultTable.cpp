// NetworkFaultTable.cpp - the faults, by the stage at which they come.
#include "proofs/NetworkFaultTable.h"

namespace Drive::Testing {

namespace {

using Connection = RawPeer::Connection;
using Script = RawPeer::Script;
using Collection::ServerCertificate;

const std::string kAccepted = "HTTP/1.1 200 OK\r\nContent-Length: 21\r\n\r\n{\"status\":\"accepted\"}";
const std::string kUnbounded = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n";

const std::set<int> kArrives{NetworkFault::kArrives};
const std::set<int> kRefused{NetworkFault::kRefusedByStatus};
const std::set<int> kTimeOut{NetworkFault::kTimeOut};

void Hang(Connection& connection) {
  while (!connection.Read().empty()) {
  }
}
void Sleep(Connection& connection) { connection.Pause(std::chrono::hours(1)); }
void Reset(Connection& connection) { connection.Reset(); }
void EndTls(Connection& connection) { connection.EndTls(); }

Script Sending(const std::string& text, const Script& then) {
  return [=](Connection& connection) {
    connection.Send(text);
    then(connection);
  };
}

// After the TLS handshake.
Script Greeted(const Script& then) {
  return [=](Connection& connection) {
    if (connection.StartTls()) then(connection);
  };
}

// After the whole request.
Script Asked(const Script& then) {
  return Greeted([=](Connection& connection) {
    connection.ReadBody(connection.ReadHeaders());
    then(connection);
  });
}

Script Answering(const std::string& text) { return Asked(Sending(text, EndTls)); }

Script Repeating(const std::string& text, std::chrono::milliseconds pause = {}) {
  return [=](Connection& connection) {
    while (connection.Send(text) && connection.Pause(pause)) {
    }
  };
}

// A server that asks for the body before it is sent.
void Continue(Connection& connection) {
  const std::string headers = connection.ReadHeaders();
  connection.Send("HTTP/1.1 100 Continue\r\n\r\n");
  connection.ReadBody(headers);
  Sending(kAccepted, EndTls)(connection);
}

// One that takes no expectation, and the request without it.
void RefuseToContinue(Connection& connection) {
  const std::string headers = connection.ReadHeaders();
  if (headers.find("Expect:") != std::string::npos) {
    connection.Send("HTTP/1.1 417 No\r\nContent-Length: 0\r\n\r\n");
    return RefuseToContinue(connection);  // it comes again on the same connection
  }
  connection.ReadBody(headers);
  Sending(kAccepted, EndTls)(connection);
}

}  // namespace

std::vector<NetworkFault> PeerFaults(std::mt19937_64& draw, const std::string& elsewhere) {
  constexpr std::chrono::seconds kSlow{1};
  const std::string headers = kAccepted.substr(0, kAccepted.find('{'));
  const auto part = [&draw](const std::string& text) {
    return text.substr(0, 1 + draw() % (text.size() - 1));
  };
  const auto bodyPart = [&] { return headers + part(kAccepted.substr(headers.size())); };
  const std::string block(65536, 'x');
  const std::string empty = "\r\nContent-Length: 0\r\n\r\n";
  const std::string redirection = std::vector<std::string>{"301", "302", "303", "307", "308"}[draw() % 5];
  std::string continues;
  while (continues.size() < block.size()) continues += "HTTP/1.1 100 Continue\r\n\r\n";
  return {
      {"refuses the connection", {7}, {}},
      {"resets at once", {7, 35}, Reset},
      {"resets in the handshake", {35}, [](Connection& c) { c.Read(1 + 100), c.Reset(); }},
      {"speaks no TLS", {35}, Sending(kAccepted, Hang)},
      {"speaks TLS 1.1 at most", {35}, Greeted(Hang), false, ServerCertificate::kGood, TLS1_1_VERSION},
      {"has an expired certificate", {60}, Asked(Hang), false, ServerCertificate::kExpired},
      {"has another's certificate", {60}, Asked(Hang), false, ServerCertificate::kWrongHost},
      {"has a stranger's certificate", {60}, Asked(Hang), false, ServerCertificate::kForeignAuthority},
      {"resets after the handshake", {55, 56}, Greeted(Reset)},
      {"resets in the request", {55, 56}, Greeted([](Connection& c) { c.Read(100), c.Reset(); }), true},
      {"resets after the request", {52, 56}, Asked(Reset)},
      {"ends after the request", {52}, Asked(EndTls)},
      {"resets in the headers", {56}, Asked(Sending(part(headers), Reset))},
      {"ends in the status line", {52}, Answering(part("HTTP/1.1 200 OK"))},
      {"resets in the body", {18, 56}, Asked(Sending(bodyPart(), Reset))},
      {"ends in the body", {18}, Answering(bodyPart())},
      {"answers no HTTP", {1}, Answering("hello\r\n\r\n")},
      {"answers with no status", {1, 8}, Answering("HTTP/1.1 OK\r\n\r\n")},
      {"sends headers without end",
       {27, 56, 100},
       Asked(Sending("HTTP/1.1 200 OK\r\n", Repeating("X: " + block + "\r\n")))},
      {"sends a header without end",
       {27, 56, 100},
       Asked(Sending("HTTP/1.1 200 OK\r\nX:", Repeating(block)))},
      {"sends a body without end", {63}, Asked(Sending(kUnbounded, Repeating(block)))},
      {"refuses at length", kRefused,
       Answering("HTTP/1.1 500 No\r\nContent-Length: 655360\r\n\r\n" + std::string(655360, 'x'))},
      {"redirects", kRefused, Answering("HTTP/1.1 " + redirection + " Go\r\nLocation: " + elsewhere + empty)},
      {"takes no expectation, ever", kRefused, Answering("HTTP/1.1 417 No" + empty), true},
      {"continues without end", {56, 100}, Asked(Repeating(continues))},
      {"asks for the body", kArrives, Greeted(Continue), true},
      {"waits for the body", kArrives, Answering(kAccepted), true},
      {"takes no expectation", kArrives, Greeted(RefuseToContinue), true},
      {"continues unasked", kArrives, Answering("HTTP/1.1 100 Continue\r\n\r\n" + kAccepted)},
      {"ends behind the status", kArrives, Answering("HTTP/1.1 200 OK\r\nContent-Le")},
      {"ends without a word", kArrives, Asked(Sending(kUnbounded + "{", [](Connection&) {}))},
      {"says more than it announced", kArrives, Answering(kAccepted + block)},
      {"says nothing", kTimeOut, Hang},
      {"says nothing in the handshake", kTimeOut, Sending({"\x16\x03\x03\x40\0\x02", 6}, Hang)},
      {"says nothing after the handshake", kTimeOut, Greeted(Sleep)},
      {"says nothing to the request", kTimeOut, Asked(Hang)},
      {"falls silent in the headers", kTimeOut, Asked(Sending(part(headers), Hang))},
      {"falls silent in the body", kTimeOut, Asked(Sending(bodyPart(), Hang))},
      {"sends a header byte a second", kTimeOut,
       Asked(Sending("HTTP/1.1 200 OK\r\nX:", Repeating("x", kSlow)))},
      {"sends a byte a second", kTimeOut, Asked(Sending(kUnbounded, Repeating("x", kSlow)))},
  };
}

std::vector<NetworkFault> ProxyFaults(int port) {
  const auto answering = [](const std::string& text, const Script& then) -> Script {
    return [=](Connection& connection) {
      connection.ReadHeaders();
      Sending(text, then)(connection);
    };
  };
  return {{"is a proxy", kArrives,
           answering("HTTP/1.1 200 Established\r\n\r\n", [port](Connection& c) { c.TunnelTo(port); })},
          {"is a proxy that refuses", {56}, answering("HTTP/1.1 403 No\r\nContent-Length: 0\r\n\r\n", Hang)},
          {"is a proxy that is none", {56}, answering("hello\r\n\r\n", Hang)},
          {"is a proxy that resets", {56}, answering("", Reset)},
          {"is a proxy that says nothing", kTimeOut, answering("", Hang)}};
}

}  // namespace Drive::Testing
