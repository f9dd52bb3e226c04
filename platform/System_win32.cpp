// System_win32.cpp - the operating system's answers, Windows.
#include <windows.h>
// What follows needs windows.h first.
#include <sddl.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <utf8.h>

#include <array>
#include <iterator>
#include <memory>
#include <type_traits>
#include <vector>

#include "platform/System.h"

namespace Drive::Platform {

const wchar_t* const kPathSeparator = L"\\";

namespace {

using PathBuffer = std::array<wchar_t, MAX_PATH>;

struct LibraryFree {
  void operator()(HMODULE library) const noexcept { FreeLibrary(library); }
};
using Library = std::unique_ptr<std::remove_pointer_t<HMODULE>, LibraryFree>;

struct HandleClose {
  void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleClose>;

struct LocalMemoryFree {
  void operator()(wchar_t* memory) const noexcept { LocalFree(memory); }
};
using LocalText = std::unique_ptr<wchar_t, LocalMemoryFree>;

std::string Narrow(const std::wstring& text) {
  const std::u16string units(text.begin(), text.end());
  std::string narrow;
  try {
    utf8::utf16to8(units.begin(), units.end(), std::back_inserter(narrow));
  } catch (const utf8::exception&) {
    narrow.clear();  // no name of a device or an account
  }
  return narrow;
}

std::uint32_t Architecture(const SYSTEM_INFO& info) { return info.wProcessorArchitecture; }

// Overwrites the version numbers with the true ones: the documented call shows every program the version
// that its manifest names. Any failure keeps what is there.
void SetTrueNumbers(OsVersion& version) {
  using GetNumbers = void(WINAPI*)(DWORD*, DWORD*, DWORD*);
  PathBuffer path{};
  const UINT length = GetSystemDirectoryW(path.data(), static_cast<UINT>(path.size()));
  if (length == 0 || length >= path.size() || !PathAppendW(path.data(), L"ntdll.dll")) {
    return;
  }
  const Library library(LoadLibraryW(path.data()));
  const FARPROC found =
      library == nullptr ? nullptr : GetProcAddress(library.get(), "RtlGetNtVersionNumbers");
  if (found == nullptr) {
    return;
  }
  const auto getNumbers = reinterpret_cast<GetNumbers>(reinterpret_cast<void (*)()>(found));
  DWORD major = 0;
  DWORD minor = 0;
  DWORD build = 0;
  getNumbers(&major, &minor, &build);
  version.major = major;
  version.minor = minor;
  version.build = build & 0xFFFF;  // the high bits tell the kind of build
}

std::wstring SpecialFolder(int folder) {
  PathBuffer path{};
  return SHGetSpecialFolderPathW(nullptr, path.data(), folder, FALSE) ? std::wstring(path.data())
                                                                      : std::wstring();
}

// Text form of the user's security identifier; empty when the system does not tell.
std::wstring UserSid() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) {
    return {};
  }
  const Handle token(opened);
  DWORD size = 0;
  GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
  std::vector<TOKEN_USER> user(size / sizeof(TOKEN_USER) + 1);
  const auto capacity = static_cast<DWORD>(user.size() * sizeof(TOKEN_USER));
  wchar_t* text = nullptr;
  if (!GetTokenInformation(token.get(), TokenUser, user.data(), capacity, &size) ||
      !ConvertSidToStringSidW(user.front().User.Sid, &text)) {
    return {};
  }
  return LocalText(text).get();
}

class RealWindowsSystem final : public System {
 public:
  std::optional<OsVersion> Version() const override {
    OSVERSIONINFOEXW record{};
    record.dwOSVersionInfoSize = sizeof(record);
#if defined(_MSC_VER)
#pragma warning(suppress : 4996)  // the true numbers follow
#endif
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&record))) {
      return std::nullopt;
    }
    OsVersion version;
    version.platformId = record.dwPlatformId;
    version.major = record.dwMajorVersion;
    version.minor = record.dwMinorVersion;
    version.build = record.dwBuildNumber;
    version.servicePackMajor = record.wServicePackMajor;
    version.isWorkstation = record.wProductType == VER_NT_WORKSTATION;
    SetTrueNumbers(version);
    return version;
  }

  std::uint32_t NativeArchitecture() const override {
    SYSTEM_INFO info{};
    GetNativeSystemInfo(&info);
    return Architecture(info);
  }

  std::uint32_t ProcessArchitecture() const override {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return Architecture(info);
  }

  bool IsServerR2() const override { return GetSystemMetrics(SM_SERVERR2) != 0; }

  std::wstring RoamingAppDataFolder() const override { return SpecialFolder(CSIDL_APPDATA); }
  std::wstring LocalAppDataFolder() const override { return SpecialFolder(CSIDL_LOCAL_APPDATA); }

  std::wstring ProgramFilesFolder() const override {
    PathBuffer path{};
    const HRESULT result =
        SHGetFolderPathW(nullptr, CSIDL_PROGRAM_FILES, nullptr, SHGFP_TYPE_CURRENT, path.data());
    return SUCCEEDED(result) ? std::wstring(path.data()) : std::wstring();
  }

  std::wstring ShortPath(const std::wstring& path) const override {
    PathBuffer shortPath{};
    const DWORD length =
        GetShortPathNameW(path.c_str(), shortPath.data(), static_cast<DWORD>(shortPath.size()));
    return length == 0 || length >= shortPath.size() ? path : std::wstring(shortPath.data(), length);
  }

  int CreateDirectoryLevels(const std::wstring& path) const override {
    return SHCreateDirectoryExW(nullptr, path.c_str(), nullptr);
  }

  std::string DeviceModel() const override {
    std::array<wchar_t, 256> model{};
    auto size = static_cast<DWORD>(model.size() * sizeof(wchar_t));
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\BIOS",
                                        L"SystemProductName", RRF_RT_REG_SZ, nullptr, model.data(), &size);
    return status == ERROR_SUCCESS ? Narrow(model.data()) : std::string();
  }
};

}  // namespace

// Names of pipes are shared by all users of a machine. By default only their creator may write to them.
std::string LocalEndpoint(const std::string& name) {
  const std::string user = Narrow(UserSid());
  return user.empty() ? std::string() : "ipc://" + name + "-" + user;
}

const System& RealSystem() {
  static const RealWindowsSystem& system = *new RealWindowsSystem;
  return system;
}

}  // namespace Drive::Platform
