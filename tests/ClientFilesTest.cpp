// ClientFilesTest.cpp - settings files in every form that clients have left behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "client/common/IniFileHelper.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

class IniFileTest : public testing::Test {
 protected:
  void Write(const std::string& text) const {
    std::ofstream(std::filesystem::u8path(m_folder.Narrow("\xE4\xB8\x89.ini")), std::ios::binary) << text;
  }
  std::string Read(const std::string& key) const {
    return IniFileHelper(m_path).ReadIniValueByKeyTypeString(key);
  }

  const Testing::TempFolder m_folder;
  const std::wstring m_path = m_folder.Wide("\xE4\xB8\x89.ini");
};

TEST_F(IniFileTest, FindsAKeyWhereverItStands) {
  const std::pair<std::string, std::string> rows[] = {
      {"BaseUri=https://a\n", "https://a"},
      {"[Net]\nOther=1\nBaseUri=https://a", "https://a"},
      {"\xEF\xBB\xBF[Net]\r\nBaseUri=https://a\r\n", "https://a"},
      {"\xEF\xBB\xBF\r\nBaseUri=https://a\r\n", "https://a"},
      {"  baseURI =  https://a  \n", "https://a"},
      {"BaseUri=first\nBaseUri=second\n", "first"},
      {"[Z]\nBaseUri=first\n[A]\nBaseUri=second\n", "first"},
      {"; BaseUri=no\n# BaseUri=no\nBaseUri=yes\n", "yes"},
      {"BaseUri=https://a/?b=c;d#\xE4\xB8\x89\n", "https://a/?b=c;d#\xE4\xB8\x89"},
      {"BaseUri=\n", ""},
      {"BaseUri2=x\nMyBaseUri=x\n", ""},
      {"", ""},
      {std::string("\x00\xFF[\n]=\n=x\n[[\xFE\n", 15), ""},
  };
  EXPECT_EQ(Read("BaseUri"), "") << "no file";
  for (const auto& [text, expected] : rows) {
    Write(text);
    EXPECT_EQ(Read("BaseUri"), expected) << text;
  }
  for (const std::wstring& path :
       {m_folder.Path().wstring(), std::wstring(5, static_cast<wchar_t>(0xD800))}) {
    EXPECT_EQ(IniFileHelper(path).ReadIniValueByKeyTypeString("BaseUri"), "") << "no file that can be read";
  }
}

TEST_F(IniFileTest, WritesWhereTheKeyIsReadAndKeepsTheRest) {
  Write("[Z]\nBaseUri=old\nKept=1\n[A]\nBaseUri=hidden\n");
  IniFileHelper file(m_path);
  EXPECT_TRUE(file.WriteIniValue("baseuri", "new; \xE4\xB8\x89"));
  EXPECT_TRUE(file.WriteIniValue("Fresh", "2"));
  for (const char* key : {"", "a=b", "[a", ";a", " a", "a\nb"}) {
    EXPECT_FALSE(file.WriteIniValue(key, "x")) << key;
  }
  EXPECT_EQ(Read("BaseUri"), "new; \xE4\xB8\x89");
  EXPECT_EQ(Read("Kept"), "1");
  EXPECT_EQ(Read("Fresh"), "2");
  const auto files = std::filesystem::directory_iterator(m_folder.Path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "no temporary file is left";
  EXPECT_FALSE(IniFileHelper(m_folder.Wide("missing/f.ini")).WriteIniValue("Key", "x"));
}

}  // namespace
}  // namespace Drive
