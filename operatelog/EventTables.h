// EventTables.h - the names of operation events and of the kinds of action.
#pragma once

#include <string_view>

#include "drivelog/OperationLogger.h"

namespace Drive::OperateLog {

// Both are empty for a value that the table lacks.
std::wstring_view EventName(OperationBasicEventType event);
std::wstring_view ActionKind(OperationActionType action);

}  // namespace Drive::OperateLog
