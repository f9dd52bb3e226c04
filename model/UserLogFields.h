// UserLogFields.h - the library's own access to a record's texts, without the copies that the getters make.
#pragma once

#include <string>

#include "drivelog/UserLog.h"

namespace Drive::Bilog {

// The texts of a record as member pointers: `record.*UserLogFields::kInfo` is the text itself.
struct UserLogFields {
  using Text = std::wstring UserLog::*;

  static constexpr Text kTime = &UserLog::m_time;
  static constexpr Text kAction = &UserLog::m_action;
  static constexpr Text kUserId = &UserLog::m_userId;
  static constexpr Text kDevId = &UserLog::m_devId;
  static constexpr Text kCode = &UserLog::m_code;
  static constexpr Text kInfo = &UserLog::m_info;
  static constexpr Text kExtend = &UserLog::m_extend;
  static constexpr Text kTraceId = &UserLog::m_traceId;
  static constexpr Text kModel = &UserLog::m_model;
  static constexpr Text kRomversion = &UserLog::m_romversion;
  static constexpr Text kAppversion = &UserLog::m_appversion;
  static constexpr Text kReqsize = &UserLog::m_reqsize;
  static constexpr Text kRspsize = &UserLog::m_rspsize;
  static constexpr Text kCurModule = &UserLog::m_curModule;
  static constexpr Text kActiontype = &UserLog::m_actiontype;
  static constexpr Text kNextModule = &UserLog::m_nextModule;
  static constexpr Text kOprType = &UserLog::m_oprType;
};

}  // namespace Drive::Bilog
