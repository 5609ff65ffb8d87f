#include "headless/editor/wcmatch.h"

#include <gtest/gtest.h>

namespace corvane::headless {
namespace {

TEST(WcMatch, PatternsOfSelectionFilters) {
  struct Case {
    const wchar_t* text;
    const wchar_t* pattern;
    bool matches;
  } const cases[] = {
      {L"CIRCLE", L"CIRCLE", true},
      {L"circle", L"CIRCLE", true},  // filters ignore case
      {L"CIRCLES", L"CIRCLE", false},
      {L"ACAD_TABLE", L"ACAD_TABLE", true},
      {L"LWPOLYLINE", L"*POLYLINE", true},
      {L"POLYLINE", L"*POLYLINE", true},
      {L"POLYLINES", L"*POLYLINE", false},
      {L"Walls", L"W*S", true},
      {L"Wallsx", L"W*S", false},
      {L"ab", L"a*b*", true},
      {L"aXbYb", L"a*b", true},  // the star gives back what the last item needs
      {L"", L"*", true},
      {L"", L"?", false},
      {L"A1", L"A#", true},
      {L"AB", L"A#", false},
      {L"1x", L"#@", true},
      {L"1-", L"#.", true},
      {L"1a", L"#.", false},
      {L"B", L"[ABC]", true},
      {L"D", L"[ABC]", false},
      {L"D", L"[~ABC]", true},
      {L"q", L"[a-z]", true},
      {L"Q", L"[a-z]", true},
      {L"5", L"[a-z]", false},
      {L"LINE", L"ARC,LINE,CIRCLE", true},
      {L"TEXT", L"ARC,LINE,CIRCLE", false},
      {L"TEXT", L"~LINE", true},
      {L"LINE", L"~LINE", false},
      {L"a,b", L"a`,b", true},  // an escaped comma is a comma
      {L"a*b", L"a`*b", true},
      {L"axb", L"a`*b", false},
      {L"[", L"[", true},  // an open bracket alone stands for itself
      {L"x#", L"x`#", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(wcMatch(c.text, c.pattern), c.matches) << "'" << ::testing::PrintToString(std::wstring(c.text)) << "' ~ "
                                                     << ::testing::PrintToString(std::wstring(c.pattern));
  }
}

}  // namespace
}  // namespace corvane::headless
