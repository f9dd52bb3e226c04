// ClientEncryptHelperTest.cpp - published test vectors, and keys that are no keys.
#include <gtest/gtest.h>
#include <openssl/encoder.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <memory>
#include <string>

#include "client/common/EncryptHelper.h"

namespace Drive {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  EXPECT_TRUE(EncryptHelper::HexToByte(hex, hex.size(), bytes)) << hex;
  return bytes;
}

std::string Base64(const std::string& text, bool noLineBreaks) {
  return EncryptHelper::Base64Encode(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                                     noLineBreaks);
}

std::string PemOf(EVP_PKEY* key) {
  unsigned char* text = nullptr;
  std::size_t size = 0;
  OSSL_ENCODER_CTX* encoder =
      OSSL_ENCODER_CTX_new_for_pkey(key, OSSL_KEYMGMT_SELECT_PUBLIC_KEY, "PEM", "type-specific", nullptr);
  EXPECT_EQ(OSSL_ENCODER_to_data(encoder, &text, &size), 1);
  OSSL_ENCODER_CTX_free(encoder);
  const std::string pem(reinterpret_cast<char*>(text), size);
  OPENSSL_free(text);
  return pem;
}

std::string Decipher(EVP_PKEY* key, const std::string& base64) {
  Bytes cipher(base64.size());
  const int size = EVP_DecodeBlock(cipher.data(), reinterpret_cast<const unsigned char*>(base64.data()),
                                   static_cast<int>(base64.size()));
  EXPECT_GE(size, EVP_PKEY_get_size(key));
  const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(EVP_PKEY_CTX_new(key, nullptr),
                                                                            EVP_PKEY_CTX_free);
  EXPECT_EQ(EVP_PKEY_decrypt_init(context.get()), 1);
  EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING), 1);
  EXPECT_EQ(EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()), 1);
  Bytes plain(cipher.size());
  std::size_t plainSize = plain.size();
  EXPECT_EQ(EVP_PKEY_decrypt(context.get(), plain.data(), &plainSize, cipher.data(),
                             static_cast<std::size_t>(EVP_PKEY_get_size(key))),
            1);
  return std::string(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(plainSize));
}

