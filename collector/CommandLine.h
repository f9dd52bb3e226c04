// CommandLine.h - what drivelog-collector was asked to do.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "collector/Collector.h"
#include "collector/DecodeCommand.h"

namespace Drive::Collection {

struct CommandLine {
  Collector::Options options;
  std::filesystem::path readyFile;    // empty: none
  std::optional<DecodeOrder> decode;  // instead of serving
  std::optional<int> exitCode;        // help was shown, or the line was wrong: nothing to do
};

CommandLine ParseCommandLine(int argc, char** argv);

}  // namespace Drive::Collection
