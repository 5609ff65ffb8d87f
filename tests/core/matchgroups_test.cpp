#include "core/matchgroups.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace corvane::core {
namespace {

using Captures = std::vector<std::wstring>;

struct Case {
  std::wstring text;
  std::wstring pattern;
  bool matches;
  Captures captures;
};

void expectMatches(const std::vector<Case>& cases) {
  for (const auto& c : cases) {
    Captures captures = {L"stale"};
    EXPECT_EQ(MatchGroups(c.text, c.pattern, captures), c.matches) << c.pattern << L" on " << c.text;
    EXPECT_EQ(captures, c.captures) << c.pattern << L" on " << c.text;
  }
}

TEST(MatchGroups, ThePatternsOfFieldCodes) {
  const std::wstring objId = L"%<\\\\_ObjId {[0-9]+}>%";
  const std::wstring objHandle = L"%<\\\\_ObjHandle {[0-9a-zA-Z]+}>%";
  const std::wstring table = L"TABLE\\([<]*{[A-Z0-9a-z]+}[>]*\\)\\.{.*}";
  expectMatches({
      {L"%<\\AcObjProp Object(%<\\_ObjId 2130>%).Area>%", objId, true, {L"2130"}},
      {L"%<\\AcObjProp Object(%<\\_ObjId 21x30>%).Area>%", objId, false, {}},
      {L"%<\\AcObjProp Object(%<\\_ObjId >%).Area>%", objId, false, {}},
      {L"%<\\_ObjId 1>% %<\\_ObjId 2>%", objId, true, {L"1"}},
      {L"%<\\_objid 12>%", objId, false, {}},  // case-sensitive
      {L"%<\\AcObjProp Object(%<\\_ObjHandle 2aF>%).Area>%", objHandle, true, {L"2aF"}},
      {L"TABLE(<<2F3>>).B12", table, true, {L"2F3", L"B12"}},
      {L"TABLE(2F3).$A$1", table, true, {L"2F3", L"$A$1"}},
      {L"x TABLE(<2F3).", table, true, {L"2F3", L""}},
      {L"TABLE(2F3)", table, false, {}},
      {L"TABLE(<>).A1", table, false, {}},
  });
}

TEST(MatchGroups, LiteralsEscapesAndSets) {
  expectMatches({
      {L"a.b", L"a\\.{b}", true, {L"b"}},
      {L"aXb", L"a\\.b", false, {}},
      {L"a(b)", L"\\({.}\\)", true, {L"b"}},
      {L"a*b", L"a\\*{b}", true, {L"b"}},
      {L"{x}", L"\\{{.}\\}", true, {L"x"}},
      {L"a\\b", L"{\\\\}", true, {L"\\"}},
      {L"[1]", L"\\[{1}\\]", true, {L"1"}},
      {L"a|b", L"a\\|{b}", true, {L"b"}},
      {L"x?+", L"{x\\?\\+}", true, {L"x?+"}},
      {L"a^b$", L"a^{b}$", true, {L"b"}},  // no anchors in this dialect
      {L"a-b", L"{a-b}", true, {L"a-b"}},
      {L"\n\xE9", L"{..}", true, {L"\n\xE9"}},
      {L"2b", L"{[a-cx]}", true, {L"b"}},
      {L"abc123", L"{[^0-9]+}", true, {L"abc"}},
      {L"A-Z", L"{[^-]+}", true, {L"A"}},
      {L"x]y", L"{[]]}", true, {L"]"}},  // a ']' first in a set is a member
      {L"x]y", L"{[^]x]}", true, {L"y"}},
      {L"a]", L"{[\\]]}", true, {L"]"}},
      {L"b-", L"{[a\\-z]}", true, {L"-"}},
      {L"b-", L"{[-a]}", true, {L"-"}},
      {L"b-", L"{[a-]}", true, {L"-"}},
      {L"x\xE9y", L"{[\xE0-\xFF]+}", true, {L"\xE9"}},
      {L"\xE9x", L"{[^\xE0-\xFF]}", true, {L"x"}},
      {L"a\\b", L"{[\\\\]}", true, {L"\\"}},
      {L"ABC", L"{[a-z]}", false, {}},  // case-sensitive
  });
}

// The choices the dialect makes among the matches a pattern has; the comparison with a
// backtracking matcher below holds them on generated patterns as well.
TEST(MatchGroups, LeftmostThenGreedyThenFirstAlternativeWithCapturesByOpeningBrace) {
  expectMatches({
      {L"a1 b22 c333", L"{[0-9]+}", true, {L"1"}},
      {L"key=val=ue", L"{.*}={.*}", true, {L"key=val", L"ue"}},
      {L"aa", L"{a?}{a*}", true, {L"a", L"a"}},
      {L"abc", L"{[0-9]*}", true, {L""}},  // an empty match at the very start is leftmost
      {L"ab", L"{a|ab}", true, {L"a"}},  // the first alternative that leads to a match, not the longest
      {L"abcd", L"{a|ab}{c|bcd}", true, {L"a", L"bcd"}},
      {L"no", L"{yes}?no", true, {L""}},
      {L"abc", L"{x}", false, {}},
      {L"<a><b>", L"<{[^>]*}>", true, {L"a"}},
      {L"abcd", L"{a{b}{c}}d", true, {L"abc", L"b", L"c"}},
      {L"x1y2z3", L"({[a-z]}[0-9])+", true, {L"z"}},  // the last pass of a repeat
      {L"ab", L"({a}|b)+", true, {L"a"}},              // the last pass it took part in
      {L"b", L"{a}|{b}", true, {L"", L"b"}},           // a group that did not take part is empty
      {L"x", L"{}", true, {L""}},
      {L"x", L"()", true, {}},
      {L"b", L"a|", true, {}},
  });
}

TEST(MatchGroups, PatternsThatDoNotParseNeverMatch) {
  std::wstring deep;
  for (int i = 0; i < 300; ++i) deep += L"(";
  deep += L"a";
  for (int i = 0; i < 300; ++i) deep += L")";
  std::wstring nested;
  for (int i = 0; i < 200; ++i) nested += L"{";
  nested += L"a";
  for (int i = 0; i < 200; ++i) nested += L"}";
  expectMatches({
      {L"", L"{.*}", false, {}},
      {L"abc", L"", false, {}},
      {L"abc", L"{abc", false, {}},
      {L"abc", L"abc}", false, {}},
      {L"abc", L"(abc", false, {}},
      {L"abc", L"abc)", false, {}},
      {L"abc", L"{a)", false, {}},
      {L"abc", L"(a}", false, {}},
      {L"abc", L"[abc", false, {}},
      {L"abc", L"a]", false, {}},
      {L"abc", L"[]", false, {}},
      {L"abc", L"[^]", false, {}},
      {L"abc", L"[a-\\", false, {}},
      {L"abc", L"[\\", false, {}},
      {L"abc", L"abc\\", false, {}},
      {L"abc", L"\\", false, {}},
      {L"abc", L"*abc", false, {}},
      {L"abc", L"+", false, {}},
      {L"abc", L"?", false, {}},
      {L"abc", L"a|*b", false, {}},
      {L"abc", L"(*)", false, {}},
      {L"abc", L"{+a}", false, {}},
      {L"abc", L"a**", false, {}},
      {L"abc", L"a+?", false, {}},
      {L"abc", L"a?*", false, {}},
      {L"abc", L"[z-a]", false, {}},
      {L"abc", deep, false, {}},  // nested deeper than any real pattern
      {L"abc", nested, true, Captures(200, L"a")},
  });
}

TEST(MatchGroups, CodeUnitsOutsideUnicodeAreOrdinaryCharacters) {
  const wchar_t odd = static_cast<wchar_t>(-5);
  Captures captures;
  EXPECT_TRUE(MatchGroups(std::wstring{L'a', odd}, std::wstring{L'{', L'[', L'^', L'a', L']', L'}'}, captures));
  EXPECT_EQ(captures, Captures{std::wstring(1, odd)});
  EXPECT_TRUE(MatchGroups(std::wstring{L'a', odd}, std::wstring{L'{', L'[', L'b', L'-', odd, L']', L'}'}, captures));
  EXPECT_EQ(captures, Captures{std::wstring(1, odd)});
}

TEST(MatchGroups, StackedRepeatsOnLongTextsAnswerWithoutBacktracking) {
  // A backtracking matcher needs time exponential in the number of groups on these.
  std::wstring pattern;
  for (int i = 0; i < 20; ++i) pattern += L"{.*}";
  pattern += L"x";
  const std::wstring text(10000, L'a');
  Captures captures;
  EXPECT_FALSE(MatchGroups(text, pattern, captures));
  EXPECT_TRUE(captures.empty());
  EXPECT_TRUE(MatchGroups(text + L"x", pattern, captures));
  ASSERT_EQ(captures.size(), 20u);
  EXPECT_EQ(captures[0].size(), 10000u);  // greedy: the first group takes everything
  EXPECT_EQ(captures[19], L"");

  EXPECT_FALSE(MatchGroups(std::wstring(5000, L'a'), L"{.*}{.*}{.*}x", captures));
  EXPECT_FALSE(MatchGroups(std::wstring(5000, L'a'), L"(a*)*b", captures));  // a repeat of a repeat
  EXPECT_FALSE(MatchGroups(std::wstring(5000, L'a'), L"(a|a)*b", captures));
  EXPECT_TRUE(MatchGroups(std::wstring(5000, L'a') + L"b", L"{(a|aa)+}b", captures));
  EXPECT_EQ(captures, Captures{std::wstring(5000, L'a')});
}

// A backtracking matcher over a generated pattern tree: the answer a backtracking engine
// gives, to hold the simulation to. Repeat bodies never match the empty text, the one case
// where engines differ among themselves.
struct Tree {
  enum Kind { kLiteral, kAny, kSet, kConcat, kAlternate, kStar, kPlus, kQuestion, kCapture, kGroup };
  explicit Tree(Kind k) : kind(k) {}
  Kind kind;
  wchar_t c = 0;
  std::wstring members;  // kSet
  bool negated = false;
  int capture = -1;
  std::vector<Tree> children;
};

class Reference {
 public:
  Reference(std::wstring_view text, int captures) : text_(text), slots_(2 * static_cast<std::size_t>(captures)) {}

