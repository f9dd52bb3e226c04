// VectorsTest.cpp - the committed requests mean what their plain forms say, to a server of another hand.
#include <gtest/gtest.h>
#include <json/reader.h>

#include <filesystem>
#include <optional>
#include <sstream>

#include "collector/Cipher.h"
#include "collector/DataFolder.h"
#include "collector/DecodeCommand.h"

namespace Drive {
namespace {

using Collection::Channel;
using Collection::ReadFile;

const std::filesystem::path kFolder = std::filesystem::u8path(VECTORS_FOLDER);

Json::Value Parse(const std::string& text) {
  Json::Value value;
  std::istringstream(text) >> value;
  return value;
}

// What the collector reads out of the request; nothing when it refuses it.
std::optional<Json::Value> Decode(Channel channel) {
  const std::string name = Collection::NameOf(channel);
  Collection::DecodeOrder order;
  order.channel = channel;
  order.headersFile = kFolder / (name + ".headers");
  order.bodyFile = kFolder / (name + ".body");
  order.rsaKeyFile = kFolder / "rsa-key.pem";
  std::ostringstream out;
  std::ostringstream reason;
  if (Collection::RunDecode(order, out, reason) != 0) {
    ADD_FAILURE() << name << ": " << reason.str();
    return std::nullopt;
  }
  return Parse(out.str());
}

TEST(VectorsTest, EachRequestHoldsItsPlainForm) {
  for (const Channel channel : Collection::kChannels) {
    const std::string name = Collection::NameOf(channel);
    const auto decoded = Decode(channel);
    ASSERT_TRUE(decoded.has_value());
    const Json::Value plain = Parse(ReadFile(kFolder / (name + ".json")));
    EXPECT_EQ((*decoded)[channel == Channel::kUba ? "events" : "event"], plain) << name;
  }
}

}  // namespace
}  // namespace Drive
