// OperationEnvelope.cpp - compresses and enciphers the payload of an operation-log request.
#include "operatelog/OperationEnvelope.h"

#include <vector>

#include "model/EventJson.h"
#include "transport/BodyEncoding.h"
#include "transport/JsonText.h"

namespace Drive::OperateLog {

namespace {

constexpr std::size_t kAesBytes = 16;  // of the key and of the IV
constexpr std::size_t kPublicKeyBytes = 270;
constexpr std::size_t kPemLineLength = 64;

OperationEnvelope Failed(const std::string& failure) {
  return {OperationEnvelope::Status::kFailed, {}, failure};
}

// What it means that nothing came out of the compression of `text`. zlib adds less than 1 % to what it cannot
// compress, so a small text fails for want of memory, and halving the batch would help nobody.
OperationEnvelope NotCompressed(const std::string& text) {
  if (text.size() < Bilog::kMaxZlibBytes / 100 * 99) {
    return Failed("compression failed");
  }
  return {OperationEnvelope::Status::kTooLarge, {}, {}};
}

bool DrawRandom(Bytes& bytes) {
  bytes.assign(kAesBytes, 0);
  return EncryptHelper::GetSecureRandom(bytes.data(), bytes.size());
}

std::string MakePem(const Bytes& der) {
  const std::string base64 = EncryptHelper::Base64Encode(der.data(), der.size(), true);
  std::string pem = "-----BEGIN RSA PUBLIC KEY-----\n";
  for (std::size_t i = 0; i < base64.size(); i += kPemLineLength) {
    pem.append(base64, i, kPemLineLength).append("\n");
  }
  return pem + "-----END RSA PUBLIC KEY-----\n";
}

// The AES key under the collector's public key; nothing when that one is no key.
std::optional<std::string> MakeChifer(const Bytes& aesKey, const std::string& rsaPublicKey) {
  Bytes der;
  if (rsaPublicKey.size() != 2 * kPublicKeyBytes ||
      !EncryptHelper::HexToByte(rsaPublicKey, kPublicKeyBytes, der)) {
    return std::nullopt;
  }
  std::string chifer;
  if (!EncryptHelper::RAS_Encrypt(EncryptHelper::CharToHexStr(aesKey.data(), aesKey.size()), MakePem(der),
                                  chifer)) {
    return std::nullopt;
  }
  return chifer;
}

}  // namespace

std::optional<AesSecret> DrawAesSecret() {
  AesSecret secret;
  if (!DrawRandom(secret.key) || !DrawRandom(secret.iv)) {
    return std::nullopt;
  }
  return secret;
}

OperationEnvelope MakeOperationEnvelope(const Header& header, const Json::Value& payload,
                                        const std::string& rsaPublicKey) {
  const auto secret = DrawAesSecret();
  if (!secret) {
    return Failed("no random bytes for the AES key");
  }
  const auto chifer = MakeChifer(secret->key, rsaPublicKey);
  if (!chifer) {
    return Failed("g_rsaPublicKey is not the hexadecimal text of a 270-byte RSA public key");
  }

  const std::string payloadText = Bilog::WriteJson(payload);
  const Bytes compressed = Bilog::ZlibCompress(payloadText);
  if (compressed.empty()) {
    return NotCompressed(payloadText);
  }
  Bytes cipher;
  if (!EncryptHelper::AES_128_CBC_Encrypt(compressed, secret->key, secret->iv, cipher)) {
    return Failed("AES encryption failed");
  }
  Bytes event = secret->iv;
  event.insert(event.end(), cipher.begin(), cipher.end());

  Json::Value request(Json::objectValue);
  request["header"] = MakeHeaderJson(header, *chifer);
  request["event"] = EncryptHelper::BytesToHexstr(event);
  const std::string requestText = Bilog::WriteJson(request);
  const Bytes body = Bilog::ZlibCompress(requestText);
  if (body.empty()) {
    return NotCompressed(requestText);
  }
  return {OperationEnvelope::Status::kMade, std::string(body.begin(), body.end()), {}};
}

}  // namespace Drive::OperateLog
