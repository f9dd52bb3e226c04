// Collector.cpp - what becomes of a request: fault, check, store, answer.
#include "collector/Collector.h"

#include <variant>

#include "collector/Api.h"
#include "collector/HeaderCheck.h"

namespace Drive::Collection {

namespace {

std::size_t Index(Channel channel) { return static_cast<std::size_t>(channel); }

std::filesystem::path DatabaseOf(const Collector::Options& options, const DataFolder& folder) {
  return options.database.empty() ? folder.DatabaseFile() : std::filesystem::u8path(options.database);
}

}  // namespace

Collector::Collector(const Options& options)
    : m_options(options),
      m_folder(options.dataFolder),
      m_identity(m_folder.Server(m_folder.Authority(), options.certificate)),
      m_rsaKey(m_folder.Rsa()),
      m_store(DatabaseOf(options, m_folder)),
      m_port(options.port) {
  for (const Fault& fault : options.faults) {
    m_faults.Add(fault);
  }
  Start();
}

Collector::~Collector() { Stop(); }

void Collector::Start() {
  if (m_server) {
    return;
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = false;
  }
  m_server = std::make_unique<HttpsServer>(m_identity, m_options.host, m_port,
                                           [this](const HttpRequest& request) { return Answer(request); });
  m_port = m_server->Port();
}

void Collector::Stop() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = true;
  }
  m_changed.notify_all();
  m_server.reset();
}

std::string Collector::Url() const {
  const bool isIpv6 = m_options.host.find(':') != std::string::npos;
  return "https://" + (isIpv6 ? "[" + m_options.host + "]" : m_options.host) + ":" + std::to_string(m_port);
}

std::string Collector::CaPath() const { return m_folder.CaFile().u8string(); }

Collector::ChannelCounts Collector::Counts(Channel channel) const {
  ChannelCounts counts;
  counts.stored = m_store.Counts(channel);
  const std::lock_guard<std::mutex> lock(m_mutex);
  counts.attempts = m_attempts[Index(channel)];
  return counts;
}

std::vector<StoredRecord> Collector::Records(std::optional<Channel> channel, std::int64_t limit,
                                             std::int64_t since) const {
  return m_store.Records(channel, limit, since);
}

void Collector::Reset() {
  m_store.Clear();
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_attempts.fill(0);
}

bool Collector::WaitForAttempts(Channel channel, std::int64_t attempts, std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, limit, [&] { return m_attempts[Index(channel)] >= attempts; });
}

HttpReply Collector::Answer(const HttpRequest& request) {
  for (const Channel channel : kChannels) {
    if (request.method == "POST" && request.path == PathOf(channel)) {
      return TakeUpload(channel, request);
    }
  }
  return AnswerApi(*this, request);
}

HttpReply Collector::TakeUpload(Channel channel, const HttpRequest& request) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_attempts[Index(channel)];
  }
  m_changed.notify_all();

  const auto fault =
      m_faults.Take(channel, channel == Channel::kUba ? TokenOf(request.headers) : std::nullopt);
  if (fault) {
    Delay(fault->delay);
    if (fault->drop || fault->status != 0) {
      return {fault->status, "text/plain", fault->body, fault->drop};
    }
  }

  const Verdict verdict = Check(channel, request.headers, request.body,
                                {&m_rsaKey, m_options.expectedToken, m_options.deflateRule});
  if (const auto* refused = std::get_if<Refused>(&verdict)) {
    m_store.Add(channel, request.headers, *refused);
    return {refused->status, "text/plain", refused->reason, false};
  }
  m_store.Add(channel, request.headers, std::get<Accepted>(verdict));
  return {};
}

void Collector::Delay(std::chrono::milliseconds delay) {
  if (delay.count() > 0) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, delay, [&] { return m_stopping; });
  }
}

}  // namespace Drive::Collection
