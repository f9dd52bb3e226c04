// ReadSyncConfigFile.cpp - where the client keeps its configuration.
#include "client/common/ReadSyncConfigFile.h"

#include "platform/System.h"

namespace Drive::ReadSyncConfigFile {

std::wstring ReadSyncConfigFileIf::GetConfigFilePath() {
  using Platform::kPathSeparator;
  return Platform::CurrentSystem().RoamingAppDataFolder() + kPathSeparator + APP_NAME + kPathSeparator +
         L"SyncConfig.ini";
}

}  // namespace Drive::ReadSyncConfigFile
