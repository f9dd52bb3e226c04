// FileCategories.h - which file suffix belongs to which category of files.
#pragma once

#include <string_view>

namespace Drive::OperateLog {

// "Music", "Movie", "Text" or "Photo"; empty for a suffix of none. `suffix` is in upper case, without the
// dot.
std::wstring_view FileCategoryOf(std::wstring_view suffix);

}  // namespace Drive::OperateLog
