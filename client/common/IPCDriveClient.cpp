// IPCDriveClient.cpp - request and reply over a local endpoint, by nng's byte streams.
//
//   request:  command (4 bytes) | size of the payload (4 bytes) | payload
//   reply:    size of the payload (4 bytes) | payload
//
// Numbers have their highest byte first. A connection serves one request; its client closes it. (The
// library's own message sockets do not do: a peer that goes away while it connects can end their listener for
// good.)
#include "client/common/IPCDriveClient.h"

#include <nng/nng.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
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
// A client sends its request as soon as it has connected; one that does not keeps the others waiting.
constexpr milliseconds kRequestLimit{1000};
// How often a thread that waits for its peer looks whether it should give up.
constexpr milliseconds kLookInterval{50};
constexpr std::uint32_t kLargestPayload = 16 * 1024 * 1024;

SharedValue<std::string> endpointName;

std::string Endpoint() {
  const std::string name = endpointName;
  return Platform::LocalEndpoint(name.empty() ? TypeConvert::UnicodeToUTF8(APP_NAME) : name);
}

struct HandleFree {
  void operator()(nng_aio* aio) const noexcept { nng_aio_free(aio); }
  void operator()(nng_stream* stream) const noexcept { nng_stream_free(stream); }
  void operator()(nng_stream_listener* listener) const noexcept { nng_stream_listener_free(listener); }
};
using Aio = std::unique_ptr<nng_aio, HandleFree>;
using Stream = std::unique_ptr<nng_stream, HandleFree>;
using StreamListener = std::unique_ptr<nng_stream_listener, HandleFree>;

// How long a conversation may last, and the signal that cuts it short.
struct Limit {
  steady_clock::time_point deadline;
  const WakeSignal& giveUp;
};

// One asynchronous operation of nng and the wait for it.
class Operation {
 public:
  Operation() { nng_aio_alloc(&m_aio, &Operation::OnDone, &m_done); }
  ~Operation() { nng_aio_free(m_aio); }  // waits for OnDone, which m_done must outlive
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // True when what `start` began with the handle has succeeded.
  template <typename Start>
  bool Run(const Limit& limit, const Start& start) {
    const auto left = std::chrono::duration_cast<milliseconds>(limit.deadline - steady_clock::now());
    if (m_aio == nullptr || left <= milliseconds::zero()) {
      return false;
    }
    nng_aio_set_timeout(m_aio, static_cast<nng_duration>(left.count()));
    start(m_aio);
    while (!m_done.WaitFor(kLookInterval)) {
      if (limit.giveUp.IsRaised()) {
        nng_aio_cancel(m_aio);
      }
    }
    nng_aio_wait(m_aio);
    return nng_aio_result(m_aio) == 0;
  }

  std::size_t Count() const { return nng_aio_count(m_aio); }
  Stream TakeStream() const { return Stream(static_cast<nng_stream*>(nng_aio_get_output(m_aio, 0))); }

 private:
  static void OnDone(void* done) { static_cast<WakeSignal*>(done)->Raise(); }

  WakeSignal m_done;
  nng_aio* m_aio = nullptr;
};

// Sends or receives, by `step`, exactly the bytes of `bytes`.
bool Transfer(nng_stream* stream, std::string& bytes, const Limit& limit,
              void (*step)(nng_stream*, nng_aio*)) {
  for (std::size_t done = 0; done < bytes.size();) {
    Operation operation;
    nng_iov rest{bytes.data() + done, bytes.size() - done};
    const auto start = [&](nng_aio* aio) {
      nng_aio_set_iov(aio, 1, &rest);
      step(stream, aio);
    };
    if (!operation.Run(limit, start) || operation.Count() == 0) {
      return false;
    }
    done += operation.Count();
  }
  return true;
}

bool Send(nng_stream* stream, std::string bytes, const Limit& limit) {
  return Transfer(stream, bytes, limit, nng_stream_send);
}

bool Receive(nng_stream* stream, std::size_t size, std::string& bytes, const Limit& limit) {
  bytes.assign(size, '\0');
  return Transfer(stream, bytes, limit, nng_stream_recv);
}

std::string NumberText(std::uint32_t number) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += static_cast<char>(static_cast<unsigned char>((number >> shift) & 0xFF));
  }
  return text;
}

bool ReceiveNumber(nng_stream* stream, std::uint32_t& number, const Limit& limit) {
  std::string text;
  if (!Receive(stream, sizeof(number), text, limit)) {
    return false;
  }
  number = 0;
  for (const char byte : text) {
    number = number << 8 | static_cast<unsigned char>(byte);
  }
  return true;
}

// A payload behind its size.
std::string Framed(const std::string& payload) {
  return NumberText(static_cast<std::uint32_t>(payload.size())) + payload;
}

bool ReceiveFramed(nng_stream* stream, std::string& payload, const Limit& limit) {
  std::uint32_t size = 0;
  return ReceiveNumber(stream, size, limit) && size <= kLargestPayload &&
         Receive(stream, size, payload, limit);
}

