// EncryptHelper.cpp - the crypto operations, on OpenSSL's EVP interface.
#include "client/common/EncryptHelper.h"

#include <openssl/crypto.h>
#include <openssl/decoder.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <mutex>

#include "platform/EndingLock.h"

namespace Drive {

namespace {

constexpr std::size_t kAesBlockSize = 16;
// What OpenSSL takes in one call.
constexpr std::size_t kLargestInput = INT_MAX - 2 * kAesBlockSize;
// Bytes that one line of Base64 text holds; a multiple of 3, so that only the last line is padded.
constexpr std::size_t kBytesInBase64Line = 48;

struct CipherContextFree {
  void operator()(EVP_CIPHER_CTX* context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, CipherContextFree>;

struct KeyFree {
  void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
};
using Key = std::unique_ptr<EVP_PKEY, KeyFree>;

struct KeyContextFree {
  void operator()(EVP_PKEY_CTX* context) const noexcept { EVP_PKEY_CTX_free(context); }
};
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, KeyContextFree>;

struct DecoderFree {
  void operator()(OSSL_DECODER_CTX* context) const noexcept { OSSL_DECODER_CTX_free(context); }
};
using Decoder = std::unique_ptr<OSSL_DECODER_CTX, DecoderFree>;

// Initialises OpenSSL, and takes back the errors that an operation leaves in the thread's queue: the host's
// own use of OpenSSL must not stumble over them.
class OpenSslScope {
 public:
  OpenSslScope() {
    EncryptHelper::Initialise();
    ERR_set_mark();
  }
  ~OpenSslScope() { ERR_pop_to_mark(); }
  OpenSslScope(const OpenSslScope&) = delete;
  OpenSslScope& operator=(const OpenSslScope&) = delete;
};

// Value of a hexadecimal digit, -1 for any other character.
int HexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  if (digit >= 'a' && digit <= 'f') {
    return digit - 'a' + 10;
  }
  return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

Key DecodePublicKey(const std::string& pem) {
  EVP_PKEY* key = nullptr;
  const Decoder decoder(
      OSSL_DECODER_CTX_new_for_pkey(&key, "PEM", nullptr, "RSA", EVP_PKEY_PUBLIC_KEY, nullptr, nullptr));
  const auto* bytes = reinterpret_cast<const unsigned char*>(pem.data());
  std::size_t size = pem.size();
  const bool isRead = decoder != nullptr && OSSL_DECODER_from_data(decoder.get(), &bytes, &size) == 1;
  Key owned(key);
  return isRead ? std::move(owned) : Key();
}

// Decoding takes several times as long as enciphering, and a client has one key: the last one is kept.
Key ReadPublicKey(const std::string& pem) {
  struct Kept {
    std::mutex mutex;  // guards the two below
    std::string pem;
    Key key;
  };
  static Kept& kept = *new Kept;  // upload threads use it until the process is gone
  const auto take = [&]() -> Key {
    const bool isIt = kept.key != nullptr && kept.pem == pem && EVP_PKEY_up_ref(kept.key.get()) == 1;
    return isIt ? Key(kept.key.get()) : Key();
  };
  {
    const auto lock = Platform::LockUnlessEnding(kept.mutex);
    if (Key key = lock.owns_lock() ? take() : Key()) return key;
  }
  Key key = DecodePublicKey(pem);
  const auto lock = Platform::LockUnlessEnding(kept.mutex);
  if (key == nullptr || !lock.owns_lock()) return key;
  kept.pem = pem;  // first: it may throw, and the old key must not stand for another text
  kept.key = std::move(key);
  return take();
}

}  // namespace

void EncryptHelper::Initialise() {
  static const bool isInitialised =
      OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT | OPENSSL_INIT_LOAD_CRYPTO_STRINGS |
                              OPENSSL_INIT_ADD_ALL_CIPHERS | OPENSSL_INIT_ADD_ALL_DIGESTS,
                          nullptr) == 1;
  static_cast<void>(isInitialised);  // what needs OpenSSL fails by itself without it
}

std::string EncryptHelper::SHA256_Encode(const std::string& text) {
  const OpenSslScope scope;
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  if (EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1) {
    return {};
  }
  return CharToHexStr(digest.data(), size);
}

bool EncryptHelper::GetSecureRandom(unsigned char* bytes, std::size_t size) {
  const OpenSslScope scope;
  return size <= kLargestInput && RAND_bytes(bytes, static_cast<int>(size)) == 1;
}

bool EncryptHelper::HexToByte(const std::string& hex, std::size_t capacity, Bytes& bytes) {
  bytes.clear();
  if (hex.size() % 2 != 0 || hex.size() / 2 > capacity) {
    return false;
  }
  Bytes result;
  result.reserve(hex.size() / 2);
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    const int high = HexDigitValue(hex[i]);
    const int low = HexDigitValue(hex[i + 1]);
    if (high < 0 || low < 0) {
      return false;
    }
    result.push_back(static_cast<unsigned char>(high * 16 + low));
  }
  bytes = std::move(result);
  return true;
}

std::string EncryptHelper::BytesToHexstr(const Bytes& bytes) {
  return CharToHexStr(bytes.data(), bytes.size());
}

std::string EncryptHelper::CharToHexStr(const unsigned char* bytes, std::size_t size) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(size * 2);
  for (std::size_t i = 0; i < size; ++i) {
    hex += kDigits[bytes[i] >> 4];
    hex += kDigits[bytes[i] & 0xF];
  }
  return hex;
}

