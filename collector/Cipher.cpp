// Cipher.cpp - RSA and AES by OpenSSL.
//
// Each failure empties OpenSSL's error queue of the thread: the TLS connection that the thread serves would
// take the entry for an error of its own.
#include "collector/Cipher.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <stdexcept>
#include <utility>

#include "collector/Decoding.h"

namespace Drive::Collection {

namespace {

constexpr int kRsaBits = 2048;
constexpr std::size_t kBlockBytes = 16;

struct BioDeleter {
  void operator()(BIO* bio) const noexcept { BIO_free(bio); }
};
using Bio = std::unique_ptr<BIO, BioDeleter>;

struct KeyContextDeleter {
  void operator()(EVP_PKEY_CTX* context) const noexcept { EVP_PKEY_CTX_free(context); }
};
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, KeyContextDeleter>;

struct CipherContextDeleter {
  void operator()(EVP_CIPHER_CTX* context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, CipherContextDeleter>;

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

}  // namespace

std::string KeyToPem(const Key& key) {
  const Bio bio(BIO_new(BIO_s_mem()));
  if (!bio ||
      PEM_write_bio_PKCS8PrivateKey(bio.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1) {
    ERR_clear_error();
    throw std::runtime_error("cannot write a private key");
  }
  char* text = nullptr;
  const long length = BIO_get_mem_data(bio.get(), &text);
  return std::string(text, static_cast<std::size_t>(length));
}

Key KeyFromPem(const std::string& pem) {
  const Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  Key key(bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr) : nullptr);
  if (!key) {
    ERR_clear_error();
    throw std::runtime_error("not a private key in PEM form");
  }
  return key;
}

RsaKey::RsaKey(Key key) : m_key(std::move(key)) {
  if (!m_key || EVP_PKEY_is_a(m_key.get(), "RSA") != 1 || EVP_PKEY_get_bits(m_key.get()) != kRsaBits) {
    throw std::runtime_error("not an RSA key of 2048 bits");
  }
}

RsaKey RsaKey::Generate() { return RsaKey(Key(EVP_RSA_gen(kRsaBits))); }

std::string RsaKey::PublicKeyHex() const {
  const int length = i2d_PublicKey(m_key.get(), nullptr);
  if (length <= 0) {
    ERR_clear_error();
    throw std::runtime_error("cannot write the RSA public key");
  }
  std::string der(static_cast<std::size_t>(length), '\0');
  unsigned char* end = Bytes(der);
  i2d_PublicKey(m_key.get(), &end);
  return EncodeHex(der);
}

std::optional<std::string> RsaKey::Decipher(const std::string& cipherText) const {
  const KeyContext context(EVP_PKEY_CTX_new(m_key.get(), nullptr));
  std::string text(static_cast<std::size_t>(EVP_PKEY_get_size(m_key.get())), '\0');
  std::size_t length = text.size();
  const bool done =
      context && EVP_PKEY_decrypt_init(context.get()) == 1 &&
      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) == 1 &&
      EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()) == 1 &&
      EVP_PKEY_CTX_set_rsa_mgf1_md(context.get(), EVP_sha256()) == 1 &&
      EVP_PKEY_decrypt(context.get(), Bytes(text), &length, Bytes(cipherText), cipherText.size()) == 1;
  if (!done) {
    ERR_clear_error();
    return std::nullopt;
  }
  text.resize(length);
  return text;
}

std::optional<std::string> DecipherAes(const std::string& key, const std::string& vector,
                                       const std::string& cipherText) {
  if (key.size() != kBlockBytes || vector.size() != kBlockBytes) {
    return std::nullopt;
  }
  const CipherContext context(EVP_CIPHER_CTX_new());
  std::string text(cipherText.size() + kBlockBytes, '\0');
  int bulk = 0;
  int rest = 0;
  const bool done =
      context &&
      EVP_DecryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, Bytes(key), Bytes(vector)) == 1 &&
      EVP_DecryptUpdate(context.get(), Bytes(text), &bulk, Bytes(cipherText),
                        static_cast<int>(cipherText.size())) == 1 &&
      EVP_DecryptFinal_ex(context.get(), Bytes(text) + bulk, &rest) == 1;
  if (!done) {
    ERR_clear_error();
    return std::nullopt;
  }
  text.resize(static_cast<std::size_t>(bulk) + static_cast<std::size_t>(rest));
  return text;
}

}  // namespace Drive::Collection
