// PackedTexts.h - the texts of a queued event in one piece of memory.
#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Drive::Bilog {

// As UTF-8, each behind the number of its bytes: `texts`, then the keys and values of `map` in turn. Many
// events may wait; wide texts of their own, most of them short, would take a multiple of this.
std::string PackTexts(std::initializer_list<std::reference_wrapper<const std::wstring>> texts,
                      const std::map<std::wstring, std::wstring>& map);

// What was packed, as UTF-8.
std::vector<std::string> UnpackTexts(std::string_view packed);

// Of unpacked texts, those behind the first `skip` ones as keys and values; of the same keys the last one
// counts.
std::map<std::string, std::string> MapOf(const std::vector<std::string>& texts, std::size_t skip);

}  // namespace Drive::Bilog
