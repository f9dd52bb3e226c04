// DeliveryBench.cpp - what a delivered record costs, and what it takes on the wire.
//
// Workload: 10 000 records of Product.h are uploaded by the channel's own cycle (read a full batch of the
// default size, make the body, post it over TLS on loopback, delete the rows), one request after the other.
// Counted is the CPU time of the uploading thread alone, the system's share included; the collector runs on
// other threads. The limit beside it, taken before each request in the same thread: the same texts compressed
// by bare zlib, and the same number of bytes posted by bare libcurl with the same options and headers, on a
// connection of its own each, as the library's are.
//
// DeliveredRecord: microseconds a record; `read_us` is what reading the batch from the store takes of them.
// WireBytes: bytes of the request bodies a record, beside the bytes of the records' own texts; `header_bytes`
// and `tls_bytes` (all else that the connection carried, both ways) are those of the same requests.
#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "bench/Product.h"
#include "bilog/BILoggerTimer.h"
#include "bilog/BiRecordJson.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "model/EventJson.h"
#include "model/LogSettings.h"
#include "operatelog/OperationEnvelope.h"
#include "operatelog/OperationLoggerTimer.h"
#include "operatelog/UbaEventJson.h"
#include "operatelog/UbaLoggerTimer.h"
#include "transport/BodyEncoding.h"
#include "transport/JsonText.h"
#include "transport/RequestHeaders.h"

namespace {

using namespace Drive;
using Bench::Channel;
using Bench::Product;

constexpr int kRecords = 10000;

double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double Timed(const std::function<void()>& work) {
  const double begin = ThreadSeconds();
  work();
  return ThreadSeconds() - begin;
}

// What one request is made of: the texts that it compresses, the last of which becomes its body.
struct Texts {
  std::vector<std::string> texts;
  bool isGzip = false;
};

std::string Inflated(const std::string& body) {
  std::string text(4 << 20, '\0');
  uLongf size = static_cast<uLongf>(text.size());
  if (uncompress(reinterpret_cast<Bytef*>(text.data()), &size, reinterpret_cast<const Bytef*>(body.data()),
                 static_cast<uLong>(body.size())) != Z_OK) {
    std::abort();
  }
  text.resize(size);
  return text;
}

Texts TextsOf(Channel channel, const std::vector<Bilog::UserLog>& batch) {
  switch (channel) {
    case Channel::kMaintenance: {
      const auto body = Bilog::MakeBiEnvelope(L"request", L"service", Bilog::MakeBiRecordsJson(batch));
      return {{Inflated({body.begin(), body.end()})}, false};
    }
    case Channel::kOperation: {
      const Json::Value payload = MakeEventPayload(batch);
      const auto envelope = OperateLog::MakeOperationEnvelope(
          Header(), payload, Bilog::LogSettings::GetInstance().GetRsaPublicKey());
      return {{Bilog::WriteJson(payload), Inflated(envelope.body)}, false};
    }
    case Channel::kUba: {
      int sequence = 0;
      Json::Value root(Json::objectValue);
      root["events"] = OperateLog::MakeEventsJsonObject(batch, sequence);
      return {{Bilog::WriteJson(root)}, true};
    }
  }
  std::abort();
}

std::string Compressed(const Texts& request) {
  std::string body;
  for (const std::string& text : request.texts) {
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, request.isGzip ? 31 : 15, 8, Z_DEFAULT_STRATEGY);
    body.resize(deflateBound(&stream, static_cast<uLong>(text.size())));
    stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(body.data());
    stream.avail_out = static_cast<uInt>(body.size());
    deflate(&stream, Z_FINISH);
    body.resize(stream.total_out);
    deflateEnd(&stream);
  }
  return body;
}

struct Traffic {
  double headers = 0;
  double both = 0;  // all that the connections carried, both ways
};

int CountAndClose(void* traffic, curl_socket_t socket) {
  tcp_info info{};
  socklen_t size = sizeof(info);
  getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size);
  static_cast<Traffic*>(traffic)->both +=
      static_cast<double>(info.tcpi_bytes_acked + info.tcpi_bytes_received);
  return close(socket);
}

// Posts to the channel's path; aborts the program when it is not answered.
void Post(const std::string& url, const std::vector<std::string>& headers, const std::string& body,
          Traffic& traffic) {
  const std::string certificates = TypeConvert::UnicodeToUTF8(g_certPath);
  CURL* const easy = curl_easy_init();
  curl_slist* list = nullptr;
  for (const std::string& line : headers) list = curl_slist_append(list, line.c_str());
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, list);
  curl_easy_setopt(
      easy, CURLOPT_WRITEFUNCTION,
      +[](char*, std::size_t size, std::size_t count, void*) { return size * count; });
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_CAINFO, certificates.c_str());
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(easy, CURLOPT_POST, 1L);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &CountAndClose);
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, &traffic);
  if (curl_easy_perform(easy) != CURLE_OK) std::abort();
  long bytes = 0;
  curl_easy_getinfo(easy, CURLINFO_REQUEST_SIZE, &bytes);
  traffic.headers += static_cast<double>(bytes) - static_cast<double>(body.size());
  curl_easy_cleanup(easy);
  curl_slist_free_all(list);
}

