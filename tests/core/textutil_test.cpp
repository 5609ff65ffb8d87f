#include "core/textutil.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvane::core {
namespace {

std::wstring hex(wchar_t c) {
  wchar_t buffer[16];
  swprintf(buffer, 16, L"U+%04X", static_cast<unsigned>(c));
  return buffer;
}

TEST(TextUtil, CaseMappingOfSingleCharacters) {
  struct Case {
    wchar_t c;
    wchar_t upper;
    wchar_t lower;
  } const cases[] = {
      {L'a', L'A', L'a'},          {L'Z', L'Z', L'z'},          {L'@', L'@', L'@'},
      {L'[', L'[', L'['},          {L'`', L'`', L'`'},          {L'{', L'{', L'{'},
      {L'ä', L'Ä', L'ä'},          {L'Þ', L'Þ', L'þ'},          {L'×', L'×', L'×'},  // not letters
      {L'÷', L'÷', L'÷'},          {L'ß', L'ß', L'ß'},          {L'µ', L'µ', L'µ'},  // no one-to-one partner
      {L'ÿ', L'Ÿ', L'ÿ'},          {L'Ÿ', L'Ÿ', L'ÿ'},          {L'ā', L'Ā', L'ā'},
      {L'į', L'Į', L'į'},          {L'İ', L'İ', L'İ'},          {L'ı', L'ı', L'ı'},
      {L'ĳ', L'Ĳ', L'ĳ'},          {L'ĸ', L'ĸ', L'ĸ'},          {L'Ĺ', L'Ĺ', L'ĺ'},
      {L'ň', L'Ň', L'ň'},          {L'ŉ', L'ŉ', L'ŉ'},          {L'Ŋ', L'Ŋ', L'ŋ'},
      {L'ŷ', L'Ŷ', L'ŷ'},          {L'ž', L'Ž', L'ž'},          {L'ſ', L'ſ', L'ſ'},
      {L'ά', L'Ά', L'ά'},          {L'Ί', L'Ί', L'ί'},          {L'ό', L'Ό', L'ό'},
      {L'Ώ', L'Ώ', L'ώ'},          {L'α', L'Α', L'α'},          {L'Ρ', L'Ρ', L'ρ'},
      {L'σ', L'Σ', L'σ'},          {L'ς', L'ς', L'ς'},          {L'ϋ', L'Ϋ', L'ϋ'},
      {L'ϣ', L'Ϣ', L'ϣ'},          {L'Ѐ', L'Ѐ', L'ѐ'},          {L'ё', L'Ё', L'ё'},
      {L'џ', L'Џ', L'џ'},          {L'а', L'А', L'а'},          {L'Я', L'Я', L'я'},
      {L'ѡ', L'Ѡ', L'ѡ'},          {L'ҋ', L'Ҋ', L'ҋ'},          {L'Ӏ', L'Ӏ', L'ӏ'},
      {L'ӂ', L'Ӂ', L'ӂ'},          {L'Ӎ', L'Ӎ', L'ӎ'},          {L'ӑ', L'Ӑ', L'ӑ'},
      {L'ԯ', L'Ԯ', L'ԯ'},          {L'Ա', L'Ա', L'Ա'},          {L'ａ', L'ａ', L'ａ'},  // outside the folded scripts
      {static_cast<wchar_t>(-1), static_cast<wchar_t>(-1), static_cast<wchar_t>(-1)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(toUpperChar(c.c), c.upper) << hex(c.c);
    EXPECT_EQ(toLowerChar(c.c), c.lower) << hex(c.c);
  }
}

TEST(TextUtil, CaseMappingIsOneToOne) {
  for (wchar_t c = 0; c < 0x0600; ++c) {
    const wchar_t up = toUpperChar(c);
    const wchar_t low = toLowerChar(c);
    ASSERT_TRUE(up == c || low == c) << hex(c);  // no letter is both a capital and a small one
    if (up != c) {
      EXPECT_EQ(toLowerChar(up), c) << hex(c);
    }
    if (low != c) {
      EXPECT_EQ(toUpperChar(low), c) << hex(c);
    }
  }
}

TEST(TextUtil, CompareNoCaseFoldsToLowerThenComparesCodeUnits) {
  struct Case {
    std::wstring a;
    std::wstring b;
    int sign;
  } const cases[] = {
      {L"AcArea", L"ACAREA", 0},
      {L"acarea", L"AcArea", 0},
      {L"AcArea", L"AcAreas", -1},
      {L"b", L"A", 1},
      {L"", L"", 0},
      {L"", L"a", -1},
      {L"ab", L"a", 1},
      {L"_a", L"A", -1},  // '_' sorts before the letters once they are folded to lower case
      {L"[", L"a", -1},
      {L"ÄÖÜ", L"äöü", 0},
      {L"Ä", L"b", 1},
      {L"ŁÓDŹ", L"łódź", 0},
      {L"ΣΟΦΙΑ", L"σοφια", 0},
      {L"ΣΟΦΟΣ", L"σοφος", 1},  // the final sigma has no capital of its own
      {L"МОСКВА", L"москва", 0},
      {L"Ёж", L"ёЖ", 0},
      {L"ÿ", L"Ÿ", 0},
      {L"Straße", L"STRASSE", 1},
      {L"\U0001F600", L"a", 1},  // code units compare unsigned
      {std::wstring(1, static_cast<wchar_t>(-1)), L"a", 1},
  };
  for (const auto& c : cases) {
    const int r = compareNoCase(c.a, c.b);
    EXPECT_EQ((r > 0) - (r < 0), c.sign) << c.a << L" / " << c.b;
    const int back = compareNoCase(c.b, c.a);
    EXPECT_EQ((back > 0) - (back < 0), -c.sign) << c.a << L" / " << c.b;
    EXPECT_EQ(equalsNoCase(c.a, c.b), c.sign == 0) << c.a << L" / " << c.b;
  }
}

TEST(TextUtil, UpperAndLowerOfWholeTexts) {
  EXPECT_EQ(toUpper(L"straße ĳ àé ω ς"), L"STRAßE Ĳ ÀÉ Ω ς");
  EXPECT_EQ(toLower(L"ÀÉ Ω Ž İ"), L"àé ω ž İ");
  EXPECT_EQ(toUpper(L""), L"");
}

TEST(TextUtil, PrefixAndSearchIgnoringCase) {
  struct Case {
    std::wstring text;
    std::wstring what;
    std::size_t from;
    std::size_t found;
  } const cases[] = {
      {L"one TWO three", L"two", 0, 4},
      {L"one TWO three two", L"two", 5, 14},
      {L"abc", L"abcd", 0, std::wstring::npos},
      {L"abc", L"", 1, 1},
      {L"abc", L"", 3, 3},
      {L"abc", L"", 4, std::wstring::npos},
      {L"abc", L"c", 7, std::wstring::npos},
      {L"ÀBÇ", L"ç", 0, 2},
      {L"aaab", L"AAB", 0, 1},
  };
  for (const auto& c : cases) EXPECT_EQ(findNoCase(c.text, c.what, c.from), c.found) << c.text << L" / " << c.what;

  EXPECT_TRUE(startsWithNoCase(L"%<\\ACOBJPROP x", L"%<\\AcObjProp"));
  EXPECT_TRUE(startsWithNoCase(L"abc", L""));
  EXPECT_FALSE(startsWithNoCase(L"ab", L"abc"));
  EXPECT_FALSE(startsWithNoCase(L"xabc", L"abc"));
}

TEST(TextUtil, TrimTakesTheCLocaleWhiteSpaceOnly) {
  struct Case {
    std::wstring text;
    std::wstring both;
    std::wstring left;
    std::wstring right;
  } const cases[] = {
      {L" \t a b \r\n", L"a b", L"a b \r\n", L" \t a b"},
      {L"\v\fx\v\f", L"x", L"x\v\f", L"\v\fx"},
      {L"", L"", L"", L""},
      {L" \t\n ", L"", L"", L""},
      {L"\u00A0x\u3000", L"\u00A0x\u3000", L"\u00A0x\u3000", L"\u00A0x\u3000"},  // not blanks in the C locale
      {std::wstring(L"\0 x", 3), std::wstring(L"\0 x", 3), std::wstring(L"\0 x", 3), std::wstring(L"\0 x", 3)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(trim(c.text), c.both) << c.text;
    EXPECT_EQ(trimLeft(c.text), c.left) << c.text;
    EXPECT_EQ(trimRight(c.text), c.right) << c.text;
  }
}

TEST(TextUtil, ReplaceAllScansLeftToRightWithoutOverlap) {
  struct Case {
    std::wstring text;
    std::wstring from;
    std::wstring to;
    std::wstring result;
  } const cases[] = {
      {L"aaa", L"aa", L"b", L"ba"},
      {L"aaaa", L"aa", L"b", L"bb"},
      {L"a", L"a", L"aa", L"aa"},  // the replacement is not scanned again
      {L"abc", L"", L"x", L"abc"},
      {L"a.b.c", L".", L"", L"abc"},
      {L"2130 x 2130", L"2130", L"2F3", L"2F3 x 2F3"},
      {L"abc", L"abcd", L"x", L"abc"},
      {L"", L"a", L"b", L""},
      {L"Abc", L"a", L"x", L"Abc"},  // case-sensitive
  };
  for (const auto& c : cases) EXPECT_EQ(replaceAll(c.text, c.from, c.to), c.result) << c.text;
}

TEST(TextUtil, SplitKeepsEmptyParts) {
  using Parts = std::vector<std::wstring>;
  struct Case {
    std::wstring text;
    Parts parts;
  } const cases[] = {
      {L"a,,b", Parts{L"a", L"", L"b"}},
      {L"", Parts{L""}},
      {L"a", Parts{L"a"}},
      {L",", Parts{L"", L""}},
      {L"1;2;", Parts{L"1", L"2", L""}},
  };
  for (const auto& c : cases) EXPECT_EQ(split(c.text, c.text.find(L';') != std::wstring::npos ? L';' : L','), c.parts) << c.text;
}

}  // namespace
}  // namespace corvane::core
