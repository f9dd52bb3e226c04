// Decoding.cpp - zlib and gzip by zlib, Base64 by OpenSSL, strictness added to both.
#include "collector/Decoding.h"

#include <openssl/evp.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>

#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

constexpr int kZlibWindow = 15;
constexpr int kGzipWindow = 15 + 16;
constexpr std::size_t kMaxTextBytes = std::size_t{64} << 20;
constexpr std::size_t kGzipSystemByte = 9;

Bytef* Bytes(const std::string& data) {
  return reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));  // zlib only reads there
}

class InflateStream {
 public:
  InflateStream(const std::string& data, int window) {
    m_stream.next_in = Bytes(data);
    m_stream.avail_in = static_cast<uInt>(data.size());
    Require(inflateInit2(&m_stream, window) == Z_OK, "no memory to decompress");
  }
  ~InflateStream() { inflateEnd(&m_stream); }
  InflateStream(const InflateStream&) = delete;
  InflateStream& operator=(const InflateStream&) = delete;

  std::string Run() {
    std::string text;
    std::array<Bytef, 16384> piece;
    int result = Z_OK;
    while (result == Z_OK) {
      m_stream.next_out = piece.data();
      m_stream.avail_out = static_cast<uInt>(piece.size());
      result = inflate(&m_stream, Z_NO_FLUSH);
      text.append(reinterpret_cast<const char*>(piece.data()), piece.size() - m_stream.avail_out);
      Require(text.size() <= kMaxTextBytes, "decompressed data is too long");
    }
    if (result == Z_BUF_ERROR) {
      throw Refusal("compressed data ends early");
    }
    if (result != Z_STREAM_END) {
      throw Refusal(std::string("compressed data is damaged: ") +
                    (m_stream.msg != nullptr ? m_stream.msg : "not decompressible"));
    }
    Require(m_stream.avail_in == 0, "bytes follow the compressed data");
    return text;
  }

 private:
  z_stream m_stream{};
};

std::string Deflate(const std::string& text, int window) {
  z_stream stream{};
  Require(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, window, 8, Z_DEFAULT_STRATEGY) == Z_OK,
          "no memory to compress");
  std::string data(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
  stream.next_in = Bytes(text);
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = Bytes(data);
  stream.avail_out = static_cast<uInt>(data.size());
  deflate(&stream, Z_FINISH);
  data.resize(stream.total_out);
  deflateEnd(&stream);
  return data;
}

std::string Inflate(const std::string& data, int window) {
  Require(!data.empty(), "body is empty");
  Require(data.size() <= std::numeric_limits<uInt>::max(), "body is too long");
  return InflateStream(data, window).Run();
}

void RequireZlibForm(bool same) {
  Require(same, "compressed data is not in the form that zlib gives it at its default level");
}

}  // namespace

std::string InflateZlib(const std::string& data, DeflateRule rule) {
  std::string text = Inflate(data, kZlibWindow);
  if (rule == DeflateRule::kAsZlibMakes) {
    RequireZlibForm(Deflate(text, kZlibWindow) == data);
  }
  return text;
}

std::string InflateGzip(const std::string& data, DeflateRule rule) {
  std::string text = Inflate(data, kGzipWindow);
  if (rule == DeflateRule::kAsZlibMakes) {
    std::string expected = Deflate(text, kGzipWindow);
    // zlib notes the system that it runs on: 3 for Unix, 10 for Windows.
    const char system = data[kGzipSystemByte];
    Require(system == 3 || system == 10, "gzip header names an unknown system");
    expected[kGzipSystemByte] = system;
    RequireZlibForm(expected == data);
  }
  return text;
}

std::optional<std::string> DecodeBase64(const std::string& text) {
  if (text.empty() || text.size() % 4 != 0 || text.size() > (std::size_t{1} << 20)) {
    return std::nullopt;
  }
  std::string bytes(text.size() / 4 * 3, '\0');
  const int length = EVP_DecodeBlock(Bytes(bytes), Bytes(text), static_cast<int>(text.size()));
  if (length < 0) {
    return std::nullopt;
  }
  // The decoder counts padding as zero bytes, and forgives blanks and stray bits: encoding back does not.
  const auto padding = std::min<std::ptrdiff_t>(2, std::count(text.end() - 2, text.end(), '='));
  bytes.resize(static_cast<std::size_t>(length) - static_cast<std::size_t>(padding));
  std::string again(text.size() + 1, '\0');
  const int size = EVP_EncodeBlock(Bytes(again), Bytes(bytes), static_cast<int>(bytes.size()));
  again.resize(static_cast<std::size_t>(size));
  return again == text ? std::optional(bytes) : std::nullopt;
}

bool IsLowerCaseHex(const std::string& text, std::size_t digits) {
  return text.size() == digits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

std::optional<std::string> DecodeHex(const std::string& text) {
  if (text.size() % 2 != 0 || !IsLowerCaseHex(text, text.size())) {
    return std::nullopt;
  }
  const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    bytes += static_cast<char>(digit(text[i]) * 16 + digit(text[i + 1]));
  }
  return bytes;
}

std::string EncodeHex(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += "0123456789abcdef"[byte / 16];
    text += "0123456789abcdef"[byte % 16];
  }
  return text;
}

bool IsUtf8(const std::string& text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto at = [&](std::size_t index) -> unsigned {
      return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
    };
    const unsigned lead = at(i);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (length > 1 && (lead < 0xC2 || lead > 0xF4)) {
      return false;
    }
    for (std::size_t k = 1; k < length; ++k) {
      if ((at(i + k) & 0xC0u) != 0x80u) {
        return false;
      }
    }
    // Overlong forms, surrogates and what lies beyond the last character show in the second byte.
    const unsigned second = at(i + 1);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) {
      return false;
    }
    i += length;
  }
  return true;
}

}  // namespace Drive::Collection
