// EventCommonProperties.cpp - gathers the facts of device and application.
#include "client/common/EventCommonProperties.h"

#include <array>

#include "client/common/DeviceModel.h"
#include "client/common/GlobalValue.h"
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"
#include "platform/System.h"

namespace Drive {

namespace {

// Version of the operating system, "10.0.19045.0"; empty where the system keeps no record of it.
std::wstring SystemVersion() {
  const auto version = Platform::CurrentSystem().Version();
  if (!version) {
    return {};
  }
  return std::to_wstring(version->major) + L"." + std::to_wstring(version->minor) + L"." +
         std::to_wstring(version->build) + L"." + std::to_wstring(version->servicePackMajor);
}

std::wstring Model() {
  const std::string chosen = g_pcModel;
  if (!chosen.empty()) {
    return TypeConvert::UTF8ToUnicode(chosen);
  }
  std::array<char, 256> model{};
  GetDeviceModel(model.data(), model.size());
  return TypeConvert::UTF8ToUnicode(model.data());
}

}  // namespace

// What a desktop has not (brand of the system, mobile network, advertising identifier) stays empty.
EventCommonProperties::EventCommonProperties()
    : m_romVer(SystemVersion()),
      m_model(Model()),
      m_packageName(GlobalValue::GetInstatnce().GetPackageName()),
      m_appVer(g_pcVersion),
      m_libVer(TypeConvert::UTF8ToUnicode(DRIVELOG_VERSION)),
      m_libName(L"drivelog") {}

}  // namespace Drive
