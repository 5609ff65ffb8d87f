#include "plugin/measure/additionalformat.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "plugin/measure/parsedformat.h"

namespace corvane {
namespace {

constexpr int kVersion = 23;  // the hosts this plug-in is built for

AdditionalFormat withFlags(int mask) {
  AdditionalFormat f;
  f.zeros = ZeroSuppression::fromMask(mask);
  return f;
}

TEST(AdditionalFormat, BuildsEachCodeOnlyWhenItChangesSomething) {
  struct Case {
    AdditionalFormat settings;
    int version;
    const wchar_t* expected;
  };
  const Case cases[] = {
      {{}, kVersion, L""},
      {{1.0, L"A,B", L"", 0, 0, {}}, 17, L"%ps[A\\,B,]"},
      {{1.0, L"A,B", L"", 0, 0, {}}, 16, L"%ps[A,B,]"},
      {{1.0, L"", L" m\u00b2", 0, 0, {}}, kVersion, L"%ps[, m\u00b2]"},
      {{1.0, L"\\", L"[x]", 0, 0, {}}, kVersion, L"%ps[\\\\,\\[x\\]]"},
      {{1.0, L"a\\,b", L",]", 0, 0, {}}, kVersion, L"%ps[a\\\\\\,b,\\,\\]]"},  // backslashes first
      {{1.0, L"\\", L"[x]", 0, 0, {}}, 16, L"%ps[\\,[x]]"},
      {{0.5, L"", L"", 0, 0, {}}, kVersion, L"%ct8[0.5]"},
      {{1e-07, L"", L"", 0, 0, {}}, kVersion, L"%ct8[1e-07]"},
      {{2.54, L"", L"", 0, 0, {}}, kVersion, L"%ct8[2.54]"},
      {{1000.0, L"", L"", 0, 0, {}}, kVersion, L"%ct8[1000]"},
      {{1e6, L"", L"", 0, 0, {}}, kVersion, L"%ct8[1e+06]"},
      {{1.0 / 144, L"", L"", 0, 0, {}}, kVersion, L"%ct8[0.00694444]"},  // six significant digits
      {{0.0, L"", L"", 0, 0, {}}, kVersion, L"%ct8[0]"},
      {{-1.0, L"", L"", 0, 0, {}}, kVersion, L"%ct8[-1]"},
      {{1.0000001, L"", L"", 0, 0, {}}, kVersion, L""},  // would be written "1"
      {{0.9999999, L"", L"", 0, 0, {}}, kVersion, L""},
      {{1.00001, L"", L"", 0, 0, {}}, kVersion, L"%ct8[1.00001]"},
      {{1.0, L"", L"", 44, 0, {}}, kVersion, L"%ds44"},
      {{1.0, L"", L"", 0, 46, {}}, kVersion, L"%th46"},
      {{1.0, L"", L"", -1, -5, {}}, kVersion, L""},
      {withFlags(4 | 2), kVersion, L"%zs6"},  // Leading and 0 inches
      {withFlags(1), kVersion, L"%zs1"},
      {withFlags(8), kVersion, L"%zs8"},
      {withFlags(15), kVersion, L"%zs15"},
      {{2.54, L"pre", L"suf", 44, 32, ZeroSuppression::fromMask(15)},
       kVersion,
       L"%ps[pre,suf]%ct8[2.54]%ds44%th32%zs15"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.settings.build(c.version), c.expected) << c.expected;
  }
}

TEST(AdditionalFormat, ZeroSuppressionMaskBits) {
  struct Case {
    ZeroSuppression zeros;
    int mask;
  };
  const Case cases[] = {
      {{false, false, false, false}, 0}, {{false, false, true, false}, 1}, {{false, false, false, true}, 2},
      {{true, false, false, false}, 4},  {{false, true, false, false}, 8}, {{true, true, true, true}, 15},
      {{true, false, false, true}, 6},   {{false, true, true, false}, 9},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.zeros.mask(), c.mask);
    EXPECT_EQ(ZeroSuppression::fromMask(c.mask), c.zeros) << c.mask;
  }
  EXPECT_EQ(ZeroSuppression::fromMask(16 | 8), ZeroSuppression::fromMask(8));  // higher bits mean nothing
}

TEST(AdditionalFormat, EscapesAndUnescapes) {
  struct Case {
    const wchar_t* plain;
    const wchar_t* escaped;
  };
  const Case cases[] = {
      {L"", L""},
      {L"abc", L"abc"},
      {L",", L"\\,"},
      {L"[]", L"\\[\\]"},
      {L"\\", L"\\\\"},
      {L"\\,", L"\\\\\\,"},
      {L"a,b[c]d\\e", L"a\\,b\\[c\\]d\\\\e"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(escapeAffix(c.plain), c.escaped) << c.plain;
    EXPECT_EQ(unescapeAffix(c.escaped), c.plain) << c.escaped;
  }
  EXPECT_EQ(unescapeAffix(L"a\\b"), L"a\\b");  // not an escape
  EXPECT_EQ(unescapeAffix(L"end\\"), L"end\\");
}

TEST(ParseFormat, ReadsTheDialogSettingsBack) {
  struct Case {
    const wchar_t* format;
    std::optional<int> units;
    std::optional<int> precision;
    std::optional<std::wstring> prefix;
    std::optional<std::wstring> suffix;
    std::optional<double> factor;
    std::optional<int> zeros;
  };
  const auto none = std::nullopt;
  const Case cases[] = {
      {L"", none, none, none, none, none, none},
      {L"%lu2%pr3%ct8[2.54]%zs8", 2, 3, none, none, 2.54, 8},
      {L"%lu6%qf1", 6, none, none, none, none, none},
      {L"%lu2%ct4%qf1 SQ. FT.%pr2", 2, 2, none, none, none, none},  // %ct4 is not a factor
      {L"%ct8[2]%ps[a,b]", none, none, L"a", L"b", 2.0, none},      // greedy capture, number read first
      {L"%ps[A\\,B,]", none, none, L"A,B", L"", none, none},
      {L"%ps[\\[x\\],\\\\]%lu4", 4, none, L"[x]", L"\\", none, none},
      {L"%ps[a,b,c]", none, none, L"a", L"b,c", none, none},
      {L"%ps[only]", none, none, L"only", L"", none, none},
      {L"%ps[abc", none, none, L"abc", L"", none, none},  // unclosed: to the end
      {L"%ps[x\\", none, none, L"x\\", L"", none, none},
      {L"%ct8[abc]", none, none, none, none, 0.0, none},  // no number: the runtime's 0
      {L"%ct8[1.000000000000000E-006]", none, none, none, none, 1e-6, none},
      {L"%ct8[0.0069444444444444]", none, none, none, none, 0.0069444444444444, none},
      {L"%zs0", none, none, none, none, none, 0},
      {L"%zs15%zs1", none, none, none, none, none, 15},   // the first one counts
      {L"%LU2%PR2", none, none, none, none, none, none},  // the patterns are case-sensitive
      {L"%lu99999999999", INT32_MAX, none, none, none, none, none},
      {L"%lu%pr", none, none, none, none, none, none},
      {L"1:%lu2%ct1%qf2816", 2, none, none, none, none, none},
  };
  for (const auto& c : cases) {
    const ParsedFormat p = parseFormat(c.format);
    const std::wstring where = c.format;
    EXPECT_EQ(p.units, c.units) << where;
    EXPECT_EQ(p.precision, c.precision) << where;
    EXPECT_EQ(p.prefix, c.prefix) << where;
    EXPECT_EQ(p.suffix, c.suffix) << where;
    EXPECT_EQ(p.conversionFactor, c.factor) << where;
    EXPECT_EQ(p.zeros, c.zeros ? std::optional(ZeroSuppression::fromMask(*c.zeros)) : std::nullopt) << where;
  }
}

TEST(ParseFormat, MissingCodesLeaveSettingsAsTheyWere) {
  AdditionalFormat settings{3.0, L"pre", L"suf", 44, 39, ZeroSuppression::fromMask(5)};
  parseFormat(L"%lu2%pr2").applyTo(settings);
  EXPECT_EQ(settings, (AdditionalFormat{3.0, L"pre", L"suf", 44, 39, ZeroSuppression::fromMask(5)}));
  parseFormat(L"%zs8%ps[,x]").applyTo(settings);
  EXPECT_EQ(settings, (AdditionalFormat{3.0, L"", L"x", 44, 39, ZeroSuppression::fromMask(8)}));
  parseFormat(L"%ct8[0.25]").applyTo(settings);
  EXPECT_EQ(settings, (AdditionalFormat{0.25, L"", L"x", 44, 39, ZeroSuppression::fromMask(8)}));
}

// Whatever the dialog writes for a host with escapes, it reads back the same, for every
// combination of the four flags.
TEST(ParseFormat, RoundTripsEverythingItBuilds) {
  const std::wstring texts[] = {L"", L"a", L"A,B", L"[1]", L"\\", L"x\\,y]", L"%lu2", L"area = ", L"]]],,,"};
  const double factors[] = {1.0, 0.5, 2.54, 1e-07, 1000.0, 0.00694444, -3.0};
  for (int mask = 0; mask < 16; ++mask) {
    for (const auto& prefix : texts) {
      for (const auto& suffix : texts) {
        for (const double factor : factors) {
          const AdditionalFormat written{factor, prefix, suffix, 44, 46, ZeroSuppression::fromMask(mask)};
          const std::wstring format = L"%lu4%pr5" + written.build(kVersion);
          AdditionalFormat read;
          read.decimalSeparator = 44;  // not read back
          read.thousandsSeparator = 46;
          const ParsedFormat parsed = parseFormat(format);
          parsed.applyTo(read);
          ASSERT_EQ(read, written) << format;
          ASSERT_EQ(parsed.units, 4) << format;
          ASSERT_EQ(parsed.precision, 5) << format;
        }
      }
    }
  }
}

// Without escapes a comma in the prefix moves the split: what older hosts wrote reads back
// differently.
TEST(ParseFormat, UnescapedTextsFromOlderHostsSplitAtTheirFirstComma) {
  const AdditionalFormat written{1.0, L"A,B", L"C", 0, 0, {}};
  const ParsedFormat parsed = parseFormat(written.build(16));
  EXPECT_EQ(parsed.prefix, L"A");
  EXPECT_EQ(parsed.suffix, L"B,C");
}

}  // namespace
}  // namespace corvane
