// OperationLogger.h - entry point of the operation and UBA channels, and counting by file type.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "drivelog/Export.h"

namespace Drive::OperateLog {

class OperationLoggerManager;
class OperationLoggerTimer;
class UbaLoggerTimer;

}  // namespace Drive::OperateLog
