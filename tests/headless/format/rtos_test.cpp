#include "headless/format/rtos.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace corvane::headless {
namespace {

struct Case {
  double value;
  int units;
  int precision;
  int dimzin;
  int unitmode;
  const wchar_t* expected;
};

std::wstring describe(const Case& c) {
  return L"rtos(" + std::to_wstring(c.value) + L", " + std::to_wstring(c.units) + L", " +
         std::to_wstring(c.precision) + L") dimzin " + std::to_wstring(c.dimzin) + L" unitmode " +
         std::to_wstring(c.unitmode);
}

void expectAll(const Case* begin, const Case* end) {
  for (const Case* c = begin; c != end; ++c) {
    const auto text = rtos(c->value, {c->units, c->precision, c->dimzin, c->unitmode});
    ASSERT_TRUE(text.has_value()) << describe(*c);
    EXPECT_EQ(*text, c->expected) << describe(*c);
  }
}

template <std::size_t N>
void expectAll(const Case (&cases)[N]) {
  expectAll(cases, cases + N);
}

// The host's documented outputs, one line per vector (rows with a range are spelled out).
TEST(RToS, ReproducesTheHostsDocumentedOutputs) {
  const Case cases[] = {
      {17.5, 1, 4, 0, 0, L"1.7500E+01"},
      {17.5, 2, 2, 0, 0, L"17.50"},
      {17.5, 3, 2, 0, 0, L"1'-5.50\""},
      {17.5, 4, 2, 0, 0, L"1'-5 1/2\""},
      {17.5, 5, 2, 0, 0, L"17 1/2"},
      {17.5, 3, 2, 0, 1, L"1'5.50\""},
      {17.5, 4, 2, 0, 1, L"1'5-1/2\""},
      {17.5, 5, 2, 0, 1, L"17-1/2"},
      {15.5, 1, 2, 0, 0, L"1.55E+01"},
      {15.5, 2, 2, 0, 0, L"15.50"},
      {15.5, 3, 2, 0, 0, L"1'-3.50\""},
      {15.5, 4, 1, 0, 0, L"1'-3 1/2\""},
      {15.5, 4, 4, 0, 0, L"1'-3 1/2\""},
      {15.5, 4, 8, 0, 0, L"1'-3 1/2\""},
      {15.5, 5, 1, 0, 0, L"15 1/2"},
      {15.5, 5, 8, 0, 0, L"15 1/2"},
      {0.234, 2, 2, 0, 0, L"0.23"},
      {0.234, 2, 2, 4, 0, L".23"},
      {-0.23, 2, 3, 0, 0, L"-0.230"},
      {-0.23, 2, 3, 12, 0, L"-.23"},
      {0.5, 2, 4, 4, 0, L".5000"},
      {12.5, 2, 4, 8, 0, L"12.5"},
      {0.5, 2, 4, 12, 0, L".5"},
      {30.0, 2, 4, 8, 0, L"30"},
      {0.0, 2, 4, 12, 0, L"0"},
      {12.0, 2, 3, 8, 0, L"12"},
      {12.25, 2, 4, 0, 0, L"12.2500"},
      {12.0, 2, 2, 0, 0, L"12.00"},
      {0.5, 4, 4, 1, 0, L"0'-0 1/2\""},
      {6.0, 4, 4, 1, 0, L"0'-6\""},
      {12.0, 4, 4, 1, 0, L"1'-0\""},
      {12.75, 4, 4, 1, 0, L"1'-0 3/4\""},
      {0.5, 4, 4, 2, 0, L"0'-0 1/2\""},
      {6.0, 4, 4, 2, 0, L"0'-6\""},
      {12.0, 4, 4, 2, 0, L"1'"},
      {12.75, 4, 4, 2, 0, L"1'-0 3/4\""},
      {0.5, 4, 4, 3, 0, L"1/2\""},
      {6.0, 4, 4, 3, 0, L"6\""},
      {12.0, 4, 4, 3, 0, L"1'-0\""},
      {12.75, 4, 4, 3, 0, L"1'-0 3/4\""},
      {0.5, 4, 4, 0, 0, L"1/2\""},
      {6.0, 4, 4, 0, 0, L"6\""},
      {12.0, 4, 4, 0, 0, L"1'"},
      {12.75, 4, 4, 0, 0, L"1'-0 3/4\""},
      {48.75, 4, 2, 0, 0, L"4'-0 3/4\""},
      {48.75, 4, 2, 1, 0, L"4'-0 3/4\""},
      {48.75, 4, 2, 2, 0, L"4'-0 3/4\""},
      {48.75, 4, 2, 3, 0, L"4'-0 3/4\""},
      {6.5, 4, 1, 0, 0, L"6 1/2\""},
      {6.5, 4, 4, 3, 0, L"6 1/2\""},
      {15.35, 4, 4, 0, 0, L"1'-3 3/8\""},
      {15.35, 5, 4, 0, 0, L"15 3/8"},
      {15.35, 2, 4, 0, 0, L"15.3500"},
      {22.8, 2, 0, 0, 0, L"23"},
      {152.52, 2, 0, 0, 0, L"153"},
      {-1.605, 2, 0, 0, 0, L"-2"},
      {0.0, 2, 0, 1, 0, L"0"},
      {0.0, 2, 1, 1, 0, L"0.0"},
      {0.0, 2, 2, 1, 0, L"0.00"},
      {0.0, 2, 3, 1, 0, L"0.000"},
      {0.0, 2, 4, 1, 0, L"0.0000"},
      {0.0, 2, 5, 1, 0, L"0.00000"},
      {0.0, 2, 6, 1, 0, L"0.000000"},
      {0.0, 2, 7, 1, 0, L"0.0000000"},
      {0.0, 2, 8, 1, 0, L"0.00000000"},
      {0.0, 3, 0, 1, 0, L"0'-0\""},
      {0.0, 3, 2, 1, 0, L"0'-0.00\""},
      {6.6875, 2, 4, 0, 0, L"6.6875"},
      {6.6875, 2, 2, 0, 0, L"6.69"},
      {6.6875, 2, 0, 0, 0, L"7"},
      {6.6875, 1, 4, 0, 0, L"6.6875E+00"},
      {6.6875, 4, 4, 0, 0, L"6 11/16\""},
      {6.6875, 4, 4, 1, 0, L"0'-6 11/16\""},
      {6.6875, 4, 2, 0, 0, L"6 3/4\""},
      {6.6875, 5, 4, 0, 0, L"6 11/16"},
      {6.6875, 3, 2, 0, 0, L"6.69\""},
      {6.6875, 3, 2, 1, 0, L"0'-6.69\""},
      {144.0, 4, 4, 0, 0, L"12'"},
      {144.0, 4, 4, 1, 0, L"12'-0\""},
      {11.999, 4, 4, 1, 0, L"1'-0\""},
      {-17.5, 4, 2, 0, 0, L"-1'-5 1/2\""},
  };
  expectAll(cases);
}

// Rounding to the nearest 1/2^p can spill into the inches, the feet or the next whole unit,
// and every fraction is written in lowest terms.
TEST(RToS, CarriesAndReducesFractions) {
  const Case cases[] = {
      {11.999, 4, 4, 0, 0, L"1'"},         // 191.984/16 rounds to 192/16 = 12": a whole foot
      {11.97, 4, 4, 1, 0, L"1'-0\""},      // 191.52/16 rounds up to 12"
      {23.99, 4, 2, 1, 0, L"2'-0\""},      // 95.96/4 rounds to 96/4 = 24"
      {5.99, 4, 3, 0, 0, L"6\""},          // 47.92/8 carries into the next inch
      {12.96, 4, 2, 1, 0, L"1'-1\""},      // 51.84/4 -> 52/4 = 13"
      {0.999, 5, 2, 0, 0, L"1"},           // fraction carries into the whole unit
      {1.97, 5, 3, 0, 0, L"2"},            // 15.76/8 -> 16/8
      {11.999, 3, 2, 1, 0, L"1'-0.00\""},  // decimal inches 12.00 carry to a foot
      {35.996, 3, 2, 0, 0, L"3'"},         // 35.996 = 2'-11.996" -> 3'-0.00", zero inches dropped
      {0.5, 4, 8, 0, 0, L"1/2\""},         // 128/256
      {0.25, 5, 3, 0, 0, L"1/4"},          // 2/8
      {2.375, 5, 4, 0, 0, L"2 3/8"},       // 38/16 = 2 6/16
      {2.375, 5, 8, 0, 0, L"2 3/8"},       // 608/256
      {1.0 / 256, 5, 8, 0, 0, L"1/256"},   // nothing to reduce
      {3.0 + 5.0 / 64, 4, 6, 0, 0, L"3 5/64\""},
      {3.0 + 6.0 / 64, 4, 6, 0, 0, L"3 3/32\""},
      {7.75, 4, 0, 0, 0, L"8\""},  // whole inches only at p 0
      {7.25, 4, 0, 0, 0, L"7\""},
      {13.5, 4, 0, 1, 0, L"1'-2\""},   // 13.5 rounds away from zero to 14
      {0.03125, 5, 4, 0, 0, L"1/16"},  // exactly half of 1/16 rounds up
      {-0.03125, 5, 4, 0, 0, L"-1/16"},
      {0.0, 4, 4, 0, 0, L"0\""},  // nothing left to suppress into
      {0.0, 4, 4, 2, 0, L"0'"},   // zero feet included, zero inches suppressed
      {0.0, 4, 4, 3, 0, L"0\""},
      {0.0, 5, 4, 0, 0, L"0"},
      {0.01, 4, 2, 1, 0, L"0'-0\""},     // rounds to nothing
      {-0.01, 4, 2, 1, 0, L"0'-0\""},    // and then carries no sign
      {12.5, 4, 1, 1, 1, L"1'0-1/2\""},  // input form keeps the inch digit beside the feet
      {12.0, 4, 4, 1, 1, L"1'0\""},
      {0.5, 4, 4, 1, 1, L"0'0-1/2\""},
      {0.5, 4, 4, 0, 1, L"1/2\""},
      {-17.5, 4, 2, 0, 1, L"-1'5-1/2\""},
      {1234567.5, 4, 1, 0, 0, L"102880'-7 1/2\""},
      {1234567.5, 5, 1, 0, 0, L"1234567 1/2"},
  };
  expectAll(cases);
}

// Halfway cases round away from zero; other values round from their exact binary value.
TEST(RToS, RoundsHalvesAwayFromZero) {
  const Case cases[] = {
      {2.5, 2, 0, 0, 0, L"3"},
      {-2.5, 2, 0, 0, 0, L"-3"},
      {0.5, 2, 0, 0, 0, L"1"},
      {1.5, 2, 0, 0, 0, L"2"},
      {-0.25, 2, 1, 0, 0, L"-0.3"},
      {0.125, 2, 2, 0, 0, L"0.13"},
      {0.375, 2, 2, 0, 0, L"0.38"},
      {2.675, 2, 2, 0, 0, L"2.67"},  // the double is 2.67499999999999982236431605997495353221893310546875
      {1.005, 2, 2, 0, 0, L"1.00"},  // 1.00499999999999989341858963598497211933135986328125
      {0.15, 2, 1, 0, 0, L"0.1"},    // 0.1499999999999999944488848768742172978818416595458984375
      {0.35, 2, 1, 0, 0, L"0.3"},    // 0.34999999999999997779553950749686919152736663818359375
      {1.0 / 512, 2, 8, 0, 0, L"0.00195313"},  // 0.001953125 exactly
      {-0.001, 2, 2, 0, 0, L"0.00"},           // rounds to zero: no sign
      {-0.0, 2, 4, 0, 0, L"0.0000"},
      {12.125, 3, 2, 1, 0, L"1'-0.13\""},
      {1.25, 1, 1, 0, 0, L"1.3E+00"},
      {0.125, 1, 1, 0, 0, L"1.3E-01"},
      {-1250.0, 1, 1, 0, 0, L"-1.3E+03"},
      {9.99995, 1, 4, 0, 0, L"1.0000E+01"},  // just above the halfway point in binary
      {0.000123, 1, 2, 0, 0, L"1.23E-04"},
      {1e100, 1, 2, 0, 0, L"1.00E+100"},
      {0.0, 1, 4, 0, 0, L"0.0000E+00"},
      {-1e-9, 1, 2, 0, 0, L"-1.00E-09"},
  };
  expectAll(cases);
}

// Leading and trailing suppression also reach the scientific mantissa and decimal inches;
// the feet-and-inches values do not touch decimal zeros.
TEST(RToS, SuppressesDecimalZerosInEveryDecimalForm) {
  const Case cases[] = {
      {17.5, 1, 4, 8, 0, L"1.75E+01"},  {20.0, 1, 4, 8, 0, L"2E+01"},
      {0.0, 1, 2, 12, 0, L"0E+00"},     {17.5, 3, 2, 8, 0, L"1'-5.5\""},
      {12.0, 3, 2, 9, 0, L"1'-0\""},    {0.5, 3, 2, 4, 0, L".50\""},  // inches alone: the leading zero goes
      {12.5, 3, 2, 5, 0, L"1'-0.50\""},                               // beside the feet the inch digit stays
      {0.5, 3, 2, 12, 0, L".5\""},      {12.0, 3, 2, 0, 0, L"1'"},
      {12.0, 3, 2, 2, 0, L"1'"},        {12.0, 3, 2, 3, 0, L"1'-0.00\""},
      {6.25, 3, 2, 2, 0, L"0'-6.25\""}, {0.0, 3, 2, 0, 0, L"0.00\""},
      {0.0, 3, 2, 8, 0, L"0\""},        {12.75, 4, 4, 12, 0, L"1'-0 3/4\""},  // no decimals to suppress
      {0.5, 5, 4, 12, 0, L"1/2"},       {1000.5, 2, 2, 12, 0, L"1000.5"},
      {100.0, 2, 0, 8, 0, L"100"},  // no point: the integer's zeros stay
  };
  expectAll(cases);
}

TEST(RToS, LargeMagnitudes) {
  const Case cases[] = {
      {123456789.125, 2, 2, 0, 0, L"123456789.13"},
      {1e20, 2, 0, 0, 0, L"100000000000000000000"},
      {1e15 + 0.5, 2, 0, 0, 0, L"1000000000000001"},
      {1e15 + 4, 4, 0, 0, 0, L"83333333333333'-8\""},  // 1e15 + 4 = 12 * 83333333333333 + 8
  };
  expectAll(cases);
}

TEST(RToS, RefusesWhatTheHostCallRefuses) {
  struct Bad {
    double value;
    int units;
    int precision;
  };
  const double inf = std::numeric_limits<double>::infinity();
  const Bad cases[] = {
      {1.0, 0, 2}, {1.0, 6, 2},  {1.0, -1, 2},         {1.0, 2, -1},    {1.0, 2, 9}, {1.0, 4, 9},
      {inf, 2, 2}, {-inf, 4, 2}, {std::nan(""), 1, 2}, {1.7e308, 4, 8},  // too many 1/256 to count
  };
  for (const auto& c : cases) {
    EXPECT_FALSE(rtos(c.value, {c.units, c.precision, 0, 0}).has_value())
        << c.value << " units " << c.units << " precision " << c.precision;
  }
}

}  // namespace
}  // namespace corvane::headless
