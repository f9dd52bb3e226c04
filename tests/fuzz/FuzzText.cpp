// FuzzText.cpp - conversions of any bytes, as text of each encoding, keep what is valid and never throw.
#include <cctype>

#include "client/log/TypeConvert.h"
#include "collector/Decoding.h"
#include "tests/fuzz/Fuzz.h"

namespace Drive::Testing {

namespace {

template <typename Unit>
std::basic_string<Unit> Units(const std::string& bytes) {
  std::basic_string<Unit> units(bytes.size() / sizeof(Unit), Unit{});
  std::memcpy(units.data(), bytes.data(), units.size() * sizeof(Unit));
  return units;
}

// Replaces each surrogate without a partner.
std::u16string WithoutLoneSurrogates(std::u16string text) {
  const auto isIn = [&text](std::size_t i, int first) { return i < text.size() && text[i] / 0x400 == first; };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isIn(i, 0x36) && isIn(i + 1, 0x37)) {
      ++i;
    } else if (isIn(i, 0x36) || isIn(i, 0x37)) {
      text[i] = 0xFFFD;
    }
  }
  return text;
}

std::string UrlDecode(const std::wstring& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'%') {
      bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      Promise(text[i] < 0x7F && (std::isalnum(static_cast<int>(text[i])) != 0 ||
                                 std::wstring(L"-_.~").find(text[i]) != std::wstring::npos),
              "a character that must be encoded");
      bytes += static_cast<char>(text[i]);
    }
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = FuzzInput(data, size).Rest();

  const std::wstring wide = TypeConvert::UTF8ToUnicode(bytes);
  const std::string narrow = TypeConvert::UnicodeToUTF8(wide);
  Promise(Collection::IsUtf8(narrow), "not UTF-8");
  Promise(narrow == bytes || !Collection::IsUtf8(bytes), "valid UTF-8 is changed");
  Promise(TypeConvert::UTF8ToUnicode(narrow) == wide, "the way back differs");
  Promise(UrlDecode(TypeConvert::UrlEncode(wide)) == narrow, "URL encoding differs");

  const std::u16string units = Units<char16_t>(bytes);
  const std::wstring fromUnits = TypeConvert::UTF16ToUnicode(units.data(), units.size());
  Promise(TypeConvert::UnicodeToUTF16(fromUnits) == WithoutLoneSurrogates(units), "UTF-16 is changed");
  Promise(TypeConvert::UTF8ToUnicode(TypeConvert::UnicodeToUTF8(fromUnits)) == fromUnits, "not valid");

  const std::wstring any = Units<wchar_t>(bytes);
  const std::string fromAny = TypeConvert::UnicodeToUTF8(any);
  Promise(Collection::IsUtf8(fromAny), "not UTF-8");
  const std::u16string unitsOfAny = TypeConvert::UnicodeToUTF16(any);
  Promise(TypeConvert::UTF8ToUnicode(fromAny) ==
              TypeConvert::UTF16ToUnicode(unitsOfAny.data(), unitsOfAny.size()),
          "UTF-8 and UTF-16 differ");
  return 0;
}

}  // namespace Drive::Testing
