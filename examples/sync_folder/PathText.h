// PathText.h - paths as the library's wide text and as the terminal's UTF-8.
#pragma once

#include <filesystem>
#include <string>

#include "client/log/TypeConvert.h"

namespace SyncFolder {

namespace Detail {
inline std::wstring Wide(const std::wstring& native) { return native; }
inline std::wstring Wide(const std::string& native) { return Drive::TypeConvert::UTF8ToUnicode(native); }
}  // namespace Detail

// Not path::wstring(), which throws on names that are no valid text; a real disk has some.
inline std::wstring WideText(const std::filesystem::path& path) { return Detail::Wide(path.native()); }

inline std::string NarrowText(const std::filesystem::path& path) {
  return Drive::TypeConvert::UnicodeToUTF8(WideText(path));
}

}  // namespace SyncFolder
