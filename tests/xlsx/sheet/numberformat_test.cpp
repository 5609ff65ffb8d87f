#include "xlsx/sheet/numberformat.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

// Expected texts come from Excel's documented behaviour (Microsoft's format guidelines, the
// examples in shared/research/excel.md, vectors of Excel-made tables where named) and from
// arithmetic done by hand: the working is in the comment where it is not plain.
namespace corvane::xlsx {
namespace {

struct Case {
  const char* code;
  double value;
  const char* expected;
};

struct TextCase {
  const char* code;
  const char* text;
  const char* expected;
};

template <std::size_t N>
void expectAll(const Case (&cases)[N], bool date1904 = false) {
  for (const Case& c : cases) {
    const NumberFormat format = NumberFormat::parse(c.code);
    EXPECT_EQ(format.error(), "") << "code " << c.code;
    EXPECT_EQ(format.format(c.value, date1904), c.expected)
        << "code " << c.code << " value " << c.value << (date1904 ? " (1904)" : "");
  }
}

constexpr double kSecond = 1.0 / 86400;

TEST(FormatGeneral, FollowsTheElevenCharacterRule) {
  const struct {
    double value;
    const char* expected;
  } cases[] = {
      {0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {-1, "-1"},
      {12345678900, "12345678900"},    // research notes: 11 digits fit
      {99999999999, "99999999999"},
      {-99999999999, "-99999999999"},  // the sign is not counted
      {100000000000, "1E+11"},         // 12 digits: scientific, zeros stripped
      {123456789012, "1.23457E+11"},
      {1234567890000, "1.23457E+12"},  // research notes
      {-1234567890000, "-1.23457E+12"},
      {1e20, "1E+20"},
      {1.23456789e100, "1.23457E+100"},
      {0.5, "0.5"},
      {-0.5, "-0.5"},
      {1234.5678, "1234.5678"},
      {123456.789012, "123456.789"},        // 10 significant digits
      {3.14159265358979, "3.141592654"},    // ...653|58 rounds up
      {1.0 / 3, "0.333333333"},             // 0. and 9 decimals: 11 characters
      {2.0 / 3, "0.666666667"},
      {0.1 + 0.2, "0.3"},                   // 15 significant digits first: 0.300000000000000
      {0.0123456789, "0.012345679"},        // research notes
      {0.000123456789, "0.000123457"},
      {0.0001, "0.0001"},
      {0.00001, "0.00001"},
      {0.00001234, "0.00001234"},           // every digit fits
      {0.0000123456789, "1.23457E-05"},     // research notes
      {1e-10, "1E-10"},
      {1.5e-10, "1.5E-10"},
      {12345678901.5, "12345678902"},       // 11 integer digits, no room for decimals
      {9999999999.5, "10000000000"},        // rounds up into 11 digits, which still fit
      {99999999999.5, "1E+11"},             // rounds up into 12 digits: scientific
      {0.99999999999, "1"},
  };
  for (const auto& c : cases) EXPECT_EQ(formatGeneral(c.value), c.expected) << c.value;
  EXPECT_EQ(formatGeneral(std::numeric_limits<double>::quiet_NaN()), "#NUM!");
  EXPECT_EQ(formatGeneral(std::numeric_limits<double>::infinity()), "#NUM!");
  EXPECT_EQ(NumberFormat().format(1234567890000), "1.23457E+12");
  EXPECT_EQ(NumberFormat::parse("General").format(0.0123456789), "0.012345679");
  EXPECT_EQ(NumberFormat::parse("GENERAL").format(-2.5), "-2.5");
  EXPECT_EQ(NumberFormat::parse("").format(7), "7");
}

TEST(NumberFormat, ShowsFixedThousandsAndPercent) {
  const Case cases[] = {
      {"0", 1234.5, "1235"},  // half away from zero
      {"0", -1234.5, "-1235"},
      {"0", 2.5, "3"},
      {"0", 0.4, "0"},
      {"0.00", 1.005, "1.01"},    // 15 significant digits (1.00500000000000) before rounding
      {"0.00", 2.675, "2.68"},
      {"0.00", 9.995, "10.00"},
      {"0.000", 0.0005, "0.001"},
      {"00000", 123, "00123"},
      {"000-00-0000", 123456789, "123-45-6789"},
      {"#", 0, ""},
      {"#.##", 0.5, ".5"},
      {"0.#", 1, "1."},
      {"#.00", 0.5, ".50"},
      {".00", 12.5, "12.50"},
      {"?.??", 1.5, "1.5 "},
      {"??.??", 1.25, " 1.25"},
      {"0.0?", 1.5, "1.5 "},
      {"0", 1e20, "100000000000000000000"},
      {"0", 1234567890123456789.0, "1234567890123460000"},  // 15 digits, then zeros
      {"#,##0", 1234567, "1,234,567"},
      {"#,##0", 0, "0"},
      {"#,###", 0, ""},
      {"#,##0", 999.5, "1,000"},
      {"#,##0.00", 1234.567, "1,234.57"},
      {"#,##0.00", -1234.567, "-1,234.57"},
      {"0,000", 5, "0,005"},
      {"#,##0,", 1234567, "1,235"},
      {"0.0,,", 1234567890, "1234.6"},
      {"#,##0.0,,\"M\"", 1234567890, "1,234.6M"},
      {"0%", 0.256, "26%"},
      {"0.00%", 0.12345, "12.35%"},
      {"0%%", 0.01, "100%%"},
      {"$#,##0.00", -1234.5, "-$1,234.50"},
      // SheetJS comma.tsv, an Excel-checked table.
      {"#.0000,,,", 1234567890, "1.2346"},
      {"#.0000,,", 12345, ".0123"},
      {"#.0000,", 1234, "1.2340"},
      {"#,##0.0", 123.456, "123.5"},
      {"###,###", 0.99, "1"},
      {"#,###.00", 0.99, ".99"},
      {"#,###.00", 12.345, "12.35"},
      {"#,##0.00", 1234652.68499999999995, "1,234,652.69"},
  };
  expectAll(cases);
}

TEST(NumberFormat, ShowsScientificNotation) {
  const Case cases[] = {
      {"0.00E+00", 12345, "1.23E+04"},
      {"0.00E+00", -12345, "-1.23E+04"},
      {"0.00E+00", 0.00012345, "1.23E-04"},
      {"0.00E+00", 0, "0.00E+00"},
      {"0.00E+00", 1e100, "1.00E+100"},
      {"0.00E-00", 12345, "1.23E04"},
      {"0.00E-00", 0.012, "1.20E-02"},
      {"0.00e+00", 12345, "1.23e+04"},
      {"0E+0", 5, "5E+0"},
      {"0.0E+00", 0.5, "5.0E-01"},
      {"0.0E+0", 99999, "1.0E+5"},  // 9.9999 rounds to 10.0: one more power of ten
      // Engineering: the exponent is a multiple of the integer placeholders (SheetJS exp.tsv).
      {"##0.0E+0", 12345.6789, "12.3E+3"},
      {"##0.0E+0", 123456.789, "123.5E+3"},
      {"##0.0E+0", 1234567.89, "1.2E+6"},
      {"##0.0E+0", 1.23456789, "1.2E+0"},
      {"##0.0E+0", 0.123456789, "123.5E-3"},
      {"##0.0E+0", 999.96, "1.0E+3"},     // 999.96 rounds to 1000.0, too wide for ##0
      {"#0.0E+0", 1.23457e-13, "12.3E-14"},
      {"####0.0E+0", 12345678900, "1.2E+10"},
  };
  expectAll(cases);
}

// Every number is cut to 15 significant digits, correctly rounded, before it is shown; the C
// library's %.14E says what they are. Numbers of few digits, of exactly 15, and of the 16 or
// 17 a double may need, as they are read from the different ways to the digits.
TEST(NumberFormat, ShowsFifteenSignificantDigitsOfAnyNumber) {
  const NumberFormat format = NumberFormat::parse("0.00000000000000E+00");
  std::uint64_t state = 2024;
  const auto next = [&] {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return state >> 11;  // 53 bits
  };
  for (int i = 0; i < 30000; ++i) {
    const double scale = std::pow(10.0, static_cast<int>(next() % 40) - 20);
    double value = 0;
    switch (i % 3) {
      case 0: value = static_cast<double>(next() % 1000000) * scale; break;
      case 1: value = static_cast<double>(100000000000000 + next() % 900000000000000) * scale; break;
      default:
        value = std::bit_cast<double>((next() & 0x000FFFFFFFFFFFFFULL) | (std::uint64_t{1023 + next() % 200 - 100} << 52));
    }
    if (value == 0) continue;
    char expected[40];
    std::snprintf(expected, sizeof expected, "%.14E", value);
    ASSERT_EQ(format.format(value), expected) << "value " << value;
  }
}

// Continued-fraction convergents, worked by hand. 3.14159265358979 = [3; 7, 15, 1, 292, ...]
// has convergents 22/7, 333/106, 355/113; 123.456 has fraction 0.456 = [0; 2, 5, 5, 2] with
// convergents 1/2, 5/11, 26/57, 57/125.
TEST(NumberFormat, ShowsFractions) {
  const Case cases[] = {
      {"# ?/?", 1.5, "1 1/2"},
      {"# ?/?", 2.75, "2 3/4"},
      {"# ?/?", -1.25, "-1 1/4"},
      {"# ?/?", -1.2, "-1 1/5"},
      {"# ?/?", 0.5, " 1/2"},    // no whole number: the separator stays
      {"# ?/?", 1, "1    "},     // no fraction: blanks as wide as ?/?
      {"# ?/?", 0, "0    "},
      {"0 ?/?", 0.5, "0 1/2"},
      {"# ?/?", 3.14159265358979, "3 1/7"},
      {"# ?\?/??", 3.14159265358979, "3  1/7 "},  // padded: numerator left, denominator right
      {"# ??\?/???", 3.14159265358979, "3  16/113"},
      {"# ?\?/??", 123.456, "123 26/57"},  // a convergent, as Excel (the nearer 31/68 is not one)
      {"?/?", 1.5, "3/2"},
      {"?/?", 0.75, "3/4"},
      {"?\?/??", 1.5, " 3/2 "},
      {"# ?/8", 1.2, "1 2/8"},     // 0.2 * 8 = 1.6 rounds to 2; not reduced
      {"# ?/8", 0.99, "1    "},    // 7.92 rounds to 8/8: a whole
      {"# ?/2", 1.2, "1    "},
      {"# ?/4", 2.5, "2 2/4"},
      {"# ?\?/100", 1.2, "1 20/100"},
      {"# ?\?/100", 1, "1       "},
      {"?/8", 1.2, "10/8"},        // 9.6 rounds to 10
      {"# ?/?", 10000000000.5, "10000000000 1/2"},
  };
  expectAll(cases);
}

TEST(NumberFormat, ShowsDatesInThe1900System) {
  const Case cases[] = {
      {"yyyy-mm-dd", 60, "1900-02-29"},  // research notes: Lotus's leap day
      {"yyyy-mm-dd", 61, "1900-03-01"},
      {"yyyy-mm-dd", 59, "1900-02-28"},
      {"yyyy-mm-dd", 1, "1900-01-01"},
      {"yyyy-mm-dd", 0, "1900-01-00"},
      {"yyyy-mm-dd", 2958465, "9999-12-31"},
      {"yyyy-mm-dd", 2958466, "########"},  // past 9999-12-31
      {"yyyy-mm-dd", -1, "########"},       // negative
      {"yyyy-mm-dd", 45000, "2023-03-15"},
      {"m/d/yyyy", 45000, "3/15/2023"},
      {"m/d/yy", 45000, "3/15/23"},         // research notes (SSF id 14)
      {"d-mmm-yy", 45000, "15-Mar-23"},
      {"d-mmm", 45000, "15-Mar"},
      {"mmm-yy", 45000, "Mar-23"},
      {"mmmm d, yyyy", 45000, "March 15, 2023"},
      {"mmmmm", 45000, "M"},
      {"dd/mm/yyyy", 45000, "15/03/2023"},
      {"ddd", 45000, "Wed"},
      {"dddd", 45000, "Wednesday"},
      {"dddd", 61, "Thursday"},
      {"dddd", 55, "Friday"},    // SheetJS notes: Excel counts 1900-01-01 as a Sunday
      {"dddd", 60, "Wednesday"},
      {"dddd", 0, "Saturday"},
      {"YYYY-MM-DD", 45000, "2023-03-15"},
      {"m/d/yyyy h:mm", 45000.75, "3/15/2023 18:00"},
      {"[$-409]mmmm yyyy", 45000, "March 2023"},
      // 0.99999999 of a day is 86399.999 s: it rounds into the next day.
      {"yyyy-mm-dd hh:mm:ss", 45000.99999999, "2023-03-16 00:00:00"},
  };
  expectAll(cases);
}

TEST(NumberFormat, ShowsDatesInThe1904System) {
  const Case cases[] = {
      {"yyyy-mm-dd", 0, "1904-01-01"},
      {"yyyy-mm-dd", 1, "1904-01-02"},
      {"yyyy-mm-dd", 43538, "2023-03-15"},    // 45000 - 1462
      {"yyyy-mm-dd", 2957003, "9999-12-31"},  // 2958465 - 1462
      {"yyyy-mm-dd", 2957004, "########"},
      {"yyyy-mm-dd", -1, "########"},
      {"dddd", 0, "Friday"},
      {"h:mm", 0.75, "18:00"},
  };
  expectAll(cases, true);
}

TEST(NumberFormat, ShowsTimesAndElapsedTime) {
  const Case cases[] = {
      {"hh:mm:ss", 41722.4097222222, "09:50:00"},  // research notes: not 09:49:60
      {"[h]:mm:ss", 1.5, "36:00:00"},              // research notes
      {"h:mm", 0.5, "12:00"},
      {"h:mm", 0.75, "18:00"},
      {"h:mm AM/PM", 0.75, "6:00 PM"},
      {"h:mm AM/PM", 0, "12:00 AM"},
      {"h:mm AM/PM", 0.5, "12:00 PM"},
      {"h:mm:ss AM/PM", 0.25 + kSecond, "6:00:01 AM"},
      {"h:mm am/pm", 0.75, "6:00 pm"},
      {"h:mm a/p", 0.75, "6:00 p"},
      {"hh:mm A/P", 0.25, "06:00 A"},
      {"mm:ss", 1.0 / 48, "30:00"},
      {"mm:ss.0", 10.7 * kSecond, "00:10.7"},
      {"h:mm:ss.000", 0.5 + 0.1234 * kSecond, "12:00:00.123"},
      {"mm:ss.00", 59.996 * kSecond, "01:00.00"},  // rounds to 60.00 s: the minute carries
      {"[mm]:ss", 1.5 / 24, "90:00"},
      {"[s]", 1.0 / 24, "3600"},
      {"[h]:mm", 2.75, "66:00"},
      // Seconds are rounded, not shown minutes: 9:49:40 stays 9:49 under h:mm.
      {"h:mm", (9 * 3600 + 49 * 60 + 40) * kSecond, "9:49"},
      {"m:ss", 75 * kSecond, "1:15"},  // m before ss is minutes
  };
  expectAll(cases);
}

TEST(NumberFormat, ChoosesSectionsByConditionAndSign) {
  const Case cases[] = {
      {"#,##0.00;[Red](#,##0.00)", -1234.567, "(1,234.57)"},  // research notes
      {"#,##0.00;[Red](#,##0.00)", 1234.567, "1,234.57"},
      {"0;(0)", -5, "(5)"},                                   // the second section has no sign
      {"0;-0;\"zero\"", 0, "zero"},
      {"0;-0;\"zero\"", 5, "5"},
      {"0;-0;\"zero\"", -5, "-5"},
      {"+0;-0", 5, "+5"},
      {"[>100]\"big\";[<-100]\"small\";0", 500, "big"},
      {"[>100]\"big\";[<-100]\"small\";0", 50, "50"},
      {"[>100]\"big\";[<-100]\"small\";0", 0, "0"},
      {"[<=100]0.0;0", 50, "50.0"},
      {"[<=100]0.0;0", 150, "150"},
      {"[=0]\"none\";0", 0, "none"},
      {"[=0]\"none\";0", 3, "3"},
      {"[<>1]\"many\";\"one\"", 1, "one"},
      {"[<>1]\"many\";\"one\"", 2, "many"},
      {"[Red]0.00", 1.5, "1.50"},
      {"[Color12]0", 5, "5"},
      {"[Blue]General", 12.5, "12.5"},
      {"General;(General)", -5, "(5)"},
      {"\"x\"General", 1.5, "x1.5"},
      {"General\" units\"", 3, "3 units"},
      {";;;", 5, ""},
      // Microsoft's example: sections of a colour and a condition alone show General.
      {"[Red][<=100];[Blue][>100]", 50, "50"},
      {"[Red][<=100];[Blue][>100]", 150.5, "150.5"},
      {"@", 12.5, "12.5"},  // a format for text alone shows numbers as General
  };
  expectAll(cases);
}

TEST(NumberFormat, ShowsLiteralsSpacesAndCurrency) {
  const Case cases[] = {
      {"\"Total: \"0", 5, "Total: 5"},
      {"0\" kg\"", 5, "5 kg"},
      {"0\\k", 5, "5k"},
      {"$0.00", 5, "$5.00"},
      {"(0)", 5, "(5)"},
      {"0_)", 5, "5 "},
      {"_(0_)", 5, " 5 "},
      {"**0", 5, "*5"},  // the fill character, once
      {"0*x", 5, "5x"},
      {"[$\xE2\x82\xAC-407]#,##0.00", 1234.5, "\xE2\x82\xAC" "1,234.50"},
      {"#,##0.00 [$\xE2\x82\xAC-407]", 1234.5, "1,234.50 \xE2\x82\xAC"},
      {"[$USD] 0", 5, "USD 5"},
      {"[$-409]h:mm AM/PM", 0.75, "6:00 PM"},
      {"0 \\\xE2\x82\xAC", 5, "5 \xE2\x82\xAC"},  // an escaped character of several bytes
      // Built-in 41, accounting: _( is a space and * a fill shown once.
      {"_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)", 1234, "  1,234 "},
      {"_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)", -1234, "  (1,234)"},
      {"_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)", 0, "  - "},
  };
  expectAll(cases);
}

TEST(NumberFormat, ShowsTextWithTheTextSection) {
  const TextCase cases[] = {
      {"@", "abc", "abc"},
      {"\"Name: \"@", "abc", "Name: abc"},
      {"0;-0;0;\"T:\"@", "x", "T:x"},
      {"0;-0;0;\"hidden\"", "x", "hidden"},
      {"0", "abc", "abc"},  // no text section: the text as it is
      {";;;", "abc", ""},
      {"0.00;@\"!\"", "hey", "hey!"},
      {"_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)", "abc", " abc "},
      {"General", "abc", "abc"},
  };
  for (const TextCase& c : cases) {
    EXPECT_EQ(NumberFormat::parse(c.code).formatText(c.text), c.expected) << "code " << c.code;
  }
  EXPECT_EQ(NumberFormat().formatText("plain"), "plain");
  EXPECT_EQ(NumberFormat::parse("0.00;@\"!\"").format(2), "2.00");
}

TEST(NumberFormat, TellsDatesFromNumbers) {
  const struct {
    const char* code;
    bool date;
  } cases[] = {
      {"yyyy-mm-dd", true},
      {"h:mm", true},
      {"[h]:mm:ss", true},
      {"[$-409]dddd", true},
      {"mm:ss.0", true},
      {"h AM/PM", true},
      {"0.00", false},
      {"General", false},
      {"0\\h", false},
      {"0\"h\"", false},
      {"#,##0;[Red]-#,##0", false},
      {"0;yyyy", false},  // only the section for positive numbers counts
      {"@", false},
  };
  for (const auto& c : cases) EXPECT_EQ(NumberFormat::parse(c.code).isDate(), c.date) << "code " << c.code;
}

TEST(NumberFormat, RendersCodesItCannotReadAsGeneral) {
  const char* const codes[] = {
      "0.00\"abc",         // quoted text not closed
      "[Red0.00",          // bracket not closed
      "0;0;0;@;0",         // five sections
      "[Foo]0",            // unknown bracket
      "[]0",
      "0\\",               // nothing to escape
      "0_",
      "0*",
      "[>abc]0",           // condition without a number
      "[>1][<2]0",         // two conditions in one section
      "@;0",               // the text placeholder in a section for numbers
      "ss.0000",           // more than three digits of a second
      "# ?/1234567890",    // a denominator of ten digits
  };
  for (const char* code : codes) {
    const NumberFormat format = NumberFormat::parse(code);
    EXPECT_NE(format.error(), "") << "code " << code;
    EXPECT_EQ(format.format(0.0123456789), "0.012345679") << "code " << code;
    EXPECT_EQ(format.formatText("abc"), "abc") << "code " << code;
    EXPECT_FALSE(format.isDate()) << "code " << code;
  }
  // The message names the place.
  EXPECT_EQ(NumberFormat::parse("0.00\"abc").error(), "quoted text not closed at position 5");
  EXPECT_EQ(NumberFormat::parse("0;[Foo]0").error(), "unknown [Foo] at position 3");
}

TEST(NumberFormat, ShowsNumbersThatAreNotFiniteAsAnError) {
  const NumberFormat format = NumberFormat::parse("0.00");
  EXPECT_EQ(format.format(std::numeric_limits<double>::infinity()), "#NUM!");
  EXPECT_EQ(format.format(std::numeric_limits<double>::quiet_NaN()), "#NUM!");
  EXPECT_EQ(NumberFormat::parse("yyyy").format(std::numeric_limits<double>::quiet_NaN()), "#NUM!");
}

}  // namespace
}  // namespace corvane::xlsx
