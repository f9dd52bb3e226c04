// EventJson.cpp - the members of the objects of an operation-log request.
#include "model/EventJson.h"

#include "client/common/GlobalValue.h"
#include "client/log/TypeConvert.h"
#include "platform/Clock.h"

namespace Drive {

namespace {

std::string Utf8(const std::wstring& text) { return TypeConvert::UnicodeToUTF8(text); }

}  // namespace

Json::Value MakeHeaderJson(const Header& header, const std::string& chifer) {
  Json::Value object(Json::objectValue);
  object["protocol_version"] = Utf8(header.GetProtocolVersion());
  object["chifer"] = chifer;  // the server's spelling
  object["requestid"] = Utf8(header.GetRequestId());
  object["appid"] = Utf8(GlobalValue::GetInstatnce().GetPackageName());
  object["hmac"] = Utf8(header.GetHmac());
  object["servicetag"] = Utf8(header.GetServiceTag());
  object["compress_mode"] = Utf8(header.GetCompressMode());
  object["serviceid"] = kOperationServiceId;
  object["timestamp"] = Utf8(header.GetTimestamp());
  return object;
}

Json::Value MakeDevicePropertiesJson(const EventCommonProperties& properties) {
  Json::Value object(Json::objectValue);
  object["_rom_ver"] = Utf8(properties.get_Rom_ver());
  object["_zelo_ver"] = Utf8(properties.get_Zelo_ver());
  object["_model"] = Utf8(properties.get_model());
  object["_mcc"] = Utf8(properties.get_Mcc());
  object["_mnc"] = Utf8(properties.get_Mnc());
  object["_package_name"] = Utf8(properties.get_Package_name());
  object["_app_ver"] = Utf8(properties.get_App_ver());
  object["_lib_ver"] = Utf8(properties.get_Lib_ver());
  object["_channel"] = Utf8(properties.get_Channel());
  object["_lib_name"] = Utf8(properties.get_Lib_name());
  object["_oaid_tracking_flag"] = properties.get_Oaid_tracking_flag();
  object["events_global_properties"] = Utf8(properties.get_Events_global_properties());
  return object;
}

Json::Value MakeEventsCommonJson(const Events_common& common, const Json::Value& deviceProperties) {
  Json::Value object(Json::objectValue);
  object["androidid"] = Utf8(common.get_Androidid());
  object["imei"] = Utf8(common.get_Imei());
  object["uuid"] = Utf8(common.get_Uuid());
  object["udid"] = Utf8(common.get_Udid());
  object["oaid"] = Utf8(common.get_Oaid());
  object["upid"] = Utf8(common.get_Upid());
  object["sn"] = Utf8(common.get_Sn());
  object["properties"] = deviceProperties;
  object["events_global_properties"] = Utf8(common.get_Events_global_properties());
  return object;
}

Json::Value MakeEventsJson(const std::vector<Bilog::UserLog>& records) {
  Json::Value array(Json::arrayValue);
  for (const Bilog::UserLog& record : records) {
    Events event;
    event.set_Eventtime(static_cast<double>(Platform::CurrentClock().NowMilliseconds()));
    event.set_Event(record.get_Action());
    Json::Value& object = array.append(Json::Value(Json::objectValue));
    object["type"] = Utf8(event.get_Type());
    object["eventtime"] = event.get_Eventtime();
    object["event"] = Utf8(event.get_Event());
    object["event_session_name"] = Utf8(event.get_Event_session_name());
    object["first_session_event"] = event.get_First_session_event();
  }
  return array;
}

Json::Value MakeEventPayload(const std::vector<Bilog::UserLog>& records) {
  Json::Value payload(Json::objectValue);
  payload["events_common"] =
      MakeEventsCommonJson(Events_common(), MakeDevicePropertiesJson(EventCommonProperties()));
  payload["events"] = MakeEventsJson(records);
  return payload;
}

}  // namespace Drive
