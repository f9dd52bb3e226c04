// System.h - what the library asks the operating system about itself, behind one seam that tests can replace.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Drive::Platform {

// The version record of Windows.
struct OsVersion {
  std::uint32_t platformId = 2;  // 2: NT, 1: the line before it
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  std::uint32_t servicePackMajor = 0;
  bool isWorkstation = true;
};

// Processor architectures as Windows numbers them.
inline constexpr std::uint32_t kArchitectureX86 = 0;
inline constexpr std::uint32_t kArchitectureItanium = 6;
inline constexpr std::uint32_t kArchitectureX64 = 9;
inline constexpr std::uint32_t kArchitectureArm64 = 12;

// Thread-safety: every operation may be called from any thread.
class System {
 public:
  virtual ~System() = default;

  // Nothing where the system keeps no such record.
  virtual std::optional<OsVersion> Version() const = 0;

  // Architecture of the machine, and the one that it shows to this process.
  virtual std::uint32_t NativeArchitecture() const = 0;
  virtual std::uint32_t ProcessArchitecture() const = 0;

  // The metric that tells release 2 of a server version.
  virtual bool IsServerR2() const = 0;

  // Folders, without a trailing separator; empty when the system does not tell.
  virtual std::wstring RoamingAppDataFolder() const = 0;
  virtual std::wstring LocalAppDataFolder() const = 0;
  virtual std::wstring ProgramFilesFolder() const = 0;

  // The short form of a path where the system has one; the path itself otherwise.
  virtual std::wstring ShortPath(const std::wstring& path) const = 0;

  // Creates a folder with every missing level. 0 on success, else the system's code (an existing folder is a
  // failure as well).
  virtual int CreateDirectoryLevels(const std::wstring& path) const = 0;

  // Model of the machine, such as its product name; empty when unknown.
  virtual std::string DeviceModel() const = 0;
};

// Separator of the levels of a composed path: L"\\" on Windows, L"/" elsewhere.
extern const wchar_t* const kPathSeparator;

// The address of a local endpoint (named pipe, local socket) of that name, as nng writes it. Only this
// user's processes reach it; empty when there is no such place.
std::string LocalEndpoint(const std::string& name);

// The system in force: the real one, unless a test installed its own.
const System& CurrentSystem();

// Puts `system` in force, or the real one again (nullptr). For tests, while no thread of the library runs.
void InstallSystem(const System* system);

// The real one.
const System& RealSystem();

}  // namespace Drive::Platform
