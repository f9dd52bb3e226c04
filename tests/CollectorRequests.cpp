// CollectorRequests.cpp - good requests of the three channels, encoded by the tests' own hand.
#include "tests/CollectorRequests.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <zlib.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

namespace Drive::Testing {

using Collection::Channel;

namespace {

std::string Hex(const std::string& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

std::string Unhex(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

const unsigned char* Data(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* Data(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

std::string Deflate(const std::string& text, int level, int window) {
  z_stream stream{};
  deflateInit2(&stream, level, Z_DEFLATED, window, 8, Z_DEFAULT_STRATEGY);
  stream.next_in = const_cast<Bytef*>(Data(text));
  stream.avail_in = static_cast<uInt>(text.size());
  std::string result;
  int state = Z_OK;
  while (state == Z_OK) {
    std::string piece(1024, '\0');
    stream.next_out = Data(piece);
    stream.avail_out = 1024;
    state = deflate(&stream, Z_FINISH);
    result += piece.substr(0, 1024 - stream.avail_out);
  }
  deflateEnd(&stream);
  return result;
}

std::string EncipherAes(const std::string& key, const std::string& vector, const std::string& text) {
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                &EVP_CIPHER_CTX_free);
  std::string result(text.size() + 16, '\0');
  int bulk = 0;
  int rest = 0;
  EVP_EncryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, Data(key), Data(vector));
  EVP_EncryptUpdate(context.get(), Data(result), &bulk, Data(text), static_cast<int>(text.size()));
  EVP_EncryptFinal_ex(context.get(), Data(result) + bulk, &rest);
  result.resize(static_cast<std::size_t>(bulk + rest));
  return result;
}

std::string Text(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

Json::Value Parse(const char* text) {
  Json::Value value;
  Json::Reader().parse(text, value);
  return value;
}

constexpr char kMaintenance[] = R"json({
  "header": {"Request-Id": "", "App-Id": "com.talvik.cloud.pc", "serviceid": "qmvzomaintqrt",
             "timestamp": 1700000000123},
  "event": [
    {"Time": "20240305070809012", "Action": "upload", "UserId": "u", "DevId": "A1B2", "Code": "0",
     "Info": "text", "Extend": ";DEVICE_BRAND:;APP_BRAND_ID:", "TraceId": "7_11_1_1", "UseTime": 1.5,
     "StartTime": 0.0, "Model": "m", "Romversion": "r", "Appversion": "1", "Reqsize": "", "Rspsize": "",
     "Logversion": 1, "TraceEndFlag": 0},
    {"Time": "20240305070809013", "Action": "d\u00e9l\u00e9tion", "UserId": "u", "DevId": "A1B2", "Code": "0",
     "file_id": "f", "file_size": 5000000000, "Extend": {"key": "v", "DEVICE_BRAND": "", "APP_BRAND_ID": "",
     "ACCOUNT_BRAND_ID": "", "DEVICE_BRAND_ID": "", "DISK_TYPE": "", "COUNTRY_CODE": "CN", "USER_GRADE": ""},
     "TraceId": "8_11_1_1", "UseTime": 0.0, "StartTime": 0.0, "Model": "m", "Romversion": "r",
     "Appversion": "1", "Reqsize": "", "Rspsize": "", "Logversion": 1, "TraceEndFlag": 1}]})json";

constexpr char kOperation[] = R"json({
  "header": {"protocol_version": "1", "requestid": "", "appid": "com.talvik.cloud.pc", "hmac": "",
             "servicetag": "s", "compress_mode": "zlib", "serviceid": "qmvzooperqrt",
             "timestamp": "1700000000123"},
  "event": {
    "events_common": {"androidid": "", "imei": "", "uuid": "", "udid": "", "oaid": "", "upid": "", "sn": "",
      "events_global_properties": "", "properties": {"_rom_ver": "", "_zelo_ver": "", "_model": "m",
      "_mcc": "", "_mnc": "", "_package_name": "p", "_app_ver": "1", "_lib_ver": "1", "_channel": "",
      "_lib_name": "l", "_oaid_tracking_flag": false, "events_global_properties": ""}},
    "events": [
      {"type": "t", "eventtime": 1.7e12, "event": "open", "event_session_name": "",
       "first_session_event": false},
      {"type": "t", "eventtime": 1.7e12, "event": "close", "event_session_name": "",
       "first_session_event": true}]}})json";

constexpr char kUbaRecord[] =
    R"json({"e": "PCE", "t": 1700000000123, "q": 0, "v": 1, "x": {"Id": 1, "Time": "1",
  "Action": "open", "UserId": "u", "DevId": "", "Code": "0", "Info": "", "Extend": "DEVICE_BRAND:own",
  "TraceId": "t", "UseTime": 0.0, "StartTime": 1700000000123.9, "Model": "", "Romversion": "",
  "Appversion": "", "Reqsize": "", "Rspsize": "", "Logversion": 1, "TraceEndFlag": 0, "CurModule": "",
  "Actiontype": "", "NextModule": "", "CountryCode": "CN", "ResidenceTime": 3, "OprType": "",
  "IsMaintenanceLog": 0}})json";

