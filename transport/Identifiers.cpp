// Identifiers.cpp - identifiers of requests and records, time stamps and result codes.
#include "transport/Identifiers.h"

#include <atomic>
#include <exception>
#include <random>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"

namespace Drive::Bilog {
namespace {

constexpr std::size_t kResultCodeLength = 5;
constexpr const wchar_t* kResultCodePrefix = L"004_";

std::uint64_t MakeSeed() {
  try {
    std::random_device device;
    return (static_cast<std::uint64_t>(device()) << 32) ^ device();
  } catch (const std::exception&) {  // a machine without a source of randomness
    return static_cast<std::uint64_t>(Platform::CurrentClock().NowMilliseconds());
  }
}

std::string Padded(int value, std::size_t width) {
  return ZeroPadded(static_cast<std::uint32_t>(value), width);
}

// Of characters that all alphabets have.
std::wstring Widened(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

std::string MakeRequestId() { return TypeConvert::UnicodeToUTF8(g_deviceId) + GetLocalTimeString(); }

std::string GetLocalTimeString() {
  const Platform::LocalTime now = Platform::CurrentClock().NowLocal();
  return std::to_string(now.year) + Padded(now.month, 2) + Padded(now.day, 2) + Padded(now.hour, 2) +
         Padded(now.minute, 2) + Padded(now.second, 2) + Padded(now.millisecond, 3);
}

std::wstring MakeRecordTime() { return MakeRecordTime(Platform::CurrentClock().NowLocal()); }

std::wstring MakeRecordTime(const Platform::LocalTime& time) {
  std::string text = std::to_string(time.year);
  const auto append = [&text](char separator, int value, std::size_t width) {
    text.append(1, separator).append(Padded(value, width));
  };
  append('-', time.month, 2);
  append('-', time.day, 2);
  append(' ', time.hour, 2);
  append(':', time.minute, 2);
  append(':', time.second, 2);
  append('.', time.millisecond, 3);
  return Widened(text);
}

std::wstring MakeRandomLogId(int number) {
  return MakeLogId(number, Platform::CurrentClock().NowMilliseconds(), MakeRandomDigits());
}

std::wstring MakeLogId(int number, std::int64_t milliseconds, std::uint32_t digits) {
  return Widened(std::to_string(number) + "_11_" + std::to_string(milliseconds) + "_" +
                 std::to_string(digits));
}

// SplitMix64: a counter and a mixing of its bits. One for all threads, so that a thread's first call pays for
// no seeding.
std::uint32_t MakeRandomDigits() {
  static std::atomic<std::uint64_t> counter{MakeSeed()};
  std::uint64_t bits = counter += 0x9E3779B97F4A7C15;
  bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
  bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
  bits ^= bits >> 31;
  return static_cast<std::uint32_t>(10000000 + bits % 90000000);
}

std::wstring MakeResultCode(const std::wstring& code) {
  const std::wstring prefix = kResultCodePrefix;
  if (code.size() >= kResultCodeLength || code.compare(0, prefix.size(), prefix) == 0) {
    return code;
  }
  return prefix + std::wstring(kResultCodeLength - code.size(), L'0') + code;
}

std::string ZeroPadded(std::uint32_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  return digits.size() >= width ? digits : std::string(width - digits.size(), '0') + digits;
}

}  // namespace Drive::Bilog
