// FilePath.h - paths as the standard library takes them.
#pragma once

#include <filesystem>
#include <string>

#include "client/log/TypeConvert.h"

namespace Drive {

// The path of that text. A path made of wide text directly depends on the host's locale.
inline std::filesystem::path FilePath(const std::wstring& text) {
  return std::filesystem::u8path(TypeConvert::UnicodeToUTF8(text));
}

}  // namespace Drive
