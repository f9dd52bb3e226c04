// Clock_win32.cpp - the system's clock, Windows.
#include <windows.h>

#include "platform/Clock.h"

namespace Drive::Platform {

namespace {

class RealClock final : public Clock {
 public:
  std::int64_t NowMilliseconds() const override {
    using std::chrono::system_clock;
    return std::chrono::duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch())
        .count();
  }

  LocalTime NowLocal() const override {
    SYSTEMTIME local{};
    GetLocalTime(&local);
    return LocalTime{local.wYear,   local.wMonth,  local.wDay,         local.wHour,
                     local.wMinute, local.wSecond, local.wMilliseconds};
  }

  bool WaitFor(std::chrono::milliseconds duration, const WakeSignal& wake) override {
    return wake.WaitFor(duration);
  }
};

}  // namespace

Clock& SystemClock() {
  static RealClock& clock = *new RealClock;
  return clock;
}

}  // namespace Drive::Platform
