// OperateLogEnvelopeTest.cpp - the envelope of an operation-log request, read back as the collector reads it.
#include <gtest/gtest.h>

#include <set>

#include "operatelog/OperationEnvelope.h"
#include "tests/OperateLogRequestDecoder.h"

namespace Drive::OperateLog {
namespace {

using Status = OperationEnvelope::Status;

// Text of so many bytes that no compression makes smaller than 6 bits a byte.
std::string Incompressible(std::size_t size) {
  Bytes bytes(size);
  EncryptHelper::GetSecureRandom(bytes.data(), bytes.size());
  return EncryptHelper::Base64Encode(bytes.data(), bytes.size(), true).substr(0, size);
}

Json::Value Payload(const std::string& text) {
  Json::Value payload;
  payload["events"].append(text);
  return payload;
}

class EnvelopeTest : public testing::Test {
 protected:
  OperationEnvelope Make(const Json::Value& payload) const {
    Header header;
    header.SetRequestId(L"id-1");
    return MakeOperationEnvelope(header, payload, m_key.PublicHex());
  }

  Testing::CollectorKey m_key;
};

// Keys and vectors with a zero byte, about every ninth request has one, are the ones that a C string cuts.
TEST_F(EnvelopeTest, IsReadBackEveryTimeAndNeverRepeatsAKeyOrVector) {
  constexpr std::size_t kRequests = 10000;
  const Json::Value payload = Payload("text");
  std::set<std::string> drawn;
  for (std::size_t i = 0; i < kRequests; ++i) {
    const OperationEnvelope envelope = Make(payload);
    ASSERT_EQ(envelope.status, Status::kMade) << envelope.failure;
    const Testing::DecodedRequest request = m_key.Decode(envelope.body);
    ASSERT_EQ(request.payload, payload);
    ASSERT_EQ(request.header["requestid"], "id-1");
    drawn.insert(request.keyHex);
    drawn.insert(request.ivHex);
  }
  EXPECT_EQ(drawn.size(), 2 * kRequests);
}

TEST_F(EnvelopeTest, RefusesWhatIsNoKey) {
  const std::string key = m_key.PublicHex();
  ASSERT_EQ(key.size(), 540u);
  const struct {
    const char* name;
    std::string key;
  } kCases[] = {
      {"odd length", key.substr(1)},
      {"too long", key + "00"},
      {"no hexadecimal digit", key.substr(0, 539) + "g"},
      {"not DER", std::string(540, '0')},
      {"cut short", key.substr(0, 500)},
      {"smaller key", Testing::CollectorKey(1024).PublicHex()},
      {"larger key", Testing::CollectorKey(4096).PublicHex()},
  };
  for (const auto& each : kCases) {
    const OperationEnvelope envelope = MakeOperationEnvelope(Header(), Payload("text"), each.key);
    EXPECT_EQ(envelope.status, Status::kFailed) << each.name;
    EXPECT_NE(envelope.failure.find("g_rsaPublicKey"), std::string::npos) << each.name;
    EXPECT_TRUE(envelope.body.empty()) << each.name;
  }
}

TEST_F(EnvelopeTest, SaysWhenOneOfTheTwoCompressionsPassesTheLimit) {
  EXPECT_EQ(Make(Payload(Incompressible(300000))).status, Status::kTooLarge);  // the payload's
  EXPECT_EQ(Make(Payload(Incompressible(255000))).status, Status::kTooLarge);  // the request's
  EXPECT_EQ(Make(Payload(Incompressible(200000))).status, Status::kMade);
  EXPECT_EQ(Make(Payload(std::string(1000000, 'a'))).status, Status::kMade);
}

}  // namespace
}  // namespace Drive::OperateLog
