#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/exprfunctiontable.h"
#include "plugin/formula/exprvalue.h"
#include "tokentext.h"

namespace corvane {
namespace {

using testing::shown;

std::wstring evaluate(const std::wstring& expression, bool* ok = nullptr) {
  ExprEngine engine(expression);
  std::wstring result;
  const bool succeeded = engine.Evaluate(result);
  if (ok) *ok = succeeded;
  return shown(result);
}

TEST(ExprFunctions, Results) {
  struct Case {
    const wchar_t* expression;
    const wchar_t* result;
  } const cases[] = {
      {L"ROUND(2.346,2)", L"2.35"},
      {L"ROUND(-2.346,2)", L"-2.35"},
      {L"ROUND(1.005,2)", L"1"},     // 1.005*100 is just below 100.5 in binary
      {L"ROUND(2.345,2)", L"2.35"},  // while 2.345 reads as a double just above it
      {L"ROUND(2.5,0)", L"3"},
      {L"ROUND(-2.5,0)", L"-3"},
      {L"ROUND(-0.2,0)", L"0"},
      {L"ROUND(3.14159,3)", L"3.142"},
      {L"ROUND(1234.5,-2)", L"1200"},
      {L"ROUND(1250,-2)", L"1300"},
      {L"ROUND(-1250,-2)", L"-1300"},
      {L"ROUND(1249,-2)", L"1200"},
      {L"ROUND(7,'1')", L"7"},
      {L"ROUND(10000000000,0)", L"1E+10"},  // scaled beyond 32 bits: still truncated, not wrapped
      {L"ROUNDUP(2.301,1)", L"2.4"},
      {L"ROUNDUP(2.3,1)", L"2.3"},
      {L"ROUNDUP(-2.31,1)", L"-2.4"},
      {L"ROUNDUP(1201,-2)", L"1300"},
      {L"ROUNDUP(2.000001,0)", L"2"},  // within the tolerance of a whole number
      {L"ROUNDDOWN(-2.39,1)", L"-2.3"},
      {L"ROUNDDOWN(2.39,1)", L"2.3"},
      {L"ROUNDDOWN(1299,-2)", L"1200"},
      {L"FIXED(-2.5)", L"-3"},
      {L"FIXED(2.5)", L"2"},
      {L"FIXED(2)", L"2"},
      {L"ABS(-3)", L"3"},
      {L"ABS('x')", L"0"},
      {L"ABS(PI)", L"3.14159"},
      {L"COS(0)", L"1"},
      {L"SIN(0)", L"0"},
      {L"TAN(0)", L"0"},
      {L"COS(PI)", L"-1"},
      {L"SQRT(16)", L"4"},
      {L"LOG(1000)", L"3"},
      {L"LEFT('abcdef',2)", L"ab"},
      {L"LEFT('abc',10)", L"abc"},
      {L"LEFT('abc',0)", L""},
      {L"LEFT('abc',-1)", L""},
      {L"LEFT('abc',99999999999)", L"abc"},
      {L"RIGHT('abcdef',2)", L"ef"},
      {L"RIGHT('abc',99)", L"abc"},
      {L"RIGHT('abc',-5)", L""},
      {L"MID('abcdef',2,3)", L"bcd"},
      {L"MID('abcdef',0,2)", L"ab"},
      {L"MID('abcdef',-9,2)", L"ab"},
      {L"MID('abc',2,99)", L"bc"},
      {L"MID('abc',4,1)", L""},
      {L"MID('abc',2,0)", L""},
      {L"MID('abc',2,-1)", L""},
      {L"MID('abc',99999999999,1)", L""},
      {L"IF(1>2,'yes','no')", L"no"},
      {L"IF(2>1,'yes','no')", L"yes"},
      {L"IF(true,1,2)", L"1"},
      {L"if('FALSE',1,2)", L"2"},
      {L"SUBSTITUTE('a-b-c','-','+')", L"a+b+c"},
      {L"SUBSTITUTE('aaa','aa','b')", L"ba"},
      {L"SUBSTITUTE('abc','','x')", L"abc"},
      {L"SUBSTITUTE('aBc','b','x')", L"aBc"},
      {L"SUBSTITUTE('abc','b','')", L"ac"},
      {L"SUBSTITUTE(UCASE('a-b-c'),'-','+')", L"A+B+C"},
      {L"ASC('A')", L"65"},
      {L"ASC('abc')", L"97"},
      {L"ASC(1)", L"49"},
      {L"UCASE('abc')", L"ABC"},
      {L"LCASE('ABC')", L"abc"},
      {L"ucase('\u00e9a')", L"\u00c9A"},
      {L"SUM(1,2,3)", L"6"},
      {L"AVG(1,2)", L"1.5"},
      {L"MAX(1,5,3)", L"5"},
      {L"MIN(4,2,8)", L"2"},
      {L"MAX(1,1.000001)", L"1"},  // not larger by more than 1e-5
      {L"MIN(1,0.999999)", L"1"},
      {L"MAX(-1,-2)", L"-1"},
      {L"SUM('2','x',3)", L"5"},  // non-numbers read as 0
      {L"SUM(PI)", L"3.14159"},  // one argument is enough when it is a variable
      {L"AVG(PI,1)", L"2.0708"},
      {L"SUM(1,ABS(-2))", L"3"},
      {L"ROUND((12.5*4+7.25)/3,2) & ' m'", L"19.08 m"},
      // Written without parentheses a function takes the whole stack.
      {L"MAX 1 2 3", L"3"},
      {L"UCASE 'abc'", L"ABC"},
      {L"1 + \x1B 2 ABS", L"3"},
      // Arguments lose one marker from the left end; IF hands back plain text.
      {L"IF(TRUE,'a','b')", L"a"},
      {L"ACAD_FIELD('text')", L"text"},
  };
  for (const auto& c : cases) {
    bool ok = false;
    EXPECT_EQ(evaluate(c.expression, &ok), c.result) << c.expression;
    EXPECT_TRUE(ok) << c.expression;
  }
}

TEST(ExprFunctions, NonFiniteResultsAreWhatPercentGMakesOfThem) {
  struct Case {
    const wchar_t* expression;
    double value;
  } const cases[] = {
      {L"LOG(0)", -HUGE_VAL},
      {L"SQRT(-1)", std::sqrt(-1.0)},
      {L"LOG(-1)", std::log10(-1.0)},
  };
  for (const auto& c : cases) {
    bool ok = false;
    EXPECT_EQ(evaluate(c.expression, &ok), FormatNumber(c.value)) << c.expression;
    EXPECT_TRUE(ok);
  }
}

TEST(ExprFunctions, Failures) {
  struct Case {
    const wchar_t* expression;
    const wchar_t* message;
  } const cases[] = {
      {L"ACOS(1)", L"Function [ACOS] is not implemented."},
      {L"asin(1)", L"Function [asin] is not implemented."},
      {L"ATAN()", L"Function [ATAN] is not implemented."},
      {L"ATAN(1,2,3)", L"Function [ATAN] is not implemented."},
      {L"HEX(255)", L"Function [HEX] is not implemented."},
      {L"HEX()", L"HEX requires at least one argument."},
      {L"LEFT('abc','x')", L"LEFT oprator requires numaric length."},
      {L"Right('abc','')", L"Right oprator requires numaric length."},
      {L"ROUND(1,'x')", L"ROUND oprator requires numaric length."},
      {L"ROUNDUP(1,'1E-05')", L"ROUNDUP oprator requires numaric length."},
      {L"ROUNDDOWN(1,abc)", L"ROUNDDOWN oprator requires numaric length."},
      {L"left('abc')", L"left requires at least two arguments."},
      {L"MID('abc','x',1)", L"MID oprator requires numaric lengths."},
      {L"MID('abc',1,'y')", L"MID oprator requires numaric lengths."},
      {L"IF(1,'a','b')", L"IF oprator requires boolean condition."},
      {L"IF('yes','a','b')", L"IF oprator requires boolean condition."},
      {L"ASC('')", L"ASC requires a char type operand."},
      {L"SUM(5)", L"SUM requires at least two operands."},
      {L"avg('x')", L"avg requires at least two operands."},
      {L"SUM()", L"SUM requires at least one operands."},
      {L"MIN()", L"MIN requires at least one operands."},
      {L"MAX 1", L"MAX requires at least two operands."},
      {L"1 & UCASE 'a'", L"UCASE requires only one argument."},
      {L"1 + 2 ABS", L"ABS requires only one argument."},
      {L"VX_SELF('Width')", L"Variable [_SELFBLOCK.WIDTH] not defined"},
  };
  for (const auto& c : cases) {
    bool ok = true;
    EXPECT_EQ(evaluate(c.expression, &ok), c.message) << c.expression;
    EXPECT_FALSE(ok) << c.expression;
  }
}

TEST(ExprFunctions, ArityMessagesOfEveryFixedArityFunction) {
  struct Group {
    std::vector<const wchar_t*> names;
    const wchar_t* tooFew;   // arguments one short
    const wchar_t* tooMany;  // arguments one over
    const wchar_t* fewMessage;
    const wchar_t* manyMessage;
  } const groups[] = {
      {{L"ABS", L"ASC", L"COS", L"FIXED", L"HEX", L"LCASE", L"LOG", L"SIN", L"SQRT", L"TAN", L"UCASE",
        L"ACAD_FIELD", L"VX_SELF"},
       L"()", L"(1,2)", L" requires at least one argument.", L" requires only one argument."},
      {{L"LEFT", L"RIGHT", L"ROUND", L"ROUNDUP", L"ROUNDDOWN"},
       L"(1)", L"(1,2,3)", L" requires at least two arguments.", L" requires only two arguments."},
      {{L"IF", L"MID", L"SUBSTITUTE"},
       L"(1,2)", L"(1,2,3,4)", L" requires at least three arguments.", L" requires only three arguments."},
  };
  for (const auto& group : groups) {
    for (const wchar_t* name : group.names) {
      EXPECT_EQ(evaluate(std::wstring(name) + group.tooFew), std::wstring(name) + group.fewMessage);
      EXPECT_EQ(evaluate(std::wstring(name) + group.tooMany), std::wstring(name) + group.manyMessage);
    }
  }
  // The name in a message is the token as typed.
  EXPECT_EQ(evaluate(L"Substitute('a')"), L"Substitute requires at least three arguments.");
}

TEST(ExprFunctions, CallFunctionRefusesUnknownNames) {
  ExprEngine engine(L"");
  std::vector<std::wstring> stack = {L"1"};
  try {
    engine.CallFunction(L"FOO", stack);
    ADD_FAILURE() << "no failure";
  } catch (const ExprError& error) {
    EXPECT_EQ(error.message(), L"Unsupported function token [FOO]");
  }
  engine.CallFunction(L"Abs", stack);
  EXPECT_EQ(stack, std::vector<std::wstring>{L"1"});
}

TEST(ExprFunctionTable, NamesIndicesAndDialogMarks) {
  ASSERT_EQ(ExprFunctionTable.back(), L"");
  ASSERT_EQ(ExprFunctionDisplayTable.back(), L"");
  // The names the dialog leaves out.
  const std::vector<std::wstring_view> hidden = {L"AVG", L"ABS", L"ACOS", L"ASC", L"ASIN", L"ATAN", L"FIXED", L"HEX"};
  for (std::size_t i = 0; i < kExprFunctionCount; ++i) {
    const std::wstring_view name = ExprFunctionTable[i];
    const bool isHidden = std::find(hidden.begin(), hidden.end(), name) != hidden.end();
    EXPECT_EQ(ExprFunctionDisplayTable[i], isHidden ? L"-" + std::wstring(name) : std::wstring(name));
    EXPECT_EQ(FunctionIndex(name), static_cast<int>(i));
  }
  struct Case {
    const wchar_t* token;
    int index;
  } const cases[] = {
      {L"avg", 0},        {L"Vx_Self", 27},  {L"ROUNDDOWN", 24}, {L"acad_field", 26}, {L"SUBSTITUTE", 25},
      {L"SUMS", -1},      {L"SU", -1},       {L"", -1},          {L"-ABS", -1},       {L"ABS ", -1},
      {L"\x13SUM", -1},
  };
  for (const auto& c : cases) EXPECT_EQ(FunctionIndex(c.token), c.index) << c.token;
}

}  // namespace
}  // namespace corvane
