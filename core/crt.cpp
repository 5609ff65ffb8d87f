#include "core/crt.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "core/textutil.h"

namespace corvane::core {

namespace {

inline bool isDigit(wchar_t c) noexcept { return c >= L'0' && c <= L'9'; }

inline bool isHexDigit(wchar_t c) noexcept {
  return isDigit(c) || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
}

inline bool isAsciiAlnum(wchar_t c) noexcept {
  return isDigit(c) || (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

std::size_t skipSpace(std::wstring_view text) noexcept {
  std::size_t i = 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  return i;
}

// Optional sign and decimal digits after white space, saturating at the bounds of T.
template <typename T>
T leadingDecimal(std::wstring_view text) noexcept {
  using U = std::make_unsigned_t<T>;
  std::size_t i = skipSpace(text);
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) negative = text[i++] == L'-';
  const U limit = static_cast<U>(std::numeric_limits<T>::max()) + (negative ? 1u : 0u);
  U value = 0;
  for (; i < text.size() && isDigit(text[i]); ++i) {
    const auto digit = static_cast<U>(text[i] - L'0');
    if (value > (limit - digit) / 10u) return negative ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
    value = static_cast<U>(value * 10u + digit);
  }
  // Two's complement negation in the unsigned type also covers the minimum itself.
  return static_cast<T>(negative ? static_cast<U>(0u - value) : value);
}

bool startsWithWord(std::wstring_view text, std::size_t at, std::wstring_view word) noexcept {
  return at <= text.size() && text.size() - at >= word.size() && equalsNoCase(text.substr(at, word.size()), word);
}

// Where a run of decimal digits ends.
std::size_t digitsEnd(std::wstring_view text, std::size_t i) noexcept {
  while (i < text.size() && isDigit(text[i])) ++i;
  return i;
}

// An exponent at `i`: its letter, an optional sign and at least one decimal digit. Returns
// where it ends (`i` itself when there is none) and its value, clamped far beyond any double.
std::size_t exponentEnd(std::wstring_view text, std::size_t i, wchar_t lower, std::int64_t& value) noexcept {
  value = 0;
  if (i >= text.size() || (text[i] != lower && text[i] != lower - (L'a' - L'A'))) return i;
  std::size_t k = i + 1;
  bool negative = false;
  if (k < text.size() && (text[k] == L'+' || text[k] == L'-')) negative = text[k++] == L'-';
  const std::size_t end = digitsEnd(text, k);
  if (end == k) return i;
  for (; k < end; ++k) {
    if (value < 100000000000000000) value = value * 10 + (text[k] - L'0');
  }
  if (negative) value = -value;
  return end;
}

// The pieces of a number found at the start of a text: the range handed to from_chars and,
// for range errors, the rough binary or decimal magnitude of the digits.
struct NumberSpan {
  std::size_t begin = 0;  // first character passed to from_chars (after the sign and any "0x")
  std::size_t end = 0;    // one past the number
  bool hex = false;
  std::int64_t magnitude = 0;  // >0: the value is at least 1; <=0: below 1
};

// Position of the leading digits in units of the radix (before the exponent): the count of
// significant integer digits, or minus the zeros that follow the point before the first
// non-zero digit.
std::int64_t leadingMagnitude(std::wstring_view text, std::size_t begin, std::size_t point, std::size_t end) noexcept {
  std::size_t i = begin;
  while (i < point && text[i] == L'0') ++i;
  if (i < point) return static_cast<std::int64_t>(point - i);
  std::size_t k = point < end ? point + 1 : end;
  std::int64_t zeros = 0;
  while (k < end && text[k] == L'0') ++k, ++zeros;
  return -zeros;
}

bool scanNumber(std::wstring_view text, std::size_t i, NumberSpan& span) noexcept {
  if (i + 1 < text.size() && text[i] == L'0' && (text[i + 1] == L'x' || text[i + 1] == L'X')) {
    std::size_t k = i + 2;
    while (k < text.size() && isHexDigit(text[k])) ++k;
    const std::size_t point = k;
    std::size_t digits = point - (i + 2);
    if (k < text.size() && text[k] == L'.') {
      const std::size_t fractionEnd = [&] {
        std::size_t j = k + 1;
        while (j < text.size() && isHexDigit(text[j])) ++j;
        return j;
      }();
      digits += fractionEnd - (k + 1);
      k = fractionEnd;
    }
    if (digits > 0) {
      span.hex = true;
      span.begin = i + 2;
      std::int64_t exponent = 0;
      span.end = exponentEnd(text, k, L'p', exponent);
      span.magnitude = 4 * leadingMagnitude(text, span.begin, point, k) + exponent;
      return true;
    }
    // "0x" with no hexadecimal digit after it is the number 0 followed by other text.
    span.begin = i;
    span.end = i + 1;
    return true;
  }
  const std::size_t point = digitsEnd(text, i);
  std::size_t k = point;
  std::size_t digits = point - i;
  if (k < text.size() && text[k] == L'.') {
    k = digitsEnd(text, k + 1);
    digits += k - (point + 1);
  }
  if (digits == 0) return false;
  span.begin = i;
  std::int64_t exponent = 0;
  span.end = exponentEnd(text, k, L'e', exponent);
  span.magnitude = leadingMagnitude(text, i, point, k) + exponent;
  return true;
}

double parseSpan(std::wstring_view text, const NumberSpan& span) noexcept {
  // Every character of the span is ASCII, so narrowing is exact.
  constexpr std::size_t kInline = 96;
  char inlineBuffer[kInline];
  std::string heapBuffer;
  const std::size_t n = span.end - span.begin;
  char* ascii = inlineBuffer;
  if (n > kInline) {
    try {
      heapBuffer.resize(n);
    } catch (...) {
      return 0.0;  // only under memory exhaustion, and the function promises not to throw
    }
    ascii = heapBuffer.data();
  }
  for (std::size_t k = 0; k < n; ++k) ascii[k] = static_cast<char>(text[span.begin + k]);
  double value = 0.0;
  const auto result =
      std::from_chars(ascii, ascii + n, value, span.hex ? std::chars_format::hex : std::chars_format::general);
  // from_chars leaves the value alone on a range error; the runtime gives HUGE_VAL or zero.
  if (result.ec == std::errc::result_out_of_range) value = span.magnitude > 0 ? HUGE_VAL : 0.0;
  return value;
}

}  // namespace

std::int32_t wtol(std::wstring_view text) noexcept { return leadingDecimal<std::int32_t>(text); }

std::int64_t wtoi64(std::wstring_view text) noexcept { return leadingDecimal<std::int64_t>(text); }

std::uint64_t wtoui64(std::wstring_view text) noexcept {
  std::size_t i = skipSpace(text);
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) negative = text[i++] == L'-';
  std::uint64_t value = 0;
  for (; i < text.size() && isDigit(text[i]); ++i) {
    const auto digit = static_cast<std::uint64_t>(text[i] - L'0');
    if (value > (std::numeric_limits<std::uint64_t>::max() - digit) / 10u) {
      return std::numeric_limits<std::uint64_t>::max();
    }
    value = value * 10u + digit;
  }
  return negative ? 0u - value : value;
}

double wcstod(std::wstring_view text, std::size_t* consumed) noexcept {
  std::size_t i = skipSpace(text);
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) negative = text[i++] == L'-';

