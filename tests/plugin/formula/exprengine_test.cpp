#include "plugin/formula/exprengine.h"

#include <gtest/gtest.h>

#include <string>

#include "tokentext.h"

namespace corvane {
namespace {

using testing::shown;

struct Outcome {
  bool ok;
  std::wstring text;
};

Outcome evaluate(const wchar_t* expression) {
  ExprEngine engine(expression);
  Outcome outcome{false, {}};
  outcome.ok = engine.Evaluate(outcome.text);
  return outcome;
}

struct Case {
  const wchar_t* expression;
  bool ok;
  const wchar_t* result;  // markers shown as {str}, {neg}, ...
};

void expectAll(const Case* begin, const Case* end) {
  for (const Case* c = begin; c != end; ++c) {
    const Outcome outcome = evaluate(c->expression);
    EXPECT_EQ(shown(outcome.text), c->result) << c->expression;
    EXPECT_EQ(outcome.ok, c->ok) << c->expression;
  }
}

TEST(ExprEngine, Arithmetic) {
  const Case cases[] = {
      {L"1+2*3", true, L"7"},
      {L"(1+2)*3", true, L"9"},
      {L"2^10", true, L"1024"},
      {L"2^3^2", true, L"64"},  // (2^3)^2, not 2^9
      {L"8-3-2", true, L"3"},
      {L"8/4/2", true, L"1"},
      {L"2*3%4", true, L"2"},
      {L"10/4", true, L"2.5"},
      {L"1/3", true, L"0.333333"},
      {L"2^0.5", true, L"1.41421"},
      {L"2^-1", true, L"0.5"},
      {L"-2^2", true, L"4"},  // the sign belongs to the number
      {L"3*-5", true, L"-15"},
      {L"3--5", true, L"8"},
      {L"0.1+0.2", true, L"0.3"},
      {L"1E+05+1", true, L"7"},  // a typed exponent splits at its sign: 1E + 05 + 1
      // Remainder: both sides truncated, the sign follows the left side.
      {L"7%3", true, L"1"},
      {L"-7%3", true, L"-1"},
      {L"7%-3", true, L"1"},
      {L"-7%-3", true, L"-1"},
      {L"7.9%2.9", true, L"1"},
      {L"-6%3", true, L"0"},
      {L"10000000000*1%7", true, L"4"},  // beyond 32 bits the remainder is still exact
      {L"7%0", false, L"divider is 0."},
      {L"7%0.9", false, L"divider is 0."},
      {L"7%-0.5", false, L"divider is 0."},
      {L"1/0", false, L"divider is 0."},
      {L"1/0.000001", false, L"divider is 0."},
      {L"1/-0.00001", false, L"divider is 0."},
      {L"1/0.0001", true, L"10000"},
      // "*", "/", "^" and "%" read any text as a number, non-numbers as 0.
      {L"'x'*2", true, L"0"},
      {L"abc*2", true, L"0"},
      {L"TRUE*2", true, L"0"},
      {L"'3'*2", true, L"0"},  // the marker is still in front
      {L"'x'^0", true, L"1"},
      // "+" and "-" insist on numeric text.
      {L"'x'+1", false, L"#VAL!"},
      {L"'10'+1", false, L"#VAL!"},
      {L"TRUE+1", false, L"#VAL!"},
      {L"1-FALSE", false, L"#VAL!"},
      {L"abc-1", false, L"#VAL!"},
      {L"1E5+1", false, L"#VAL!"},
      {L"1E-05+1", true, L"-3"},  // the tokenizer splits it: 1E, -, 05
  };
  expectAll(std::begin(cases), std::end(cases));
}

TEST(ExprEngine, PercentGTrapsInChainedArithmetic) {
  // Every intermediate result is printed with "%G" and read back, so six digits are all that
  // survive, and exponent forms below 1E-04 stop being numbers for "+", "-" and negation.
  const Case cases[] = {
      {L"1000000*10", true, L"1E+07"},
      {L"1234567*1", true, L"1.23457E+06"},
      {L"1234567*1+1", true, L"1.23457E+06"},
      {L"1234567+0", true, L"1.23457E+06"},
      {L"1/3*3", true, L"0.999999"},
      {L"0.0001*1", true, L"0.0001"},
      {L"1/100000", true, L"1E-05"},
      {L"1/100000+1", false, L"#VAL!"},
      {L"1/100000*100000", true, L"1"},
      {L"1/100000<1", true, L"FALSE"},  // "1E-05" is no number: compared as text, "1" sorts first
      {L"-(1/100000)", false, L"Not a numaric value."},
      {L"100000*1+1", true, L"100001"},
      {L"1E+05", true, L"6"},  // typed, it is 1E + 05
  };
  expectAll(std::begin(cases), std::end(cases));
}

TEST(ExprEngine, Comparisons) {
  const Case cases[] = {
      // Numbers, within 1e-5.
      {L"2=2.000001", true, L"TRUE"},
      {L"2=2.0001", true, L"FALSE"},
      {L"2<>2.000001", true, L"FALSE"},
      {L"2<>2.0001", true, L"TRUE"},
      {L"2<2.000001", true, L"FALSE"},
      {L"2<2.0001", true, L"TRUE"},
      {L"2.000001>2", true, L"FALSE"},
      {L"2.0001>2", true, L"TRUE"},
      {L"2>=2.000001", true, L"TRUE"},
      {L"2>=2.0001", true, L"FALSE"},
      {L"2.000001<=2", true, L"TRUE"},
      {L"2.0001<=2", true, L"FALSE"},
      {L"10>9", true, L"TRUE"},
      {L"'10'>'9'", true, L"TRUE"},  // markers stripped, then numeric
      {L"-1<1", true, L"TRUE"},
      // Two booleans under "=" and "<>".
      {L"TRUE=true", true, L"TRUE"},
      {L"TRUE<>FALSE", true, L"TRUE"},
      {L"false=TRUE", true, L"FALSE"},
      {L"1=1=TRUE", true, L"TRUE"},
      {L"1<2<>FALSE", true, L"TRUE"},
      // Otherwise texts without regard to case; booleans under ">" compare as text too.
      {L"'abc'='ABC'", true, L"TRUE"},
      {L"'b'>'A'", true, L"TRUE"},
      {L"'B'<'a'", true, L"FALSE"},
      {L"'abc'<'abd'", true, L"TRUE"},
      {L"'ab'<'abc'", true, L"TRUE"},
      {L"'abc'>='ABC'", true, L"TRUE"},
      {L"'abc'<='ABD'", true, L"TRUE"},
      {L"'abc'<>'abc '", true, L"TRUE"},
      {L"TRUE>FALSE", true, L"TRUE"},
      {L"FALSE>TRUE", true, L"FALSE"},
      {L"1=TRUE", true, L"FALSE"},
      {L"x=X", true, L"TRUE"},
  };
  expectAll(std::begin(cases), std::end(cases));
}

TEST(ExprEngine, TextsAndMarkers) {
  const Case cases[] = {
      {L"'a'&'b'", true, L"ab"},
      {L"1&2", true, L"12"},
      {L"1+2&3", true, L"33"},
      {L"'a' & ' ' & 'b'", true, L"a b"},
      {L"abc & 1", true, L"abc1"},
      {L"''&''", true, L""},
      {L"'PI'&''", true, L"3.1415926535897932384"},  // stripped, then read as the variable
      {L"'x'", true, L"{str}x"},                      // a literal result keeps its marker
      {L"''", true, L"{str}"},
      {L"abc", true, L"abc"},  // an unknown name is its own text
      {L"PI", true, L"3.1415926535897932384"},
      {L"pi", true, L"3.1415926535897932384"},
      {L"PI*1", true, L"3.14159"},
      {L"2*pi", true, L"6.28319"},
      {L"-PI", true, L"-PI"},  // joined to the name at the start: an unknown name
      {L"-(PI)", true, L"-3.1415926535897932384"},
      {L"-(2)", true, L"-2"},
      {L"-(-2)", true, L"--2"},
      {L"-(-(-2))", false, L"Not a numaric value."},
      {L"-'5'", false, L"Not a numaric value."},
      {L"-x", true, L"-x"},
      {L"3*-x", false, L"Not a numaric value."},
      {L"5 \x01", true, L"-5"},        // a typed unary-minus mark acts as one
      {L"1 + \x1B 2 ABS", true, L"3"},  // ...and a typed argument mark too
  };
  expectAll(std::begin(cases), std::end(cases));
}

TEST(ExprEngine, FailureMessages) {
  const Case cases[] = {
      {L"", false, L"Unable to tokanize the expression."},
      {L"+", false, L"Unable to convert the expression to postfix form."},
      {L"'abc", false, L"Unterminated string constant"},
      {L"(1+2", false, L"Unbalanced parenthesis."},
      {L"1+2)", false, L"Unbalanced parenthesis."},
      {L"1 2", false, L"#VALUE!"},
      {L"-ABS(3)", false, L"#VALUE!"},
      {L"1+", false, L"Stack is empty, can not perform [+]"},
      {L"1-", false, L"Stack is empty, can not perform [-]"},
      {L"2*", false, L"Stack is empty, can not perform [*]"},
      {L"/", false, L"Stack is empty, can not perform [/]"},
      {L"2^", false, L"Stack is empty, can not perform [^]"},
      {L"2%", false, L"Stack is empty, can not perform [%]"},
      {L"'a'&", false, L"Stack is empty, can not perform [&]"},
      {L"1<", false, L"Stack is empty, can not perform [<]"},
      {L"1<>", false, L"Stack is empty, can not perform [<>]"},
      {L"=1", false, L"Stack is empty, can not perform [=]"},
      {L"1&&1", false, L"Logical operator requires LHS & RHS of boolean type."},
      {L"TRUE||FALSE", false, L"Logical operator requires LHS & RHS of boolean type."},
      {L"&&", false, L"Logical operator requires LHS & RHS of boolean type."},
      {L"-", false, L"No operand to negate."},
      {L"-'x'", false, L"Not a numaric value."},
  };
  expectAll(std::begin(cases), std::end(cases));
}

TEST(ExprEngine, EvaluatesAgainFromTheKeptLists) {
  ExprEngine engine(L"2*3 & 'x'");
  std::wstring first;
  std::wstring second;
  ASSERT_TRUE(engine.Evaluate(first));
  const auto postfix = engine.postfix();
  ASSERT_TRUE(engine.Evaluate(second));
  EXPECT_EQ(first, L"6x");
  EXPECT_EQ(second, first);
  EXPECT_EQ(engine.postfix(), postfix);
}

}  // namespace
}  // namespace corvane
