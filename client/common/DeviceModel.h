// DeviceModel.h - the model of the machine.
#pragma once

#include <cstddef>

namespace Drive {

// Writes the model as NUL-terminated UTF-8 text into a buffer of `size` bytes, cut at a character boundary
// if need be; "Unknown" when the system does not tell.
void GetDeviceModel(char* buffer, std::size_t size);

}  // namespace Drive
