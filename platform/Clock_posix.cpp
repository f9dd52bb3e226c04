// Clock_posix.cpp - the system's clock, POSIX.
#include <time.h>

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
    const std::int64_t now = NowMilliseconds();
    const time_t seconds = static_cast<time_t>(now / 1000);
    tm local{};
    localtime_r(&seconds, &local);
    return LocalTime{local.tm_year + 1900,
                     local.tm_mon + 1,
                     local.tm_mday,
                     local.tm_hour,
                     local.tm_min,
                     local.tm_sec,
                     static_cast<int>(now % 1000)};
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
