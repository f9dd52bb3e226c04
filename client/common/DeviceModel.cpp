// DeviceModel.cpp - the model of the machine, as text of bounded size.
#include "client/common/DeviceModel.h"

#include <utf8.h>

#include <cstring>
#include <string>

#include "platform/System.h"

namespace Drive {

void GetDeviceModel(char* buffer, std::size_t size) {
  if (buffer == nullptr || size == 0) {
    return;
  }
  std::string model = utf8::replace_invalid(Platform::CurrentSystem().DeviceModel());
  if (model.empty()) {
    model = "Unknown";
  }
  std::size_t length = model.size();
  if (length > size - 1) {
    length = size - 1;
    while (length > 0 && (static_cast<unsigned char>(model[length]) & 0xC0) == 0x80) {
      --length;
    }
  }
  std::memcpy(buffer, model.data(), length);
  buffer[length] = '\0';
}

}  // namespace Drive
