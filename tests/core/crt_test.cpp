#include "core/crt.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>

namespace corvane::core {
namespace {

TEST(Crt, LeadingIntegersSaturateAtTheirWidth) {
  struct Case {
    std::wstring text;
    std::int32_t asLong;
    std::int64_t asInt64;
  } const cases[] = {
      {L"42", 42, 42},
      {L"  \t-17xyz", -17, -17},
      {L"\v\f\r\n7", 7, 7},
      {L"+8", 8, 8},
      {L"0042", 42, 42},
      {L"-0", 0, 0},
      {L"12.9", 12, 12},
      {L"1e5", 1, 1},
      {L"0x1A", 0, 0},
      {L"", 0, 0},
      {L"abc", 0, 0},
      {L"- 5", 0, 0},
      {L"+-5", 0, 0},
      {L"  +", 0, 0},
      {L"\u00A012", 0, 0},  // a no-break space is not white space to the runtime
      {L"１２", 0, 0},        // nor are full-width digits digits
      {L"000000000000000000000000012", 12, 12},
      {L"2147483647", INT32_MAX, 2147483647},
      {L"2147483648", INT32_MAX, 2147483648LL},
      {L"-2147483648", INT32_MIN, -2147483648LL},
      {L"-2147483649", INT32_MIN, -2147483649LL},
      {L"9223372036854775807", INT32_MAX, INT64_MAX},
      {L"9223372036854775808", INT32_MAX, INT64_MAX},
      {L"-9223372036854775808", INT32_MIN, INT64_MIN},
      {L"-9223372036854775809", INT32_MIN, INT64_MIN},
      {L"99999999999999999999999999x", INT32_MAX, INT64_MAX},
      {L"-99999999999999999999", INT32_MIN, INT64_MIN},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(wtol(c.text), c.asLong) << c.text;
    EXPECT_EQ(leadingInteger(c.text), c.asLong) << c.text;
    EXPECT_EQ(wtoi64(c.text), c.asInt64) << c.text;
  }
}

TEST(Crt, UnsignedSixtyFourBitIds) {
  struct Case {
    std::wstring text;
    std::uint64_t value;
  } const cases[] = {
      {L"2130", 2130},
      {L" +5x", 5},
      {L"", 0},
      {L"x1", 0},
      {L"18446744073709551615", UINT64_MAX},
      {L"18446744073709551616", UINT64_MAX},
      {L"99999999999999999999999", UINT64_MAX},
      {L"-1", UINT64_MAX},  // negated modulo 2^64, as the runtime does
      {L"-2", UINT64_MAX - 1},
      {L"-18446744073709551616", UINT64_MAX},
  };
  for (const auto& c : cases) EXPECT_EQ(wtoui64(c.text), c.value) << c.text;
}

TEST(Crt, WcstodTakesTheLongestNumberPrefix) {
  const std::wstring manyZeros(400, L'0');
  struct Case {
    std::wstring text;
    double value;
    std::size_t consumed;
  } const cases[] = {
      {L"3.25", 3.25, 4},
      {L"  -.5e-3x", -0.0005, 8},
      {L"1e", 1, 1},
      {L"1e+", 1, 1},
      {L"1E-x", 1, 1},
      {L"1.e5", 1e5, 4},
      {L"5.", 5, 2},
      {L".5", 0.5, 2},
      {L"1e5.5", 1e5, 3},
      {L"3e+2x", 300, 4},
      {L".", 0, 0},
      {L".e1", 0, 0},
      {L"+", 0, 0},
      {L"- 5", 0, 0},
      {L"", 0, 0},
      {L"   ", 0, 0},
      {L"abc", 0, 0},
      {L"\u00A05", 0, 0},
      {L"+7.", 7, 3},
      {L"12,5", 12, 2},  // the decimal separator is always '.'
      {L"\t\n4", 4, 3},
      {L" \t+3", 3, 4},
      {L"0x1p3", 8, 5},
      {L"0X10", 16, 4},
      {L"0x1.8p1", 3, 7},
      {L"0x.8", 0.5, 4},
      {L"0x1p", 1, 3},
      {L"0xg", 0, 1},  // "0" followed by other text
      {L"0x", 0, 1},
      {L"0x.p1", 0, 1},
      {L"0x1p-1074", 4.9406564584124654e-324, 9},
      {L"0x1p-1080", 0, 9},
      {L"0x1p1024", HUGE_VAL, 8},
      {L"1e400", HUGE_VAL, 5},
      {L"-1e400", -HUGE_VAL, 6},
      {L"1" + manyZeros, HUGE_VAL, 401},
      {L"1e-400", 0, 6},
      {L"0." + manyZeros + L"1", 0, 403},  // underflow without an exponent
      {L"0." + manyZeros + L"1e400", 1e-1, 407},
      {L"1e-310", 1e-310, 6},  // a denormal
      {L"4.9e-324", 4.9406564584124654e-324, 8},
      {L"1.7976931348623157e308", DBL_MAX, 22},
      {L"1.8e308", HUGE_VAL, 7},
      {L"0e999999999999", 0, 14},
      {L"12345678901234567890123", 1.2345678901234568e22, 23},
      {L"0.1000000000000000055511151231257827021181583404541015625", 0.1, 57},
      {L"INFINITY", HUGE_VAL, 8},
      {L"Infinit", HUGE_VAL, 3},
      {L"infx", HUGE_VAL, 3},
      {L"-inf", -HUGE_VAL, 4},
      {L"in", 0, 0},
      // Whole numbers either side of the fifteen digits read without the general parse.
      {L"900", 900, 3},
      {L"-007 mm", -7, 4},
      {L"999999999999999", 999999999999999.0, 15},
      {L"9007199254740993", 9007199254740992.0, 16},  // rounded to even, as the long way does
      {L"12e3", 12000, 4},
      {L"0x", 0, 1},
      {L"10x", 10, 2},
  };
  for (const auto& c : cases) {
    std::size_t consumed = 99;
    EXPECT_EQ(wcstod(c.text, &consumed), c.value) << c.text;
    EXPECT_EQ(consumed, c.consumed) << c.text;
    EXPECT_EQ(wtof(c.text), c.value) << c.text;
  }
}

TEST(Crt, WcstodKeepsTheSignOfZeroAndNotANumber) {
  struct Case {
    std::wstring text;
    bool nan;
    bool negative;
    std::size_t consumed;
  } const cases[] = {
      {L"-0", false, true, 2},
      {L"-0x", false, true, 2},
      {L"-1e-999", false, true, 7},
      {L"0", false, false, 1},
      {L"nan", true, false, 3},
      {L"NaN(1)", true, false, 6},
      {L"nan(abc_1)x", true, false, 10},
      {L"nan(", true, false, 3},
      {L"nan(a b)", true, false, 3},
      {L"-nan", true, true, 4},
  };
  for (const auto& c : cases) {
    std::size_t consumed = 99;
    const double value = wcstod(c.text, &consumed);
    EXPECT_EQ(std::isnan(value), c.nan) << c.text;
    EXPECT_EQ(std::signbit(value), c.negative) << c.text;
    if (!c.nan) {
      EXPECT_EQ(value, 0.0) << c.text;
    }
    EXPECT_EQ(consumed, c.consumed) << c.text;
  }
}

}  // namespace
}  // namespace corvane::core
