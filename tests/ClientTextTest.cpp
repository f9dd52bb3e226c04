// ClientTextTest.cpp - conversions keep valid text and replace the rest.
#include <gtest/gtest.h>

#include <string>

#include "client/common/DeviceModel.h"
#include "client/log/TypeConvert.h"
#include "tests/support/FakeSystem.h"

namespace Drive {
namespace {

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
  EXPECT_EQ(TypeConvert::UnicodeToUTF8(L"A\u00E9\u20AC\U0001F600"), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(TypeConvertTest, ReplacesWhatIsNoUtf8AndKeepsItsNeighbours) {
  // Lone continuation byte, byte that never occurs, overlong forms, surrogates, beyond the last character,
  // five bytes, truncated sequences.
  for (const std::string bytes :
       {"\x80", "\xFF", "\xC0\xAF", "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xED\xA0\x80", "\xED\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x98"}) {
    const std::wstring between = TypeConvert::UTF8ToUnicode("a" + bytes + "b");
    ASSERT_GE(between.size(), 3U) << testing::PrintToString(bytes);
    EXPECT_EQ(between, L"a" + std::wstring(between.size() - 2, L'\uFFFD') + L"b");
    EXPECT_EQ(TypeConvert::UTF8ToUnicode("a" + bytes).substr(0, 2), L"a\uFFFD");
  }
}

TEST(DeviceModelTest, IsCutBetweenCharacters) {
  Testing::FakeSystem system;
  Platform::InstallSystem(&system);
  const std::string model = "ab\xE4\xB8\x89";
  const std::tuple<std::string, std::size_t, std::string> rows[] = {{model, 6, model},
                                                                    {model, 5, "ab"},
                                                                    {model, 1, ""},
                                                                    {"", 16, "Unknown"},
                                                                    {"a\xFF", 16, "a\xEF\xBF\xBD"}};
  for (const auto& [name, size, expected] : rows) {
    system.model = name;
    std::string buffer(20, '#');
    GetDeviceModel(buffer.data(), size);
    EXPECT_EQ(std::string(buffer.c_str()), expected);
    EXPECT_EQ(buffer.substr(size), std::string(20 - size, '#')) << "nothing behind the buffer";
  }
  Platform::InstallSystem(nullptr);
}

}  // namespace
}  // namespace Drive