// One cycle of the channel's uploads after another, as its timer makes them.
std::function<void()> Uploads(Channel channel) {
  if (channel == Channel::kMaintenance) {
    const auto uploader = std::make_shared<Bilog::BiUploader>();
    uploader->Init();
    return [uploader] { uploader->PushLogs(); };
  }
  if (channel == Channel::kOperation) {
    const auto uploader = std::make_shared<OperateLog::OperationUploader>(OperateLog::BatchSettings());
    uploader->Init();
    return [uploader] { uploader->TimerHandler(); };
  }
  const auto uploader = std::make_shared<OperateLog::UbaUploader>(OperateLog::BatchSettings(),
                                                                  std::make_shared<std::atomic<int>>(0));
  uploader->Init();
  return [uploader] { uploader->TimerHandler(); };
}

// The sums of all requests, CPU in seconds.
struct Result {
  double upload = 0;
  double read = 0;
  double compression = 0;
  double post = 0;
  double requests = 0;
  double textBytes = 0;
  double bodyBytes = 0;
  Traffic traffic;
  bool isComplete = false;
};

Result Deliver(Channel channel) {
  Result result;
  Product product;
  product.Store(channel, kRecords);
  const std::string url = product.Server().Url() + PathOf(channel);
  const auto upload = Uploads(channel);
  std::vector<Bilog::UserLog> batch;
  const auto read = [&] { batch = Product::Oldest(channel); };
  for (read(); !batch.empty(); result.read += Timed(read)) {
    for (const Bilog::UserLog& record : batch) {
      result.textBytes += static_cast<double>(Product::TextBytes(record));
    }
    const Texts texts = TextsOf(channel, batch);
    const auto headers =
        channel == Channel::kUba ? Bilog::CreateUbaReqHeader("limit", "") : Bilog::CreateReqHeader("limit");
    std::string body;
    result.compression += Timed([&] { body = Compressed(texts); });
    result.post += Timed([&] { Post(url, headers, body, result.traffic); });
    result.upload += Timed(upload);
    result.bodyBytes += static_cast<double>(body.size());
    ++result.requests;
  }
  result.isComplete = result.requests == kRecords / Product::BatchSize(channel);
  return result;
}

const Result& ResultOf(Channel channel) {
  static std::map<Channel, Result> results;
  const auto found = results.find(channel);
  return found != results.end() ? found->second : results.emplace(channel, Deliver(channel)).first->second;
}

void DeliveredRecord(benchmark::State& state, Channel channel) {
  const Result& result = ResultOf(channel);
  if (!result.isComplete) state.SkipWithError("not delivered in full batches");
  constexpr double kMicroseconds = 1e6 / kRecords;
  for ([[maybe_unused]] auto _ : state) state.SetIterationTime(result.upload);
  state.counters["cpu_us"] = result.upload * kMicroseconds;
  state.counters["limit_cpu_us"] = (result.compression + result.post) * kMicroseconds;
  state.counters["ratio"] = result.upload / (result.compression + result.post);
  state.counters["aim_ratio"] = 2;
  state.counters["compression_us"] = result.compression * kMicroseconds;
  state.counters["post_us"] = result.post * kMicroseconds;
  state.counters["read_us"] = result.read * kMicroseconds;
}

void WireBytes(benchmark::State& state, Channel channel) {
  const Result& result = ResultOf(channel);
  if (!result.isComplete) state.SkipWithError("not delivered in full batches");
  for ([[maybe_unused]] auto _ : state) state.SetIterationTime(result.upload);
  state.counters["body_bytes"] = result.bodyBytes / kRecords;
  state.counters["aim_body_bytes"] = 60;
  state.counters["limit_body_bytes"] = result.textBytes / kRecords;
  state.counters["header_bytes"] = result.traffic.headers / kRecords;
  state.counters["tls_bytes"] = (result.traffic.both - result.traffic.headers - result.bodyBytes) / kRecords;
}

void Once(benchmark::internal::Benchmark* benchmark) { benchmark->Iterations(1)->UseManualTime(); }

BENCHMARK_CAPTURE(DeliveredRecord, maintenance, Channel::kMaintenance)->Apply(Once);
BENCHMARK_CAPTURE(DeliveredRecord, operation, Channel::kOperation)->Apply(Once);
BENCHMARK_CAPTURE(DeliveredRecord, uba, Channel::kUba)->Apply(Once);
BENCHMARK_CAPTURE(WireBytes, maintenance, Channel::kMaintenance)->Apply(Once);
BENCHMARK_CAPTURE(WireBytes, operation, Channel::kOperation)->Apply(Once);
BENCHMARK_CAPTURE(WireBytes, uba, Channel::kUba)->Apply(Once);

}  // namespace
