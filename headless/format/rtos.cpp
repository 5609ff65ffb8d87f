#include "headless/format/rtos.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string>

namespace corvane::headless {

namespace {

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMaxExactPower = 22;

// The feet-and-inches part of DIMZIN is an enumeration, not a pair of bits.
enum FeetInches { kSuppressBoth = 0, kIncludeBoth = 1, kSuppressInches = 2, kSuppressFeet = 3 };

// True when value * 10^n lies exactly halfway between two integers. Every step is exact: the
// powers of ten up to 1e22 are representable, fma gives the rounding error of the product and
// fmod is exact. Beyond those powers no double can be a halfway case.
bool isHalfway(double value, int n) {
  value = std::fabs(value);
  if (n >= 0) {
    if (n > kMaxExactPower) return false;
    const double twice = 2.0 * kPowersOfTen[n];
    const double product = value * twice;
    if (!std::isfinite(product) || product >= 0x1p53) return false;  // from 2^53 on every double is even
    if (std::fma(value, twice, -product) != 0.0) return false;
    return std::fmod(product, 2.0) == 1.0;
  }
  if (-n > kMaxExactPower) return false;
  const double unit = kPowersOfTen[-n];
  return std::fmod(value, unit) == unit / 2.0;
}

// The host rounds halfway cases away from zero; anything else is rounded from the exact binary
// value, as the C runtime's printf does. Moving a halfway case one step outwards lets printf
// do the rest.
double breakTieAwayFromZero(double value, int n) {
  return isHalfway(value, n) ? std::nextafter(value, std::copysign(HUGE_VAL, value)) : value;
}

// printf's "%.*f", which to_chars reproduces digit for digit (the standard defines it so)
// without the C library's formatter, the larger share of a number field's display.
std::string fixedText(double value, int places) {
  char buffer[400];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, places);
  if (result.ec == std::errc()) return std::string(buffer, result.ptr);
  // Room for a sign, 309 integer digits, the point and the decimals.
  std::string text(static_cast<std::size_t>(places) + 320, '\0');
  result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, places);
  text.resize(static_cast<std::size_t>(result.ptr - text.data()));
  return text;
}

std::string exponentText(double value, int places) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*E", places, value);
  return text;
}

std::string wholeNumberText(double value) { return fixedText(value, 0); }

// A non-negative magnitude with `places` decimals.
std::string roundedDecimal(double magnitude, int places) {
  return fixedText(breakTieAwayFromZero(magnitude, places), places);
}

bool allZeroDigits(const std::string& number) { return number.find_first_not_of("0.") == std::string::npos; }

void suppressZeros(std::string& number, bool leading, bool trailing) {
  const std::size_t point = number.find('.');
  if (trailing && point != std::string::npos) {
    const std::size_t last = number.find_last_not_of('0');
    number.erase(last == point ? point : last + 1);
  }
  if (leading && number.size() > 1 && number[0] == '0' && number[1] == '.') number.erase(0, 1);
}

struct Magnitude {
  std::string text;
  bool zero = false;  // the value rounded to zero: no sign is written
};

Magnitude decimal(double magnitude, const RToSSettings& s) {
  Magnitude out{roundedDecimal(magnitude, s.precision)};
  out.zero = allZeroDigits(out.text);
  suppressZeros(out.text, (s.dimzin & 4) != 0, (s.dimzin & 8) != 0);
  return out;
}

// Leading and trailing zero suppression act on the mantissa, the decimal number in this form.
Magnitude scientific(double magnitude, const RToSSettings& s) {
  int exponent = 0;
  if (magnitude != 0.0) {
    const std::string probe = exponentText(magnitude, 16);
    exponent = std::atoi(probe.c_str() + probe.find('E') + 1);
  }
  const std::string text = exponentText(breakTieAwayFromZero(magnitude, s.precision - exponent), s.precision);
  const std::size_t e = text.find('E');
  Magnitude out{text.substr(0, e)};
  out.zero = allZeroDigits(out.text);
  suppressZeros(out.text, (s.dimzin & 4) != 0, (s.dimzin & 8) != 0);
  out.text += text.substr(e);
  return out;
}

bool showFeet(bool zeroFeet, int feetInches) {
  return !zeroFeet || (feetInches != kSuppressBoth && feetInches != kSuppressFeet);
}
bool showInches(bool zeroInches, int feetInches) {
  return !zeroInches || (feetInches != kSuppressBoth && feetInches != kSuppressInches);
}

std::string feetAndInches(bool withFeet, const std::string& feet, bool withInches, const std::string& inches,
                          bool inputForm) {
  if (withFeet && withInches) return feet + (inputForm ? "'" : "'-") + inches + '"';
  if (withFeet) return feet + "'";
  return inches + '"';
}

