// PlatformXdgTest.cpp - folders and sockets where the XDG base directory rules hold.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/System.h"
#include "tests/support/TempFolder.h"

namespace Drive::Platform {
namespace {

// An environment variable that has another value, or none, for a while.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : m_name(name) {
    if (const char* old = std::getenv(name)) {
      m_old = old;
    }
    Put(value);
  }
  ~ScopedVariable() { Put(m_old ? m_old->c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void Put(const char* value) { value == nullptr ? unsetenv(m_name) : setenv(m_name, value, 1); }

  const char* m_name;
  std::optional<std::string> m_old;
};

TEST(XdgTest, ApplicationDataFollowsTheEnvironment) {
  struct {
    const char* home;
    const char* config;
    std::wstring expected;
  } const rows[] = {
      {"/home/zo\xC3\xAB", nullptr, L"/home/zo\u00EB/.config"},
      {"/home/u/", "", L"/home/u/.config"},
      {"/home/u", "relative/is/ignored", L"/home/u/.config"},
      {"/home/u", "/data/config//", L"/data/config"},
      {"/home/u", "/bad\xFFname", L"/bad\uFFFDname"},
  };
  for (const auto& row : rows) {
    const ScopedVariable home("HOME", row.home);
    const ScopedVariable config("XDG_CONFIG_HOME", row.config);
    EXPECT_EQ(RealSystem().RoamingAppDataFolder(), row.expected);
  }
  const ScopedVariable data("XDG_DATA_HOME", "/d");
  EXPECT_EQ(RealSystem().LocalAppDataFolder(), L"/d");
}

TEST(XdgTest, SocketsWithoutARuntimeFolderStandInAFolderOfTheUserAlone) {
  const Testing::TempFolder temp;
  const ScopedVariable runtime("XDG_RUNTIME_DIR", nullptr);
  const ScopedVariable tmp("TMPDIR", temp.Path().c_str());

  const std::string endpoint = LocalEndpoint("../x");
  const std::string folder = endpoint.substr(6, endpoint.rfind('/') - 6);
  EXPECT_EQ(folder.find(temp.Path().string()), 0U);
  EXPECT_EQ(folder.find(".."), std::string::npos);
  struct stat state {};
  ASSERT_EQ(stat(folder.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0700U);

  ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
  EXPECT_EQ(LocalEndpoint("x"), "") << "a folder that others can enter is not used";
}

TEST(XdgTest, NoEndpointIsLongerThanASocketMayBe) { EXPECT_EQ(LocalEndpoint(std::string(108, 'n')), ""); }

}  // namespace
}  // namespace Drive::Platform
