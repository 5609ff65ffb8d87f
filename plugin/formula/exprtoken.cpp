#include "plugin/formula/exprtoken.h"

#include "plugin/formula/exprfunctiontable.h"

namespace corvane {

ExprTokenKind ClassifyToken(std::wstring_view token) noexcept {
  if (token.size() == 1) {
    switch (token[0]) {
      case L'(': return ExprTokenKind::kOpenParen;
      case L')': return ExprTokenKind::kCloseParen;
      case L',': return ExprTokenKind::kComma;
      case L'-': return ExprTokenKind::kMinus;
      case L'^': return ExprTokenKind::kPower;
      case L'*': return ExprTokenKind::kMultiply;
      case L'/': return ExprTokenKind::kDivide;
      case L'+': return ExprTokenKind::kPlus;
      case L'%': return ExprTokenKind::kRemainder;
      case L'&': return ExprTokenKind::kConcat;
      case L'>': return ExprTokenKind::kGreater;
      case L'<': return ExprTokenKind::kLess;
      case L'=': return ExprTokenKind::kEqual;
      case kUnaryMinusMark: return ExprTokenKind::kUnaryMinus;
      case kArgumentMarkChar: return ExprTokenKind::kArgumentMark;
      default: return ExprTokenKind::kOperand;
    }
  }
  if (token.size() == 2) {
    const wchar_t first = token[0];
    const wchar_t second = token[1];
    if (first == L'&' && second == L'&') return ExprTokenKind::kAnd;
    if (first == L'|' && second == L'|') return ExprTokenKind::kOr;
    if (first == L'>' && second == L'=') return ExprTokenKind::kGreaterEqual;
    if (first == L'<' && second == L'=') return ExprTokenKind::kLessEqual;
    if (first == L'<' && second == L'>') return ExprTokenKind::kNotEqual;
  }
  return ExprTokenKind::kOperand;
}

namespace {

// Only texts made of the tables' own characters can occur in them; most tokens are rejected
// on their first character.
bool mayOccurInTables(std::wstring_view text) {
  if (text.empty()) return true;
  switch (text[0]) {
    case L'^': case L':': case L'*': case L'/': case L'%': case L'+': case L'-':
    case L'<': case L'>': case L'=': case L'&': case L'|':
      return text.size() <= kComparisonOperators.size();
    default:
      return false;
  }
}

bool occursIn(std::wstring_view table, std::wstring_view text) { return table.find(text) != std::wstring_view::npos; }

}  // namespace

bool IsOperatorText(std::wstring_view token) noexcept {
  return mayOccurInTables(token) && (occursIn(kArithmeticOperators, token) || occursIn(kComparisonOperators, token));
}

bool OccursInOperatorTables(std::wstring_view text) noexcept {
  return IsOperatorText(text) || (mayOccurInTables(text) && occursIn(kLogicalOperators, text));
}

int KindPrecedence(ExprTokenKind kind) noexcept {
  switch (kind) {
    case ExprTokenKind::kOpenParen: return 99;
    case ExprTokenKind::kUnaryMinus: return 10;
    case ExprTokenKind::kPower: return 7;
    case ExprTokenKind::kMultiply:
    case ExprTokenKind::kDivide:
    case ExprTokenKind::kRemainder: return 6;
    case ExprTokenKind::kPlus:
    case ExprTokenKind::kMinus: return 5;
    case ExprTokenKind::kGreater:
    case ExprTokenKind::kLess:
    case ExprTokenKind::kEqual:
    case ExprTokenKind::kGreaterEqual:
    case ExprTokenKind::kLessEqual:
    case ExprTokenKind::kNotEqual: return 4;
    case ExprTokenKind::kAnd:
    case ExprTokenKind::kOr: return 3;
    default: return 0;  // "&" among them: concatenation binds loosest of all
  }
}

int ExprPrecedence(std::wstring_view token) noexcept {
  const ExprTokenKind kind = ClassifyToken(token);
  if (kind == ExprTokenKind::kOperand && FunctionIndex(token) >= 0) return 9;
  return KindPrecedence(kind);
}

}  // namespace corvane