  bool search(const Tree& tree, Captures& captures) {
    for (std::size_t start = 0; start <= text_.size(); ++start) {
      slots_.assign(slots_.size(), std::wstring::npos);
      if (match(tree, start, [](std::size_t) { return true; })) {
        for (std::size_t i = 0; i < slots_.size(); i += 2) {
          captures.push_back(slots_[i] == std::wstring::npos
                                 ? std::wstring()
                                 : std::wstring(text_.substr(slots_[i], slots_[i + 1] - slots_[i])));
        }
        return true;
      }
    }
    return false;
  }

 private:
  using Next = std::function<bool(std::size_t)>;

  bool match(const Tree& t, std::size_t i, const Next& next) {
    switch (t.kind) {
      case Tree::kLiteral: return i < text_.size() && text_[i] == t.c && next(i + 1);
      case Tree::kAny: return i < text_.size() && next(i + 1);
      case Tree::kSet:
        return i < text_.size() && (t.members.find(text_[i]) != std::wstring::npos) != t.negated && next(i + 1);
      case Tree::kConcat: return sequence(t, 0, i, next);
      case Tree::kAlternate:
        for (const auto& child : t.children) {
          if (match(child, i, next)) return true;
        }
        return false;
      case Tree::kStar: return repeat(t.children[0], i, next);
      case Tree::kPlus: return match(t.children[0], i, [&](std::size_t j) { return repeat(t.children[0], j, next); });
      case Tree::kQuestion: return match(t.children[0], i, next) || next(i);
      case Tree::kGroup: return match(t.children[0], i, next);
      case Tree::kCapture: {
        const std::size_t begin = 2 * static_cast<std::size_t>(t.capture);
        const std::size_t oldBegin = slots_[begin], oldEnd = slots_[begin + 1];
        slots_[begin] = i;
        const bool ok = match(t.children[0], i, [&](std::size_t j) {
          const std::size_t before = slots_[begin + 1];
          slots_[begin + 1] = j;
          if (next(j)) return true;
          slots_[begin + 1] = before;
          return false;
        });
        if (!ok) {
          slots_[begin] = oldBegin;
          slots_[begin + 1] = oldEnd;
        }
        return ok;
      }
    }
    return false;
  }

