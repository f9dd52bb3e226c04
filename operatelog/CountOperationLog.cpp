// CountOperationLog.cpp - sums files by category.
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "drivelog/OperationLogger.h"
#include "operatelog/FileCategories.h"

namespace Drive::OperateLog {

namespace {

using Fields = std::map<std::wstring, std::wstring>;

bool Fits32Bits(std::int64_t value) {
  using Limits = std::numeric_limits<std::int32_t>;
  return value >= Limits::min() && value <= Limits::max();
}

std::int64_t Checked(std::int64_t value) {
  if (!Fits32Bits(value)) {
    throw std::out_of_range("stoi argument out of range");
  }
  return value;
}

// The standard conversion by hand, since the texts of its exceptions differ from library to library, and
// what counts as white space and as a digit from locale to locale.
std::int64_t ToNumber(const std::wstring& text) {
  std::size_t i = text.find_first_not_of(L" \t\n\v\f\r");
  const bool isNegative = i < text.size() && text[i] == L'-';
  if (isNegative || (i < text.size() && text[i] == L'+')) {
    ++i;
  }
  const auto isDigit = [&text](std::size_t at) {
    return at < text.size() && text[at] >= L'0' && text[at] <= L'9';
  };
  if (!isDigit(i)) {
    throw std::invalid_argument("invalid stoi argument");
  }
  std::int64_t value = 0;
  for (; isDigit(i); ++i) {
    const std::int64_t digit = text[i] - L'0';
    value = Checked(value * 10 + (isNegative ? -digit : digit));
  }
  return value;
}

const std::wstring& At(const Fields& fields, const wchar_t* key) {
  const auto found = fields.find(key);
  if (found == fields.end()) {
    throw std::out_of_range("invalid map<K, T> key");
  }
  return found->second;
}

std::wstring UpperCase(std::wstring text) {
  for (wchar_t& c : text) {
    if (c >= L'a' && c <= L'z') {
      c = static_cast<wchar_t>(c - L'a' + L'A');
    }
  }
  return text;
}

void Add(std::wstring& total, std::int64_t value) {
  const std::int64_t before = total.empty() ? 0 : ToNumber(total);
  total = std::to_wstring(Checked(before + value));
}

}  // namespace

void CountOperationLog(const std::vector<Fields>& files, std::map<std::wstring, Fields>& totals) {
  std::map<std::wstring, Fields> sums = totals;
  for (const Fields& file : files) {
    const std::wstring_view category = FileCategoryOf(UpperCase(At(file, L"suf")));
    if (category.empty()) {
      continue;
    }
    Fields& sum = sums[std::wstring(category)];
    Add(sum[L"count"], 1);
    Add(sum[L"size"], ToNumber(At(file, L"size")));
  }
  totals = std::move(sums);
}

}  // namespace Drive::OperateLog
