// TypeConvert.cpp - conversions between UTF-8, UTF-16 and wide text.
#include "client/log/TypeConvert.h"

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <type_traits>

namespace Drive {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsLeadSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsTrailSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Takes one character from [next, end), which is not empty; what is not valid comes as U+FFFD. Units of two
// bytes are UTF-16, larger ones UTF-32.
template <typename Unit>
char32_t TakeCharacter(const Unit*& next, const Unit* end) {
  if constexpr (sizeof(Unit) == sizeof(char16_t)) {
    const char32_t unit = static_cast<char16_t>(*next++);
    if (IsLeadSurrogate(unit) && next != end && IsTrailSurrogate(static_cast<char16_t>(*next))) {
      const char32_t trail = static_cast<char16_t>(*next++);
      return 0x10000 + ((unit - 0xD800) << 10) + (trail - 0xDC00);
    }
    return IsLeadSurrogate(unit) || IsTrailSurrogate(unit) ? kReplacement : unit;
  } else {
    static_cast<void>(end);
    const auto unit = static_cast<char32_t>(*next++);
    const bool isValid = unit <= 0x10FFFF && !IsLeadSurrogate(unit) && !IsTrailSurrogate(unit);
    return isValid ? unit : kReplacement;
  }
}

template <typename Unit>
void AppendCharacter(char32_t character, std::basic_string<Unit>& text) {
  if (sizeof(Unit) == sizeof(char16_t) && character > 0xFFFF) {
    text += static_cast<Unit>(0xD800 + ((character - 0x10000) >> 10));
    text += static_cast<Unit>(0xDC00 + ((character - 0x10000) & 0x3FF));
  } else {
    text += static_cast<Unit>(character);
  }
}

// Most texts are ASCII, which is copied unit by unit in every direction. Without an early exit, so that the
// compiler looks at many units at once.
template <typename Unit>
bool IsAscii(const Unit* text, std::size_t length) {
  std::make_unsigned_t<Unit> bits = 0;
  for (std::size_t i = 0; i < length; ++i) {
    bits = static_cast<decltype(bits)>(bits | static_cast<decltype(bits)>(text[i]));
  }
  return bits < 0x80;
}

template <typename To, typename From>
std::basic_string<To> Convert(const From* text, std::size_t length) {
  if (IsAscii(text, length)) {
    return {text, text + length};
  }
  std::basic_string<To> result;
  result.reserve(length);
  const From* const end = text + length;
  while (text != end) {
    AppendCharacter(TakeCharacter(text, end), result);
  }
  return result;
}

bool IsUnreserved(unsigned char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
         byte == '-' || byte == '_' || byte == '.' || byte == '~';
}

}  // namespace

std::wstring TypeConvert::UTF8ToUnicode(const std::string& text) {
  if (IsAscii(text.data(), text.size())) {
    return {text.begin(), text.end()};
  }
  const std::string valid = utf8::replace_invalid(text);
  std::wstring wide;
  wide.reserve(valid.size());
  for (auto next = valid.begin(); next != valid.end();) {
    AppendCharacter(static_cast<char32_t>(utf8::unchecked::next(next)), wide);
  }
  return wide;
}

std::string TypeConvert::UnicodeToUTF8(const std::wstring& text) {
  std::string narrow;
  AppendUTF8(text, narrow);
  return narrow;
}

void TypeConvert::AppendUTF8(const std::wstring& text, std::string& narrow) {
  const std::size_t before = narrow.size();
  if (IsAscii(text.data(), text.size())) {
    narrow.resize(before + text.size());
    std::transform(text.begin(), text.end(), narrow.begin() + static_cast<std::ptrdiff_t>(before),
                   [](wchar_t unit) { return static_cast<char>(unit); });
    return;
  }
  narrow.reserve(before + text.size());
  const wchar_t* const end = text.data() + text.size();
  for (const wchar_t* next = text.data(); next != end;) {
    utf8::unchecked::append(TakeCharacter(next, end), std::back_inserter(narrow));
  }
}

std::wstring TypeConvert::StringToWString(const std::string& text) { return UTF8ToUnicode(text); }

std::string TypeConvert::WStringToString(const std::wstring& text) { return UnicodeToUTF8(text); }

std::u16string TypeConvert::UnicodeToUTF16(const std::wstring& text) {
  return Convert<char16_t>(text.data(), text.size());
}

std::wstring TypeConvert::UTF16ToUnicode(const char16_t* text, std::size_t length) {
  return Convert<wchar_t>(text, length);
}

std::wstring TypeConvert::UrlEncode(const std::wstring& text) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring encoded;
  for (const char character : UnicodeToUTF8(text)) {
    const auto byte = static_cast<unsigned char>(character);
    if (IsUnreserved(byte)) {
      encoded += static_cast<wchar_t>(byte);
    } else {
      encoded += {L'%', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
  }
  return encoded;
}

}  // namespace Drive
