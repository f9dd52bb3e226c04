// ProcessEnd.cpp - the announcement of the process's end.
#include "platform/ProcessEnd.h"

#include <algorithm>
#include <atomic>

namespace Drive::Platform {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPatience{1500};

// Steady time of the first Begin; 0 before it.
std::atomic<steady_clock::rep> beganAt{0};

WakeSignal& EndSignal() {
  static WakeSignal& signal = *new WakeSignal;  // threads wait on it until the process is gone
  return signal;
}

}  // namespace

void ProcessEnd::Begin() {
  steady_clock::rep notBegun = 0;
  const steady_clock::rep now =
      std::max<steady_clock::rep>(1, steady_clock::now().time_since_epoch().count());
  if (beganAt.compare_exchange_strong(notBegun, now)) {
    EndSignal().Raise();
  }
}

bool ProcessEnd::HasBegun() { return beganAt != 0; }

const WakeSignal& ProcessEnd::Signal() { return EndSignal(); }

milliseconds ProcessEnd::PatienceLeft() {
  if (OtherThreadsAreGone()) {
    return milliseconds::zero();
  }
  const steady_clock::rep began = beganAt;
  if (began == 0) {
    return kPatience;
  }
  const steady_clock::duration passed =
      steady_clock::now().time_since_epoch() - steady_clock::duration(began);
  return std::max(milliseconds::zero(), kPatience - std::chrono::duration_cast<milliseconds>(passed));
}

}  // namespace Drive::Platform
