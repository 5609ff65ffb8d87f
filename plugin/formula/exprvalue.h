// The formula engine's value model: every value is a text, and what kind of value it is gets
// read from the text each time an operator consumes it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// Comparisons and rounding treat numbers this close as equal.
inline constexpr double kExprTolerance = 1e-5;

// Digits with at most one "." and at most one "E"; a sign only first or right after "E", and an
// "E" that is not last must be followed by "+". So "1E+05" is numeric but "1E-05" and "1e5" are
// not, while "+", "-", "." and "E" alone are (they read as 0). Results below 0.0001 that "%G"
// prints in exponent form therefore stop being numbers for "+", "-" and the comparisons.
bool IsNumericText(std::wstring_view text) noexcept;

// "TRUE" or "FALSE" in any case.
bool IsBooleanText(std::wstring_view text) noexcept;
bool IsTrueText(std::wstring_view text) noexcept;

// The C runtime's wide text-to-double reading: a text that does not start with a number is 0.
double TextToNumber(std::wstring_view text) noexcept;

// "%G": six significant digits, upper-case exponent with at least two digits.
std::wstring FormatNumber(double value);

// The digits of a whole number that "%G" with `precision` significant digits prints without an
// exponent (below 10^precision in magnitude, -0 excepted), as that conversion prints it; nullopt
// for any other value. Most numbers a table's formulas read and make are such.
std::optional<std::wstring> WholeNumberText(double value, int precision);

// Every string marker at either end removed, as concatenation and comparison see a value.
std::wstring_view StripStringMarkers(std::wstring_view text) noexcept;

inline std::wstring BooleanText(bool value) { return value ? L"TRUE" : L"FALSE"; }

}  // namespace corvane
