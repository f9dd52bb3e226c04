// DecodeCommand.h - "drivelog-collector decode": what one captured request says.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "collector/Request.h"
#include "collector/RequestCheck.h"

namespace Drive::Collection {

struct DecodeOrder {
  Channel channel = Channel::kMaintenance;
  std::filesystem::path headersFile;
  std::filesystem::path bodyFile;
  std::filesystem::path rsaKeyFile;  // one of these two for the operation channel
  std::filesystem::path dataFolder;
  DeflateRule deflateRule = DeflateRule::kAsZlibMakes;
};

// Writes the plain request as JSON to `out` and returns 0, or writes the reason for which it would be refused
// to `err` and returns 1. Throws std::runtime_error when a file cannot be read.
int RunDecode(const DecodeOrder& order, std::ostream& out, std::ostream& err);

}  // namespace Drive::Collection
