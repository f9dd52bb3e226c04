// ClientIniFileTest.cpp - settings files in every form that clients have left behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "client/common/IniFileHelper.h"
#include "tests/support/TempFolder.h"

namespace Drive {
namespace {

class IniFileTest : public testing::Test {
 protected:
  void Write(const std::string& text) const { std::ofstream(m_path, std::ios::binary) << text; }
  std::string Read(const std::string& key) const {
    return IniFileHelper(m_wide).ReadIniValueByKeyTypeString(key);
  }
  std::string Text() const {
    std::ifstream stream(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

  const Testing::TempFolder m_folder;
  const std::wstring m_wide = m_folder.Wide("s\xC3\xA9ttings-\xE4\xB8\x89.ini");
  const std::filesystem::path m_path =
      std::filesystem::u8path(m_folder.Narrow("s\xC3\xA9ttings-\xE4\xB8\x89.ini"));
};

TEST_F(IniFileTest, FindsAKeyWhereverItStands) {
  struct {
    const char* form;
    std::string text;
    std::string expected;
  } const rows[] = {
      {"no section", "BaseUri=https://a\n", "https://a"},
      {"section", "[Net]\nOther=1\nBaseUri=https://a\n", "https://a"},
      {"BOM and CR LF", "\xEF\xBB\xBF[Net]\r\nBaseUri=https://a\r\n", "https://a"},
      {"BOM without section",
       "\xEF\xBB\xBF"
       "BaseUri=https://a\r\n",
       "https://a"},
      {"other case, blanks", "  baseURI =  https://a  \n", "https://a"},
      {"no line end", "BaseUri=https://a", "https://a"},
      {"twice in a section", "BaseUri=first\nBaseUri=second\n", "first"},
      {"first section of later name", "[Z]\nBaseUri=first\n[A]\nBaseUri=second\n", "first"},
      {"section before none", "[Z]\nX=1\n[A]\nBaseUri=only\n", "only"},
      {"commented out", "; BaseUri=no\n# BaseUri=no\nBaseUri=yes\n", "yes"},
      {"signs in the value", "BaseUri=https://a/?b=c;d#e\n", "https://a/?b=c;d#e"},
      {"UTF-8", "BaseUri=\xE4\xB8\x89\n", "\xE4\xB8\x89"},
      {"empty value", "BaseUri=\n", ""},
      {"longer key", "BaseUri2=x\nMyBaseUri=x\n", ""},
      {"empty file", "", ""},
      {"rubbish", std::string("\x00\xFF[\n]=\n=x\n[[\xFE\n", 15), ""},
  };
  for (const auto& row : rows) {
    Write(row.text);
    EXPECT_EQ(Read("BaseUri"), row.expected) << row.form;
  }
}

TEST_F(IniFileTest, AFileThatCannotBeReadHasNoKeys) {
  EXPECT_EQ(Read("BaseUri"), "");
  EXPECT_EQ(IniFileHelper(m_folder.Path().wstring()).ReadIniValueByKeyTypeString("BaseUri"), "");
  EXPECT_EQ(IniFileHelper(std::wstring(5, static_cast<wchar_t>(0xD800))).ReadIniValueByKeyTypeString("k"),
            "");
}

TEST_F(IniFileTest, WritesWhereTheKeyIsReadAndKeepsTheRest) {
  Write("[Z]\nBaseUri=old\nKept=1\n[A]\nBaseUri=hidden\n");
  IniFileHelper file(m_wide);

  EXPECT_TRUE(file.WriteIniValue("baseuri", "new; \xE4\xB8\x89"));
  EXPECT_TRUE(file.WriteIniValue("Fresh", "2"));
  EXPECT_EQ(file.ReadIniValueByKeyTypeString("BaseUri"), "new; \xE4\xB8\x89");
  EXPECT_EQ(Read("BaseUri"), "new; \xE4\xB8\x89");
  EXPECT_EQ(Read("Kept"), "1");
  EXPECT_EQ(Read("Fresh"), "2");
  EXPECT_LT(Text().find("Fresh"), Text().find('[')) << "a new key stands outside any section";
  const auto files = std::filesystem::directory_iterator(m_folder.Path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "no temporary file is left";
}

TEST_F(IniFileTest, RefusesWhatCouldNotBeReadBack) {
  Write("Kept=1\n");
  IniFileHelper file(m_wide);
  for (const char* key : {"", "a=b", "[a", ";a", " a", "a\nb"}) {
    EXPECT_FALSE(file.WriteIniValue(key, "x")) << key;
  }
  for (const std::string& value : {std::string("a\nb"), std::string("a\rb"), std::string("a\0b", 3)}) {
    EXPECT_FALSE(file.WriteIniValue("Key", value));
  }
  EXPECT_EQ(Text(), "Kept=1\n");
  EXPECT_FALSE(IniFileHelper(m_folder.Wide("missing/f.ini")).WriteIniValue("Key", "x"));
}

}  // namespace
}  // namespace Drive
