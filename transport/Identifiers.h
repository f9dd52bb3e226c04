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

// The local time as records carry it: 2024-03-05 07:08:09.045.
std::wstring MakeRecordTime();

// Identifier of one record: 7_11_1700000000123_48213077.
std::wstring MakeRandomLogId(int number);

// A code of less than five characters padded with "0" to five, with "004_" before it. One of five or more, or
// with the prefix already, is kept as it is.
std::wstring MakeResultCode(const std::wstring& code);

// Decimal text of at least `width` characters, padded with "0".
std::string ZeroPadded(std::uint32_t value, std::size_t width);

}  // namespace Drive::Bilog
