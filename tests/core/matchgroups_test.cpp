#include "core/matchgroups.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvane::core {
namespace {

struct Case {
  const wchar_t* text;
  const wchar_t* pattern;
  bool matches;
  std::vector<std::wstring> captures;
};

TEST(MatchGroups, Dialect) {
  const Case cases[] = {
      // The patterns the field code conversions use.
      {L"%<\\AcObjProp Object(%<\\_ObjId 2130>%).Area>%", L"%<\\\\_ObjId {[0-9]+}>%", true, {L"2130"}},
      {L"%<\\AcObjProp Object(%<\\_ObjHandle 2aF>%).Area>%", L"%<\\\\_ObjHandle {[0-9a-zA-Z]+}>%", true, {L"2aF"}},
      {L"TABLE(<<2F3>>).B12", L"TABLE\\([<]*{[A-Z0-9a-z]+}[>]*\\)\\.{.*}", true, {L"2F3", L"B12"}},
      {L"TABLE(2F3).$A$1", L"TABLE\\([<]*{[A-Z0-9a-z]+}[>]*\\)\\.{.*}", true, {L"2F3", L"$A$1"}},
      {L"TABLE(2F3)", L"TABLE\\([<]*{[A-Z0-9a-z]+}[>]*\\)\\.{.*}", false, {}},
      // Case-sensitive.
      {L"%<\\_objid 12>%", L"%<\\\\_ObjId {[0-9]+}>%", false, {}},
      // Leftmost match, then greedy repetition.
      {L"a1 b22 c333", L"{[0-9]+}", true, {L"1"}},
      {L"xaaay", L"{a*}y", true, {L"aaa"}},
      {L"key=val=ue", L"{.*}={.*}", true, {L"key=val", L"ue"}},
      {L"abc", L"{.*}{.*}", true, {L"abc", L""}},
      {L"ab", L"a{x?}b", true, {L""}},
      // Sets: ranges, negation, a leading ']' and escapes inside.
      {L"A-Z", L"{[^-]+}", true, {L"A"}},
      {L"x]y", L"{[]]}", true, {L"]"}},
      {L"a.b", L"a\\.{b}", true, {L"b"}},
      {L"aXb", L"a\\.b", false, {}},
      {L"a(b)", L"\\({.}\\)", true, {L"b"}},
      // Nested captures come in the order of their opening braces; the last pass of a repeat.
      {L"abcd", L"{a{b}{c}}d", true, {L"abc", L"b", L"c"}},
      {L"x1y2z3", L"({[a-z]}[0-9])+", true, {L"z"}},
      // Alternatives and plain groups.
      {L"catdog", L"{dog|cat}", true, {L"cat"}},
      {L"no", L"{yes}?no", true, {L""}},
      // Empty inputs and patterns that do not parse.
      {L"", L"{.*}", false, {}},
      {L"abc", L"", false, {}},
      {L"abc", L"{abc", false, {}},
      {L"abc", L"abc}", false, {}},
      {L"abc", L"[abc", false, {}},
      {L"abc", L"[]", false, {}},
      {L"abc", L"abc\\", false, {}},
      {L"abc", L"*abc", false, {}},
      {L"abc", L"(abc", false, {}},
      {L"abc", L"[z-a]", false, {}},
  };
  for (const auto& c : cases) {
    std::vector<std::wstring> captures = {L"stale"};
    EXPECT_EQ(MatchGroups(c.text, c.pattern, captures), c.matches) << "pattern " << std::wstring(c.pattern).size();
    EXPECT_EQ(captures, c.captures) << "text length " << std::wstring(c.text).size();
  }
}

TEST(MatchGroups, StackedRepeatsOnLongTextsAnswerWithoutBacktracking) {
  // A backtracking matcher needs time exponential in the number of groups here.
  std::wstring pattern;
  for (int i = 0; i < 20; ++i) pattern += L"{.*}";
  pattern += L"x";
  const std::wstring text(10000, L'a');
  std::vector<std::wstring> captures;
  EXPECT_FALSE(MatchGroups(text, pattern, captures));
  EXPECT_TRUE(MatchGroups(text + L"x", pattern, captures));
  ASSERT_EQ(captures.size(), 20u);
  EXPECT_EQ(captures[0].size(), 10000u);  // greedy: the first group takes everything
  EXPECT_EQ(captures[19], L"");
}

}  // namespace
}  // namespace corvane::core
