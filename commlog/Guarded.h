// Guarded.h - runs an operation on behalf of somebody who must not meet its exceptions.
#pragma once

namespace Drive {

// Reports the exception that is being handled as an error of `location`. Only in a catch block.
void ReportException(const char* location) noexcept;

// Runs `operation` and returns its result. What it throws is reported as an error of `location` and goes no
// further; the result is a default one then. The reporting comes behind the unwinding, so a lock that the
// operation took is free again when a host's log function is called.
template <typename Operation>
auto Guarded(const char* location, const Operation& operation) noexcept -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    ReportException(location);
    return decltype(operation())();
  }
}

}  // namespace Drive