// The dialer of an endpoint, null when it is no endpoint. A dialer is kept: its connections refer to it until
// nng, on a thread of its own, has taken them apart.
nng_stream_dialer* DialerTo(const std::string& endpoint) {
  static std::mutex& mutex = *new std::mutex;  // guards dialers
  static auto& dialers = *new std::map<std::string, nng_stream_dialer*>;
  const std::lock_guard<std::mutex> lock(mutex);
  nng_stream_dialer*& dialer = dialers[endpoint];
  if (dialer == nullptr) {
    nng_stream_dialer_alloc(&dialer, endpoint.c_str());
  }
  return dialer;
}

// Null when nobody listens.
Stream Connect(const std::string& endpoint, const Limit& limit) {
  nng_stream_dialer* const dialer = DialerTo(endpoint);
  Operation dial;
  const bool isConnected =
      dialer != nullptr && dial.Run(limit, [&](nng_aio* aio) { nng_stream_dialer_dial(dialer, aio); });
  return isConnected ? dial.TakeStream() : nullptr;
}

}  // namespace

bool IPCDriveClient::GetMessageCommand(std::string& reply, int command, const std::string& payload) {
  reply.clear();
  if (payload.size() > kLargestPayload) {
    return false;
  }
  const Limit limit{steady_clock::now() + kReplyLimit, ProcessEnd::Signal()};
  const Stream stream = Connect(Endpoint(), limit);
  std::string received;
  if (stream == nullptr ||
      !Send(stream.get(), NumberText(static_cast<std::uint32_t>(command)) + Framed(payload), limit) ||
      !ReceiveFramed(stream.get(), received, limit)) {
    return false;
  }
  reply = std::move(received);
  return true;
}

struct IPCDriveServer::Listener {
  StreamListener listener;
  Handler handler;
  WakeSignal stop;
  std::thread thread;

  void Run() noexcept {
    while (!stop.IsRaised()) {
      if (const Stream stream = Accept()) {
        Serve(stream.get());
      } else {
        stop.WaitFor(kLookInterval);  // closed, or the system is short of something for the moment
      }
    }
  }

  // Waits without a limit: closing the listener ends it.
  Stream Accept() const {
    nng_aio* allocated = nullptr;
    nng_aio_alloc(&allocated, nullptr, nullptr);
    const Aio aio(allocated);
    if (aio == nullptr) {
      return nullptr;
    }
    nng_stream_listener_accept(listener.get(), aio.get());
    nng_aio_wait(aio.get());
    return nng_aio_result(aio.get()) == 0 ? Stream(static_cast<nng_stream*>(nng_aio_get_output(aio.get(), 0)))
                                          : nullptr;
  }

  void Serve(nng_stream* stream) noexcept {
    try {
      const Limit requestLimit{steady_clock::now() + kRequestLimit, stop};
      std::uint32_t command = 0;
      std::string payload;
      if (!ReceiveNumber(stream, command, requestLimit) || !ReceiveFramed(stream, payload, requestLimit)) {
        return;
      }
      const std::string reply = ReplyTo(static_cast<int>(command), payload);
      const Limit replyLimit{steady_clock::now() + kRequestLimit, stop};
      if (Send(stream, Framed(reply), replyLimit)) {
        std::string nothing;
        Receive(stream, 1, nothing, replyLimit);  // until the client closes: a pipe may lose what is unread
      }
    } catch (const std::exception&) {
      // No memory for this request; the client sees the connection close.
    }
  }

  std::string ReplyTo(int command, const std::string& payload) const {
    try {
      std::string reply = handler(command, payload);
      return reply.size() <= kLargestPayload ? reply : std::string();
    } catch (...) {
      return {};
    }
  }
};

IPCDriveServer::IPCDriveServer(Handler handler) {
  nng_stream_listener* allocated = nullptr;
  if (nng_stream_listener_alloc(&allocated, Endpoint().c_str()) != 0) {
    return;
  }
  auto listener = std::make_unique<Listener>();
  listener->listener.reset(allocated);
  listener->handler = std::move(handler);
  if (nng_stream_listener_listen(allocated) != 0) {
    return;
  }
  m_listener = std::move(listener);
  m_listener->thread = std::thread(&Listener::Run, m_listener.get());
}

IPCDriveServer::~IPCDriveServer() {
  if (m_listener == nullptr) {
    return;
  }
  if (ProcessEnd::OtherThreadsAreGone()) {
    m_listener->thread.detach();
    static_cast<void>(m_listener.release());  // without nng's threads it could not be closed
    return;
  }
  m_listener->stop.Raise();
  nng_stream_listener_close(m_listener->listener.get());
  m_listener->thread.join();
}

bool IPCDriveServer::IsListening() const { return m_listener != nullptr; }

void SetIpcEndpointName(const std::string& name) { endpointName = name; }

}  // namespace Drive::IPC
