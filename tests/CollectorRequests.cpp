// CollectorRequests.cpp - requests of the three channels, encoded step by step so that any step can be
// broken.
#include "tests/CollectorRequests.h"

#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "client/common/EncryptHelper.h"
#include "collector/JsonCheck.h"

namespace Drive::Testing {

using Collection::Channel;

namespace {

constexpr int kZlibWindow = 15;
constexpr int kGzipWindow = 15 + 16;

std::string Deflate(const std::string& text, int window) {
  z_stream stream{};
  deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, window, 8, Z_DEFAULT_STRATEGY);
  std::string result(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

// What is around the records of a vector.
Json::Value Plain(Channel channel, const std::string& requestId, Json::Value content) {
  Json::Value root;
  if (channel == Channel::kUba) {
    content[0]["q"] = 999998;  // the last number before the sequence begins again
    content[0]["x"]["StartTime"] = content[0]["x"]["StartTime"].asDouble() + 0.9;
    content[1]["q"] = 0;
    root["events"] = std::move(content);
    return root;
  }
  const bool isOperation = channel == Channel::kOperation;
  Json::Value& header = root["header"];
  header[isOperation ? "requestid" : "Request-Id"] = requestId;
  header[isOperation ? "appid" : "App-Id"] = "com.talvik.cloud.pc";
  header["serviceid"] = isOperation ? "qmvzooperqrt" : "qmvzomaintqrt";
  header["timestamp"] = isOperation ? Json::Value("1700000000123") : Json::Value(Json::Int64{1700000000123});
  if (isOperation) {
    for (const char* name : {"protocol_version", "hmac", "servicetag", "compress_mode"}) {
      header[name] = "";
    }
  }
  root["event"] = std::move(content);
  return root;
}

}  // namespace

std::string Zlib(const std::string& text) { return Deflate(text, kZlibWindow); }

std::string Base64(const std::string& bytes) {
  return EncryptHelper::Base64Encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                                     true);
}

std::string EncipherKey(const std::string& publicKeyHex, const std::string& text) {
  Bytes der;
  EncryptHelper::HexToByte(publicKeyHex, publicKeyHex.size(), der);
  const std::string pem = "-----BEGIN RSA PUBLIC KEY-----\n" +
                          EncryptHelper::Base64Encode(der.data(), der.size(), false) +
                          "-----END RSA PUBLIC KEY-----\n";
  std::string cipherText;
  if (!EncryptHelper::RAS_Encrypt(text, pem, cipherText)) {
    throw std::runtime_error("the test cannot encipher its key");
  }
  return cipherText;
}

std::string TestRequest::Body() const {
  if (channel != Channel::kOperation) {
    return Deflate(Collection::CompactText(plain), channel == Channel::kUba ? kGzipWindow : kZlibWindow);
  }
  const Bytes key = {0, 'a', ' ', 'z', 'e', 'r', 'o', ' ', 'i', 's', ' ', 'a', ' ', 'k', 'e', 'y'};
  const Bytes vector(16, 'v');
  const std::string payload = Zlib(Collection::CompactText(plain["event"]));
  Bytes cipher;
  EncryptHelper::AES_128_CBC_Encrypt(Bytes(payload.begin(), payload.end()), key, vector, cipher);
  cipher.insert(cipher.begin(), vector.begin(), vector.end());

  Json::Value root = plain;
  if (root["header"].isObject()) {
    root["header"]["chifer"] =
        chifer.empty() ? EncipherKey(rsaKeyHex, EncryptHelper::BytesToHexstr(key)) : chifer;
  }
  root["event"] = event.empty() ? EncryptHelper::BytesToHexstr(cipher) : event;
  return Zlib(Collection::CompactText(root));
}

std::string& TestRequest::Header(const std::string& name) {
  const auto found =
      std::find_if(headers.begin(), headers.end(), [&](const auto& header) { return header.name == name; });
  return found != headers.end() ? found->value : headers.emplace_back(Collection::Header{name, ""}).value;
}

TestRequest MakeRequest(Channel channel, const std::string& rsaKeyHex, const std::string& requestId) {
  const std::string file = VECTORS_FOLDER "/" + std::string(Collection::NameOf(channel));
  TestRequest request{channel, {}, {}, rsaKeyHex, {}, {}};
  std::ifstream headers(file + ".headers");
  for (std::string line; std::getline(headers, line);) {
    const std::size_t colon = line.find(':');
    request.Header(line.substr(0, colon)) = line.substr(colon + 1);
  }
  request.Header(channel == Channel::kUba ? "X-ReqID" : "Request-Id") = requestId;
  Json::Value content;
  std::ifstream(file + ".json") >> content;
  request.plain = Plain(channel, requestId, std::move(content));
  return request;
}

}  // namespace Drive::Testing
