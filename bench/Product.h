// Product.h - the library as a product sets it up, with a real collector on loopback, and records to store.
#pragma once

#include <cstdint>

#include "collector/Collector.h"
#include "drivelog/BiDataBase.h"
#include "platform/Clock.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/ProductFiles.h"
#include "tests/support/TempFolder.h"

namespace Drive::Bench {

using Collection::Channel;

// A clock that stands still between records, since records made in one go would share their times.
class StepClock final : public Platform::Clock {
 public:
  std::int64_t NowMilliseconds() const override { return m_now; }
  Platform::LocalTime NowLocal() const override;
  bool WaitFor(std::chrono::milliseconds duration, const Platform::WakeSignal& wake) override {
    return Platform::SystemClock().WaitFor(duration, wake);
  }
  void Advance(std::int64_t milliseconds) { m_now += milliseconds; }

 private:
  std::int64_t m_now = 1700000000123;
};

// One user's database and settings in a folder of their own; messages go to a function that drops them.
//
// Stored records are what the recording calls make of events with a map of five entries, between 20 ms and
// 5 s apart: 390 to 460 bytes of text with sizes, names, durations and trace identifiers that differ.
// Lifetime: one at a time.
class Product {
 public:
  Product();
  ~Product();

  Collection::Collector& Server() { return m_collector; }

  // Stores that many records, through the channel's own queue.
  void Store(Channel channel, int count);

  // The oldest ones; as many as a request takes unless another number is given.
  static std::vector<Bilog::UserLog> Oldest(Channel channel) { return Oldest(channel, BatchSize(channel)); }
  static std::vector<Bilog::UserLog> Oldest(Channel channel, int count);

  // What the library does unless the client says otherwise.
  static int BatchSize(Channel channel) { return channel == Channel::kMaintenance ? 40 : 100; }

  // Bytes of a record's texts, all of which are ASCII.
  static std::size_t TextBytes(const Bilog::UserLog& record);

 private:
  Testing::TempFolder m_folder;
  Testing::FakeSystem m_system;
  StepClock m_clock;
  Collection::Collector m_collector;
};

}  // namespace Drive::Bench
