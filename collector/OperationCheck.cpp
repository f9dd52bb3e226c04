// OperationCheck.cpp - the operation channel's body:
//
//   zlib( {"header": {"chifer", "requestid", ...}, "event": hex( vector | AES( zlib( payload ) ) )} )
//
//   chifer   Base64( RSA( AES key as 32 hexadecimal digits ) )
//   vector   the 16 bytes that AES-128-CBC starts from, in clear
//   payload  {"events_common": {...}, "events": [event, ...]}
#include "collector/Cipher.h"
#include "collector/JsonCheck.h"
#include "collector/Refusal.h"
#include "collector/RequestCheck.h"

namespace Drive::Collection {

namespace {

constexpr std::size_t kBlockBytes = 16;
constexpr std::size_t kKeyDigits = 32;

void CheckEnvelopeHeader(const Json::Value& header, const std::string& requestId) {
  RequireMembers(header, "the header",
                 {{"protocol_version", Kind::kString},
                  {"chifer", Kind::kString},
                  {"requestid", Kind::kString},
                  {"appid", Kind::kString},
                  {"hmac", Kind::kString},
                  {"servicetag", Kind::kString},
                  {"compress_mode", Kind::kString},
                  {"serviceid", Kind::kString},
                  {"timestamp", Kind::kString}});
  Require(header["requestid"].asString() == requestId, "\"requestid\" is not the one of the HTTP header");
  Require(!header["appid"].asString().empty(), "\"appid\" is empty");
  Require(header["serviceid"].asString() == "qmvzooperqrt", "\"serviceid\" is wrong");
  const std::string timestamp = header["timestamp"].asString();
  Require(!timestamp.empty() && timestamp.find_first_not_of("0123456789") == std::string::npos,
          "\"timestamp\" is not a decimal number");
}

std::string DecipherKey(const std::string& chifer, const RsaKey& rsaKey) {
  const auto cipherText = DecodeBase64(chifer);
  Require(cipherText.has_value(), "\"chifer\" is not Base64 text");
  const auto digits = rsaKey.Decipher(*cipherText);
  Require(digits.has_value(), "\"chifer\" was not enciphered for the collector's key");
  Require(IsLowerCaseHex(*digits, kKeyDigits), "\"chifer\" holds no AES key of 32 lower-case hex digits");
  return *DecodeHex(*digits);
}

std::string DecipherPayload(const std::string& event, const std::string& key, DeflateRule rule) {
  const auto bytes = DecodeHex(event);
  Require(bytes.has_value(), "\"event\" is not lower-case hex text");
  Require(bytes->size() >= 2 * kBlockBytes && bytes->size() % kBlockBytes == 0,
          "\"event\" is not a vector and whole blocks");
  const auto payload = DecipherAes(key, bytes->substr(0, kBlockBytes), bytes->substr(kBlockBytes));
  Require(payload.has_value(), "\"event\" was not enciphered with the key of \"chifer\"");
  return InflateZlib(*payload, rule);
}

void CheckPayload(const Json::Value& payload) {
  RequireMembers(payload, "the payload", {{"events_common", Kind::kObject}, {"events", Kind::kArray}});
  const Json::Value& common = payload["events_common"];
  RequireMembers(common, "\"events_common\"",
                 {{"androidid", Kind::kString},
                  {"imei", Kind::kString},
                  {"uuid", Kind::kString},
                  {"udid", Kind::kString},
                  {"oaid", Kind::kString},
                  {"upid", Kind::kString},
                  {"sn", Kind::kString},
                  {"properties", Kind::kObject},
                  {"events_global_properties", Kind::kString}});
  RequireMembers(common["properties"], "\"properties\"",
                 {{"_rom_ver", Kind::kString},
                  {"_zelo_ver", Kind::kString},
                  {"_model", Kind::kString},
                  {"_mcc", Kind::kString},
                  {"_mnc", Kind::kString},
                  {"_package_name", Kind::kString},
                  {"_app_ver", Kind::kString},
                  {"_lib_ver", Kind::kString},
                  {"_channel", Kind::kString},
                  {"_lib_name", Kind::kString},
                  {"_oaid_tracking_flag", Kind::kBool},
                  {"events_global_properties", Kind::kString}});
  Require(!payload["events"].empty(), "the payload has no event");
  for (const Json::Value& event : payload["events"]) {
    RequireMembers(event, "the event",
                   {{"type", Kind::kString},
                    {"eventtime", Kind::kNumber},
                    {"event", Kind::kString},
                    {"event_session_name", Kind::kString},
                    {"first_session_event", Kind::kBool}});
  }
}

}  // namespace

Accepted CheckOperationBody(const std::string& requestId, const std::string& body, DeflateRule rule,
                            const RsaKey& rsaKey) {
  Json::Value root = ParseObject(InflateZlib(body, rule), "the body");
  RequireMembers(root, "the body", {{"header", Kind::kObject}, {"event", Kind::kString}});
  CheckEnvelopeHeader(root["header"], requestId);

  const std::string key = DecipherKey(root["header"]["chifer"].asString(), rsaKey);
  root["event"] = ParseObject(DecipherPayload(root["event"].asString(), key, rule), "the payload");
  CheckPayload(root["event"]);

  const Json::Value& events = root["event"]["events"];
  return Accepted{requestId, CompactText(root), {events.begin(), events.end()}};
}

}  // namespace Drive::Collection
