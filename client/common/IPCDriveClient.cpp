// IPCDriveClient.cpp - request and reply over a local endpoint, by nng.
//
//   request:  command (4 bytes, the highest first) | payload
//   reply:    payload
#include "client/common/IPCDriveClient.h"

#include <nng/nng.h>
#include <nng/protocol/reqrep0/rep.h>
#include <nng/protocol/reqrep0/req.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

#include "client/common/ReadSyncConfigFile.h"
#include "client/common/SharedValue.h"
#include "client/log/TypeConvert.h"
#include "platform/ProcessEnd.h"
#include "platform/System.h"

namespace Drive::IPC {

namespace {

using Platform::ProcessEnd;
using Platform::WakeSignal;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kReplyLimit{5000};
// How often a waiting client looks whether the process ends.
constexpr milliseconds kLookInterval{50};
constexpr std::size_t kLargestMessage = 16 * 1024 * 1024;

SharedValue<std::string> endpointName;

std::string Endpoint() {
  const std::string name = endpointName;
  return Platform::LocalEndpoint(name.empty() ? TypeConvert::UnicodeToUTF8(APP_NAME) : name);
}

class Socket {
 public:
  Socket() = default;
  // With nng's threads gone a close would wait for ever.
  ~Socket() {
    if (nng_socket_id(m_socket) > 0 && !ProcessEnd::OtherThreadsAreGone()) {
      nng_close(m_socket);
    }
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  bool Open(int (*open)(nng_socket*)) {
    return open(&m_socket) == 0 && nng_socket_set_size(m_socket, NNG_OPT_RECVMAXSZ, kLargestMessage) == 0;
  }
  nng_socket Get() const { return m_socket; }

 private:
  nng_socket m_socket = NNG_SOCKET_INITIALIZER;
};

struct MessageFree {
  void operator()(nng_msg* message) const noexcept { nng_msg_free(message); }
};
using Message = std::unique_ptr<nng_msg, MessageFree>;

struct DialerFree {
  void operator()(nng_stream_dialer* dialer) const noexcept { nng_stream_dialer_free(dialer); }
};
using Dialer = std::unique_ptr<nng_stream_dialer, DialerFree>;

// Null when there is no memory for it.
Message MakeMessage(const std::string& text) {
  nng_msg* allocated = nullptr;
  nng_msg_alloc(&allocated, 0);
  Message message(allocated);
  const bool isFilled = message != nullptr && nng_msg_append(message.get(), text.data(), text.size()) == 0;
  return isFilled ? std::move(message) : Message();
}

std::string BodyOf(nng_msg* message) {
  return std::string(static_cast<const char*>(nng_msg_body(message)), nng_msg_len(message));
}

// One asynchronous operation of nng, waited for until a deadline; the end of the process cuts it short.
class Operation {
 public:
  Operation() { nng_aio_alloc(&m_aio, &Operation::OnDone, &m_done); }
  ~Operation() { nng_aio_free(m_aio); }  // waits for OnDone, which m_done must outlive
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // True when what `start` began with the given handle has succeeded.
  template <typename Start>
  bool Run(steady_clock::time_point deadline, const Start& start) {
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now());
    if (m_aio == nullptr || left <= milliseconds::zero()) {
      return false;
    }
    nng_aio_set_timeout(m_aio, static_cast<nng_duration>(left.count()));
    start(m_aio);
    while (!m_done.WaitFor(kLookInterval)) {
      if (ProcessEnd::HasBegun()) {
        nng_aio_cancel(m_aio);
      }
    }
    nng_aio_wait(m_aio);
    return nng_aio_result(m_aio) == 0;
  }

  nng_aio* Handle() const { return m_aio; }

 private:
  static void OnDone(void* done) { static_cast<WakeSignal*>(done)->Raise(); }

