// Token texts of the formula language. A token is a plain wide string; its kind is read again
// from the text wherever it matters, so these helpers are the single place that knows the
// operator spellings and the marker characters.
#pragma once

#include <string_view>

namespace corvane {

// Control characters no user types on purpose, used to tag tokens and values made by the engine.
inline constexpr wchar_t kUnaryMinusMark = L'\x01';
inline constexpr wchar_t StringMarker = L'\x13';  // leads a string literal
inline constexpr wchar_t kListMarker = L'\x14';    // leads a cell-range value: items joined by ","
inline constexpr wchar_t kArgumentMarkChar = L'\x1B';  // where a function's arguments start
inline constexpr wchar_t kFieldCodeSpacer = L'\x1F';  // woven into ACAD_FIELD codes by the dialog

inline constexpr std::wstring_view kUnaryMinusToken{L"\x01", 1};
inline constexpr std::wstring_view kArgumentMarkToken{L"\x1B", 1};

// The operator tables. Membership is a substring search, so ":" (and the empty text) count as
// operators too; the sign rules depend on that.
inline constexpr std::wstring_view kArithmeticOperators = L"^:*:/:%:+:-";
inline constexpr std::wstring_view kComparisonOperators = L"<:<=:>:>=:<>:=";
inline constexpr std::wstring_view kLogicalOperators = L"&&:||";

// The kind codes are fixed: precedence and the evaluator's dispatch are defined on them.
enum class ExprTokenKind : int {
  kOperand = -1,
  kOpenParen = 0,
  kCloseParen = 1,
  kComma = 2,
  kMinus = 4,
  kPower = 5,
  kMultiply = 6,
  kDivide = 7,
  kPlus = 8,
  kRemainder = 9,
  kConcat = 10,
  kAnd = 11,
  kOr = 12,
  kGreater = 13,
  kLess = 14,
  kEqual = 15,
  kGreaterEqual = 16,
  kLessEqual = 17,
  kNotEqual = 18,
  kUnaryMinus = 19,
  kArgumentMark = 20,
};

ExprTokenKind ClassifyToken(std::wstring_view token) noexcept;

// Kinds 4 to 18: the binary operators, concatenation and the logical pair included.
inline bool IsBinaryOperatorKind(ExprTokenKind kind) noexcept {
  const int k = static_cast<int>(kind);
  return k >= 4 && k <= 18;
}

// The test both the tokenizer's sign rule and the postfix pass use.
bool IsOperatorText(std::wstring_view token) noexcept;
// Whether the text occurs in any of the three tables, the logical one included: such a text
// is never a variable name.
bool OccursInOperatorTables(std::wstring_view text) noexcept;

// Binding strength; a function name binds below unary minus and above every binary operator.
int ExprPrecedence(std::wstring_view token) noexcept;
// The same for a token already classified; operands count 0 here (a function name is 9).
int KindPrecedence(ExprTokenKind kind) noexcept;

}  // namespace corvane