  bool sequence(const Tree& t, std::size_t k, std::size_t i, const Next& next) {
    if (k == t.children.size()) return next(i);
    return match(t.children[k], i, [&](std::size_t j) { return sequence(t, k + 1, j, next); });
  }

  bool repeat(const Tree& body, std::size_t i, const Next& next) {
    return match(body, i, [&](std::size_t j) { return repeat(body, j, next); }) || next(i);
  }

  std::wstring_view text_;
  std::vector<std::size_t> slots_;
};

class Generator {
 public:
  explicit Generator(unsigned seed) : rng_(seed) {}

  // A random tree, its captures numbered in the order of their opening braces.
  Tree pattern(int depth, int& captures) {
    Tree t = below(4) == 0 ? alternation(depth) : item(depth);
    // A pattern that can match the empty text matches every text; keep those rare.
    if (nullable(t) && below(8) != 0) {
      Tree first(Tree::kLiteral);
      first.c = L"abc"[below(3)];
      Tree both(Tree::kConcat);
      both.children.push_back(std::move(first));
      if (t.kind == Tree::kAlternate) {
        Tree group(Tree::kGroup);
        group.children.push_back(std::move(t));
        t = std::move(group);
      }
      both.children.push_back(std::move(t));
      t = std::move(both);
    }
    captures = 0;
    number(t, captures);
    return t;
  }

  std::wstring text() {
    std::wstring s;
    const int n = 1 + below(10);
    for (int i = 0; i < n; ++i) s += L"abc.xyz"[below(7)];
    return s;
  }

