#include "core/printf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvane::core {
namespace {

struct Case {
  const wchar_t* format;
  std::vector<FormatArg> args;
  std::wstring expected;
};

void expectFormats(const std::vector<Case>& cases) {
  for (const auto& c : cases) {
    EXPECT_EQ(vformat(c.format, c.args.data(), c.args.size()), c.expected) << c.format;
  }
}

TEST(Printf, GeneralFormOfRealsAsTheRuntimePrintsIt) {
  expectFormats({
      {L"%G", {1234567.0}, L"1.23457E+06"},
      {L"%G", {0.0001}, L"0.0001"},
      {L"%G", {1e-5}, L"1E-05"},
      {L"%G", {100000.0}, L"100000"},
      {L"%G", {1e6}, L"1E+06"},
      {L"%G", {999999.7}, L"1E+06"},  // rounding carries into the exponent form
      {L"%G", {123456.7}, L"123457"},
      {L"%G", {0.00012345678}, L"0.000123457"},
      {L"%G", {0.1 + 0.2}, L"0.3"},
      {L"%G", {2.5}, L"2.5"},
      {L"%G", {-0.0}, L"-0"},
      {L"%G", {0.0}, L"0"},
      {L"%G", {1e100}, L"1E+100"},
      {L"%G", {1e-100}, L"1E-100"},
      {L"%G", {1234567}, L"1.23457E+06"},  // integers widen
      {L"%G", {std::uint64_t{12}}, L"12"},
      {L"%g", {100000.0}, L"100000"},
      {L"%g", {1e6}, L"1e+06"},
      {L"%g", {0.00001}, L"1e-05"},
      {L"%#G", {1.0}, L"1.00000"},
      {L"%.3G", {1234.5}, L"1.23E+03"},
      {L"%.0G", {1234.5}, L"1E+03"},  // precision 0 counts as 1
      {L"%10G|%-10G|", {1.5, 1.5}, L"       1.5|1.5       |"},
      {L"%lG %LG", {1.5, 2.5}, L"1.5 2.5"},
      {L"%G|%G|%g", {HUGE_VAL, -HUGE_VAL, HUGE_VAL}, L"INF|-INF|inf"},  // one spelling, whatever the platform
  });
}

TEST(Printf, FixedAndExponentFormsRoundTheBinaryValue) {
  expectFormats({
      {L"%f", {6.6875}, L"6.687500"},
      {L"%.2f", {2.345}, L"2.35"},  // 2.34500000000000019984...
      {L"%.2f", {2.675}, L"2.67"},  // 2.67499999999999982236...
      {L"%.2e", {1.005}, L"1.00e+00"},
      {L"%e", {1234.5}, L"1.234500e+03"},
      {L"%E", {0.0}, L"0.000000E+00"},
      {L"%8.3e", {1234.5}, L"1.234e+03"},
      {L"%f", {1e20}, L"100000000000000000000.000000"},
      {L"%10.3f", {-3.14159}, L"    -3.142"},
      {L"%+f|% f", {1.0, 1.0}, L"+1.000000| 1.000000"},
      {L"%010.2f", {-1.5}, L"-000001.50"},
      {L"%.0f", {3.7}, L"4"},
      {L"%#.0f", {3.0}, L"3."},
      {L"%f", {7}, L"7.000000"},
      {L"%f", {std::nan("")}, L"nan"},
  });
}

TEST(Printf, IntegersSeeTheBitsTheirLengthModifierNames) {
  expectFormats({
      {L"%d|%i|%u", {42, -7, 42}, L"42|-7|42"},
      {L"%x|%X|%o", {255, 255, 8}, L"ff|FF|10"},
      {L"%#x|%#X|%#o|%#x", {255, 255, 8, 0}, L"0xff|0XFF|010|0"},
      {L"%5d|%-5d|%05d", {42, 42, -42}, L"   42|42   |-0042"},
      {L"%+d|% d|%+d", {5, 5, -5}, L"+5| 5|-5"},
      {L"%.3d|%.0d|%08.3d", {7, 0, 7}, L"007||     007"},
      {L"%d", {4294967297LL}, L"1"},  // int is 32 bits
      {L"%d", {2147483648LL}, L"-2147483648"},
      {L"%u", {-1}, L"4294967295"},
      {L"%u", {3000000000u}, L"3000000000"},
      {L"%d", {UINT64_MAX}, L"-1"},
      {L"%ld", {4294967297LL}, L"1"},  // and so is long
      {L"%lu", {-1}, L"4294967295"},
      {L"%08lx", {-1}, L"ffffffff"},
      {L"%08lx", {-255}, L"ffffff01"},
      {L"%08lX", {255}, L"000000FF"},
      {L"%lx", {-1LL}, L"ffffffff"},
      {L"%llx", {-1}, L"ffffffffffffffff"},
      {L"%lld|%I64d", {4294967297LL, -4294967297LL}, L"4294967297|-4294967297"},
      {L"%lld", {INT64_MIN}, L"-9223372036854775808"},
      {L"%I64u|%llu", {-1, UINT64_MAX}, L"18446744073709551615|18446744073709551615"},
      {L"%I32d|%Id|%zu", {4294967297LL, 4294967297LL, std::size_t{5}}, L"1|4294967297|5"},
      {L"%hd|%hu|%hx", {65535, -1, 0x12345}, L"-1|65535|2345"},
      {L"%hhd|%hhu", {255, 256}, L"-1|0"},
      {L"%d|%d|%d", {true, L'A', std::int16_t{-3}}, L"1|65|-3"},
  });
}

TEST(Printf, TextsAndCharactersArePaddedByCharacter) {
  const std::wstring owned = L"ÄÖ";
  expectFormats({
      {L"[%5s|%-5s|%.2s]", {L"ab", L"ab", L"abcdef"}, L"[   ab|ab   |ab]"},
      {L"[%-5s]", {L"äß"}, L"[äß   ]"},
      {L"[%.0s]", {L"abc"}, L"[]"},
      {L"[%05s]", {L"ab"}, L"[000ab]"},  // the Windows runtime pads texts with zeros too
      {L"[%-05s]", {L"ab"}, L"[ab   ]"},
      {L"[%*s|%-*s]", {4, L"a", -3, L"b"}, L"[   a|b  ]"},
      {L"[%*s]", {-3, L"b"}, L"[b  ]"},
      {L"[%.*s|%.*s]", {1, L"abc", -1, L"abc"}, L"[a|abc]"},
      {L"%ls%hs%ws", {L"a", L"b", L"c"}, L"abc"},
      {L"%s", {static_cast<const wchar_t*>(nullptr)}, L"(null)"},
      {L"100%% of %s", {owned}, L"100% of ÄÖ"},
      {L"%s", {L"%d%s"}, L"%d%s"},  // arguments are not templates
      {L"%c%c%c", {L'A', 66, L'ä'}, L"ABä"},
      {L"[%3c|%-3c|%03c]", {L'x', L'y', L'z'}, L"[  x|y  |00z]"},
      {L"%lc%hc%wc", {L'a', L'b', L'c'}, L"abc"},
      {L"%%%d%%", {5}, L"%5%"},
      {L"%%<\\_ObjId %ld>%%", {2130}, L"%<\\_ObjId 2130>%"},
      {L"Fläche: %d m²", {12}, L"Fläche: 12 m²"},
      {L"no conversions", {}, L"no conversions"},
      {L"extra arguments", {1, 2}, L"extra arguments"},
      {L"%*d|%-*d", {4, 7, 3, 1}, L"   7|1  "},
      {L"%.*f", {2, 3.14159}, L"3.14"},
      {L"%.*f", {-1, 1.5}, L"1.500000"},
  });
}

TEST(Printf, PlainRealsAgreeWithTheFlaggedRoute) {
  // A width of 1 never changes a number's text but sends it through the C library, while the
  // plain conversion takes the shortcut: both must print the same characters.
  std::mt19937_64 rng(11);
  const wchar_t* const plain[] = {L"%G", L"%g", L"%e", L"%E", L"%f", L"%.0G", L"%.3e", L"%.10g", L"%.2f", L"%.17G"};
  const wchar_t* const routed[] = {L"%1G",   L"%1g",   L"%1e",    L"%1E",    L"%1f",
                                   L"%1.0G", L"%1.3e", L"%1.10g", L"%1.2f", L"%1.17G"};
  std::vector<double> values = {0.0, -0.0, 1e-5, 0.0001, 1234567.0, 999999.5, 2.5, 1e300, 5e-324, HUGE_VAL, -HUGE_VAL};
  for (int i = 0; i < 2000; ++i) {
    values.push_back(std::ldexp(static_cast<double>(rng() >> 11), static_cast<int>(rng() % 140) - 100));
    values.push_back(static_cast<double>(static_cast<std::int64_t>(rng() % 2000000) - 1000000) / 1000.0);
  }
  for (const double v : values) {
    for (std::size_t k = 0; k < std::size(plain); ++k) {
      ASSERT_EQ(format(plain[k], v), format(routed[k], v)) << plain[k] << L" " << v;
    }
  }
}

TEST(Printf, LongOutputs) {
  EXPECT_EQ(format(L"%300d", 7), std::wstring(299, L' ') + L"7");
  const std::wstring big = format(L"%600.3f", -2.5);
  EXPECT_EQ(big, std::wstring(594, L' ') + L"-2.500");
  EXPECT_EQ(format(L"%.400f", 1.0).size(), 402u);
  EXPECT_EQ(format(L"%f", 1e300).size(), 301u + 7u);
}

TEST(Printf, TemplateMistakesThrow) {
  struct Bad {
    const wchar_t* format;
    std::vector<FormatArg> args;
  } const cases[] = {
      {L"%d", {}},
      {L"%d %d", {1}},
      {L"%d", {L"text"}},
      {L"%d", {1.5}},
      {L"%x", {1.5f}},
      {L"%s", {5}},
      {L"%s", {1.5}},
      {L"%s", {L'c'}},
      {L"%c", {L"text"}},
      {L"%c", {1.5}},
      {L"%f", {L"x"}},
      {L"%f", {L'x'}},
      {L"%q", {5}},
      {L"%p", {5}},
      {L"%n", {5}},
      {L"%a", {1.5}},
      {L"%S", {L"x"}},
      {L"%F", {1.5}},
      {L"50%", {}},
      {L"%-", {1}},
      {L"%5", {1}},
      {L"%.3", {1}},
      {L"%l", {1}},
      {L"%*d", {L"x", 1}},
      {L"%.*d", {1.5, 1}},
      {L"%*d", {1}},
      {L"%Ld", {1}},
      {L"%wd", {1}},
      {L"%hf", {1.5}},
      {L"%llf", {1.5}},
      {L"%lls", {L"x"}},
      {L"%I64c", {L'x'}},
      {L"%99999999d", {1}},
      {L"%.99999999f", {1.5}},
      {L"%*d", {1 << 30, 1}},
      {L"%*d", {-(1LL << 40), 1}},
  };
  for (const auto& c : cases) {
    EXPECT_THROW(vformat(c.format, c.args.data(), c.args.size()), std::invalid_argument) << c.format;
  }
}

}  // namespace
}  // namespace corvane::core
