// EventMoment.cpp - the values of the moment, and the origin that many events share.
#include "bilog/EventMoment.h"

#include <array>
#include <mutex>
#include <tuple>
#include <utility>

#include "client/common/SharedGlobals.h"
#include "model/LogSettings.h"
#include "platform/EndingLock.h"
#include "transport/Identifiers.h"

namespace Drive::Bilog {

namespace {

using Origin = std::shared_ptr<const EventOrigin>;

bool IsSame(const EventOrigin& a, const EventOrigin& b) {
  return std::tie(a.userId, a.deviceId, a.appVersion, a.brand) ==
         std::tie(b.userId, b.deviceId, b.appVersion, b.brand);
}

// The last two origins: the disk type, which is part of them, changes to and fro with the codes of BI events.
class Origins {
 public:
  // Empty when values have changed since the last Add.
  Origin Find(std::uint64_t changes) const {
    const auto lock = Platform::LockUnlessEnding(m_mutex);
    return lock.owns_lock() && m_changes == changes ? m_last[0] : nullptr;
  }

  // Remembers `fresh`, or the same one that was there before; returns which.
  Origin Add(Origin fresh, std::uint64_t changes) {
    Origin forgotten;  // let go of behind the unlocking
    const auto lock = Platform::LockUnlessEnding(m_mutex);
    if (!lock.owns_lock()) {
      return fresh;
    }
    m_changes = changes;
    if (m_last[0] == nullptr || !IsSame(*m_last[0], *fresh)) {
      std::swap(m_last[0], m_last[1]);
    }
    if (m_last[0] == nullptr || !IsSame(*m_last[0], *fresh)) {
      forgotten = std::exchange(m_last[0], std::move(fresh));
    }
    return m_last[0];
  }

 private:
  mutable std::mutex m_mutex;  // guards what follows
  std::uint64_t m_changes = 0;
  std::array<Origin, 2> m_last;  // the one in force first
};

}  // namespace

Origin EventOrigin::Current() {
  static Origins& origins = *new Origins;              // callers may record until the process is gone
  const std::uint64_t changes = SharedValueChanges();  // before the values, see there
  Origin known = origins.Find(changes);
  if (known != nullptr) {
    return known;
  }
  return origins.Add(std::make_shared<const EventOrigin>(EventOrigin{
                         LogSettings::GetInstance().GetUserId(), g_deviceId, g_pcVersion, CurrentBrand()}),
                     changes);
}

EventMoment EventMoment::Now() {
  const Platform::Clock& clock = Platform::CurrentClock();
  return {EventOrigin::Current(), clock.NowLocal(), clock.NowMilliseconds(), MakeRandomDigits()};
}

void EventMoment::Describe(UserLog& record) const {
  record.set_Time(MakeRecordTime(localTime));
  record.set_UserId(origin->userId);
  record.set_DevId(origin->deviceId);
  record.set_Appversion(origin->appVersion);
}

std::wstring EventMoment::LogId(int number) const { return MakeLogId(number, milliseconds, digits); }

}  // namespace Drive::Bilog
