// FileHepler.h - the few questions that are asked about files.
#pragma once

#include <cstdint>
#include <string>

namespace Drive {

// Thread-safety: every operation may be called from any thread. Nothing throws.
class FileHepler {
 public:
  // True for anything that is there, folders included.
  static bool CheckFileExist(const std::wstring& path);

  // Size in bytes; 0 for a file that is missing or cannot be read.
  static std::uint64_t GetLocalFileSize(const std::wstring& path);

  // True when the file was there and is gone.
  static bool DeleteLocalFile(const std::wstring& path);
};

}  // namespace Drive