TEST(EncryptHelperTest, Sha256) {
  EXPECT_EQ(EncryptHelper::SHA256_Encode(""),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(EncryptHelper::SHA256_Encode("abc"),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_NE(EncryptHelper::SHA256_Encode(std::string("a\0b", 3)), EncryptHelper::SHA256_Encode("a"));
}

TEST(EncryptHelperTest, Base64) {
  const std::pair<const char*, const char*> rows[] = {{"", ""},
                                                      {"f", "Zg=="},
                                                      {"fo", "Zm8="},
                                                      {"foo", "Zm9v"},
                                                      {"foob", "Zm9vYg=="},
                                                      {"fooba", "Zm9vYmE="},
                                                      {"foobar", "Zm9vYmFy"}};
  for (const auto& [plain, text] : rows) {
    EXPECT_EQ(Base64(plain, true), text);
  }
  const std::string line(48, 'a');
  std::string encodedLine;
  for (int i = 0; i < 16; ++i) {
    encodedLine += "YWFh";
  }
  EXPECT_EQ(Base64(line + line + "f", true), encodedLine + encodedLine + "Zg==");
  EXPECT_EQ(Base64(line + line + "f", false), encodedLine + "\n" + encodedLine + "\nZg==\n");
}

TEST(EncryptHelperTest, Hexadecimal) {
  EXPECT_EQ(EncryptHelper::BytesToHexstr({0x00, 0x0F, 0xA0, 0xFF}), "000fa0ff");
  EXPECT_EQ(FromHex("000FaBff"), Bytes({0x00, 0x0F, 0xAB, 0xFF}));
  Bytes bytes = {1};
  for (const char* hex : {"0", "0g", "g0", " 0", "0x", "000000"}) {
    EXPECT_FALSE(EncryptHelper::HexToByte(hex, 2, bytes)) << hex;
    EXPECT_TRUE(bytes.empty());
  }
  EXPECT_TRUE(EncryptHelper::HexToByte("0000", 2, bytes)) << "exactly full";
}

// The vector of NIST SP 800-38A, F.2.1; the padding adds a block of its own.
TEST(EncryptHelperTest, Aes128Cbc) {
  const Bytes key = FromHex("2b7e151628aed2a6abf7158809cf4f3c");
  const Bytes iv = FromHex("000102030405060708090a0b0c0d0e0f");
  Bytes cipher;
  ASSERT_TRUE(EncryptHelper::AES_128_CBC_Encrypt(
      FromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
              "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710"),
      key, iv, cipher));
  ASSERT_EQ(cipher.size(), 80U);
  EXPECT_EQ(EncryptHelper::CharToHexStr(cipher.data(), 64),
            "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
            "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7");

  ASSERT_TRUE(EncryptHelper::AES_128_CBC_Encrypt({}, Bytes(16, 0), Bytes(16, 0), cipher));
  EXPECT_EQ(EncryptHelper::BytesToHexstr(cipher), "0143db63ee66b0cdff9f69917680151e")
      << "keys are bytes, zeros included";
  for (const std::size_t size : {0, 15, 17}) {
    EXPECT_FALSE(EncryptHelper::AES_128_CBC_Encrypt({1}, Bytes(size), iv, cipher));
    EXPECT_FALSE(EncryptHelper::AES_128_CBC_Encrypt({1}, key, Bytes(size), cipher));
    EXPECT_TRUE(cipher.empty());
  }
}

TEST(EncryptHelperTest, RsaTextIsReadByTheOwnerOfTheKey) {
  const Key key(EVP_RSA_gen(2048), EVP_PKEY_free);
  const std::string pem = PemOf(key.get());
  ASSERT_EQ(pem.find("-----BEGIN RSA PUBLIC KEY-----\n"), 0U);
  std::string cipher;
  std::string again;
  for (const std::string& plain :
       {std::string("00112233445566778899aabbccddeeff"), std::string("\0x", 2), std::string(190, 'z')}) {
    ASSERT_TRUE(EncryptHelper::RAS_Encrypt(plain, pem, cipher));
    ASSERT_TRUE(EncryptHelper::RAS_Encrypt(plain, pem, again));
    EXPECT_EQ(Decipher(key.get(), cipher), plain);
    EXPECT_NE(cipher, again) << "the padding is random";
    EXPECT_EQ(cipher.find('\n'), std::string::npos);
  }
  EXPECT_FALSE(EncryptHelper::RAS_Encrypt(std::string(191, 'z'), pem, cipher)) << "too long for the key";
  EXPECT_EQ(cipher, "");
}

TEST(EncryptHelperTest, MalformedKeysFailAndLeaveTheHostsErrorsAlone) {
  const Key key(EVP_RSA_gen(1024), EVP_PKEY_free);
  const std::string pem = PemOf(key.get());
  const std::string begin = "-----BEGIN RSA PUBLIC KEY-----\n";
  const std::string end = "-----END RSA PUBLIC KEY-----";
  ERR_clear_error();
  ERR_raise(ERR_LIB_USER, 1);
  const unsigned long hostsError = ERR_peek_last_error();

  for (const std::string& wrong : {std::string(), std::string("no key"), begin + end, begin + "AAAA\n" + end,
                                   begin + "????\n" + end, begin + std::string(360, 'A') + "\n" + end,
                                   pem.substr(0, pem.size() / 2), begin + pem.substr(begin.size() + 8)}) {
    std::string cipher = "old";
    EXPECT_FALSE(EncryptHelper::RAS_Encrypt("text", wrong, cipher)) << wrong;
    EXPECT_EQ(cipher, "");
    EXPECT_EQ(ERR_peek_last_error(), hostsError);
  }
  EXPECT_EQ(ERR_get_error(), hostsError);
  EXPECT_EQ(ERR_get_error(), 0U);
}

TEST(EncryptHelperTest, RandomBytesDiffer) {
  Bytes first(32);
  Bytes second(32);
  ASSERT_TRUE(EncryptHelper::GetSecureRandom(first.data(), first.size()));
  ASSERT_TRUE(EncryptHelper::GetSecureRandom(second.data(), second.size()));
  EXPECT_NE(first, second);
}

}  // namespace
}  // namespace Drive
