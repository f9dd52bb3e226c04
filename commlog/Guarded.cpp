// Guarded.cpp - reporting an exception that nobody else will see.
#include "commlog/Guarded.h"

#include <exception>

#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"

namespace Drive {

void ReportException(const char* location) noexcept {
  const auto report = [location](int line, const char* text) {
    CommLog::GetInstance().PrintLog(LogLevel::kError, line, location, text);
  };
  try {
    try {
      throw;
    } catch (const std::exception& error) {
      report(__LINE__, error.what());
    } catch (...) {
      report(__LINE__, "unknown exception");
    }
  } catch (...) {
    // No memory is left to report it.
  }
}

}  // namespace Drive
