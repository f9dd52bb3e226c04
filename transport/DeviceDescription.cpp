// DeviceDescription.cpp - what records and headers say about system, device and brand.
#include "transport/DeviceDescription.h"

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "transport/JsonText.h"

namespace Drive::Bilog {
namespace {

constexpr const wchar_t* kUnknownPlatform = L"Unknow Platform";
constexpr std::uint32_t kPlatformWindows = 1;
constexpr std::uint32_t kPlatformNt = 2;

struct NamedVersion {
  std::uint32_t major;
  std::uint32_t minor;
  const wchar_t* workstation;
  const wchar_t* server;
};

// Workstations of 10.0 are all called the same on purpose: the build number tells them apart.
constexpr NamedVersion kNamedVersions[] = {
    {4, 10, L"Microsoft Windows 98", L"Microsoft Windows 98"},
    {4, 90, L"Microsoft Windows Me", L"Microsoft Windows Me"},
    {5, 0, L"Microsoft Windows 2000", L"Microsoft Windows 2000"},
    {5, 1, L"Microsoft Windows XP", L"Microsoft Windows XP"},
    {6, 0, L"Microsoft Windows Vista", L"Microsoft Windows Server 2008"},
    {6, 1, L"Microsoft Windows 7", L"Microsoft Windows Server 2008 R2"},
    {6, 2, L"Microsoft Windows 8", L"Microsoft Windows Server 2012"},
    {6, 3, L"Microsoft Windows 8.1", L"Microsoft Windows Server 2012 R2"},
    {10, 0, L"Microsoft Windows NT", L"Microsoft Windows Server 2016"},
};

const wchar_t* NameOf40(std::uint32_t platformId) {
  switch (platformId) {
    case kPlatformNt:
      return L"Microsoft Windows NT 4.0";
    case kPlatformWindows:
      return L"Microsoft Windows 95";
    default:
      return nullptr;
  }
}

const wchar_t* NameOf52(bool isX64Workstation, const std::function<bool()>& isServerR2) {
  if (isX64Workstation) {
    return L"Microsoft Windows XP Professional x64 Edition";
  }
  if (isServerR2()) {
    return L"Microsoft Windows Server 2003 R2";
  }
  // Asked twice on purpose: an answer that changes in between gives no name.
  return isServerR2() ? nullptr : L"Microsoft Windows Server 2003";
}

const wchar_t* NameOf(const Platform::OsVersion& version, std::uint32_t processArchitecture,
                      const std::function<bool()>& isServerR2) {
  if (version.major == 4 && version.minor == 0) {
    return NameOf40(version.platformId);
  }
  if (version.major == 5 && version.minor == 2) {
    return NameOf52(version.isWorkstation && processArchitecture == Platform::kArchitectureX64, isServerR2);
  }
  for (const NamedVersion& named : kNamedVersions) {
    if (named.major == version.major && named.minor == version.minor) {
      return version.isWorkstation ? named.workstation : named.server;
    }
  }
  return nullptr;
}

}  // namespace

std::wstring OsVersionName(const Platform::OsVersion& version, std::uint32_t processArchitecture,
                           const std::function<bool()>& isServerR2) {
  const wchar_t* const name = NameOf(version, processArchitecture, isServerR2);
  if (name == nullptr) {
    return kUnknownPlatform;
  }
  return std::wstring(name) + L" " + std::to_wstring(version.major) + L"." + std::to_wstring(version.minor) +
         L"." + std::to_wstring(version.build) + L"." + std::to_wstring(version.servicePackMajor);
}

std::wstring GetOsVersionName() {
  const Platform::System& system = Platform::CurrentSystem();
  const auto version = system.Version();
  if (!version.has_value()) {
    return kUnknownPlatform;
  }
  return OsVersionName(*version, system.ProcessArchitecture(), [&system] { return system.IsServerR2(); });
}

std::wstring GetSystemModel() {
  const std::uint32_t architecture = Platform::CurrentSystem().NativeArchitecture();
  const bool is64Bit =
      architecture == Platform::kArchitectureX64 || architecture == Platform::kArchitectureItanium;
  return is64Bit ? L"Win64" : L"Win32";
}

Brand CurrentBrand() {
  return {{{"DEVICE_BRAND", g_deviceBrandSync},
           {"APP_BRAND_ID", g_appBrandId},
           {"ACCOUNT_BRAND_ID", g_accountBrandId},
           {"DEVICE_BRAND_ID", TypeConvert::UnicodeToUTF8(g_deviceBrandId)},
           {"DISK_TYPE", g_diskType},
           {"COUNTRY_CODE", g_countryCode},
           {"USER_GRADE", g_userGrade}}};
}

std::string WithBrandText(std::string text, const Brand& brand) {
  for (const auto& [key, value] : brand) {
    text.append(";").append(key).append(":").append(value);
  }
  return text;
}

void SetBrandMembers(Json::Value& object, const Brand& brand) {
  for (const auto& [key, value] : brand) {
    object[Json::StaticString(key)] = value;
  }
}

Json::Value MakeExtendJson(const std::wstring& extend) {
  const std::string text = TypeConvert::UnicodeToUTF8(extend);
  if (auto object = ParseJsonObject(text)) {
    SetBrandMembers(*object, CurrentBrand());
    return *std::move(object);
  }
  return text.find("DEVICE_BRAND") == std::string::npos ? WithBrandText(text, CurrentBrand()) : text;
}

}  // namespace Drive::Bilog
