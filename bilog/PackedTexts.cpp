// PackedTexts.cpp - the texts of a queued event in one piece of memory.
#include "bilog/PackedTexts.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "client/log/TypeConvert.h"

namespace Drive::Bilog {

namespace {

using Length = std::uint32_t;

void Append(const std::wstring& text, std::string& packed) {
  const std::size_t begin = packed.size();
  packed.append(sizeof(Length), '\0');
  TypeConvert::AppendUTF8(text, packed);
  const std::size_t bytes = packed.size() - begin - sizeof(Length);
  // What is cut off here is of a text that no database takes.
  const auto length = static_cast<Length>(std::min<std::size_t>(bytes, std::numeric_limits<Length>::max()));
  packed.resize(begin + sizeof(Length) + length);
  std::memcpy(&packed[begin], &length, sizeof(Length));
}

}  // namespace

std::string PackTexts(std::initializer_list<std::reference_wrapper<const std::wstring>> texts,
                      const std::map<std::wstring, std::wstring>& map) {
  std::string packed;
  packed.reserve(512);  // mostly enough
  for (const std::wstring& text : texts) {
    Append(text, packed);
  }
  for (const auto& [key, value] : map) {
    Append(key, packed);
    Append(value, packed);
  }
  return packed;
}

std::vector<std::string> UnpackTexts(std::string_view packed) {
  std::vector<std::string> texts;
  while (!packed.empty()) {
    Length length = 0;
    std::memcpy(&length, packed.data(), sizeof(Length));
    texts.emplace_back(packed.substr(sizeof(Length), length));
    packed.remove_prefix(sizeof(Length) + length);
  }
  return texts;
}

std::map<std::string, std::string> MapOf(const std::vector<std::string>& texts, std::size_t skip) {
  std::map<std::string, std::string> map;
  for (std::size_t key = skip; key + 1 < texts.size(); key += 2) {
    map[texts[key]] = texts[key + 1];
  }
  return map;
}

}  // namespace Drive::Bilog
