// Request.h - an upload request as it came in: which channel it is for and what its headers say.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Drive::Collection {

enum class Channel { kMaintenance, kOperation, kUba };

inline constexpr std::array<Channel, 3> kChannels = {Channel::kMaintenance, Channel::kOperation,
                                                     Channel::kUba};

// "maintenance", "operation" or "uba".
const char* NameOf(Channel channel);
std::optional<Channel> ChannelNamed(const std::string& name);

// The path that the channel's requests are posted to.
const char* PathOf(Channel channel);

struct Header {
  std::string name;
  std::string value;
};
using Headers = std::vector<Header>;

// Header names are the same name in any letter case.
bool IsSameHeaderName(const std::string& one, const std::string& other);

}  // namespace Drive::Collection
