// Resident.h - resident memory of this process, as Linux counts it.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace Drive::Bench {

// In MiB, of a line of /proc/self/status: VmRSS is what is resident now, VmHWM the most since the last reset.
inline double ResidentMiB(const std::string& line) {
  std::ifstream status("/proc/self/status");
  for (std::string text; std::getline(status, text);) {
    if (text.compare(0, line.size() + 1, line + ":") == 0) {
      double kilobytes = 0;
      std::istringstream(text.substr(line.size() + 1)) >> kilobytes;
      return kilobytes / 1024;
    }
  }
  return 0;
}

inline void ResetPeakResident() { std::ofstream("/proc/self/clear_refs") << "5"; }

}  // namespace Drive::Bench