  static std::wstring render(const Tree& t) {
    std::wstring s;
    switch (t.kind) {
      case Tree::kLiteral:
        if (t.c == L'.') s += L'\\';
        s += t.c;
        break;
      case Tree::kAny: s += L'.'; break;
      case Tree::kSet:
        s += t.negated ? L"[^" : L"[";
        s += t.members == L"ab" ? L"a-b" : L"bc.";
        s += L']';
        break;
      case Tree::kConcat:
        for (const auto& child : t.children) s += render(child);
        break;
      case Tree::kAlternate:
        for (std::size_t k = 0; k < t.children.size(); ++k) {
          if (k > 0) s += L'|';
          s += render(t.children[k]);
        }
        break;
      case Tree::kStar: s += render(t.children[0]) + L"*"; break;
      case Tree::kPlus: s += render(t.children[0]) + L"+"; break;
      case Tree::kQuestion: s += render(t.children[0]) + L"?"; break;
      case Tree::kCapture: s += L"{" + render(t.children[0]) + L"}"; break;
      case Tree::kGroup: s += L"(" + render(t.children[0]) + L")"; break;
    }
    return s;
  }

 private:
  int below(int n) { return static_cast<int>(rng_() % static_cast<unsigned>(n)); }

  // Anything but an alternation, which only stands alone or as the whole of a group.
  Tree item(int depth) {
    Tree t{depth <= 0 ? static_cast<Tree::Kind>(below(3)) : kinds[below(9)]};
    switch (t.kind) {
      case Tree::kLiteral: t.c = L"abc."[below(4)]; break;
      case Tree::kAny: break;
      case Tree::kSet:
        t.negated = below(3) == 0;
        t.members = below(2) ? L"ab" : L"bc.";
        break;
      case Tree::kConcat: {
        const int n = below(8) == 0 ? 0 : 1 + below(3);
        for (int k = 0; k < n; ++k) t.children.push_back(item(depth - 1));
        break;
      }
      case Tree::kStar:
      case Tree::kPlus:
      case Tree::kQuestion:
        t.children.push_back(atom(depth - 1));
        if (t.kind != Tree::kQuestion && nullable(t.children[0])) t.kind = Tree::kQuestion;
        break;
      case Tree::kCapture:
      case Tree::kGroup:
        t.children.push_back(below(2) ? alternation(depth - 1) : item(depth - 1));
        break;
      case Tree::kAlternate: break;
    }
    return t;
  }

  Tree alternation(int depth) {
    Tree t{Tree::kAlternate};
    const int n = 2 + below(2);
    for (int k = 0; k < n; ++k) t.children.push_back(item(depth - 1));
    return t;
  }

  // Something a repeat can follow: one character item or a group.
  Tree atom(int depth) {
    for (;;) {
      Tree t = item(depth);
      if (t.kind != Tree::kConcat && t.kind != Tree::kStar && t.kind != Tree::kPlus && t.kind != Tree::kQuestion) {
        return t;
      }
    }
  }

  static void number(Tree& t, int& next) {
    if (t.kind == Tree::kCapture) t.capture = next++;
    for (auto& child : t.children) number(child, next);
  }

  static bool nullable(const Tree& t) {
    switch (t.kind) {
      case Tree::kLiteral:
      case Tree::kAny:
      case Tree::kSet: return false;
      case Tree::kConcat:
        for (const auto& child : t.children) {
          if (!nullable(child)) return false;
        }
        return true;
      case Tree::kAlternate:
        for (const auto& child : t.children) {
          if (nullable(child)) return true;
        }
        return false;
      case Tree::kStar:
      case Tree::kQuestion: return true;
      default: return nullable(t.children[0]);
    }
  }

  static constexpr Tree::Kind kinds[] = {Tree::kLiteral, Tree::kAny,      Tree::kSet,     Tree::kConcat, Tree::kStar,
                                         Tree::kPlus,    Tree::kQuestion, Tree::kCapture, Tree::kGroup};
  std::mt19937 rng_;
};

TEST(MatchGroups, AgreesWithABacktrackingMatcher) {
  Generator generator(20240611);
  int compared = 0, matched = 0;
  for (int round = 0; round < 4000; ++round) {
    int count = 0;
    const Tree tree = generator.pattern(4, count);
    const std::wstring pattern = Generator::render(tree);
    if (pattern.empty()) continue;  // never a match, by definition
    for (int k = 0; k < 3; ++k) {
      const std::wstring text = generator.text();
      Captures expected;
      const bool expectedMatch = Reference(text, count).search(tree, expected);
      Captures actual;
      const bool actualMatch = MatchGroups(text, pattern, actual);
      ASSERT_EQ(actualMatch, expectedMatch) << pattern << L" on " << text;
      ASSERT_EQ(actual, expected) << pattern << L" on " << text;
      ++compared;
      matched += actualMatch;
    }
  }
  // Both outcomes must be well represented for the comparison to mean anything.
  EXPECT_GT(matched, compared / 5);
  EXPECT_LT(matched, compared - compared / 5);
}

}  // namespace
}  // namespace corvane::core
