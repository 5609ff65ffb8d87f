// Formulas built to be degenerate: they must end with a value or a message, without deep
// recursion and without unbounded growth.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "plugin/formula/exprengine.h"

namespace corvane {
namespace {

std::wstring repeat(std::wstring_view piece, int count) {
  std::wstring out;
  for (int i = 0; i < count; ++i) out += piece;
  return out;
}

TEST(ExprLimits, DegenerateFormulasEndWithAValueOrAMessage) {
  constexpr int kDeep = 10000;
  struct Case {
    const char* what;
    std::wstring expression;
    bool ok;
    std::function<bool(const std::wstring&)> check;
  };
  const auto is = [](std::wstring expected) { return [expected](const std::wstring& r) { return r == expected; }; };
  const Case cases[] = {
      {"nested parentheses", repeat(L"(", kDeep) + L"1" + repeat(L")", kDeep), true, is(L"1")},
      {"unbalanced nesting", repeat(L"(", kDeep) + L"1", false, is(L"Unbalanced parenthesis.")},
      {"surplus closing", L"1" + repeat(L")", kDeep), false, is(L"Unbalanced parenthesis.")},
      {"nested calls", repeat(L"ABS(", kDeep) + L"-1" + repeat(L")", kDeep), true, is(L"1")},
      {"nested negation", repeat(L"-(", kDeep) + L"1" + repeat(L")", kDeep), false, is(L"Not a numaric value.")},
      {"long sum", L"0" + repeat(L"+1", kDeep), true, is(L"10000")},
      {"long concatenation", L"'a'" + repeat(L"&'a'", kDeep), true,
       [](const std::wstring& r) { return r == std::wstring(kDeep + 1, L'a'); }},
      {"many arguments", L"SUM(" + repeat(L"1,", kDeep) + L"1)", true, is(L"10001")},
      {"nested two-argument calls", repeat(L"SUM(1,", kDeep) + L"1" + repeat(L")", kDeep), true, is(L"10001")},
      {"huge counts", L"LEFT('abc',2147483647) & MID('abc',2147483647,2147483647) & RIGHT('abc',-2147483648)", true,
       is(L"abc")},
      {"substitute of nothing", L"SUBSTITUTE('abc','','x')", true, is(L"abc")},
      {"self-multiplying substitute",
       repeat(L"SUBSTITUTE(", 12) + L"'aa'" + repeat(L",'a','aaaaaaaaaa')", 12), false,
       is(L"SUBSTITUTE result is too long.")},
      {"rounding far out", L"ROUND(1,400) & ROUNDUP(123,-400)", true, [](const std::wstring& r) { return !r.empty(); }},
  };
  for (const auto& c : cases) {
    ExprEngine engine(c.expression);
    std::wstring result;
    EXPECT_EQ(engine.Evaluate(result), c.ok) << c.what;
    EXPECT_TRUE(c.check(result)) << c.what << ": " << std::string(result.begin(), result.begin() + std::min<std::size_t>(result.size(), 80));
  }
}

}  // namespace
}  // namespace corvane
