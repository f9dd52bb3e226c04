// TypeConvert.h - conversions between narrow UTF-8 and wide text.
#pragma once

#include <string>

namespace Drive {

// Narrow text is UTF-8 on every platform; wide text is UTF-16 on Windows and UTF-32 elsewhere. Valid text is
// never changed; what is not valid becomes U+FFFD. Nothing throws but std::bad_alloc.
//
// Thread-safety: every operation may be called from any thread.
class TypeConvert {
 public:
  static std::wstring UTF8ToUnicode(const std::string& text);
  static std::string UnicodeToUTF8(const std::wstring& text);
  static void AppendUTF8(const std::wstring& text, std::string& narrow);

  // The same conversions under the names of the narrow code page, which is UTF-8 here.
  static std::wstring StringToWString(const std::string& text);
  static std::string WStringToString(const std::wstring& text);

  // UTF-16, as SQLite takes and gives it.
  static std::u16string UnicodeToUTF16(const std::wstring& text);
  static std::wstring UTF16ToUnicode(const char16_t* text, std::size_t length);

  // Percent-encodes the UTF-8 bytes of everything but ASCII letters, digits and "-", "_", ".", "~".
  static std::wstring UrlEncode(const std::wstring& text);
};

}  // namespace Drive
