// UserLog.cpp - copying and moving of the record, so that hosts need not know its layout.
#include "drivelog/UserLog.h"

namespace Drive::Bilog {

UserLog::UserLog() = default;
UserLog::UserLog(const UserLog& other) = default;
UserLog::UserLog(UserLog&& other) noexcept = default;
UserLog& UserLog::operator=(const UserLog& other) = default;
UserLog& UserLog::operator=(UserLog&& other) noexcept = default;
UserLog::~UserLog() = default;

}  // namespace Drive::Bilog
