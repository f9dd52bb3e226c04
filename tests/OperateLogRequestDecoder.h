// OperateLogRequestDecoder.h - reads request bodies as the collectors do, layer by layer.
#pragma once

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <zlib.h>

#include <string>

#include "client/common/EncryptHelper.h"
#include "tests/support/Certificates.h"
#include "transport/JsonText.h"

namespace Drive::Testing {

// zlib or gzip.
inline std::string Inflate(std::string data) {
  constexpr int kEitherFormat = 15 + 32;
  z_stream stream{};
  EXPECT_EQ(Z_OK, inflateInit2(&stream, kEitherFormat));
  stream.next_in = reinterpret_cast<Bytef*>(data.data());
  stream.avail_in = static_cast<uInt>(data.size());
  std::string text;
  int result = Z_OK;
  while (result == Z_OK) {
    char block[4096];
    stream.next_out = reinterpret_cast<Bytef*>(block);
    stream.avail_out = sizeof block;
    result = inflate(&stream, Z_NO_FLUSH);
    text.append(block, sizeof block - stream.avail_out);
  }
  EXPECT_EQ(Z_STREAM_END, result);
  inflateEnd(&stream);
  return text;
}

struct DecodedRequest {
  Json::Value header;
  Json::Value payload;
  std::string keyHex;
  std::string ivHex;
};

// The operation collector's key pair.
class CollectorKey {
 public:
  explicit CollectorKey(unsigned bits = 2048) : m_key(EVP_RSA_gen(bits)) {}

  // PKCS#1 DER of the public key.
  std::string PublicHex() const {
    unsigned char* der = nullptr;
    const int size = i2d_PublicKey(m_key.get(), &der);
    const std::string hex = EncryptHelper::CharToHexStr(der, static_cast<std::size_t>(size));
    OPENSSL_free(der);
    return hex;
  }

  DecodedRequest Decode(const std::string& body) const {
    const Json::Value request = Bilog::ParseJsonObject(Inflate(body)).value();
    EXPECT_EQ(request.size(), 2u);
    Bytes event;
    EXPECT_TRUE(EncryptHelper::HexToByte(request["event"].asString(), 1 << 22, event));
    DecodedRequest decoded;
    decoded.header = request["header"];
    decoded.keyHex = DecipherKey(decoded.header["chifer"].asString());
    decoded.ivHex = EncryptHelper::CharToHexStr(event.data(), 16);
    decoded.payload = Bilog::ParseJsonObject(Inflate(DecipherEvent(decoded.keyHex, event))).value();
    return decoded;
  }

 private:
  std::string DecipherKey(const std::string& base64) const {
    unsigned char cipher[258];
    EXPECT_EQ(258, EVP_DecodeBlock(cipher, reinterpret_cast<const unsigned char*>(base64.data()), 344));
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new(m_key.get(), nullptr);
    EVP_PKEY_decrypt_init(context);
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING);
    EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256());
    unsigned char plain[256];
    std::size_t size = sizeof plain;
    EXPECT_EQ(1, EVP_PKEY_decrypt(context, plain, &size, cipher, 256));
    EVP_PKEY_CTX_free(context);
    return {plain, plain + size};
  }

  static std::string DecipherEvent(const std::string& keyHex, const Bytes& event) {
    Bytes key;
    EXPECT_TRUE(EncryptHelper::HexToByte(keyHex, 16, key) && key.size() == 16);
    Bytes plain(event.size());
    int size = 0;
    int rest = 0;
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    EVP_DecryptInit_ex(context, EVP_aes_128_cbc(), nullptr, key.data(), event.data());
    EVP_DecryptUpdate(context, plain.data(), &size, event.data() + 16, static_cast<int>(event.size()) - 16);
    EXPECT_EQ(1, EVP_DecryptFinal_ex(context, plain.data() + size, &rest));
    EVP_CIPHER_CTX_free(context);
    return {plain.begin(), plain.begin() + size + rest};
  }

  Key m_key;
};

}  // namespace Drive::Testing
