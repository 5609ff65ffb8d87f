#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include "core/crt.h"
#include "core/printf.h"

namespace corvane::core {
namespace {

TEST(Crt, IntegerConversionsSaturateLikeTheRuntime) {
  struct Case {
    const wchar_t* text;
    std::int32_t asLong;
    std::int64_t asInt64;
  } const cases[] = {
      {L"42", 42, 42},
      {L"  \t-17xyz", -17, -17},
      {L"+8", 8, 8},
      {L"12.9", 12, 12},
      {L"1e5", 1, 1},
      {L"", 0, 0},
      {L"abc", 0, 0},
      {L"- 5", 0, 0},
      {L"2147483647", 2147483647, 2147483647},
      {L"2147483648", INT32_MAX, 2147483648LL},
      {L"-2147483648", INT32_MIN, -2147483648LL},
      {L"-2147483649", INT32_MIN, -2147483649LL},
      {L"99999999999999999999", INT32_MAX, INT64_MAX},
      {L"-99999999999999999999", INT32_MIN, INT64_MIN},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(wtol(c.text), c.asLong) << std::wstring(c.text).size();
    EXPECT_EQ(wtoi64(c.text), c.asInt64);
  }
  EXPECT_EQ(wtoui64(L"18446744073709551615"), UINT64_MAX);
  EXPECT_EQ(wtoui64(L"18446744073709551616"), UINT64_MAX);
}

TEST(Crt, WcstodTakesTheLongestNumberPrefix) {
  struct Case {
    const wchar_t* text;
    double value;
    std::size_t consumed;
  } const cases[] = {
      {L"3.25", 3.25, 4},     {L"  -.5e-3x", -0.0005, 8}, {L"1e", 1, 1},         {L"1.e5", 1e5, 4},
      {L".", 0, 0},           {L"abc", 0, 0},             {L"+7.", 7, 3},        {L"0x1p3", 8, 5},
      {L"0x", 0, 1},          {L"12,5", 12, 2},           {L"1e+", 1, 1},        {L"\t\n4", 4, 3},
      {L"1e400", HUGE_VAL, 5}, {L"-1e400", -HUGE_VAL, 6}, {L"1e-400", 0, 6},     {L"INFINITY", HUGE_VAL, 8},
      {L"-inf", -HUGE_VAL, 4},
  };
  for (const auto& c : cases) {
    std::size_t consumed = 99;
    EXPECT_EQ(wcstod(c.text, &consumed), c.value) << std::wstring(c.text).size();
    EXPECT_EQ(consumed, c.consumed) << std::wstring(c.text).size();
  }
  std::size_t consumed = 0;
  EXPECT_TRUE(std::isnan(wcstod(L"nan(1)", &consumed)));
  EXPECT_EQ(consumed, 6u);
}

TEST(Printf, MatchesTheCRuntime) {
  EXPECT_EQ(format(L"%G", 1234567.0), L"1.23457E+06");
  EXPECT_EQ(format(L"%G", 0.0001), L"0.0001");
  EXPECT_EQ(format(L"%G", 1e-5), L"1E-05");
  EXPECT_EQ(format(L"%g", 100000.0), L"100000");
  EXPECT_EQ(format(L"%g", 1e6), L"1e+06");
  EXPECT_EQ(format(L"%G", 0.1 + 0.2), L"0.3");
  EXPECT_EQ(format(L"%G", 12), L"12");  // integers widen for floating conversions
  EXPECT_EQ(format(L"%f", 6.6875), L"6.687500");
  EXPECT_EQ(format(L"%.2f|%8.3e|%-6d|%06d", 2.345, 1234.5, 42, -42), L"2.35|1.234e+03|42    |-00042");
  EXPECT_EQ(format(L"%08lx", -1), L"ffffffff");
  EXPECT_EQ(format(L"%08lX", 255), L"000000FF");
  EXPECT_EQ(format(L"%ld", 4294967297LL), L"1");  // long is 32 bits
  EXPECT_EQ(format(L"%lld %I64d", 4294967297LL, -4294967297LL), L"4294967297 -4294967297");
  EXPECT_EQ(format(L"%lu", -1), L"4294967295");
  EXPECT_EQ(format(L"[%5s|%-5s|%.2s]", L"ab", L"ab", L"abcdef"), L"[   ab|ab   |ab]");
  EXPECT_EQ(format(L"%c%c%d", L'A', 66, 3), L"AB3");
  EXPECT_EQ(format(L"100%% of %s", std::wstring(L"ÄÖ")), L"100% of ÄÖ");
  EXPECT_EQ(format(L"%*d|%-*d", 4, 7, 3, 1), L"   7|1  ");
  EXPECT_EQ(format(L"%%<\\_ObjId %ld>%%", 2130), L"%<\\_ObjId 2130>%");

  EXPECT_THROW(format(L"%d"), std::invalid_argument);
  EXPECT_THROW(format(L"%d", L"text"), std::invalid_argument);
  EXPECT_THROW(format(L"%s", 5), std::invalid_argument);
  EXPECT_THROW(format(L"%q", 5), std::invalid_argument);
  EXPECT_THROW(format(L"50%"), std::invalid_argument);
}

}  // namespace
}  // namespace corvane::core
