#include "headless/format/valueformatter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "core/printf.h"

namespace corvane::headless {
namespace {

using host::AcValue;

// A drawing from the imperial template: decimal units, four places, DIMZIN 0.
constexpr DrawingUnits kTemplate{2, 4, 0, 0};

struct RealCase {
  double value;
  const wchar_t* format;
  const wchar_t* expected;
};

void expectReals(const RealCase* begin, const RealCase* end, const DrawingUnits& units) {
  for (const RealCase* c = begin; c != end; ++c) {
    EXPECT_EQ(formatValue(AcValue(c->value), c->format, units), c->expected)
        << c->value << " with \"" << std::wstring(c->format) << "\"";
  }
}
template <std::size_t N>
void expectReals(const RealCase (&cases)[N], const DrawingUnits& units = kTemplate) {
  expectReals(cases, cases + N, units);
}

TEST(ValueFormatter, EmptyFormatShowsEachTypeTheHostsWay) {
  struct Case {
    AcValue value;
    const wchar_t* expected;
  };
  const Case cases[] = {
      {AcValue(0.5), L"0.500000"},  // LUPREC 4 is not used
      {AcValue(6.6875), L"6.687500"},
      {AcValue(-2.0), L"-2.000000"},
      {AcValue(1e20), L"100000000000000000000.000000"},
      {AcValue(std::int32_t{5}), L"5"},
      {AcValue(std::int32_t{-123456}), L"-123456"},
      {AcValue(L"Table sample"), L"Table sample"},
      {AcValue(L""), L""},
      {AcValue(AcValue::Point3d{0, 0, 0}), L"0.000000, 0.000000, 0.000000"},
      {AcValue(AcValue::Point3d{1.5, -2, 1e-7}), L"1.500000, -2.000000, 0.000000"},
      {AcValue(AcValue::Point2d{3, 4.25}), L"3.000000, 4.250000"},
      {AcValue(AcValue::Date{45611.0}), L"11/15/2024"},  // 45611 days after 1899-12-30
      {AcValue(AcValue::Date{2.0}), L"1/1/1900"},
      {AcValue(AcValue::Date{-1.25}), L"12/29/1899"},
      {AcValue(AcValue::Date{43942.75}), L"4/21/2020"},  // the time of day does not show
      {AcValue(), L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(formatValue(c.value, L"", kTemplate), c.expected) << c.expected;
  }
}

// The diagnostic command prints 6.6875 with the default formatting after a new line.
TEST(ValueFormatter, DiagnosticCommandOutput) {
  EXPECT_EQ(core::format(L"\n%s", formatValue(AcValue(6.6875), L"", kTemplate)), L"\n6.687500");
  // The drawing's units do not change it.
  EXPECT_EQ(formatValue(AcValue(6.6875), L"", {4, 8, 3, 1}), L"6.687500");
}

TEST(ValueFormatter, ObservedAndDerivedFieldOutputs) {
  const RealCase cases[] = {
      {35.0, L"%lu2%pr2%ps[,%]", L"35.00%"},
      {100.0, L"%lu2%pr2%ps[$,]", L"$100.00"},
      {0.1, L"1:%lu2%ct1%qf2816", L"1:10"},  // viewport scale: reciprocal, trailing zeros dropped
      {0.1, L"%lu2%ct1%qf2816", L"10"},
      {17280.0, L"%lu2%ct4%qf1 SQ. FT.%pr2", L"120.00 SQ. FT."},
      {17280.0, L"%lu2%ct4%qf1%PR0 sq.ft.", L"120 sq.ft."},
      {17280.0, L"%lu2%ct4%qf1%pr0 SQ. FT.%th44", L"120 SQ. FT."},
      {12.25, L"%lu2%pr2%ct8[1000]%th44", L"12,250.00"},
      {12345.5, L"%lu2%pr2%ds44%th46", L"12.345,50"},
      {0.5, L"%lu2%pr4%zs12", L".5"},
      {0.5, L"%lu2%pr4%zs4", L".5000"},
      {12.5, L"%lu2%pr4%zs8", L"12.5"},
      {2500000.0, L"%lu2%pr2%ps[,m\u00b2]%ct8[1e-6]", L"2.50m\u00b2"},
      {6.6875, L"%lu2%pr2", L"6.69"},
      {6.6875, L"%lu4%pr4%zs1", L"6 11/16\""},
      {17.5, L"%lu1%pr4", L"1.7500E+01"},
      {17.5, L"%lu3%pr2", L"1'-5.50\""},
      {17.5, L"%lu4%pr2", L"1'-5 1/2\""},
      {17.5, L"%lu5%pr2", L"17 1/2"},
      {-0.5, L"%lu4%pr2", L"-0'-0 1/2\""},
      {-0.001, L"%lu2%pr2", L"0.00"},
      {-0.25, L"%lu2%pr1", L"-0.3"},
      {2.5, L"%lu2%pr0", L"3"},
      {11.999, L"%lu3%pr2", L"1'-0.00\""},
      {2.0, L"%lu2%pr2%ps[area is , sq.m]%ds44%zs8%ct8[1234]%th32", L"area is 2 468 sq.m"},
      {1.5, L"%lu2%pr3%ct8[1.000000000000000E-006]", L"0.000"},
      {1440.0, L"%lu2%pr1%ct8[0.0069444444444444]", L"10.0"},
  };
  expectReals(cases);
}

// Units of the field's own suppress nothing unless %zs says so; the drawing's current units
// (%lu6, or no %lu) use LUNITS, LUPREC and DIMZIN as every other distance does.
TEST(ValueFormatter, OwnUnitsAgainstTheDrawingsCurrentUnits) {
  const RealCase architectural[] = {
      {6.6875, L"%lu4%pr4", L"0'-6 11/16\""},
      {6.6875, L"%lu4%pr4%zs2", L"0'-6 11/16\""},
      {12.0, L"%lu4%pr4%zs2", L"1'"},
      {12.0, L"%lu4%pr4%zs3", L"1'"},
      {6.6875, L"%lu6", L"6 3/4\""},  // LUPREC 2, DIMZIN 0
      {6.6875, L"", L"6.687500"},
      {6.6875, L"%lu6%pr4", L"6 11/16\""},
      {6.6875, L"%pr4", L"6 11/16\""},       // no %lu: current units
      {6.6875, L"%lu6%zs0", L"0'-6 3/4\""},  // an explicit mask wins over DIMZIN
      {17280.0, L"%lu6%qf1", L"17280.00"},   // an area is never in feet and inches
      {6.6875, L"%lu6%pr3%qf1%zs8", L"6.688"},
      {6.6875, L"%lu2", L"6.69"},  // own units, current precision
  };
  expectReals(architectural, {4, 2, 0, 0});
  const RealCase metric[] = {
      {12.5, L"%lu6", L"12.5"},    // DIMZIN 8 of a metric drawing
      {12.5, L"%lu2", L"12.500"},  // not with units of the field's own
      {12.5, L"%lu2%zs8", L"12.5"},
      {17.5, L"%lu9", L"17.5"},  // units out of range: current units
  };
  expectReals(metric, {2, 3, 8, 0});
  const RealCase inputForm[] = {
      {17.5, L"%lu4%pr2", L"1'5-1/2\""},
      {17.5, L"%lu3%pr2", L"1'5.50\""},
      {17.5, L"%lu5%pr2", L"17-1/2"},
  };
  expectReals(inputForm, {2, 4, 0, 1});
}

TEST(ValueFormatter, CodesInAnyOrderAndCase) {
  const RealCase cases[] = {
      {1234.5, L"%th44%pr1%lu2", L"1,234.5"},
      {1234.5, L"%TH44%PR1%LU2", L"1,234.5"},
      {1234.5, L"%zs8%pr3%lu2%ct8[2]%ps[<,>]", L"<2469>"},
      {1234.5, L"Length: %lu2%pr1 mm", L"Length: 1234.5 mm"},
      {1234.5, L"%lu2 m%pr0", L"1235 m"},  // codes after literal text are still read
      {1234.5, L"a%lu2b%pr0c", L"a1235bc"},
      {1234567.0, L"%lu2%pr0%th39", L"1'234'567"},
      {1234567.0, L"%lu2%pr0%th46%ds44", L"1.234.567"},
      {-1234567.25, L"%lu2%pr2%th44", L"-1,234,567.25"},
      {1234.5, L"%lu2%pr1%ds32", L"1234 5"},
      {14500.0, L"%lu4%pr0%th44", L"1,208'-4\""},  // feet grouped
      {1234.5, L"%lu5%pr1%th44", L"1,234 1/2"},
      {0.125, L"%lu2%pr3%ct4%ct8[144]", L"0.125"},  // conversions apply in turn
      {4.0, L"%lu2%pr2%ct1", L"0.25"},
  };
  expectReals(cases);
}

TEST(ValueFormatter, PrefixAndSuffixEscapes) {
  const RealCase cases[] = {
      {1.0, L"%lu2%pr0%ps[A\\,B,]", L"A,B1"},
      {1.0, L"%lu2%pr0%ps[\\[,\\]]", L"[1]"},
      {1.0, L"%lu2%pr0%ps[\\\\,\\\\]", L"\\1\\"},
      {1.0, L"%lu2%pr0%ps[a,b,c]", L"a1b,c"},  // the first plain comma divides
      {1.0, L"%lu2%pr0%ps[x\\y,]", L"x\\y1"},  // other backslashes stay
      {1.0, L"%lu2%pr0%ps[only]", L"only1"},   // no comma: all prefix
      {1.0, L"%lu2%pr0%ps[,]", L"1"},
      {1.0, L"%lu2%pr0%ps[%lu4,]", L"%lu41"},  // codes inside the brackets are text
  };
  expectReals(cases);
}

// Nothing a user can type makes the formatter fail; these fallbacks are the documented ones.
TEST(ValueFormatter, MalformedFormatsFallBackQuietly) {
  const RealCase cases[] = {
      {6.6875, L"%lu2%pr2%ps[abc", L"abc6.69"},  // unclosed bracket runs to the end
      {6.6875, L"%lu2%pr2%ps", L"6.69"},         // no bracket: no prefix or suffix
      {6.6875, L"%lu2%pr2%ct8[x]", L"6.69"},     // factor that is no number: no conversion
      {6.6875, L"%lu2%pr2%ct8[]", L"6.69"},
      {6.6875, L"%lu2%pr2%ct8", L"6.69"},
      {6.6875, L"%lu2%pr2%ct8[2", L"13.38"},  // unclosed factor still read
      {6.6875, L"%lu2%pr2%ct7", L"6.69"},     // unknown conversion
      {6.6875, L"%lu2%pr99", L"6.68750000"},  // precision clamps at 8
      {6.6875, L"%lu2%pr99999999999999999999", L"6.68750000"},
      {6.6875, L"%lu%pr2", L"6.69"},    // no digits: current units
      {6.6875, L"%lu2%pr", L"6.6875"},  // no digits: current precision
      {6.6875, L"%lu2%pr2%", L"6.69%"},
      {6.6875, L"%lu2%pr2%%", L"6.69%%"},
      {6.6875, L"%lu2%pr2%zz9", L"6.69%zz9"},     // not a code: literal
      {6.6875, L"%lu2%pr2%au0%fn6", L"6.69"},     // codes for other values are dropped
      {6.6875, L"%lu2%pr2%ds0%th0", L"6.69"},     // separator 0 is the default
      {6.6875, L"%lu2%pr2%ds99999999", L"6.69"},  // not a character
      {6.6875, L" m", L"6.6875 m"},               // no code: number first, current units
      {0.0, L"%lu2%pr2%ct1", L"inf"},             // reciprocal of zero
  };
  expectReals(cases);
  // Not a number, or too large to count in 1/256 of an inch: the C runtime's text.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(formatValue(AcValue(nan), L"%lu2%pr2", kTemplate), core::format(L"%f", nan));
  EXPECT_EQ(formatValue(AcValue(1e308), L"%lu4%pr8", kTemplate), core::format(L"%f", 1e308));
}

TEST(ValueFormatter, IntegersStrings3dPointsAndDatesWithFormats) {
  struct Case {
    AcValue value;
    const wchar_t* format;
    const wchar_t* expected;
  };
  const Case cases[] = {
      {AcValue(std::int32_t{1234567}), L"%th44", L"1,234,567"},
      {AcValue(std::int32_t{42}), L"%ps[#,]", L"#42"},
      {AcValue(std::int32_t{42}), L"%lu2%pr2", L"42.00"},
      {AcValue(std::int32_t{42}), L"%ct8[0.5]", L"21.0000"},
      {AcValue(std::int32_t{18}), L"%lu4%pr0", L"1'-6\""},
      {AcValue(L"cell format 1"), L"%tc1", L"CELL FORMAT 1"},
      {AcValue(L"Cell FORMAT 1"), L"%tc2", L"cell format 1"},
      {AcValue(L"cell FORMAT one"), L"%tc3", L"Cell format one"},
      {AcValue(L"cell format one"), L"%tc4", L"Cell Format One"},
      {AcValue(L"text"), L"%ps[<,>]", L"<text>"},
      {AcValue(L"text"), L"%lu2%pr2", L"text"},
      {AcValue(AcValue::Point3d{1, 2.5, 0}), L"%lu2%pr1", L"1.0, 2.5, 0.0"},
      {AcValue(AcValue::Point3d{12, 18, 0}), L"%lu4%pr0%zs1", L"1'-0\", 1'-6\", 0\""},
      {AcValue(AcValue::Point2d{1, 2}), L"(%lu2%pr0)", L"(1, 2)"},
      {AcValue(AcValue::Date{43942.0}), L"dd/MM/yyyy", L"21/04/2020"},
      {AcValue(AcValue::Date{43942.0}), L"dddd, MMMM d, yy", L"Tuesday, April 21, 20"},
      {AcValue(AcValue::Date{43942.0}), L"ddd MMM", L"Tue Apr"},
      {AcValue(AcValue::Date{43942.5625}), L"h:mm tt", L"1:30 PM"},
      {AcValue(AcValue::Date{43942.5625}), L"HH:mm:ss", L"13:30:00"},
      {AcValue(AcValue::Date{43942.0}), L"hh 'o''clock' t", L"12 oclock A"},
      {AcValue(AcValue::Date{43942.999999999}), L"M/d HH:mm:ss",
       L"4/22 00:00:00"},  // rounds into the next day
  };
  for (const auto& c : cases) {
    EXPECT_EQ(formatValue(c.value, c.format, kTemplate), c.expected) << c.format;
  }
}

}  // namespace
}  // namespace corvane::headless
