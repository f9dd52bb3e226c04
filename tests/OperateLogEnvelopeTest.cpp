// OperateLogEnvelopeTest.cpp - the envelope of an operation-log request, read back as the collector reads it.
#include <gtest/gtest.h>

#include <set>

#include "operatelog/OperationEnvelope.h"
#include "tests/OperateLogRequestDecoder.h"

namespace Drive::OperateLog {
namespace {

using Status = OperationEnvelope::Status;

Json::Value Payload(const std::string& text) {
  Json::Value payload;
  payload["events"].append(text);
  return payload;
}

class EnvelopeTest : public testing::Test {
 protected:
  OperationEnvelope Make(const Json::Value& payload) const {
    return MakeOperationEnvelope(Header(), payload, m_key.PublicHex());
  }

  Testing::CollectorKey m_key;
};

// One request in nine has a zero byte in its key or vector, where a C string would end.
TEST_F(EnvelopeTest, IsReadBackEveryTimeAndNeverRepeatsAKeyOrVector) {
  constexpr std::size_t kRequests = 10000;
  const Json::Value payload = Payload("text");
  std::set<std::string> drawn;
  for (std::size_t i = 0; i < kRequests; ++i) {
    const Testing::DecodedRequest request = m_key.Decode(Make(payload).body);
    ASSERT_EQ(request.payload, payload);
    drawn.insert(request.keyHex);
    drawn.insert(request.ivHex);
  }
  EXPECT_EQ(drawn.size(), 2 * kRequests);
}

TEST_F(EnvelopeTest, RefusesWhatIsNoKey) {
  const std::string key = m_key.PublicHex();
  ASSERT_EQ(key.size(), 540u);
  const std::string kKeys[] = {key.substr(1),
                               key + "00",
                               key + key,
                               key.substr(0, 539) + "g",
                               std::string(540, '0'),
                               key.substr(0, 500),
                               Testing::CollectorKey(1024).PublicHex()};
  for (const std::string& each : kKeys) {
    const OperationEnvelope envelope = MakeOperationEnvelope(Header(), Payload("text"), each);
    EXPECT_EQ(envelope.status, Status::kFailed) << each;
    EXPECT_EQ(envelope.failure, "g_rsaPublicKey is not the hexadecimal text of a 270-byte RSA public key");
    EXPECT_TRUE(envelope.body.empty()) << each;
  }
}

TEST_F(EnvelopeTest, SaysWhenOneOfTheTwoCompressionsPassesTheLimit) {
  const auto made = [this](std::size_t size) {  // of text that compresses to three quarters
    Bytes bytes(size * 3 / 4);
    EncryptHelper::GetSecureRandom(bytes.data(), bytes.size());
    return Make(Payload(EncryptHelper::Base64Encode(bytes.data(), bytes.size(), true))).status;
  };
  EXPECT_EQ(made(300000), Status::kTooLarge);  // the payload's
  EXPECT_EQ(made(255000), Status::kTooLarge);  // the request's
  EXPECT_EQ(made(200000), Status::kMade);
}

}  // namespace
}  // namespace Drive::OperateLog
