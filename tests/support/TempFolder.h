// TempFolder.h - a folder of one test, removed with everything in it when the test ends.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>

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
  std::wstring Wide(const std::string& name) const { return (m_path / name).wstring(); }
  std::string Narrow(const std::string& name) const { return (m_path / name).u8string(); }

 private:
  std::filesystem::path m_path;
};

}  // namespace Drive::Testing
