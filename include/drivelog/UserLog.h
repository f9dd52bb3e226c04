// UserLog.h - the record of every channel and the row of both log tables.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "drivelog/Export.h"

namespace Drive::Bilog {

// A signed 32-bit integer: `long` where the target platform's is one.
#if defined(_WIN32)
using Long = long;
#else
using Long = std::int32_t;
#endif

// One log record: 24 fields in the order of the table columns, each with a getter and a setter.
//
// A default record holds empty texts and zeros. Texts are UTF-16 on Windows and UTF-32 elsewhere.
// Thread-safety: that of a plain value; copies are independent of each other.
class DRIVELOG_API UserLog {
 public:
  UserLog();
  UserLog(const UserLog& other);
  UserLog(UserLog&& other) noexcept;
  UserLog& operator=(const UserLog& other);
  UserLog& operator=(UserLog&& other) noexcept;
  ~UserLog();

  // Id: row identifier that the database assigns; 0 in a record that was not stored.
  int get_Id() const { return m_id; }
  void set_Id(int value) { m_id = value; }
  // Time: local time of the event as text: 2024-03-05 07:08:09.045.
  std::wstring get_Time() const { return m_time; }
  void set_Time(std::wstring value) { m_time = std::move(value); }
  // Action: name of the action or event.
  std::wstring get_Action() const { return m_action; }
  void set_Action(std::wstring value) { m_action = std::move(value); }
  // UserId: account identifier.
  std::wstring get_UserId() const { return m_userId; }
  void set_UserId(std::wstring value) { m_userId = std::move(value); }
  // DevId: device identifier.
  std::wstring get_DevId() const { return m_devId; }
  void set_DevId(std::wstring value) { m_devId = std::move(value); }
  // Code: result code of the action.
  std::wstring get_Code() const { return m_code; }
  void set_Code(std::wstring value) { m_code = std::move(value); }
  // Info: free-text detail.
  std::wstring get_Info() const { return m_info; }
  void set_Info(std::wstring value) { m_info = std::move(value); }
  // Extend: extension data, mostly the text of a JSON object.
  std::wstring get_Extend() const { return m_extend; }
  void set_Extend(std::wstring value) { m_extend = std::move(value); }
  // TraceId: ties the records of one operation together.
  std::wstring get_TraceId() const { return m_traceId; }
  void set_TraceId(std::wstring value) { m_traceId = std::move(value); }
  // UseTime: duration of the action, in the unit of the host's choice.
  double get_UseTime() const { return m_useTime; }
  void set_UseTime(double value) { m_useTime = value; }
  // StartTime: start of the action, milliseconds since 1970-01-01 UTC.
  double get_StartTime() const { return m_startTime; }
  void set_StartTime(double value) { m_startTime = value; }
  // Model: device model.
  std::wstring get_Model() const { return m_model; }
  void set_Model(std::wstring value) { m_model = std::move(value); }
  // Romversion: operating-system version.
  std::wstring get_Romversion() const { return m_romversion; }
  void set_Romversion(std::wstring value) { m_romversion = std::move(value); }
  // Appversion: client application version.
  std::wstring get_Appversion() const { return m_appversion; }
  void set_Appversion(std::wstring value) { m_appversion = std::move(value); }
  // Reqsize: request size as text.
  std::wstring get_Reqsize() const { return m_reqsize; }
  void set_Reqsize(std::wstring value) { m_reqsize = std::move(value); }
  // Rspsize: response size as text.
  std::wstring get_Rspsize() const { return m_rspsize; }
  void set_Rspsize(std::wstring value) { m_rspsize = std::move(value); }
  // Logversion: version of the record layout.
  int get_Logversion() const { return m_logversion; }
  void set_Logversion(int value) { m_logversion = value; }
  // TraceEndFlag: non-zero on the last record of a trace.
  int get_TraceEndFlag() const { return m_traceEndFlag; }
  void set_TraceEndFlag(int value) { m_traceEndFlag = value; }
  // CurModule: module in which the action happened.
  std::wstring get_CurModule() const { return m_curModule; }
  void set_CurModule(std::wstring value) { m_curModule = std::move(value); }
  // Actiontype: kind of action.
  std::wstring get_Actiontype() const { return m_actiontype; }
  void set_Actiontype(std::wstring value) { m_actiontype = std::move(value); }
  // NextModule: module that the user went to next.
  std::wstring get_NextModule() const { return m_nextModule; }
  void set_NextModule(std::wstring value) { m_nextModule = std::move(value); }
  // ResidenceTime: time spent in CurModule.
  Long get_ResidenceTime() const { return m_residenceTime; }
  void set_ResidenceTime(Long value) { m_residenceTime = value; }
  // OprType: operation type.
  std::wstring get_OprType() const { return m_oprType; }
  void set_OprType(std::wstring value) { m_oprType = std::move(value); }
  // IsMaintenanceLog: channel: 1 for BI records, 0 for operation and UBA records.
  int get_IsMaintenanceLog() const { return m_isMaintenanceLog; }
  void set_IsMaintenanceLog(int value) { m_isMaintenanceLog = value; }

 private:
  friend struct UserLogFields;  // the library's own access to the texts

  int m_id = 0;
  std::wstring m_time;
  std::wstring m_action;
  std::wstring m_userId;
  std::wstring m_devId;
  std::wstring m_code;
  std::wstring m_info;
  std::wstring m_extend;
  std::wstring m_traceId;
  double m_useTime = 0.0;
  double m_startTime = 0.0;
  std::wstring m_model;
  std::wstring m_romversion;
  std::wstring m_appversion;
  std::wstring m_reqsize;
  std::wstring m_rspsize;
  int m_logversion = 0;
  int m_traceEndFlag = 0;
  std::wstring m_curModule;
  std::wstring m_actiontype;
  std::wstring m_nextModule;
  Long m_residenceTime = 0;
  std::wstring m_oprType;
  int m_isMaintenanceLog = 0;
};

}  // namespace Drive::Bilog
