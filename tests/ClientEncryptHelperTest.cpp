// ClientEncryptHelperTest.cpp - published test vectors, and keys that are no keys.
#include <gtest/gtest.h>
#include <openssl/err.h>

#include <set>
#include <string>

#include "client/common/EncryptHelper.h"
#include "collector/Cipher.h"

namespace Drive {
namespace {

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  EXPECT_TRUE(EncryptHelper::HexToByte(hex, hex.size(), bytes)) << hex;
  return bytes;
}

std::string Base64(const std::string& text, bool noLineBreaks) {
  return EncryptHelper::Base64Encode(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                                     noLineBreaks);
}

TEST(EncryptHelperTest, Sha256) {
  EXPECT_EQ(EncryptHelper::SHA256_Encode("abc"),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(EncryptHelperTest, Base64) {
  for (const auto& [plain, text] :
       {std::pair{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}}) {
    EXPECT_EQ(Base64(plain, true), text);
  }
  const std::string line(48, '\0');
  const std::string encodedLine(64, 'A');
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

TEST(EncryptHelperTest, Aes128CbcTakesKeysAndVectorsOf16Bytes) {
  Bytes cipher;
  ASSERT_TRUE(EncryptHelper::AES_128_CBC_Encrypt({}, Bytes(16, 0), Bytes(16, 0), cipher));
  EXPECT_EQ(EncryptHelper::BytesToHexstr(cipher), "0143db63ee66b0cdff9f69917680151e") << "zeros are bytes";
  for (const std::size_t size : {0, 15, 17}) {
    EXPECT_FALSE(EncryptHelper::AES_128_CBC_Encrypt({1}, Bytes(size), Bytes(16), cipher));
    EXPECT_FALSE(EncryptHelper::AES_128_CBC_Encrypt({1}, Bytes(16), Bytes(size), cipher));
    EXPECT_TRUE(cipher.empty());
  }
}

std::string Base64Lines(const Collection::RsaKey& key) {
  const Bytes der = FromHex(key.PublicKeyHex());
  return EncryptHelper::Base64Encode(der.data(), der.size(), false);
}

TEST(EncryptHelperTest, RsaEnciphersForTheKeyThatIsGivenAndLeavesTheHostsErrorsAlone) {
  const std::string begin = "-----BEGIN RSA PUBLIC KEY-----\n";
  const std::string end = "-----END RSA PUBLIC KEY-----";
  std::string cipher;
  EXPECT_FALSE(EncryptHelper::RAS_Encrypt("text", "", cipher)) << "before any key";
  const Collection::RsaKey keys[] = {Collection::RsaKey::Generate(), Collection::RsaKey::Generate()};
  const std::string longest(190, 'z');
  std::set<std::string> ciphers;  // the padding is random
  for (const int turn : {0, 1, 1, 0}) {
    ASSERT_TRUE(EncryptHelper::RAS_Encrypt(longest, begin + Base64Lines(keys[turn]) + end, cipher));
    Bytes bytes(cipher.size());
    const int size = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(cipher.data()),
                                     static_cast<int>(cipher.size()));
    ASSERT_EQ(size, 258) << "256 bytes and padding";
    EXPECT_EQ(keys[turn].Decipher({bytes.begin(), bytes.begin() + 256}), longest);
    EXPECT_EQ(cipher.find('\n'), std::string::npos);
    EXPECT_TRUE(ciphers.insert(cipher).second);
  }
  const std::string base64 = Base64Lines(keys[0]);
  ERR_clear_error();
  ERR_raise(ERR_LIB_USER, 1);
  const unsigned long hostsError = ERR_peek_last_error();
  EXPECT_TRUE(EncryptHelper::RAS_Encrypt(longest, begin + base64 + end, cipher));
  EXPECT_FALSE(EncryptHelper::RAS_Encrypt(longest + "z", begin + base64 + end, cipher));
  for (const std::string& wrong :
       {std::string(), std::string("no key"), begin + end, begin + "????\n" + end,
        begin + std::string(360, 'A') + "\n" + end, begin + base64, begin + base64.substr(8) + end}) {
    cipher = "old";
    EXPECT_FALSE(EncryptHelper::RAS_Encrypt("text", wrong, cipher)) << wrong;
    EXPECT_EQ(cipher, "");
  }
  EXPECT_EQ(ERR_get_error(), hostsError);
  EXPECT_EQ(ERR_get_error(), 0U);
}

}  // namespace
}  // namespace Drive
