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

// Folder of the socket of that name.
std::string SocketFolder(const std::string& name) {
  const std::string path = LocalEndpoint(name).substr(std::string("ipc://").size());
  return path.substr(0, path.rfind('/'));
}

TEST(XdgTest, SocketsStandInAFolderOfTheUserAlone) {
  const Testing::TempFolder temp;
  const std::string open = temp.Narrow("open");
  const std::string closed = temp.Narrow("closed");
  ASSERT_EQ(mkdir(open.c_str(), 0755), 0);
  ASSERT_EQ(mkdir(closed.c_str(), 0700), 0);
  const ScopedVariable tmp("TMPDIR", temp.Path().c_str());
  {
    const ScopedVariable runtime("XDG_RUNTIME_DIR", closed.c_str());
    EXPECT_EQ(SocketFolder("../x"), closed);
  }
  for (const char* unfit : {static_cast<const char*>(nullptr), open.c_str(), "/missing"}) {
    const ScopedVariable runtime("XDG_RUNTIME_DIR", unfit);
    const std::string own = SocketFolder("x");
    EXPECT_EQ(own.find(temp.Path().string() + "/drivelog-"), 0U) << own;
    struct stat state {};
    ASSERT_EQ(stat(own.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777U, 0700U);
  }
  const ScopedVariable runtime("XDG_RUNTIME_DIR", nullptr);
  const std::string own = SocketFolder("x");
  ASSERT_EQ(chmod(own.c_str(), 0755), 0);
  EXPECT_NE(SocketFolder("x"), own) << "others can enter it";
}

TEST(XdgTest, NoSocketPathIsLongerThanTheSystemTakes) {
  EXPECT_EQ(LocalEndpoint(std::string(108, 'n')), "");
  const Testing::TempFolder temp;
  const std::string deep = temp.Narrow(std::string(100, 'd'));
  ASSERT_EQ(mkdir(deep.c_str(), 0700), 0);
  const ScopedVariable runtime("XDG_RUNTIME_DIR", deep.c_str());
  EXPECT_NE(SocketFolder("x"), deep);
}

}  // namespace
}  // namespace Drive::Platform
