#include "plugin/formula/exprvalue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "core/crt.h"
#include "core/printf.h"

namespace corvane {
namespace {

TEST(ExprValue, NumericText) {
  struct Case {
    const wchar_t* text;
    bool numeric;
  } const cases[] = {
      {L"0", true},      {L"12", true},     {L"-12.5", true},  {L"+3", true},      {L".5", true},
      {L"1E+05", true},  {L"1.23457E+06", true},                {L"1E", true},      {L"1E+", true},
      {L"+", true},      {L"-", true},      {L".", true},      {L"E", true},       {L"E+", true},
      {L"1E+5.5", true},  // the point may follow the exponent; the reading stops there
      {L"", false},      {L"1E-05", false}, {L"1e5", false},   {L"1E5", false},    {L"1e+05", false},
      {L"1.2.3", false}, {L"1E+5E+5", false}, {L"1-2", false}, {L"+-1", false},    {L"--2", false},
      {L" 1", false},    {L"1 ", false},    {L"TRUE", false},  {L"\x13" L"5", false}, {L"12abc", false},
      {L"1,5", false},   {L"\uff11", false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsNumericText(c.text), c.numeric) << c.text;
}

TEST(ExprValue, BooleansNumbersAndMarkers) {
  struct Case {
    const wchar_t* text;
    bool boolean;
    bool isTrue;
    double number;
    const wchar_t* stripped;
  } const cases[] = {
      {L"TRUE", true, true, 0, L"TRUE"},
      {L"true", true, true, 0, L"true"},
      {L"False", true, false, 0, L"False"},
      {L"TRUE ", false, false, 0, L"TRUE "},
      {L"1", false, false, 1, L"1"},
      {L"1E+05", false, false, 100000, L"1E+05"},
      {L"1E", false, false, 1, L"1E"},
      {L"-", false, false, 0, L"-"},
      {L"  7abc", false, false, 7, L"  7abc"},
      {L"\x13" L"5", false, false, 0, L"5"},
      {L"\x13\x13" L"ab\x13", false, false, 0, L"ab"},
      {L"a\x13" L"b", false, false, 0, L"a\x13" L"b"},
      {L"\x13", false, false, 0, L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsBooleanText(c.text), c.boolean) << c.text;
    EXPECT_EQ(IsTrueText(c.text), c.isTrue) << c.text;
    EXPECT_EQ(TextToNumber(c.text), c.number) << c.text;
    EXPECT_EQ(StripStringMarkers(c.text), c.stripped) << c.text;
  }
}

TEST(ExprValue, NumbersArePrintedWithPercentG) {
  struct Case {
    double value;
    const wchar_t* text;
  } const cases[] = {
      {7, L"7"},           {2.5, L"2.5"},        {-0.5, L"-0.5"},         {1.0 / 3, L"0.333333"},
      {100000, L"100000"}, {999999, L"999999"}, {1000000, L"1E+06"},     {1234567, L"1.23457E+06"},
      {0.0001, L"0.0001"}, {0.00001, L"1E-05"}, {1e100, L"1E+100"},      {123456.7, L"123457"},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatNumber(c.value), c.text) << c.value;
}

TEST(ExprValue, WholeNumbersBelowThePrecisionAreTheirDigits) {
  struct Case {
    double value;
    int precision;
    const wchar_t* text;  // null: left to the general conversion
  } const cases[] = {
      {0, 6, L"0"},
      {-0.0, 6, nullptr},
      {42, 6, L"42"},
      {-42, 6, L"-42"},
      {999999, 6, L"999999"},
      {1e6, 6, nullptr},
      {-999999, 6, L"-999999"},
      {2.5, 6, nullptr},
      {999999999999999, 15, L"999999999999999"},
      {1e15, 15, nullptr},
      {-2147483648.0, 15, L"-2147483648"},
      {std::nan(""), 15, nullptr},
      {HUGE_VAL, 15, nullptr},
      {7, 0, nullptr},
      {7, 16, nullptr},
  };
  for (const auto& c : cases) {
    const auto text = WholeNumberText(c.value, c.precision);
    if (!c.text) {
      EXPECT_FALSE(text) << c.value << " " << c.precision;
      continue;
    }
    ASSERT_TRUE(text) << c.value << " " << c.precision;
    EXPECT_EQ(*text, c.text);
    EXPECT_EQ(*text, core::format(c.precision == 6 ? L"%G" : L"%.15G", c.value)) << c.value;
  }
}

TEST(ExprValue, FastPathsAgreeWithTheRuntimeConversions) {
  // Reading and printing numbers take shortcuts for the common cases; they must give exactly
  // what the C-runtime conversions give, on every kind of value.
  std::mt19937_64 random(20240601);
  std::vector<double> values = {0.0, -0.0, 1.0, -1.0, 0.5, 2.5, 31.5, 999999.0, 999999.5, 1e6, -1e6, 0.0001,
                                0.00001, 123456.7, 1.0 / 3, 2.0 / 3, 1e-300, 1e300, 4.35, 0.1 + 0.2,
                                std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(),
                                HUGE_VAL, -HUGE_VAL, std::nan("")};
  for (int i = 0; i < 2000; ++i) {
    const int exponent = static_cast<int>(random() % 40) - 20;
    const double mantissa = static_cast<double>(random() % 2000001) / 1000.0 - 1000.0;
    values.push_back(mantissa * std::pow(10.0, exponent));
    values.push_back(static_cast<double>(static_cast<std::int64_t>(random() % 4000001) - 2000000));
  }
  for (const double value : values) {
    EXPECT_EQ(FormatNumber(value), core::format(L"%G", value)) << value;
  }

  std::vector<std::wstring> texts = {L"0", L"-0", L"7", L"-7", L"007", L"1.", L".5", L"-.5", L"2.345", L"4.35",
                                     L"0.1", L"123456789012345", L"1234567890123456", L"12345678901234.5",
                                     L"0.000000000000001", L"9007199254740993", L"1.2.3", L"-", L".", L"1E+05",
                                     L"12abc", L" 5"};
  for (int i = 0; i < 2000; ++i) {
    std::wstring text = random() % 2 ? L"-" : L"";
    const int length = 1 + static_cast<int>(random() % 16);
    const int point = static_cast<int>(random() % (length + 1));
    for (int k = 0; k < length; ++k) {
      if (k == point) text += L'.';
      text += static_cast<wchar_t>(L'0' + random() % 10);
    }
    texts.push_back(text);
  }
  for (const auto& text : texts) {
    const double fast = TextToNumber(text);
    const double full = core::wcstod(text);
    EXPECT_TRUE(fast == full && std::signbit(fast) == std::signbit(full)) << text;
  }
}

}  // namespace
}  // namespace corvane
