#include "plugin/formula/tokenize.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/formula/exprerror.h"
#include "tokentext.h"

namespace corvane {
namespace {

using testing::shown;

TEST(Tokenize, SplitsAsTheFormulaLanguageReadsIt) {
  struct Case {
    const wchar_t* expression;
    std::vector<std::wstring> tokens;
  } const cases[] = {
      {L"  a + b  ", {L"a", L"+", L"b"}},
      {L"a+b", {L"a", L"+", L"b"}},
      {L"", {}},
      {L" \t ", {}},
      {L"1 2", {L"1", L"2"}},
      // A sign joins a number after an operator, "(" or ","; a name only at the very start.
      {L"-5*2", {L"-5", L"*", L"2"}},
      {L"3*-5", {L"3", L"*", L"-5"}},
      {L"3*-x", {L"3", L"*", L"-", L"x"}},
      {L"3 - -5", {L"3", L"-", L"-5"}},
      {L"3--5", {L"3", L"-", L"-5"}},
      {L"1-2", {L"1", L"-", L"2"}},
      {L"2^-1", {L"2", L"^", L"-1"}},
      {L"(-2)", {L"(", L"-2", L")"}},
      {L"f(1,-2)", {L"f", L"(", L"1", L",", L"-2", L")"}},
      {L"f(1,-x)", {L"f", L"(", L"1", L",", L"-", L"x", L")"}},
      {L"+5", {L"+5"}},
      {L"-x+1", {L"-x", L"+", L"1"}},
      {L"-ABS(3)", {L"-ABS", L"(", L"3", L")"}},
      {L"-(2)", {L"-", L"(", L"2", L")"}},
      {L"2*-(3)", {L"2", L"*", L"-", L"(", L"3", L")"}},
      {L"3*-.5", {L"3", L"*", L"-", L".5"}},
      {L"--5", {L"-", L"-5"}},
      // ":" is found in the operator tables, so a sign after it joins the number; "a:" is not.
      {L"a : -1", {L"a", L":", L"-1"}},
      {L"a:-1", {L"a:", L"-", L"1"}},
      {L"A1:B3", {L"A1:B3"}},
      // Two-character operators, and the pairs that are not one.
      {L"a<>b", {L"a", L"<>", L"b"}},
      {L"a<=b", {L"a", L"<=", L"b"}},
      {L"a>=b", {L"a", L">=", L"b"}},
      {L"a&&b", {L"a", L"&&", L"b"}},
      {L"a||b", {L"a", L"||", L"b"}},
      {L"a=>b", {L"a", L"=", L">", L"b"}},
      {L"a==b", {L"a", L"=", L"=", L"b"}},
      {L"a><b", {L"a", L">", L"<", L"b"}},
      {L"a&b", {L"a", L"&", L"b"}},
      {L"a|b", {L"a", L"|", L"b"}},
      {L"5%3/2", {L"5", L"%", L"3", L"/", L"2"}},
      // String literals: a marker and the text, either quote, no escapes.
      {L"\"it's\"", {L"{str}it's"}},
      {L"'say \"hi\"'", {L"{str}say \"hi\""}},
      {L"''", {L"{str}"}},
      {L"'a b' & \"c\"", {L"{str}a b", L"&", L"{str}c"}},
      {L"x'y'z", {L"x", L"{str}y", L"z"}},
      // Only the blank splits: tabs, "}", "~" and non-ASCII text stay inside a token.
      {L"a\tb c", {L"a\tb", L"c"}},
      {L"x}y~z", {L"x}y~z"}},
      {L"\u00e9t\u00e9+1", {L"\u00e9t\u00e9", L"+", L"1"}},
      {L"1!Radius", {L"1!Radius"}},
      // A surplus of ")" is the postfix pass's to find.
      {L"1+2)", {L"1", L"+", L"2", L")"}},
      {L")(", {L")", L"("}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(shown(Tokenize(c.expression)), c.tokens) << c.expression;
  }
}

TEST(Tokenize, FailsWithTheEngineMessages) {
  struct Case {
    const wchar_t* expression;
    const wchar_t* message;
  } const cases[] = {
      {L"'abc", L"Unterminated string constant"},
      {L"\"abc'", L"Unterminated string constant"},
      {L"'a' & 'b", L"Unterminated string constant"},
      {L"(1+2", L"Unbalanced parenthesis."},
      {L"((a)", L"Unbalanced parenthesis."},
      {L"f(", L"Unbalanced parenthesis."},
  };
  for (const auto& c : cases) {
    try {
      Tokenize(c.expression);
      ADD_FAILURE() << "no failure for " << c.expression;
    } catch (const ExprError& error) {
      EXPECT_EQ(error.message(), c.message) << c.expression;
    }
  }
}

}  // namespace
}  // namespace corvane
