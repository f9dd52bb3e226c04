// LoggerUtility.cpp - names and places that the client's loggers share.
#include "client/log/LoggerUtility.h"

#include <mutex>
#include <utility>

#include "platform/EndingLock.h"
#include "platform/System.h"

namespace Drive {

namespace {

struct UplogTypes {
  std::mutex mutex;  // guards names
  std::map<int, std::string> names;
};

UplogTypes& Types() {
  static UplogTypes& types = *new UplogTypes;  // callers may record until the process is gone
  return types;
}

}  // namespace

std::wstring LoggerUtility::GetLocalAppDataPath() { return Platform::CurrentSystem().LocalAppDataFolder(); }

std::string LoggerUtility::GetUplogType(int code) {
  UplogTypes& types = Types();
  const auto lock = Platform::LockUnlessEnding(types.mutex);
  if (!lock.owns_lock()) {
    return std::to_string(code);
  }
  const auto found = types.names.find(code);
  return found == types.names.end() ? std::to_string(code) : found->second;
}

void LoggerUtility::SetUplogTypes(std::map<int, std::string> names) {
  UplogTypes& types = Types();
  const std::lock_guard<std::mutex> lock(types.mutex);
  types.names = std::move(names);
}

}  // namespace Drive
