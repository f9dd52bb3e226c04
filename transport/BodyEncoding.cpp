// BodyEncoding.cpp - JSON text to request bodies.
//
// A BI body is the zlib form of
//   {"event": [...], "header": {"App-Id": "com.talvik.cloud.pc", "Request-Id": "A1B220240305070809012",
//                               "serviceid": "qmvzomaintqrt", "timestamp": 1700000000123}}
#include "transport/BodyEncoding.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <utility>

#include "client/log/TypeConvert.h"
#include "platform/Clock.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {
namespace {

constexpr int kGzipWindowBits = 15 + 16;  // a window of 32 KiB, with a gzip wrapper
constexpr int kMemoryLevel = 8;

// A compressing stream that writes one gzip member. Not copied: zlib's state refers to it.
class GzipStream {
 public:
  GzipStream() {
    m_isOpen = deflateInit2(&m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzipWindowBits, kMemoryLevel,
                            Z_DEFAULT_STRATEGY) == Z_OK;
  }
  ~GzipStream() { Close(); }
  GzipStream(const GzipStream&) = delete;
  GzipStream& operator=(const GzipStream&) = delete;

  bool IsOpen() const { return m_isOpen; }
  z_stream& Get() { return m_stream; }

  bool Close() {
    const bool closed = m_isOpen && deflateEnd(&m_stream) == Z_OK;
    m_isOpen = false;
    return closed;
  }

 private:
  z_stream m_stream{};
  bool m_isOpen = false;
};

// zlib does not write to its input, but its older releases do not say so.
Bytef* InputBytes(const std::string& text) {
  return const_cast<Bytef*>(reinterpret_cast<const Bytef*>(text.data()));
}

}  // namespace

bool GzipCompress(const std::string& text, std::string& body) {
  if (text.empty()) {
    return false;
  }
  GzipStream gzip;
  if (!gzip.IsOpen()) {
    return false;
  }
  z_stream& stream = gzip.Get();
  stream.next_in = InputBytes(text);
  stream.avail_in = static_cast<uInt>(text.size());

  body.clear();
  std::array<char, 16 * 1024> buffer;
  int result = Z_OK;
  while (result == Z_OK) {
    stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
    stream.avail_out = static_cast<uInt>(buffer.size());
    result = deflate(&stream, Z_FINISH);
    body.append(buffer.data(), buffer.size() - stream.avail_out);
  }
  return result == Z_STREAM_END && gzip.Close();
}

std::vector<unsigned char> ZlibCompress(const std::string& text) {
  if (text.empty()) {
    return {};
  }
  std::vector<unsigned char> body(
      std::min<std::size_t>(compressBound(static_cast<uLong>(text.size())), kMaxZlibBytes));
  uLongf size = static_cast<uLongf>(body.size());
  if (compress(body.data(), &size, InputBytes(text), static_cast<uLong>(text.size())) != Z_OK) {
    return {};
  }
  body.resize(size);
  return body;
}

std::vector<unsigned char> MakeBiEnvelope(const std::wstring& requestId, const std::wstring& serviceId,
                                          Json::Value events) {
  Json::Value root(Json::objectValue);
  Json::Value& header = root["header"];
  header["Request-Id"] = TypeConvert::UnicodeToUTF8(requestId);
  header["App-Id"] = "com.talvik.cloud.pc";
  header["serviceid"] = TypeConvert::UnicodeToUTF8(serviceId);
  header["timestamp"] = static_cast<Json::Int64>(Platform::CurrentClock().NowMilliseconds());
  root["event"] = std::move(events);
  return ZlibCompress(WriteJson(root));
}

}  // namespace Drive::Bilog
