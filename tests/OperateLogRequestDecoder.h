// OperateLogRequestDecoder.h - reads an operation-log request as the collector does: a key pair, and the
// layers of the body one by one.
#pragma once

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <zlib.h>

#include <string>
#include <vector>

#include "client/common/EncryptHelper.h"
#include "tests/support/Certificates.h"
#include "transport/JsonText.h"

namespace Drive::Testing {

inline std::string Inflate(const std::string& data) {
  std::string text(1 << 22, '\0');
  uLongf size = text.size();
  EXPECT_EQ(Z_OK, uncompress(reinterpret_cast<Bytef*>(text.data()), &size,
                             reinterpret_cast<const Bytef*>(data.data()), data.size()));
  text.resize(size);
  return text;
}

struct DecodedRequest {
  Json::Value header;
  Json::Value payload;
  std::string keyHex;
  std::string ivHex;
};

// The collector's key pair.
class CollectorKey {
 public:
  explicit CollectorKey(int bits = 2048) : m_key(EVP_RSA_gen(static_cast<unsigned>(bits))) {}

  // PKCS#1 DER of the public key.
  std::string PublicHex() const {
    unsigned char* der = nullptr;
    const int size = i2d_PublicKey(m_key.get(), &der);
    const std::string hex = EncryptHelper::CharToHexStr(der, static_cast<std::size_t>(size));
    OPENSSL_free(der);
    return hex;
  }

  DecodedRequest Decode(const std::string& body) const {
    const auto request = Bilog::ParseJsonObject(Inflate(body));
    EXPECT_TRUE(request && request->getMemberNames() == std::vector<std::string>({"event", "header"}));
    DecodedRequest decoded;
    decoded.header = (*request)["header"];
    decoded.keyHex = Decipher(decoded.header["chifer"].asString());
    Bytes event;
    EXPECT_TRUE(EncryptHelper::HexToByte((*request)["event"].asString(), 1 << 22, event));
    decoded.ivHex = EncryptHelper::CharToHexStr(event.data(), 16);
    const auto payload = Bilog::ParseJsonObject(Inflate(DecipherEvent(decoded.keyHex, event)));
    EXPECT_TRUE(payload);
    decoded.payload = payload.value_or(Json::Value());
    return decoded;
  }

 private:
  std::string Decipher(const std::string& base64) const {
    std::vector<unsigned char> cipher(base64.size());
    EVP_DecodeBlock(cipher.data(), reinterpret_cast<const unsigned char*>(base64.data()),
                    static_cast<int>(base64.size()));
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new(m_key.get(), nullptr);
    EVP_PKEY_decrypt_init(context);
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING);
    EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256());
    std::string plain(256, '\0');
    std::size_t size = plain.size();
    EXPECT_EQ(1, EVP_PKEY_decrypt(context, reinterpret_cast<unsigned char*>(plain.data()), &size,
                                  cipher.data(), 256));
    EVP_PKEY_CTX_free(context);
    plain.resize(size);
    return plain;
  }

  static std::string DecipherEvent(const std::string& keyHex, const Bytes& event) {
    Bytes key;
    EXPECT_TRUE(EncryptHelper::HexToByte(keyHex, 16, key) && key.size() == 16);
    std::string plain(event.size(), '\0');
    auto* out = reinterpret_cast<unsigned char*>(plain.data());
    int size = 0;
    int rest = 0;
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    EVP_DecryptInit_ex(context, EVP_aes_128_cbc(), nullptr, key.data(), event.data());
    EVP_DecryptUpdate(context, out, &size, event.data() + 16, static_cast<int>(event.size()) - 16);
    EXPECT_EQ(1, EVP_DecryptFinal_ex(context, out + size, &rest));
    EVP_CIPHER_CTX_free(context);
    plain.resize(static_cast<std::size_t>(size + rest));
    return plain;
  }

  Key m_key;
};

}  // namespace Drive::Testing