  WakeSignal m_done;
  nng_aio* m_aio = nullptr;
};

// Whether anybody listens. A socket alone would not tell: it goes on trying until somebody does.
bool IsSomebodyListening(const std::string& endpoint, steady_clock::time_point deadline) {
  nng_stream_dialer* allocated = nullptr;
  if (nng_stream_dialer_alloc(&allocated, endpoint.c_str()) != 0) {
    return false;
  }
  const Dialer dialer(allocated);
  Operation dial;
  if (!dial.Run(deadline, [&](nng_aio* aio) { nng_stream_dialer_dial(dialer.get(), aio); })) {
    return false;
  }
  nng_stream_free(static_cast<nng_stream*>(nng_aio_get_output(dial.Handle(), 0)));
  return true;
}

std::string Frame(int command, const std::string& payload) {
  const auto bits = static_cast<std::uint32_t>(command);
  std::string frame;
  for (int shift = 24; shift >= 0; shift -= 8) {
    frame += static_cast<char>(static_cast<unsigned char>((bits >> shift) & 0xFF));
  }
  return frame + payload;
}

// False when the message is no request.
bool ReadFrame(nng_msg* message, int& command, std::string& payload) {
  std::uint32_t bits = 0;
  if (nng_msg_trim_u32(message, &bits) != 0) {
    return false;
  }
  command = static_cast<int>(bits);
  payload = BodyOf(message);
  return true;
}

}  // namespace

bool IPCDriveClient::GetMessageCommand(std::string& reply, int command, const std::string& payload) {
  reply.clear();
  const auto deadline = steady_clock::now() + kReplyLimit;
  const std::string endpoint = Endpoint();
  Message request = MakeMessage(Frame(command, payload));
  Socket socket;
  if (request == nullptr || !IsSomebodyListening(endpoint, deadline) || !socket.Open(nng_req0_open) ||
      nng_dial(socket.Get(), endpoint.c_str(), nullptr, NNG_FLAG_NONBLOCK) != 0) {
    return false;
  }

  Operation send;
  const bool isSent = send.Run(deadline, [&](nng_aio* aio) {
    nng_aio_set_msg(aio, request.get());
    nng_send_aio(socket.Get(), aio);
  });
  if (!isSent) {
    return false;
  }
  static_cast<void>(request.release());  // nng's own once it is sent

  Operation receive;
  if (!receive.Run(deadline, [&](nng_aio* aio) { nng_recv_aio(socket.Get(), aio); })) {
    return false;
  }
  const Message answer(nng_aio_get_msg(receive.Handle()));
  reply = BodyOf(answer.get());
  return true;
}

struct IPCDriveServer::Listener {
  Socket socket;
  Handler handler;
  WakeSignal stop;
  std::thread thread;

  void Answer() noexcept {
    while (!stop.IsRaised()) {
      nng_msg* received = nullptr;
      if (nng_recvmsg(socket.Get(), &received, 0) != 0) {
        stop.WaitFor(kLookInterval);  // closed, or short of memory for the moment
        continue;
      }
      Message message(received);
      Message reply;
      try {
        reply = MakeMessage(ReplyTo(message.get()));
      } catch (...) {
        reply = MakeMessage({});
      }
      if (reply != nullptr && nng_sendmsg(socket.Get(), reply.get(), 0) == 0) {
        static_cast<void>(reply.release());  // nng's own once it is sent
      }
    }
  }

  std::string ReplyTo(nng_msg* message) const {
    int command = 0;
    std::string payload;
    return ReadFrame(message, command, payload) ? handler(command, payload) : std::string();
  }
};

IPCDriveServer::IPCDriveServer(Handler handler) {
  auto listener = std::make_unique<Listener>();
  listener->handler = std::move(handler);
  if (!listener->socket.Open(nng_rep0_open) ||
      nng_socket_set_ms(listener->socket.Get(), NNG_OPT_SENDTIMEO,
                        static_cast<nng_duration>(kReplyLimit.count())) != 0 ||
      nng_listen(listener->socket.Get(), Endpoint().c_str(), nullptr, 0) != 0) {
    return;
  }
  m_listener = std::move(listener);
  m_listener->thread = std::thread(&Listener::Answer, m_listener.get());
}

IPCDriveServer::~IPCDriveServer() {
  if (m_listener == nullptr) {
    return;
  }
  if (ProcessEnd::OtherThreadsAreGone()) {
    m_listener->thread.detach();
    static_cast<void>(m_listener.release());  // the system takes it all
    return;
  }
  m_listener->stop.Raise();
  nng_close(m_listener->socket.Get());
  m_listener->thread.join();
}

bool IPCDriveServer::IsListening() const { return m_listener != nullptr; }

void SetIpcEndpointName(const std::string& name) { endpointName = name; }

}  // namespace Drive::IPC
