#include "plugin/formula/exprfunctiontable.h"

namespace corvane {

const std::array<std::wstring_view, kExprFunctionCount + 1> ExprFunctionTable = {
    L"AVG",   L"ABS",   L"ACOS",  L"ASC",   L"ASIN",    L"ATAN",      L"COS",        L"FIXED",
    L"HEX",   L"IF",    L"LCASE", L"LEFT",  L"LOG",     L"MAX",       L"MID",        L"MIN",
    L"RIGHT", L"ROUND", L"SIN",   L"SQRT",  L"TAN",     L"UCASE",     L"SUM",        L"ROUNDUP",
    L"ROUNDDOWN", L"SUBSTITUTE", L"ACAD_FIELD", L"VX_SELF", L"",
};

const std::array<std::wstring_view, kExprFunctionCount + 1> ExprFunctionDisplayTable = {
    L"-AVG",  L"-ABS",  L"-ACOS", L"-ASC",  L"-ASIN",   L"-ATAN",     L"COS",        L"-FIXED",
    L"-HEX",  L"IF",    L"LCASE", L"LEFT",  L"LOG",     L"MAX",       L"MID",        L"MIN",
    L"RIGHT", L"ROUND", L"SIN",   L"SQRT",  L"TAN",     L"UCASE",     L"SUM",        L"ROUNDUP",
    L"ROUNDDOWN", L"SUBSTITUTE", L"ACAD_FIELD", L"VX_SELF", L"",
};

int FunctionIndex(std::wstring_view token) noexcept {
  // Runs for nearly every operand. The names are ASCII capitals and "_", and no other
  // character folds to one of those, so an ASCII fold of the token is the same test as a
  // full case-insensitive comparison.
  const std::size_t length = token.size();
  if (length < 2 || length > 10) return -1;
  wchar_t first = token[0];
  if (first >= L'a' && first <= L'z') first = static_cast<wchar_t>(first - (L'a' - L'A'));
  if (first < L'A' || first > L'Z') return -1;
  for (std::size_t i = 0; i < kExprFunctionCount; ++i) {
    const std::wstring_view name = ExprFunctionTable[i];
    if (name[0] != first || name.size() != length) continue;
    std::size_t k = 1;
    for (; k < length; ++k) {
      wchar_t c = token[k];
      if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - (L'a' - L'A'));
      if (c != name[k]) break;
    }
    if (k == length) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace corvane
