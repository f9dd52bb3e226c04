// OperateLogCountTest.cpp - sums of files by category.
#include <gtest/gtest.h>

#include <stdexcept>

#include "drivelog/OperationLogger.h"

namespace Drive::OperateLog {
namespace {

using Fields = std::map<std::wstring, std::wstring>;
using Totals = std::map<std::wstring, Fields>;

Fields File(const std::wstring& suffix, const std::wstring& size) {
  return {{L"suf", suffix}, {L"size", size}};
}

TEST(CountOperationLogTest, SumsFilesByCategory) {
  Totals totals = {{L"Photo", {{L"count", L""}, {L"size", L"5"}}}};
  CountOperationLog({File(L"mp3", L"10"),
                     File(L"MP3", L" 5 bytes"),
                     File(L"webm", L"+7"),
                     File(L"xyz", L"?"),
                     {{L"suf", L"exe"}},
                     File(L"Csv", L"-3"),
                     File(L"jpg", L"1")},
                    totals);
  EXPECT_EQ(totals, (Totals{{L"Movie", {{L"count", L"1"}, {L"size", L"7"}}},
                            {L"Music", {{L"count", L"2"}, {L"size", L"15"}}},
                            {L"Photo", {{L"count", L"1"}, {L"size", L"6"}}},
                            {L"Text", {{L"count", L"1"}, {L"size", L"-3"}}}}));
}

// The exception's type and text, or "nothing".
std::string WhatIsThrown(const std::vector<Fields>& files, Totals& totals) {
  try {
    CountOperationLog(files, totals);
  } catch (const std::out_of_range& error) {
    return std::string("out_of_range: ") + error.what();
  } catch (const std::invalid_argument& error) {
    return std::string("invalid_argument: ") + error.what();
  }
  return "nothing";
}

TEST(CountOperationLogTest, ThrowsForWhatItCannotCountAndLeavesTheTotals) {
  const std::string kRange = "out_of_range: stoi argument out of range";
  const std::string kText = "invalid_argument: invalid stoi argument";
  const std::string kKey = "out_of_range: invalid map<K, T> key";
  const struct {
    const char* name;
    Fields file;
    Totals before;
    std::string thrown;
  } kCases[] = {
      {"largest total", File(L"pdf", L"2147483646"), {}, "nothing"},
      {"total too large", File(L"pdf", L"2147483647"), {}, kRange},
      {"size too large", File(L"pdf", L"2147483648"), {}, kRange},
      {"size of many digits", File(L"pdf", std::wstring(40, L'9')), {}, kRange},
      {"size too small", File(L"pdf", L"-2147483649"), {}, kRange},
      {"count too large", File(L"pdf", L"0"), {{L"Text", {{L"count", L"2147483647"}}}}, kRange},
      {"no digits", File(L"pdf", L"large"), {}, kText},
      {"sign only", File(L"pdf", L" -"), {}, kText},
      {"empty size", File(L"pdf", L""), {}, kText},
      {"total without digits", File(L"pdf", L"1"), {{L"Text", {{L"size", L"x"}}}}, kText},
      {"no size", {{L"suf", L"pdf"}}, {}, kKey},
      {"no suffix", {{L"size", L"1"}}, {}, kKey},
  };
  for (const auto& each : kCases) {
    Totals totals = each.before;
    EXPECT_EQ(WhatIsThrown({File(L"txt", L"1"), each.file}, totals), each.thrown) << each.name;
    if (each.thrown != "nothing") {
      EXPECT_EQ(totals, each.before) << each.name;
    }
  }
}

}  // namespace
}  // namespace Drive::OperateLog
