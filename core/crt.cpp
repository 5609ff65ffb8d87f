#include "core/crt.h"

#include <charconv>
#include <cmath>
#include <cwctype>
#include <limits>
#include <string>

#include "core/textutil.h"

namespace corvane::core {

namespace {

std::size_t skipSpace(std::wstring_view text) {
  std::size_t i = 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  return i;
}

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Sign and digits after white space, saturating at the given bounds.
template <typename T>
T leadingDecimal(std::wstring_view text) {
  std::size_t i = skipSpace(text);
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) negative = text[i++] == L'-';
  using U = std::make_unsigned_t<T>;
  const U limit = negative ? static_cast<U>(std::numeric_limits<T>::max()) + 1u
                           : static_cast<U>(std::numeric_limits<T>::max());
  U value = 0;
  bool overflow = false;
  for (; i < text.size() && isDigit(text[i]); ++i) {
    const auto digit = static_cast<U>(text[i] - L'0');
    if (overflow || value > (limit - digit) / 10u) {
      overflow = true;
      continue;
    }
    value = value * 10u + digit;
  }
  if (overflow) return negative ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
  if (negative) return value == 0 ? T(0) : static_cast<T>(-static_cast<T>(value - 1u) - 1);
  return static_cast<T>(value);
}

bool matchWord(std::wstring_view text, std::size_t at, std::wstring_view word) {
  return text.size() - at >= word.size() && equalsNoCase(text.substr(at, word.size()), word);
}

// An exponent at `i` (its letter, an optional sign, at least one digit) joins the number;
// anything less is left for the caller's text.
void appendExponent(std::wstring_view text, std::size_t& i, char letter, std::string& ascii) {
  std::size_t k = i + 1;
  const std::size_t mark = ascii.size();
  ascii.push_back(letter);
  if (k < text.size() && (text[k] == L'+' || text[k] == L'-')) ascii.push_back(text[k++] == L'-' ? '-' : '+');
  const std::size_t digitsStart = k;
  while (k < text.size() && isDigit(text[k])) ascii.push_back(static_cast<char>('0' + (text[k++] - L'0')));
  if (k > digitsStart) i = k;
  else ascii.resize(mark);
}

}  // namespace

std::int32_t wtol(std::wstring_view text) noexcept { return leadingDecimal<std::int32_t>(text); }

std::int64_t wtoi64(std::wstring_view text) noexcept { return leadingDecimal<std::int64_t>(text); }

std::uint64_t wtoui64(std::wstring_view text) noexcept {
  std::size_t i = skipSpace(text);
  if (i < text.size() && text[i] == L'+') ++i;
  std::uint64_t value = 0;
  for (; i < text.size() && isDigit(text[i]); ++i) {
    const auto digit = static_cast<std::uint64_t>(text[i] - L'0');
    if (value > (std::numeric_limits<std::uint64_t>::max() - digit) / 10u) return std::numeric_limits<std::uint64_t>::max();
    value = value * 10u + digit;
  }
  return value;
}

double wcstod(std::wstring_view text, std::size_t* consumed) noexcept {
  if (consumed) *consumed = 0;
  const std::size_t start = skipSpace(text);
  std::size_t i = start;
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) negative = text[i++] == L'-';

  // Infinity and not-a-number, in any letter case.
  if (matchWord(text, i, L"inf")) {
    const std::size_t end = matchWord(text, i, L"infinity") ? i + 8 : i + 3;
    if (consumed) *consumed = end;
    return negative ? -HUGE_VAL : HUGE_VAL;
  }
  if (matchWord(text, i, L"nan")) {
    std::size_t end = i + 3;
    // An optional "(chars)" tail belongs to the number only when it is closed.
    if (end < text.size() && text[end] == L'(') {
      std::size_t j = end + 1;
      while (j < text.size() && (std::iswalnum(text[j]) || text[j] == L'_') && text[j] < 0x80) ++j;
      if (j < text.size() && text[j] == L')') end = j + 1;
    }
    if (consumed) *consumed = end;
    return negative ? -std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::quiet_NaN();
  }

  std::string ascii;
  bool hex = false;
  std::size_t mantissaDigits = 0;
  if (i + 1 < text.size() && text[i] == L'0' && (text[i + 1] == L'x' || text[i + 1] == L'X')) {
    std::size_t j = i + 2;
    std::string digits;
    std::size_t count = 0;
    while (j < text.size() && std::iswxdigit(text[j]) && text[j] < 0x80) digits.push_back(static_cast<char>(text[j++])), ++count;
    if (j < text.size() && text[j] == L'.') {
      digits.push_back('.');
      ++j;
      while (j < text.size() && std::iswxdigit(text[j]) && text[j] < 0x80) digits.push_back(static_cast<char>(text[j++])), ++count;
    }
    if (count > 0) {
      hex = true;
      ascii = digits;
      mantissaDigits = count;
      i = j;
      if (i < text.size() && (text[i] == L'p' || text[i] == L'P')) {
        appendExponent(text, i, 'p', ascii);
      }
    } else {
      // "0x" with no hexadecimal digit after it reads as the number 0.
      ascii.assign(1, '0');
      mantissaDigits = 1;
      i += 1;
    }
  } else {
    while (i < text.size() && isDigit(text[i])) ascii.push_back(static_cast<char>(text[i++])), ++mantissaDigits;
    if (i < text.size() && text[i] == L'.') {
      ascii.push_back('.');
      ++i;
      while (i < text.size() && isDigit(text[i])) ascii.push_back(static_cast<char>(text[i++])), ++mantissaDigits;
    }
    if (mantissaDigits > 0 && i < text.size() && (text[i] == L'e' || text[i] == L'E')) {
      appendExponent(text, i, 'e', ascii);
    }
  }
  if (mantissaDigits == 0) return 0.0;

  double value = 0.0;
  const auto format = hex ? std::chars_format::hex : std::chars_format::general;
  const auto result = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value, format);
  if (result.ec == std::errc::result_out_of_range) {
    // from_chars leaves the value alone on range errors; the runtime gives HUGE_VAL or 0.
    const bool tiny = ascii.find_first_of("eEpP") != std::string::npos &&
                      ascii.find('-', ascii.find_first_of("eEpP")) != std::string::npos;
    value = tiny ? 0.0 : HUGE_VAL;
  }
  if (consumed) *consumed = i;
  return negative ? -value : value;
}

}  // namespace corvane::core
