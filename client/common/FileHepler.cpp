// FileHepler.cpp - questions about files, on std::filesystem.
#include "client/common/FileHepler.h"

#include <filesystem>
#include <system_error>

#include "client/common/FilePath.h"

namespace Drive {

namespace {

// Runs `question` on the path; `otherwise` where the system cannot even take the text as a path.
template <typename Answer, typename Question>
Answer Ask(const std::wstring& path, Answer otherwise, const Question& question) {
  try {
    std::error_code error;
    const Answer answer = question(FilePath(path), error);
    return error ? otherwise : answer;
  } catch (const std::exception&) {
    return otherwise;
  }
}

}  // namespace

bool FileHepler::CheckFileExist(const std::wstring& path) {
  return Ask(path, false, [](const auto& file, auto& error) { return std::filesystem::exists(file, error); });
}

std::uint64_t FileHepler::GetLocalFileSize(const std::wstring& path) {
  return Ask(path, std::uint64_t{0}, [](const auto& file, auto& error) {
    return static_cast<std::uint64_t>(std::filesystem::file_size(file, error));
  });
}

bool FileHepler::DeleteLocalFile(const std::wstring& path) {
  return Ask(path, false, [](const auto& file, auto& error) {
    return !std::filesystem::is_directory(file, error) && std::filesystem::remove(file, error);
  });
}

}  // namespace Drive
