#include "plugin/formula/topostfix.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/tokenize.h"
#include "tokentext.h"

namespace corvane {
namespace {

using testing::shown;

std::wstring prepared(const wchar_t* expression) {
  ExprEngine engine(expression);
  try {
    return shown(engine.Prepare());
  } catch (const ExprError& error) {
    return L"error: " + error.message();
  }
}

TEST(ToPostfix, OrdersByPrecedenceLeftToRight) {
  struct Case {
    const wchar_t* expression;
    const wchar_t* postfix;  // Prepare's display form
  } const cases[] = {
      {L"1+2*3", L"1, 2, 3, *, +"},
      {L"1*2+3", L"1, 2, *, 3, +"},
      {L"(1+2)*3", L"1, 2, +, 3, *"},
      // Every binary operator is left-associative, the power included.
      {L"2^3^2", L"2, 3, ^, 2, ^"},
      {L"8-3-2", L"8, 3, -, 2, -"},
      {L"8/4*2", L"8, 4, /, 2, *"},
      {L"7%3*2", L"7, 3, %, 2, *"},
      {L"2*3^2", L"2, 3, 2, ^, *"},
      {L"1<2=TRUE", L"1, 2, <, TRUE, ="},
      {L"1+2>3&&4", L"1, 2, +, 3, >, 4, &&"},
      {L"1&&2||3", L"1, 2, &&, 3, ||"},
      // Concatenation binds loosest of all, below the logical pair.
      {L"a & b + c", L"a, b, c, +, &"},
      {L"a & b > c", L"a, b, c, >, &"},
      {L"a && b & c", L"a, b, &&, c, &"},
      // Unary minus where an operand is expected; unary plus vanishes.
      {L"3*-x", L"3, x, {neg}, *"},
      {L"-(2)", L"2, {neg}"},
      {L"--5", L"-5, {neg}"},
      {L"1-(2)", L"1, 2, -"},
      {L"(1)-2", L"1, 2, -"},
      {L"+(2)", L"2"},
      {L"1++2", L"1, +2, +"},
      {L"1+ +x", L"1, x, +"},
      {L"f(1,-x)", L"f, 1, x, -"},
      {L"a : - b", L"a, :, b, {neg}"},
      // Function calls: the argument mark, and a function name that stays until precedence or the end.
      {L"SUM(1,2,3)", L"{args}, 1, 2, 3, SUM"},
      {L"sum(1,2)*3", L"{args}, 1, 2, sum, 3, *"},
      {L"IF(x>=10,'big','small')", L"{args}, x, 10, >=, {str}big, {str}small, IF"},
      {L"ROUND(A1*2.5,2) & ' m'", L"{args}, A1, 2.5, *, 2, ROUND, {str} m, &"},
      {L"SUM(1,ABS(2))", L"{args}, 1, {args}, 2, ABS, SUM"},
      {L"ABS 5", L"5, ABS"},
      {L"MAX 1 2 3", L"1, 2, 3, MAX"},
      {L"1 & UCASE 'a'", L"1, {str}a, UCASE, &"},
      {L"2*-ABS(3)", L"2, {neg}, {args}, 3, ABS, *"},
      {L"-(ABS(3))", L"{args}, 3, ABS, {neg}"},
      {L"-ABS(3)", L"-ABS, 3"},
      {L"f(2)", L"f, 2"},
      // Marks a user typed are passed through as operands.
      {L"5 \x01", L"5, {neg}"},
      // Failures of both passes and of Prepare.
      {L"1+2)", L"error: Unbalanced parenthesis."},
      {L")(", L"error: Unbalanced parenthesis."},
      {L"(1", L"error: Unbalanced parenthesis."},
      {L"", L"error: Unable to tokanize the expression."},
      {L"   ", L"error: Unable to tokanize the expression."},
      {L"+", L"error: Unable to convert the expression to postfix form."},
      {L"()", L"error: Unable to convert the expression to postfix form."},
      {L"(+)", L"error: Unable to convert the expression to postfix form."},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(prepared(c.expression), c.postfix) << c.expression;
  }
}

TEST(ToPostfix, EmptiesTheStackAtTheEnd) {
  // Token lists Tokenize would refuse: what is left on the operator stack comes out, top first.
  struct Case {
    std::vector<std::wstring> tokens;
    std::vector<std::wstring> postfix;
  } const cases[] = {
      {{L"(", L"1"}, {L"1", L"("}},
      {{L"1", L"+", L"(", L"2", L"*"}, {L"1", L"2", L"*", L"(", L"+"}},
      {{L"1", L",", L"2"}, {L"1", L"2"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ToPostfix(c.tokens), c.postfix);
  }
}

TEST(Prepare, KeepsBothListsOnlyAfterSuccess) {
  ExprEngine engine(L"1 + ABS(2)");
  EXPECT_EQ(shown(engine.Prepare()), L"1, {args}, 2, ABS, +");
  EXPECT_EQ(shown(engine.tokens()), (std::vector<std::wstring>{L"1", L"+", L"ABS", L"(", L"2", L")"}));
  EXPECT_EQ(shown(engine.postfix()), (std::vector<std::wstring>{L"1", L"{args}", L"2", L"ABS", L"+"}));

  ExprEngine broken(L"1+2)");
  EXPECT_THROW(broken.Prepare(), ExprError);
  EXPECT_TRUE(broken.tokens().empty());
  EXPECT_TRUE(broken.postfix().empty());
}

}  // namespace
}  // namespace corvane
