// EventCommonProperties.h - device and application facts that go with every operation-log request.
#pragma once

#include <string>

namespace Drive {

// Filled when constructed. A plain value.
class EventCommonProperties {
 public:
  EventCommonProperties();

  std::wstring get_Rom_ver() const { return m_romVer; }
  std::wstring get_Zelo_ver() const { return m_zeloVer; }
  std::wstring get_model() const { return m_model; }
  std::wstring get_Mcc() const { return m_mcc; }
  std::wstring get_Mnc() const { return m_mnc; }
  std::wstring get_Package_name() const { return m_packageName; }
  std::wstring get_App_ver() const { return m_appVer; }
  std::wstring get_Lib_ver() const { return m_libVer; }
  std::wstring get_Channel() const { return m_channel; }
  std::wstring get_Lib_name() const { return m_libName; }
  bool get_Oaid_tracking_flag() const { return m_oaidTrackingFlag; }
  std::wstring get_Events_global_properties() const { return m_eventsGlobalProperties; }

 private:
  std::wstring m_romVer;
  std::wstring m_zeloVer;
  std::wstring m_model;
  std::wstring m_mcc;
  std::wstring m_mnc;
  std::wstring m_packageName;
  std::wstring m_appVer;
  std::wstring m_libVer;
  std::wstring m_channel;
  std::wstring m_libName;
  bool m_oaidTrackingFlag = false;
  std::wstring m_eventsGlobalProperties;
};

}  // namespace Drive
