// DeviceDescription.h - what records and headers say about system, device and brand.
#pragma once

#include <json/value.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "platform/System.h"

namespace Drive::Bilog {

// Name and version of an operating system: "Microsoft Windows NT 10.0.22631.0"; "Unknow Platform" for one
// that is not known. `processArchitecture` is the one that the system shows to the process.
std::wstring OsVersionName(const Platform::OsVersion& version, std::uint32_t processArchitecture,
                           const std::function<bool()>& isServerR2);

// That of the system in force.
std::wstring GetOsVersionName();

// "Win64" on a 64-bit system, otherwise "Win32".
std::wstring GetSystemModel();

// The brand description: keys and values in the order in which they are described.
using Brand = std::array<std::pair<const char*, std::string>, 7>;
Brand CurrentBrand();

// `text` with the brand description behind it: ";DEVICE_BRAND:...;APP_BRAND_ID:..." and so on.
std::string WithBrandText(std::string text, const Brand& brand);

// Sets the brand description's members in `object`.
void SetBrandMembers(Json::Value& object, const Brand& brand);

// How the extension text of a record is sent: as the JSON object that it holds, with the brand members set;
// otherwise as text, with the brand text behind it unless "DEVICE_BRAND" stands in it already.
Json::Value MakeExtendJson(const std::wstring& extend);

}  // namespace Drive::Bilog
