// Identifiers.cpp - identifiers of requests and records, time stamps and result codes.
#include "transport/Identifiers.h"

#include <exception>
#include <random>

#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"

namespace Drive::Bilog {
namespace {

constexpr std::size_t kResultCodeLength = 5;
constexpr const wchar_t* kResultCodePrefix = L"004_";

std::mt19937_64 MakeGenerator() {
  try {
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device()};
    return std::mt19937_64(seed);
  } catch (const std::exception&) {  // a machine without a source of randomness
    thread_local const int tellsThreadsApart = 0;
    const auto time = static_cast<std::uint64_t>(Platform::CurrentClock().NowMilliseconds());
    return std::mt19937_64(time ^ reinterpret_cast<std::uintptr_t>(&tellsThreadsApart));
  }
}

// Eight decimal digits, the first of which is never 0.
std::string MakeRandomDigits() {
  thread_local std::mt19937_64 generator = MakeGenerator();
  return std::to_string(std::uniform_int_distribution<int>(10000000, 99999999)(generator));
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

std::wstring MakeRecordTime() {
  const Platform::LocalTime now = Platform::CurrentClock().NowLocal();
  std::string text = std::to_string(now.year);
  const auto append = [&text](char separator, int value, std::size_t width) {
    text.append(1, separator).append(Padded(value, width));
  };
  append('-', now.month, 2);
  append('-', now.day, 2);
  append(' ', now.hour, 2);
  append(':', now.minute, 2);
  append(':', now.second, 2);
  append('.', now.millisecond, 3);
  return Widened(text);
}

std::wstring MakeRandomLogId(int number) {
  return Widened(std::to_string(number) + "_11_" +
                 std::to_string(Platform::CurrentClock().NowMilliseconds()) + "_" + MakeRandomDigits());
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
