// FileInfoGroups.h - the text of the list form of an operation event.
//
//   [{"key":"value","key":"value"},{...}, ...]      ten maps a text
#pragma once

#include <string>
#include <vector>

#include "drivelog/OperationLogger.h"

namespace Drive::OperateLog {

// One text for each ten maps, in order. Plain concatenation: keys and values are not escaped, and the last
// one to nine maps that fill no group are left out. Both are meant.
std::vector<std::wstring> MakeFileInfoGroups(const std::vector<OperationLogger::Fields>& list);

}  // namespace Drive::OperateLog
