// FakeSystem.h - an operating system that answers what a test wants it to.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/System.h"

namespace Drive::Testing {

class FakeSystem : public Platform::System {
 public:
  std::optional<Platform::OsVersion> version = Platform::OsVersion{2, 10, 0, 22631, 0, true};
  std::uint32_t architecture = Platform::kArchitectureX64;
  std::wstring roaming = TemporaryFolder();
  std::wstring local = TemporaryFolder();
  std::wstring programFiles = L"programs";
  std::string model = "Test Machine";

  std::optional<Platform::OsVersion> Version() const override { return version; }
  std::uint32_t NativeArchitecture() const override { return architecture; }
  std::uint32_t ProcessArchitecture() const override { return architecture; }
  bool IsServerR2() const override { return false; }
  std::wstring RoamingAppDataFolder() const override { return roaming; }
  std::wstring LocalAppDataFolder() const override { return local; }
  std::wstring ProgramFilesFolder() const override { return programFiles; }
  std::wstring ShortPath(const std::wstring& path) const override { return path; }
  int CreateDirectoryLevels(const std::wstring& path) const override {
    return Platform::RealSystem().CreateDirectoryLevels(path);
  }
  std::string DeviceModel() const override { return model; }

 private:
  // Never a folder of the tree that the tests are run in.
  static std::wstring TemporaryFolder() { return std::filesystem::temp_directory_path().wstring(); }
};

}  // namespace Drive::Testing
