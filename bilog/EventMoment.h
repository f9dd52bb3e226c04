// EventMoment.h - what a record says about the moment at which its event happened.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "drivelog/UserLog.h"
#include "platform/Clock.h"
#include "transport/DeviceDescription.h"

namespace Drive::Bilog {

// User, device, version and brand, as the host has set them. The events between two changes share one.
struct EventOrigin {
  std::wstring userId;
  std::wstring deviceId;
  std::wstring appVersion;
  Brand brand;

  // The one in force.
  static std::shared_ptr<const EventOrigin> Current();
};

// Taken down on the host's thread, which is all that must happen there: the texts of the record are made of
// it when it is stored.
struct EventMoment {
  std::shared_ptr<const EventOrigin> origin;  // shared with the other events of the same origin
  Platform::LocalTime localTime;
  std::int64_t milliseconds = 0;
  std::uint32_t digits = 0;  // random ones, for the record's identifier

  static EventMoment Now();

  // Sets time, user, device and version.
  void Describe(UserLog& record) const;

  // The identifier of a record of this moment.
  std::wstring LogId(int number) const;
};

}  // namespace Drive::Bilog
