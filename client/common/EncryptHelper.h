// EncryptHelper.h - hashes, random bytes, text forms of bytes, and the two ciphers of the uploads.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Drive {

using Bytes = std::vector<unsigned char>;

// Thread-safety: every operation may be called from any thread. Nothing throws but std::bad_alloc; an
// operation that can fail returns false and leaves an empty result.
class EncryptHelper {
 public:
  // Initialises the crypto library without its exit handlers, so that threads may use it until the process is
  // gone. Every operation here does so itself; call it before another library initialises the crypto library.
  static void Initialise();

  // SHA-256 of the bytes of `text`, as 64 lower-case hexadecimal digits.
  static std::string SHA256_Encode(const std::string& text);

  // Fills `size` bytes from the system's secure generator.
  static bool GetSecureRandom(unsigned char* bytes, std::size_t size);

  // The bytes that pairs of hexadecimal digits stand for. False when the count of digits is odd, a character
  // is no digit, or the result would be larger than `capacity` bytes.
  static bool HexToByte(const std::string& hex, std::size_t capacity, Bytes& bytes);

  // Lower-case hexadecimal text, two digits a byte.
  static std::string BytesToHexstr(const Bytes& bytes);
  static std::string CharToHexStr(const unsigned char* bytes, std::size_t size);

  // Base64 with padding; on one line (noLineBreaks) or in lines of 64 characters.
  static std::string Base64Encode(const unsigned char* bytes, std::size_t size, bool noLineBreaks);

  // AES-128 in CBC mode, padding PKCS#7. Key and initialisation vector have 16 bytes each.
  static bool AES_128_CBC_Encrypt(const Bytes& plain, const Bytes& key, const Bytes& iv, Bytes& cipher);

  // RSA with OAEP (SHA-256) under a public key in PEM form ("RSA PUBLIC KEY"); the result is Base64 text on
  // one line. False when the key cannot be read or the text is too long for it.
  static bool RAS_Encrypt(const std::string& plain, const std::string& pemPublicKey, std::string& cipherText);
};

}  // namespace Drive
