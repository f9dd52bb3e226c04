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
Fields Total(const std::wstring& count, const std::wstring& size) {
  return {{L"count", count}, {L"size", size}};
}

TEST(CountOperationLogTest, SumsFilesByCategory) {
  Totals totals = {{L"Photo", Total(L"", L"5")}};
  CountOperationLog({File(L"mp3", L"10"),
                     File(L"MP3", L" 5 bytes"),
                     File(L"webm", L"+7"),
                     File(L"xyz", L"?"),
                     {{L"suf", L"exe"}},
                     File(L"Csv", L"-3"),
                     File(L"jpg", L"1")},
                    totals);
  EXPECT_EQ(totals, (Totals{{L"Movie", Total(L"1", L"7")},
                            {L"Music", Total(L"2", L"15")},
                            {L"Photo", Total(L"1", L"6")},
                            {L"Text", Total(L"1", L"-3")}}));
}

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
    Fields file;
    Fields before;
    std::string thrown;
  } kCases[] = {
      {File(L"pdf", L"2147483646"), Total(L"1", L"0"), "nothing"},
      {File(L"pdf", L"2147483647"), Total(L"1", L"0"), kRange},
      {File(L"pdf", std::wstring(40, L'9')), Total(L"1", L"0"), kRange},
      {File(L"pdf", L"-2147483649"), Total(L"1", L"0"), kRange},
      {File(L"pdf", L"1"), Total(L"2147483646", L"0"), kRange},
      {File(L"pdf", L"large"), Total(L"1", L"0"), kText},
      {File(L"pdf", L""), Total(L"1", L"0"), kText},
      {File(L"pdf", L"1"), Total(L"1", L"x"), kText},
      {{{L"suf", L"pdf"}}, Total(L"1", L"0"), kKey},
      {{{L"size", L"1"}}, Total(L"1", L"0"), kKey},
  };
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    const Totals before = {{L"Text", kCases[i].before}};
    Totals totals = before;
    EXPECT_EQ(WhatIsThrown({File(L"txt", L"1"), kCases[i].file}, totals), kCases[i].thrown) << i;
    EXPECT_EQ(totals == before, kCases[i].thrown != "nothing") << i;
  }
}

}  // namespace
}  // namespace Drive::OperateLog
