// Cipher.h - the collector's side of the operation channel's encipherment.
#pragma once

#include <openssl/evp.h>

#include <memory>
#include <optional>
#include <string>

namespace Drive::Collection {

struct KeyDeleter {
  void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
};
using Key = std::unique_ptr<EVP_PKEY, KeyDeleter>;

// A private key as PEM text and back. Both throw std::runtime_error.
std::string KeyToPem(const Key& key);
Key KeyFromPem(const std::string& pem);

// The RSA key pair that clients encipher their AES keys for.
//
// Thread-safety: immutable after construction.
class RsaKey {
 public:
  // Takes a 2048-bit key; throws std::runtime_error on any other.
  explicit RsaKey(Key key);
  static RsaKey Generate();

  // The public half as clients are configured with it: RSAPublicKey in DER, 540 hexadecimal digits.
  std::string PublicKeyHex() const;

  // Undoes OAEP with SHA-256; nothing when the text was not enciphered for this key.
  std::optional<std::string> Decipher(const std::string& cipherText) const;

  const Key& Pair() const { return m_key; }

 private:
  Key m_key;
};

// AES-128-CBC with PKCS#7 padding; nothing when the padding is wrong. Key and vector are 16 bytes each.
std::optional<std::string> DecipherAes(const std::string& key, const std::string& vector,
                                       const std::string& cipherText);

}  // namespace Drive::Collection
