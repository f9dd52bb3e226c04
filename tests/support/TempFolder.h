// TempFolder.h - a folder of one test, removed with everything in it when the test ends.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>

#include "client/log/TypeConvert.h"

namespace Drive::Testing {

class TempFolder {
 public:
  TempFolder() {
    static std::atomic<unsigned> counter{0};
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    m_path = std::filesystem::temp_directory_path() /
             ("drivelog-test-" + std::to_string(stamp) + "-" + std::to_string(counter++));
    std::filesystem::create_directories(m_path);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }
  // Of a file in the folder; its name is UTF-8.
  std::wstring Wide(const std::string& name) const { return TypeConvert::UTF8ToUnicode(Narrow(name)); }
  std::string Narrow(const std::string& name) const {
    return (m_path / std::filesystem::u8path(name)).make_preferred().u8string();
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace Drive::Testing