std::string EncryptHelper::Base64Encode(const unsigned char* bytes, std::size_t size, bool noLineBreaks) {
  std::string text;
  std::array<unsigned char, kBytesInBase64Line / 3 * 4 + 1> line{};
  for (std::size_t start = 0; start < size; start += kBytesInBase64Line) {
    const std::size_t count = std::min(kBytesInBase64Line, size - start);
    const int length = EVP_EncodeBlock(line.data(), bytes + start, static_cast<int>(count));
    text.append(line.data(), line.data() + length);
    if (!noLineBreaks) {
      text += '\n';
    }
  }
  return text;
}

bool EncryptHelper::AES_128_CBC_Encrypt(const Bytes& plain, const Bytes& key, const Bytes& iv,
                                        Bytes& cipher) {
  cipher.clear();
  if (key.size() != kAesBlockSize || iv.size() != kAesBlockSize || plain.size() > kLargestInput) {
    return false;
  }
  const OpenSslScope scope;
  const CipherContext context(EVP_CIPHER_CTX_new());
  Bytes result(plain.size() + kAesBlockSize);
  int size = 0;
  int lastSize = 0;
  if (context == nullptr ||
      EVP_EncryptInit_ex2(context.get(), EVP_aes_128_cbc(), key.data(), iv.data(), nullptr) != 1 ||
      EVP_EncryptUpdate(context.get(), result.data(), &size, plain.data(), static_cast<int>(plain.size())) !=
          1 ||
      EVP_EncryptFinal_ex(context.get(), result.data() + size, &lastSize) != 1) {
    return false;
  }
  result.resize(static_cast<std::size_t>(size) + static_cast<std::size_t>(lastSize));
  cipher = std::move(result);
  return true;
}

bool EncryptHelper::RAS_Encrypt(const std::string& plain, const std::string& pemPublicKey,
                                std::string& cipherText) {
  cipherText.clear();
  const OpenSslScope scope;
  const Key key = ReadPublicKey(pemPublicKey);
  const KeyContext context(key == nullptr ? nullptr
                                          : EVP_PKEY_CTX_new_from_pkey(nullptr, key.get(), nullptr));
  if (context == nullptr || EVP_PKEY_encrypt_init(context.get()) != 1 ||
      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) != 1 ||
      EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()) != 1 ||
      EVP_PKEY_CTX_set_rsa_mgf1_md(context.get(), EVP_sha256()) != 1) {
    return false;
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(plain.data());
  std::size_t size = 0;
  if (EVP_PKEY_encrypt(context.get(), nullptr, &size, bytes, plain.size()) != 1) {
    return false;
  }
  Bytes cipher(size);
  if (EVP_PKEY_encrypt(context.get(), cipher.data(), &size, bytes, plain.size()) != 1) {
    return false;
  }
  cipherText = Base64Encode(cipher.data(), size, true);
  return true;
}

}  // namespace Drive
