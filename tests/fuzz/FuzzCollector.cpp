// FuzzCollector.cpp - the collector takes or refuses any request, with a reason, and never fails itself.
//
// Input: channel and layer, a header to set or to add, ended by 0xFF, and what is at that layer: the body,
// the text in it, or the payload inside of an operation request.
#include "client/common/EncryptHelper.h"
#include "collector/DataFolder.h"
#include "collector/JsonCheck.h"
#include "collector/RequestCheck.h"
#include "tests/CollectorRequests.h"
#include "tests/fuzz/Fuzz.h"
#include "transport/BodyEncoding.h"

namespace Drive::Testing {

namespace {

using namespace Collection;

std::string Compressed(Channel channel, const std::string& text) {
  std::string body;
  return channel != Channel::kUba ? Zlib(text) : Bilog::GzipCompress(text, body) ? body : "";
}

std::string Enciphered(const RsaKey& rsa, const std::string& payload) {
  const Bytes key(16, 'k');
  const Bytes vector(16, 'v');
  static const std::string chifer = EncipherKey(rsa.PublicKeyHex(), EncryptHelper::BytesToHexstr(key));
  static Json::Value root = MakeRequest(Channel::kOperation, "").plain;
  root["header"]["chifer"] = chifer;
  const std::string text = Zlib(payload);
  Bytes cipher;
  EncryptHelper::AES_128_CBC_Encrypt(Bytes(text.begin(), text.end()), key, vector, cipher);
  cipher.insert(cipher.begin(), vector.begin(), vector.end());
  root["event"] = EncryptHelper::BytesToHexstr(cipher);
  return Zlib(CompactText(root));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const RsaKey rsa(KeyFromPem(ReadFile(VECTORS_FOLDER "/rsa-key.pem")));
  FuzzInput input(data, size);
  const std::uint8_t choice = input.Byte();
  const Channel channel = kChannels[choice % 3];
  static const TestRequest goods[] = {MakeRequest(kChannels[0], ""), MakeRequest(kChannels[1], ""),
                                      MakeRequest(kChannels[2], "")};
  TestRequest request = goods[choice % 3];
  if (const std::string header = input.Part(); !header.empty()) {
    const std::size_t colon = std::min(header.find(':'), header.size() - 1);
    request.Header(header.substr(0, colon)) = header.substr(colon + 1);
  }
  const int layer = choice / 3 % 3;
  const std::string text = input.Rest();
  const std::string body = layer == 0                                     ? text
                           : layer == 2 && channel == Channel::kOperation ? Enciphered(rsa, text)
                                                                          : Compressed(channel, text);
  CheckSettings settings;
  settings.rsaKey = &rsa;
  settings.deflateRule = layer == 0 ? DeflateRule::kAny : DeflateRule::kAsZlibMakes;
  const Verdict verdict = Check(channel, request.headers, body, settings);
  if (const auto* refused = std::get_if<Refused>(&verdict)) {
    Promise(refused->status / 100 == 4 && !refused->reason.empty(), "the check failed: " + refused->reason);
    return 0;
  }
  const auto& accepted = std::get<Accepted>(verdict);
  Promise(!accepted.records.empty() && !accepted.requestId.empty(), "nothing is accepted");
  const Json::Value plain = ParseObject(accepted.plainText, "the accepted text");
  const Json::Value& list = channel == Channel::kUba           ? plain["events"]
                            : channel == Channel::kMaintenance ? plain["event"]
                                                               : plain["event"]["events"];
  Promise(list.size() == accepted.records.size(), "a record is lost");
  return 0;
}

}  // namespace Drive::Testing