Collection::Headers CommonHeaders(const std::string& requestId) {
  return {
      {"Content-Type", "application/json"}, {"Request-Id", requestId},        {"App-Ver", "1.1.1.1"},
      {"App-Id", "com.talvik.cloud.pc"},    {"Sdk-Name", "OrvellePC"},        {"Sdk-Ver", "1"},
      {"Device-Type", "OrvellePC"},         {"x-zq-client-mode", "frontend"}, {"x-zq-os-brand", "Windows"}};
}

Collection::Headers UbaHeaders(const std::string& requestId) {
  return {{"Content-Type", "application/json"},
          {"Content-Encoding", "gzip"},
          {"X-ReqID", requestId},
          {"X-AppID", "com.talvik.cloud.pc"},
          {"X-Model", "model"},
          {"X-AppVer", "13.1"},
          {"X-UDID", std::string(64, 'a')},
          {"X-AccountID", "u"},
          {"User-Agent", "client13.1"},
          {"X-RomVer", "Unknow Platform"},
          {"X-Lang", "zh_CN"},
          {"X-DeliveryPlace", "CN"},
          {"Authorization", Base64("8:null:null:null:token%2B1")},
          {"X-zq-auth-version", "1"},
          {"x-zq-client-mode", "frontend"},
          {"x-zq-os-brand", "Windows"}};
}

}  // namespace

std::string Zlib(const std::string& text, int level) { return Deflate(text, level, 15); }
std::string Gzip(const std::string& text, int level) { return Deflate(text, level, 31); }

std::string Base64(const std::string& bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  EVP_EncodeBlock(Data(text), Data(bytes), static_cast<int>(bytes.size()));
  text.pop_back();
  return text;
}

std::string EncipherKey(const std::string& publicKeyHex, const std::string& text) {
  const std::string der = Unhex(publicKeyHex);
  const unsigned char* start = Data(der);
  const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
      d2i_PublicKey(EVP_PKEY_RSA, nullptr, &start, static_cast<long>(der.size())), &EVP_PKEY_free);
  const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
      EVP_PKEY_CTX_new(key.get(), nullptr), &EVP_PKEY_CTX_free);
  EVP_PKEY_encrypt_init(context.get());
  EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
  EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256());
  EVP_PKEY_CTX_set_rsa_mgf1_md(context.get(), EVP_sha256());
  std::string result(256, '\0');
  std::size_t length = result.size();
  if (EVP_PKEY_encrypt(context.get(), Data(result), &length, Data(text), text.size()) != 1) {
    throw std::runtime_error("the test cannot encipher its key");
  }
  return Base64(result);
}

std::string TestRequest::Body() const {
  if (channel == Channel::kUba) {
    return Gzip(Text(plain), level);
  }
  if (channel == Channel::kMaintenance) {
    return Zlib(Text(plain), level);
  }
  const std::string vector = "0123456789abcdef";
  Json::Value root = plain;
  root["header"]["chifer"] = chifer.empty() ? EncipherKey(rsaKeyHex, Hex(aesKey)) : chifer;
  root["event"] =
      event.empty() ? Hex(vector + EncipherAes(aesKey, vector, Zlib(Text(plain["event"]), level))) : event;
  return Zlib(Text(root), level);
}

std::string& TestRequest::Header(const std::string& name) {
  for (Collection::Header& header : headers) {
    if (header.name == name) {
      return header.value;
    }
  }
  throw std::logic_error("no header " + name);
}

TestRequest MakeRequest(Channel channel, const std::string& rsaKeyHex, const std::string& requestId) {
  TestRequest request{channel, CommonHeaders(requestId), {}, rsaKeyHex, {}, -1, {}, {}};
  request.aesKey = std::string("\0key with a zero", 16);
  switch (channel) {
    case Channel::kMaintenance:
      request.plain = Parse(kMaintenance);
      request.plain["header"]["Request-Id"] = requestId;
      break;
    case Channel::kOperation:
      request.plain = Parse(kOperation);
      request.plain["header"]["requestid"] = requestId;
      break;
    case Channel::kUba:
      request.headers = UbaHeaders(requestId);
      Json::Value event = Parse(kUbaRecord);
      event["x"]["DevId"] = std::string(64, 'b');
      event["q"] = 999998;
      request.plain["events"].append(event);
      event["q"] = 0;
      request.plain["events"].append(event);
      break;
  }
  return request;
}

}  // namespace Drive::Testing
