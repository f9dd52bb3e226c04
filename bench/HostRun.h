// HostRun.h - runs the host program of bench/host, which starts the library in a process of its own.
#pragma once

#include <map>
#include <string>

namespace Drive::Bench {

// What the program printed, by name: see host/Host.cpp. Aborts when it fails.
std::map<std::string, double> RunHost(int seconds);

}  // namespace Drive::Bench
