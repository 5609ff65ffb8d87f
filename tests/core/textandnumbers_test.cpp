#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include "core/printf.h"

namespace corvane::core {
namespace {

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
