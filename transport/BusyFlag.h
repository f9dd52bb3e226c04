// BusyFlag.h - marks an upload cycle as running, whatever way it ends.
#pragma once

namespace Drive::Bilog {

// Clears an "idle" flag for its own lifetime, so that an exception cannot leave a channel dead.
class BusyFlag {
 public:
  explicit BusyFlag(bool& idle) : m_idle(idle) { m_idle = false; }
  ~BusyFlag() { m_idle = true; }
  BusyFlag(const BusyFlag&) = delete;
  BusyFlag& operator=(const BusyFlag&) = delete;

 private:
  bool& m_idle;
};

}  // namespace Drive::Bilog
