// Events.h - the three records that an operation-log request is made of.
#pragma once

#include <string>
#include <utility>

#include "drivelog/Export.h"

namespace Drive {

// Surprises: the default constructors of all three belong to the client's common library (client/common),
//            which so decides what every request says by default; copying and access belong to this library.
// Thread-safety: that of plain values.

// The head of a request: who asks, under which protocol, and when.
class DRIVELOG_API Header {
 public:
  Header();
  Header(const Header& other);
  Header& operator=(const Header& other);

  std::wstring GetProtocolVersion() const { return m_protocolVersion; }
  std::wstring GetRequestId() const { return m_requestId; }
  void SetRequestId(const std::wstring& value) { m_requestId = value; }
  std::wstring GetHmac() const { return m_hmac; }
  std::wstring GetServiceTag() const { return m_serviceTag; }
  std::wstring GetCompressMode() const { return m_compressMode; }
  // Milliseconds since 1970-01-01 UTC, in decimal.
  std::wstring GetTimestamp() const { return m_timestamp; }
  void SetTimestamp(const std::wstring& value) { m_timestamp = value; }

 private:
  std::wstring m_protocolVersion;
  std::wstring m_requestId;
  std::wstring m_hmac;
  std::wstring m_serviceTag;
  std::wstring m_compressMode;
  std::wstring m_timestamp;
};

// What all events of a request have in common: the identifiers of the device.
class DRIVELOG_API Events_common {
 public:
  Events_common();
  Events_common(const Events_common& other);
  Events_common& operator=(const Events_common& other);

  std::wstring get_Androidid() const { return m_androidid; }
  void set_Androidid(std::wstring value) { m_androidid = std::move(value); }
  std::wstring get_Imei() const { return m_imei; }
  void set_Imei(std::wstring value) { m_imei = std::move(value); }
  std::wstring get_Uuid() const { return m_uuid; }
  void set_Uuid(std::wstring value) { m_uuid = std::move(value); }
  std::wstring get_Udid() const { return m_udid; }
  void set_Udid(std::wstring value) { m_udid = std::move(value); }
  std::wstring get_Oaid() const { return m_oaid; }
  void set_Oaid(std::wstring value) { m_oaid = std::move(value); }
  std::wstring get_Upid() const { return m_upid; }
  void set_Upid(std::wstring value) { m_upid = std::move(value); }
  std::wstring get_Sn() const { return m_sn; }
  void set_Sn(std::wstring value) { m_sn = std::move(value); }
  std::wstring get_Properties() const { return m_properties; }
  void set_Properties(std::wstring value) { m_properties = std::move(value); }
  std::wstring get_Events_global_properties() const { return m_eventsGlobalProperties; }
  void set_Events_global_properties(std::wstring value) { m_eventsGlobalProperties = std::move(value); }

 private:
  std::wstring m_androidid;
  std::wstring m_imei;
  std::wstring m_uuid;
  std::wstring m_udid;
  std::wstring m_oaid;
  std::wstring m_upid;
  std::wstring m_sn;
  std::wstring m_properties;
  std::wstring m_eventsGlobalProperties;
};

// One event.
class DRIVELOG_API Events {
 public:
  Events();
  Events(const Events& other);
  Events& operator=(const Events& other);

  std::wstring get_Type() const { return m_type; }
  void set_Type(std::wstring value) { m_type = std::move(value); }
  std::wstring get_Event() const { return m_event; }
  void set_Event(std::wstring value) { m_event = std::move(value); }
  // Milliseconds since 1970-01-01 UTC.
  double get_Eventtime() const { return m_eventtime; }
  void set_Eventtime(double value) { m_eventtime = value; }
  std::wstring get_Event_session_name() const { return m_eventSessionName; }
  void set_Event_session_name(std::wstring value) { m_eventSessionName = std::move(value); }
  bool get_First_session_event() const { return m_firstSessionEvent; }
  void set_First_session_event(bool value) { m_firstSessionEvent = value; }
  std::wstring get_Properties() const { return m_properties; }
  void set_Properties(std::wstring value) { m_properties = std::move(value); }

 private:
  std::wstring m_type;
  std::wstring m_event;
  double m_eventtime = 0.0;
  std::wstring m_eventSessionName;
  bool m_firstSessionEvent = false;
  std::wstring m_properties;
};

}  // namespace Drive
