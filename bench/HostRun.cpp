// HostRun.cpp - runs the host program with a folder of its own, and reads what it prints.
#include "bench/HostRun.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "tests/support/TempFolder.h"

namespace Drive::Bench {

std::map<std::string, double> RunHost(int seconds) {
  const Testing::TempFolder home;
  const std::string command = std::string(BENCH_HOST) + " " + BENCH_PLUGIN + " " + home.Path().string() +
                              " " + std::to_string(seconds);
  std::map<std::string, double> values;
  FILE* const output = popen(command.c_str(), "r");
  char name[64];
  double value = 0;
  while (output != nullptr && std::fscanf(output, "%63s %lf", name, &value) == 2) values[name] = value;
  if (output == nullptr || pclose(output) != 0) {
    std::fprintf(stderr, "failed: %s\n", command.c_str());
    std::abort();
  }
  return values;
}

}  // namespace Drive::Bench
