// FileInfoGroups.cpp - the concatenation of a list of maps in groups of ten.
#include "operatelog/FileInfoGroups.h"

namespace Drive::OperateLog {

namespace {

constexpr std::size_t kGroupSize = 10;

void Append(std::wstring& text, const OperationLogger::Fields& fields) {
  text += L'{';
  for (const auto& [key, value] : fields) {
    text.append(L"\"").append(key).append(L"\":\"").append(value).append(L"\",");
  }
  if (!fields.empty()) {
    text.pop_back();
  }
  text += L'}';
}

}  // namespace

std::vector<std::wstring> MakeFileInfoGroups(const std::vector<OperationLogger::Fields>& list) {
  std::vector<std::wstring> groups;
  for (std::size_t first = 0; first + kGroupSize <= list.size(); first += kGroupSize) {
    std::wstring& text = groups.emplace_back();
    for (std::size_t i = first; i < first + kGroupSize; ++i) {
      text += i == first ? L'[' : L',';
      Append(text, list[i]);
    }
    text += L']';
  }
  return groups;
}

}  // namespace Drive::OperateLog
