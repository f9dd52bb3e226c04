// System.cpp - the system in force.
#include "platform/System.h"

#include <atomic>

namespace Drive::Platform {

namespace {

std::atomic<const System*> installedSystem{nullptr};

}  // namespace

const System& CurrentSystem() {
  const System* const installed = installedSystem;
  return installed == nullptr ? RealSystem() : *installed;
}

void InstallSystem(const System* system) { installedSystem = system; }

}  // namespace Drive::Platform
