// The names of the formula language's built-in functions. A name's position is its function
// index; the tokenizer, the postfix pass, the evaluator and the formula dialog all read these.
#pragma once

#include <array>
#include <string_view>

namespace corvane {

inline constexpr std::size_t kExprFunctionCount = 28;

// Ended by an empty entry, as the dialog walks it.
extern const std::array<std::wstring_view, kExprFunctionCount + 1> ExprFunctionTable;
// The same order; a leading "-" keeps a function out of the dialog's list (it still works when typed).
extern const std::array<std::wstring_view, kExprFunctionCount + 1> ExprFunctionDisplayTable;

enum class ExprFunction : int {
  kAvg = 0,
  kAbs,
  kAcos,
  kAsc,
  kAsin,
  kAtan,
  kCos,
  kFixed,
  kHex,
  kIf,
  kLcase,
  kLeft,
  kLog,
  kMax,
  kMid,
  kMin,
  kRight,
  kRound,
  kSin,
  kSqrt,
  kTan,
  kUcase,
  kSum,
  kRoundUp,
  kRoundDown,
  kSubstitute,
  kAcadField,
  kVxSelf,
};

// Index of the first entry equal to the whole token without regard to case; -1 when none.
int FunctionIndex(std::wstring_view token) noexcept;
inline bool IsFunctionName(std::wstring_view token) noexcept { return FunctionIndex(token) >= 0; }

}  // namespace corvane