  // A plain whole number, by far the commonest text read, needs no general parse: up to 15
  // digits are exact in a double. Anything that could go on as a number goes the long way.
  std::size_t wholeEnd = i;
  std::uint64_t whole = 0;
  while (wholeEnd < text.size() && wholeEnd - i < 16 && text[wholeEnd] >= L'0' && text[wholeEnd] <= L'9')
    whole = whole * 10 + static_cast<std::uint64_t>(text[wholeEnd++] - L'0');
  if (wholeEnd > i && wholeEnd - i <= 15) {
    const wchar_t next = wholeEnd < text.size() ? text[wholeEnd] : L'\0';
    const bool more = next == L'.' || next == L'e' || next == L'E' || (next >= L'0' && next <= L'9') ||
                      (wholeEnd - i == 1 && whole == 0 && (next == L'x' || next == L'X'));
    if (!more) {
      if (consumed) *consumed = wholeEnd;
      const auto exact = static_cast<double>(whole);
      return negative ? -exact : exact;
    }
  }

  double value = 0.0;
  std::size_t end = 0;
  NumberSpan span;
  if (startsWithWord(text, i, L"inf")) {
    end = i + (startsWithWord(text, i, L"infinity") ? 8 : 3);
    value = HUGE_VAL;
  } else if (startsWithWord(text, i, L"nan")) {
    end = i + 3;
    // A "(chars)" tail belongs to the number only when it is closed.
    if (end < text.size() && text[end] == L'(') {
      std::size_t j = end + 1;
      while (j < text.size() && (isAsciiAlnum(text[j]) || text[j] == L'_')) ++j;
      if (j < text.size() && text[j] == L')') end = j + 1;
    }
    value = std::numeric_limits<double>::quiet_NaN();
  } else if (scanNumber(text, i, span)) {
    end = span.end;
    value = parseSpan(text, span);
  } else {
    if (consumed) *consumed = 0;
    return 0.0;
  }
  if (consumed) *consumed = end;
  return negative ? -value : value;
}

}  // namespace corvane::core
