// DecodeCommand.h - "drivelog-collector decode": what one captured request says.
#pragma once

#include "collector/CommandLine.h"

namespace Drive::Collection {

// Prints the plain request as JSON and returns 0, or prints the reason for which it would be refused to the
// standard error and returns 1. Throws std::runtime_error when a file cannot be read.
int RunDecode(const DecodeOrder& order);

}  // namespace Drive::Collection