Magnitude engineering(double magnitude, const RToSSettings& s) {
  const double inches = std::fmod(magnitude, 12.0);
  double feet = (magnitude - inches) / 12.0;
  std::string inchText = roundedDecimal(inches, s.precision);
  if (std::strtod(inchText.c_str(), nullptr) >= 12.0) {
    feet += 1.0;
    inchText = roundedDecimal(0.0, s.precision);
  }
  const bool zeroFeet = feet == 0.0;
  const bool zeroInches = allZeroDigits(inchText);
  const int feetInches = s.dimzin & 3;
  const bool withFeet = showFeet(zeroFeet, feetInches);
  // Nothing left to show: the inches stand for the zero.
  const bool withInches = showInches(zeroInches, feetInches) || !withFeet;
  // Next to the feet the inch digit stays, as it does in architectural units ("1'-0.50\"").
  suppressZeros(inchText, (s.dimzin & 4) != 0 && !withFeet, (s.dimzin & 8) != 0);
  return {feetAndInches(withFeet, wholeNumberText(feet), withInches, inchText, s.unitmode != 0),
          zeroFeet && zeroInches};
}

// A magnitude rounded to the nearest 1/2^p: whole feet (or units) and the rest counted in 1/2^p.
struct Counted {
  double whole = 0;
  int rest = 0;
};

// nullopt when the count no longer fits a double.
std::optional<Counted> countFractions(double magnitude, int precision, double perWhole) {
  const double count =
      std::round(magnitude * (1 << precision));  // exact product; round() breaks ties away from zero
  if (!std::isfinite(count)) return std::nullopt;
  const double wholeCount = perWhole * (1 << precision);
  const double rest = std::fmod(count, wholeCount);
  return Counted{(count - rest) / wholeCount, static_cast<int>(rest)};
}

// "n/d" of n/2^p, reduced.
std::string fractionText(int numerator, int precision) {
  const int denominator = 1 << precision;
  const int divisor = std::gcd(numerator, denominator);
  return std::to_string(numerator / divisor) + '/' + std::to_string(denominator / divisor);
}

// A whole number and a fraction: "5 1/2", "5-1/2" in the input form, "1/2" alone.
std::string mixedNumber(const std::string& whole, bool zeroWhole, int numerator, int precision,
                        bool forceWhole, bool inputForm) {
  if (numerator == 0) return whole;
  if (zeroWhole && !forceWhole) return fractionText(numerator, precision);
  return whole + (inputForm ? "-" : " ") + fractionText(numerator, precision);
}

std::optional<Magnitude> architectural(double magnitude, const RToSSettings& s) {
  const auto counted = countFractions(magnitude, s.precision, 12.0);
  if (!counted) return std::nullopt;
  const int inches = counted->rest >> s.precision;
  const int numerator = counted->rest & ((1 << s.precision) - 1);
  const bool zeroFeet = counted->whole == 0.0;
  const bool zeroInches = counted->rest == 0;
  const int feetInches = s.dimzin & 3;
  const bool withFeet = showFeet(zeroFeet, feetInches);
  const bool withInches = showInches(zeroInches, feetInches) || !withFeet;
  // Beside the feet the whole-inch digit is always written: 4'-0 3/4", never 4'-3/4".
  const std::string inchText =
      mixedNumber(std::to_string(inches), inches == 0, numerator, s.precision, withFeet, s.unitmode != 0);
  return Magnitude{
      feetAndInches(withFeet, wholeNumberText(counted->whole), withInches, inchText, s.unitmode != 0),
      zeroFeet && zeroInches};
}

std::optional<Magnitude> fractional(double magnitude, const RToSSettings& s) {
  const auto counted = countFractions(magnitude, s.precision, 1.0);
  if (!counted) return std::nullopt;
  const bool zeroWhole = counted->whole == 0.0;
  return Magnitude{mixedNumber(wholeNumberText(counted->whole), zeroWhole, counted->rest, s.precision, false,
                               s.unitmode != 0),
                   zeroWhole && counted->rest == 0};
}

}  // namespace

std::optional<std::wstring> rtos(double value, const RToSSettings& settings) {
  if (settings.units < 1 || settings.units > 5 || settings.precision < 0 || settings.precision > 8 ||
      !std::isfinite(value)) {
    return std::nullopt;
  }
  const double magnitude = std::fabs(value);
  std::optional<Magnitude> m;
  switch (settings.units) {
    case 1: m = scientific(magnitude, settings); break;
    case 2: m = decimal(magnitude, settings); break;
    case 3: m = engineering(magnitude, settings); break;
    case 4: m = architectural(magnitude, settings); break;
    default: m = fractional(magnitude, settings); break;
  }
  if (!m) return std::nullopt;
  // One sign before the whole text, feet and inches included; a value that rounds to zero has none.
  const std::string text = (std::signbit(value) && !m->zero ? "-" : "") + m->text;
  return std::wstring(text.begin(), text.end());
}

}  // namespace corvane::headless
