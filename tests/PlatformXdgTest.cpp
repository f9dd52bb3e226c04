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
    if (const char* old = std::getenv(name)) m_old = old;
    Put(value);
  }
  ~ScopedVariable() { Put(m_old ? m_old->c_str() : nullptr); }

 private:
  void Put(const char* value) { value == nullptr ? unsetenv(m_name) : setenv(m_name, value, 1); }

  const char* m_name;
  std::optional<std::string> m_old;
};

TEST(XdgTest, ApplicationDataFollowsTheEnvironment) {
  const std::tuple<const char*, const char*, std::wstring> rows[] = {
      {"/home/zo\xC3\xAB", nullptr, L"/home/zo\u00EB/.config"},
      {"/home/u", "relative/is/ignored", L"/home/u/.config"},
      {"/home/u", "/data/config//", L"/data/config"},
  };
  for (const auto& [home, config, expected] : rows) {
    const ScopedVariable homeVariable("HOME", home);
    const ScopedVariable configVariable("XDG_CONFIG_HOME", config);
    EXPECT_EQ(RealSystem().RoamingAppDataFolder(), expected);
  }
  const ScopedVariable data("XDG_DATA_HOME", "/d");
  EXPECT_EQ(RealSystem().LocalAppDataFolder(), L"/d");
}

TEST(XdgTest, SocketsStandInAFolderOfTheUserAlone) {
  const Testing::TempFolder temp;
  const auto folderOf = [](const std::string& name) {
    const std::string path = LocalEndpoint(name).substr(std::string("ipc://").size());
    return path.substr(0, path.rfind('/'));
  };
  const auto make = [&temp](const std::string& name, mode_t mode) {
    mkdir(temp.Narrow(name).c_str(), mode);
    return temp.Narrow(name);
  };
  const ScopedVariable tmp("TMPDIR", temp.Path().c_str());
  const std::string closed = make("closed", 0700);
  const ScopedVariable runtime("XDG_RUNTIME_DIR", closed.c_str());
  EXPECT_EQ(folderOf("../x"), closed);
  EXPECT_EQ(LocalEndpoint(std::string(108, 'n')), "") << "longer than the system takes";
  std::string own;
  for (const std::string& unfit : {make("open", 0755), make(std::string(100, 'd'), 0700), std::string()}) {
    const ScopedVariable unfitRuntime("XDG_RUNTIME_DIR", unfit.c_str());
    own = folderOf("x");
    struct stat state {};
    ASSERT_EQ(stat(own.c_str(), &state), 0);
    EXPECT_EQ(own.find(temp.Path().string() + "/drivelog-"), 0U) << own;
    EXPECT_EQ(state.st_mode & 0777U, 0700U);
  }
  chmod(own.c_str(), 0755);
  const ScopedVariable none("XDG_RUNTIME_DIR", nullptr);
  EXPECT_NE(folderOf("x"), own) << "others can enter it";
}

}  // namespace
}  // namespace Drive::Platform
