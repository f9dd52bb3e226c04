// Fuzz.h - what the fuzz targets share: taking values from an input, promises, and what becomes of records.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "collector/Request.h"
#include "drivelog/UserLog.h"

// Each target's one function; a finding ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Drive::Testing {

// Values from the front of an input; empty or 0 behind its end.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : m_left(reinterpret_cast<const char*>(data), size) {}

  bool IsEmpty() const { return m_left.empty(); }
  std::string Bytes(std::size_t count) {
    std::string bytes = m_left.substr(0, count);
    m_left.erase(0, count);
    return bytes;
  }
  std::uint8_t Byte() { return Number<std::uint8_t>(); }
  template <typename Type>
  Type Number() {
    Type number{};
    const std::string bytes = Bytes(sizeof number);
    std::memcpy(&number, bytes.data(), bytes.size());
    return number;
  }
  // Up to the next byte 0xFF, which no UTF-8 text has.
  std::string Part() {
    std::string part = Bytes(m_left.find('\xFF'));
    Bytes(1);
    return part;
  }
  std::string Rest() { return Bytes(std::string::npos); }

 private:
  std::string m_left;
};

// Ends the process with a message unless it holds.
void Promise(bool holds, const std::string& what);

// Makes the channel's request of the records and has the collector check it: that takes every record, with
// the texts that it has.
void PromiseDelivery(Collection::Channel channel, const std::vector<Bilog::UserLog>& records);

}  // namespace Drive::Testing
