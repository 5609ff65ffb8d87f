#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plugin/formula/exprtoken.h"

namespace corvane {

// Rearranges a token list into postfix order (operator precedence, every binary operator
// left-associative). A "-" where an operand is expected becomes kUnaryMinusMark, a "+" there is
// dropped, and kArgumentMarkChar is put before the arguments of a function called with
// parentheses. Throws ExprError.
std::vector<std::wstring> ToPostfix(const std::vector<std::wstring>& tokens);

// The same pass without copying, for the evaluator: each entry points into `tokens` (or at a
// static mark), valid as long as `tokens` is unchanged, and carries what the pass learnt of it.
struct PostfixStep {
  std::wstring_view text;
  ExprTokenKind kind;
  int function;  // index in ExprFunctionTable, or -1
};
std::vector<PostfixStep> ToPostfixSteps(const std::vector<std::wstring>& tokens);

}  // namespace corvane
