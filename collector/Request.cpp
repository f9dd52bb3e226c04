// Request.cpp - the names and paths of the three channels.
#include "collector/Request.h"

#include <algorithm>

namespace Drive::Collection {

namespace {

struct ChannelRow {
  Channel channel;
  const char* name;
  const char* path;
};

constexpr ChannelRow kRows[] = {
    {Channel::kMaintenance, "maintenance", "/common/qmvzomaintqrt"},
    {Channel::kOperation, "operation", "/common/qmvzooperqrt"},
    {Channel::kUba, "uba", "/collector/v1/event"},
};

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

const char* NameOf(Channel channel) { return kRows[static_cast<std::size_t>(channel)].name; }

const char* PathOf(Channel channel) { return kRows[static_cast<std::size_t>(channel)].path; }

std::optional<Channel> ChannelNamed(const std::string& name) {
  for (const ChannelRow& row : kRows) {
    if (name == row.name) {
      return row.channel;
    }
  }
  return std::nullopt;
}

bool IsSameHeaderName(const std::string& one, const std::string& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

}  // namespace Drive::Collection
