#include "plugin/formula/exprvalue.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <utility>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "plugin/formula/exprtoken.h"

namespace corvane {

bool IsNumericText(std::wstring_view text) noexcept {
  if (text.empty()) return false;
  bool seenPoint = false;
  bool seenExponent = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t c = text[i];
    if (c >= L'0' && c <= L'9') continue;
    switch (c) {
      case L'.':
        if (seenPoint) return false;
        seenPoint = true;
        break;
      case L'E':
        if (seenExponent) return false;
        seenExponent = true;
        if (i + 1 < text.size() && text[i + 1] != L'+') return false;
        break;
      case L'+':
      case L'-':
        if (i != 0 && text[i - 1] != L'E') return false;
        break;
      default:
        return false;
    }
  }
  return true;
}

bool IsBooleanText(std::wstring_view text) noexcept {
  return core::equalsNoCase(text, L"TRUE") || core::equalsNoCase(text, L"FALSE");
}

bool IsTrueText(std::wstring_view text) noexcept { return core::equalsNoCase(text, L"TRUE"); }

double TextToNumber(std::wstring_view text) noexcept {
  // Most operands are short plain decimals. With at most 15 digits the digits form an exact
  // integer and the scale an exact power of ten, so one division is correctly rounded, the
  // same double the full reader finds.
  if (!text.empty() && text.size() <= 16) {
    const bool negative = text[0] == L'-';
    std::size_t i = negative ? 1 : 0;
    std::int64_t digits = 0;
    int count = 0;
    int decimals = -1;  // digits after the point, once one is seen
    for (; i < text.size(); ++i) {
      const wchar_t c = text[i];
      if (c >= L'0' && c <= L'9') {
        digits = digits * 10 + (c - L'0');
        ++count;
        if (decimals >= 0) ++decimals;
      } else if (c == L'.' && decimals < 0) {
        decimals = 0;
      } else {
        break;
      }
    }
    if (i == text.size() && count > 0 && count <= 15) {
      static constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7,
                                           1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
      const double magnitude = static_cast<double>(digits) / kPowers[decimals < 0 ? 0 : decimals];
      return negative ? -magnitude : magnitude;
    }
  }
  return core::wcstod(text);
}

std::optional<std::wstring> WholeNumberText(double value, int precision) {
  static constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7,
                                       1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  if (precision < 1 || precision > 15) return std::nullopt;
  // Below 10^precision a whole number has no more digits than the precision keeps, so the
  // conversion prints them all and no point; NaN fails the first test.
  if (!(std::fabs(value) < kPowers[precision]) || value != std::trunc(value)) return std::nullopt;
  if (value == 0 && std::signbit(value)) return std::nullopt;  // "-0"
  wchar_t digits[20];
  wchar_t* end = digits + std::size(digits);
  wchar_t* p = end;
  std::int64_t whole = static_cast<std::int64_t>(value);
  const bool negative = whole < 0;
  if (negative) whole = -whole;
  do {
    *--p = static_cast<wchar_t>(L'0' + whole % 10);
    whole /= 10;
  } while (whole != 0);
  if (negative) *--p = L'-';
  return std::wstring(p, end);
}

std::wstring FormatNumber(double value) {
  // A formula prints a number at nearly every step. std::to_chars with a precision is the
  // printf conversion without the format parsing (the engine's own tests hold the two equal);
  // infinities and NaNs keep the runtime's spelling.
  if (!std::isfinite(value)) return core::format(L"%G", value);
  if (auto whole = WholeNumberText(value, 6)) return std::move(*whole);
  char digits[32];
  const auto converted = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6);
  std::wstring text;
  text.reserve(static_cast<std::size_t>(converted.ptr - digits));
  for (const char* p = digits; p != converted.ptr; ++p) text += static_cast<wchar_t>(*p == 'e' ? 'E' : *p);
  return text;
}

std::wstring_view StripStringMarkers(std::wstring_view text) noexcept {
  while (!text.empty() && text.front() == StringMarker) text.remove_prefix(1);
  while (!text.empty() && text.back() == StringMarker) text.remove_suffix(1);
  return text;
}

}  // namespace corvane
