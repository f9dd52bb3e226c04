// Identifiers.h - identifiers of requests and records, time stamps and result codes.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Clock.h"

namespace Drive::Bilog {

// Device identifier and local time: A1B220240305070809012.
std::string MakeRequestId();

// The local time without separators: 20240305070809012.
std::string GetLocalTimeString();

// A local time as records carry it, the current one when none is given: 2024-03-05 07:08:09.045.
std::wstring MakeRecordTime();
std::wstring MakeRecordTime(const Platform::LocalTime& time);

// Identifier of one record: 7_11_1700000000123_48213077. From the number, the milliseconds since 1970-01-01
// UTC and the random digits, or made up of the current time and new digits.
std::wstring MakeRandomLogId(int number);
std::wstring MakeLogId(int number, std::int64_t milliseconds, std::uint32_t digits);

// Eight decimal digits, the first of which is never 0.
std::uint32_t MakeRandomDigits();

// A code of less than five characters padded with "0" to five, with "004_" before it. One of five or more, or
// with the prefix already, is kept as it is.
std::wstring MakeResultCode(const std::wstring& code);

// Decimal text of at least `width` characters, padded with "0".
std::string ZeroPadded(std::uint32_t value, std::size_t width);

}  // namespace Drive::Bilog
