// Options.h - what the command line asks for.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace SyncFolder {

struct Options {
  std::filesystem::path folder;       // what to walk
  std::string baseUri;                // collector of the maintenance and operation channels
  std::string ubaUri;                 // collector of the UBA channel
  std::filesystem::path certificate;  // PEM bundle that the uploads trust
  std::string rsaKey;                 // public key of the operation collector, as hexadecimal text
  std::string user = "sync_folder";   // account that the records belong to
  std::size_t limit = 500;            // things found that get an event of their own
  std::chrono::seconds deadline{60};  // longest wait for the deliveries at the end
  bool watch = false;
  bool verbose = false;
};

// The options, or the exit code of a program that has said all there is to say (help, a usage error).
struct ParsedOptions {
  std::optional<Options> options;
  int exitCode = 0;
};
ParsedOptions ParseOptions(int argc, char** argv);

}  // namespace SyncFolder
