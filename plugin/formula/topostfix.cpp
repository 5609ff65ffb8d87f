#include "plugin/formula/topostfix.h"

#include "plugin/formula/exprerror.h"
#include "plugin/formula/exprfunctiontable.h"

namespace corvane {

namespace {

constexpr int kFunctionPrecedence = 9;
constexpr int kUnaryMinusPrecedence = 10;

struct Pending {
  PostfixStep step;
  int precedence;
  bool open() const { return step.kind == ExprTokenKind::kOpenParen; }
};

bool isOpenParen(std::wstring_view token) { return token.size() == 1 && token[0] == L'('; }

// After these a "-" negates and a "+" is dropped.
bool expectsOperand(std::wstring_view prev) { return prev.empty() || IsOperatorText(prev) || isOpenParen(prev); }

}  // namespace

std::vector<std::wstring> ToPostfix(const std::vector<std::wstring>& tokens) {
  std::vector<std::wstring> output;
  for (const PostfixStep& step : ToPostfixSteps(tokens)) output.emplace_back(step.text);
  return output;
}

std::vector<PostfixStep> ToPostfixSteps(const std::vector<std::wstring>& tokens) {
  std::vector<PostfixStep> output;
  output.reserve(tokens.size() + 4);
  std::vector<Pending> stack;
  stack.reserve(tokens.size());

  const auto pushOperator = [&](const PostfixStep& step, int precedence) {
    // Pops everything of equal or higher precedence: all binary operators are left-associative.
    while (!stack.empty() && !stack.back().open() && stack.back().precedence >= precedence) {
      output.push_back(stack.back().step);
      stack.pop_back();
    }
    stack.push_back({step, precedence});
  };

  for (std::size_t k = 0; k < tokens.size(); ++k) {
    const std::wstring_view t = tokens[k];
    const std::wstring_view prev = k == 0 ? std::wstring_view() : std::wstring_view(tokens[k - 1]);
    const ExprTokenKind kind = ClassifyToken(t);
    switch (kind) {
      case ExprTokenKind::kOpenParen:
        if (!stack.empty() && stack.back().step.function >= 0) {
          output.push_back({kArgumentMarkToken, ExprTokenKind::kArgumentMark, -1});
        }
        stack.push_back({{t, kind, -1}, KindPrecedence(kind)});
        break;
      case ExprTokenKind::kCloseParen: {
        bool matched = false;
        while (!stack.empty()) {
          const Pending top = stack.back();
          stack.pop_back();
          if (top.open()) {
            matched = true;
            break;
          }
          output.push_back(top.step);
        }
        if (!matched) throw ExprError(L"Unbalanced parenthesis.");
        break;
      }
      case ExprTokenKind::kComma:
        while (!stack.empty() && !stack.back().open()) {
          output.push_back(stack.back().step);
          stack.pop_back();
        }
        break;
      case ExprTokenKind::kMinus:
        // "," is deliberately not among expectsOperand's cases: after a comma a lone "-" stays binary.
        if (expectsOperand(prev)) {
          pushOperator({kUnaryMinusToken, ExprTokenKind::kUnaryMinus, -1}, kUnaryMinusPrecedence);
        } else {
          pushOperator({t, kind, -1}, KindPrecedence(kind));
        }
        break;
      case ExprTokenKind::kPlus:
        if (expectsOperand(prev)) break;  // unary plus does nothing
        pushOperator({t, kind, -1}, KindPrecedence(kind));
        break;
      default:
        if (IsBinaryOperatorKind(kind)) {
          pushOperator({t, kind, -1}, KindPrecedence(kind));
        } else if (const int function = kind == ExprTokenKind::kOperand ? FunctionIndex(t) : -1; function >= 0) {
          pushOperator({t, kind, function}, kFunctionPrecedence);
        } else {
          output.push_back({t, kind, -1});  // operands, literals, and marks a user typed
        }
        break;
    }
  }
  while (!stack.empty()) {
    output.push_back(stack.back().step);
    stack.pop_back();
  }
  return output;
}

}  // namespace corvane
