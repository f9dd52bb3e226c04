// System_posix.cpp - the operating system's answers, POSIX: folders as the XDG base directory rules have
// them.
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <utf8.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "platform/System.h"

namespace Drive::Platform {

const wchar_t* const kPathSeparator = L"/";

namespace {

constexpr std::uint32_t kArchitectureUnknown = 0xFFFF;

// A socket's path must fit the system's address record, its NUL included.
constexpr std::size_t kLongestSocketPath = 107;

std::wstring Widen(const std::string& text) {
  const std::string valid = utf8::replace_invalid(text);
  std::wstring wide;
  utf8::unchecked::utf8to32(valid.begin(), valid.end(), std::back_inserter(wide));
  return wide;
}

std::string Narrow(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t unit : text) {
    const auto codePoint = static_cast<std::uint32_t>(unit);
    const bool isValid = codePoint < 0xD800 || (codePoint > 0xDFFF && codePoint <= 0x10FFFF);
    utf8::unchecked::append(isValid ? codePoint : 0xFFFD, std::back_inserter(narrow));
  }
  return narrow;
}

// The value of an environment variable that holds a folder, without separators at its end; empty when it is
// not set or not absolute, which the rules want ignored.
std::string FolderFromEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  std::string folder = value == nullptr || *value != '/' ? std::string() : std::string(value);
  while (folder.size() > 1 && folder.back() == '/') {
    folder.pop_back();
  }
  return folder;
}

std::string HomeFolder() {
  const std::string home = FolderFromEnvironment("HOME");
  if (!home.empty()) {
    return home;
  }
  std::array<char, 4096> buffer{};
  passwd record{};
  passwd* found = nullptr;
  getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found);
  return found == nullptr || found->pw_dir == nullptr ? std::string() : std::string(found->pw_dir);
}

std::wstring UserFolder(const char* variable, const char* defaultBelowHome) {
  const std::string folder = FolderFromEnvironment(variable);
  if (!folder.empty()) {
    return Widen(folder);
  }
  const std::string home = HomeFolder();
  return home.empty() ? std::wstring() : Widen(home + defaultBelowHome);
}

// Whether nobody but this user can enter the folder.
bool IsPrivate(const std::string& folder) {
  struct stat state {};
  return lstat(folder.c_str(), &state) == 0 && S_ISDIR(state.st_mode) && state.st_uid == getuid() &&
         (state.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

// This user's folder for sockets below a folder that is everybody's. Somebody else may have made it first.
std::string OwnFolderBelow(const std::string& everybodys) {
  const std::string folder = everybodys + "/drivelog-" + std::to_string(getuid());
  mkdir(folder.c_str(), S_IRWXU);
  return folder;
}

// A name for a file that tells all names apart.
std::string SocketFileName(const std::string& name) {
  constexpr char kHexDigits[] = "0123456789ABCDEF";
  std::string file;
  for (const char character : name) {
    const auto byte = static_cast<unsigned char>(character);
    const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                         (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_';
    file +=
        isPlain ? std::string(1, character) : std::string{'%', kHexDigits[byte / 16], kHexDigits[byte % 16]};
  }
  return file + ".socket";
}

class RealPosixSystem final : public System {
 public:
  std::optional<OsVersion> Version() const override { return std::nullopt; }

  std::uint32_t NativeArchitecture() const override {
    utsname names{};
    if (uname(&names) != 0) {
      return kArchitectureUnknown;
    }
    const std::string machine = names.machine;
    if (machine == "x86_64") {
      return kArchitectureX64;
    }
    if (machine == "aarch64" || machine == "arm64") {
      return kArchitectureArm64;
    }
    if (machine == "ia64") {
      return kArchitectureItanium;
    }
    const bool isX86 = machine.size() == 4 && machine[0] == 'i' && machine.substr(2) == "86";
    return isX86 ? kArchitectureX86 : kArchitectureUnknown;
  }

  std::uint32_t ProcessArchitecture() const override {
    const std::uint32_t native = NativeArchitecture();
    return native == kArchitectureX64 && sizeof(void*) == 4 ? kArchitectureX86 : native;
  }

  bool IsServerR2() const override { return false; }

  std::wstring RoamingAppDataFolder() const override { return UserFolder("XDG_CONFIG_HOME", "/.config"); }
  std::wstring LocalAppDataFolder() const override { return UserFolder("XDG_DATA_HOME", "/.local/share"); }
  std::wstring ProgramFilesFolder() const override { return L"/opt"; }

  std::wstring ShortPath(const std::wstring& path) const override { return path; }

  int CreateDirectoryLevels(const std::wstring& path) const override {
    const std::string narrow = Narrow(path);
    int code = ENOENT;
    for (std::size_t end = narrow.find_first_not_of('/'); end < narrow.size();) {
      end = std::min(narrow.find('/', end), narrow.size());
      code = mkdir(narrow.substr(0, end).c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0 ? 0 : errno;
      end = narrow.find_first_not_of('/', end);
      if (code != 0 && code != EEXIST) {
        return code;
      }
    }
    return code;
  }

  std::string DeviceModel() const override {
    for (const char* file :
         {"/sys/devices/virtual/dmi/id/product_name", "/sys/firmware/devicetree/base/model"}) {
      std::ifstream stream(file);
      std::string model;
      std::getline(stream, model);
      model = model.substr(0, model.find('\0'));
      const std::size_t last = model.find_last_not_of(" \t\r");
      if (last != std::string::npos) {
        return model.substr(0, last + 1);
      }
    }
    return {};
  }
};

}  // namespace

std::string LocalEndpoint(const std::string& name) {
  const std::string file = "/" + SocketFileName(name);
  const std::string runtime = FolderFromEnvironment("XDG_RUNTIME_DIR");
  if (IsPrivate(runtime) && runtime.size() + file.size() <= kLongestSocketPath) {
    return "ipc://" + runtime + file;
  }
  for (const std::string& everybodys : {FolderFromEnvironment("TMPDIR"), std::string("/tmp")}) {
    const std::string folder = everybodys.empty() ? everybodys : OwnFolderBelow(everybodys);
    if (IsPrivate(folder) && folder.size() + file.size() <= kLongestSocketPath) {
      return "ipc://" + folder + file;
    }
  }
  return {};
}

const System& RealSystem() {
  static const RealPosixSystem& system = *new RealPosixSystem;
  return system;
}

}  // namespace Drive::Platform
