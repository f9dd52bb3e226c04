// ClientTypeConvertTest.cpp - conversions keep valid text and replace the rest.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/log/TypeConvert.h"

namespace Drive {
namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

std::string FromUtf16(const std::u16string& text) {
  return TypeConvert::UnicodeToUTF8(TypeConvert::UTF16ToUnicode(text.data(), text.size()));
}

TEST(TypeConvertTest, KeepsEveryCharacter) {
  std::u16string all;
  for (char32_t character = 0; character <= 0x10FFFF; ++character) {
    if (character > 0xFFFF) {
      all += static_cast<char16_t>(0xD7C0 + (character >> 10));
      all += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    } else if (character < 0xD800 || character > 0xDFFF) {
      all += static_cast<char16_t>(character);
    }
  }
  const std::wstring wide = TypeConvert::UTF16ToUnicode(all.data(), all.size());
  EXPECT_TRUE(TypeConvert::UnicodeToUTF16(wide) == all);
  EXPECT_TRUE(TypeConvert::UTF8ToUnicode(TypeConvert::UnicodeToUTF8(wide)) == wide);
}

TEST(TypeConvertTest, KnownTexts) {
  const std::wstring wide = L"A\u00E9\u20AC\U0001F600";
  const std::string narrow = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
  EXPECT_EQ(TypeConvert::UTF8ToUnicode(narrow), wide);
  EXPECT_EQ(TypeConvert::UnicodeToUTF8(wide), narrow);
  EXPECT_EQ(TypeConvert::StringToWString(narrow), wide);
  EXPECT_EQ(TypeConvert::WStringToString(wide), narrow);
  EXPECT_EQ(TypeConvert::UnicodeToUTF16(wide), u"A\u00E9\u20AC\U0001F600");
  EXPECT_EQ(TypeConvert::UTF16ToUnicode(nullptr, 0), L"");
}

TEST(TypeConvertTest, ReplacesWhatIsNoUtf8AndKeepsItsNeighbours) {
  const std::vector<std::pair<const char*, std::string>> rows = {
      {"lone continuation byte", "\x80"},
      {"byte that never occurs", "\xFF"},
      {"overlong in two bytes", "\xC0\xAF"},
      {"overlong in three bytes", "\xE0\x80\xAF"},
      {"overlong in four bytes", "\xF0\x80\x80\xAF"},
      {"lead surrogate", "\xED\xA0\x80"},
      {"trail surrogate", "\xED\xBF\xBF"},
      {"beyond the last character", "\xF4\x90\x80\x80"},
      {"sequence of five bytes", "\xF8\x88\x80\x80\x80"},
      {"truncated after one of two", "\xC3"},
      {"truncated after two of three", "\xE2\x82"},
      {"truncated after three of four", "\xF0\x9F\x98"},
  };
  for (const auto& [name, bytes] : rows) {
    const std::wstring between = TypeConvert::UTF8ToUnicode("a" + bytes + "b");
    ASSERT_GE(between.size(), 3U) << name;
    EXPECT_EQ(between.substr(1, between.size() - 2), std::wstring(between.size() - 2, L'\uFFFD')) << name;
    EXPECT_EQ(between.front(), L'a') << name;
    EXPECT_EQ(between.back(), L'b') << name;
    const std::wstring last = TypeConvert::UTF8ToUnicode("a" + bytes);
    EXPECT_EQ(last.substr(0, 2), L"a\uFFFD") << name;
  }
}

TEST(TypeConvertTest, ReplacesLoneSurrogates) {
  EXPECT_EQ(FromUtf16({u'a', 0xD83D, u'b'}), "a" + kReplacement + "b");
  EXPECT_EQ(FromUtf16({u'a', 0xD83D}), "a" + kReplacement);
  EXPECT_EQ(FromUtf16({0xDE00, u'a'}), kReplacement + "a");
  EXPECT_EQ(FromUtf16({0xD83D, 0xD83D, 0xDE00}), kReplacement + "\xF0\x9F\x98\x80");
  EXPECT_EQ(TypeConvert::UnicodeToUTF8({L'a', static_cast<wchar_t>(0xD83D), L'b'}), "a" + kReplacement + "b");
  if (sizeof(wchar_t) > sizeof(char16_t)) {
    EXPECT_EQ(TypeConvert::UnicodeToUTF8({static_cast<wchar_t>(0x110000)}), kReplacement);
    EXPECT_EQ(TypeConvert::UnicodeToUTF8({static_cast<wchar_t>(-1)}), kReplacement);
  }
}

TEST(TypeConvertTest, UrlEncodesUtf8Bytes) {
  EXPECT_EQ(TypeConvert::UrlEncode(L"Az09-_.~"), L"Az09-_.~");
  EXPECT_EQ(TypeConvert::UrlEncode(L"a b+/=%\u00E9"), L"a%20b%2B%2F%3D%25%C3%A9");
  EXPECT_EQ(TypeConvert::UrlEncode(std::wstring(1, L'\0')), L"%00");
}

}  // namespace
}  // namespace Drive
