// main.cpp - the program drivelog-collector: serves until SIGINT or SIGTERM.
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "collector/CommandLine.h"
#include "collector/JsonCheck.h"

namespace {

using namespace Drive::Collection;

constexpr auto kSignalCheckPeriod = std::chrono::milliseconds(50);

volatile std::sig_atomic_t endAsked = 0;

// Appears whole: who waits for the file may read it at once.
void WriteReadyFile(const std::filesystem::path& file, const Collector& collector) {
  Json::Value ready;
  ready["url"] = collector.Url();
  ready["ca"] = collector.CaPath();
  ready["publicKey"] = collector.RsaPublicKeyHex();
  std::filesystem::path unfinished = file;
  unfinished += ".part";
  std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
  out << CompactText(ready) << '\n';
  out.close();
  if (!out) {
    throw std::runtime_error("cannot write " + unfinished.u8string());
  }
  std::filesystem::rename(unfinished, file);
}

int Serve(const CommandLine& line) {
  std::signal(SIGINT, [](int) { endAsked = 1; });
  std::signal(SIGTERM, [](int) { endAsked = 1; });
  const Collector collector(line.options);
  std::cout << "url: " << collector.Url() << "\nca: " << collector.CaPath()
            << "\npublic-key: " << collector.RsaPublicKeyHex() << std::endl;
  if (!line.readyFile.empty()) {
    WriteReadyFile(line.readyFile, collector);
  }
  // A signal handler may do no more than set a flag, so somebody has to look at it.
  while (endAsked == 0) {
    std::this_thread::sleep_for(kSignalCheckPeriod);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const CommandLine line = ParseCommandLine(argc, argv);
    if (line.exitCode) {
      return *line.exitCode;
    }
    return line.decode ? RunDecode(*line.decode, std::cout, std::cerr) : Serve(line);
  } catch (const std::exception& error) {
    std::cerr << "drivelog-collector: " << error.what() << '\n';
    return 1;
  }
}
