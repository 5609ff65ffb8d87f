// Rendering a value under one section of a number format, and the General format.
//
// Numbers are turned into decimal digits once (the 15 significant digits Excel keeps) and
// scaled and rounded as digits, so that percent, thousands and rounding half away from zero
// are exact: 1.005 shows 1.01 under 0.00, as in Excel.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "xlsx/sheet/datetimeparts.h"
#include "xlsx/sheet/numberformat.h"
#include "xlsx/sheet/numberformatcode.h"

namespace corvane::xlsx {
namespace {

constexpr int kSignificantDigits = 15;  // what Excel keeps of a number
constexpr int kMaxDenominatorDigits = 9;

// A number that is not negative, in decimal: 0.d1 d2 ... dn times 10^point, without trailing
// zeros. Zero has no digits.
struct Decimal {
  std::array<char, kSignificantDigits + 1> digits{};
  int count = 0;
  int point = 0;

  bool isZero() const { return count == 0; }
  // The digit at `index`, counted from the first significant one; '0' past the last.
  char at(int index) const { return index >= 0 && index < count ? digits[static_cast<std::size_t>(index)] : '0'; }
  // The integer digit worth 10^place.
  char integerDigit(int place) const { return at(point - 1 - place); }
  // The decimal digit worth 10^-(index + 1).
  char decimalDigit(int index) const { return at(point + index); }
  int integerLength() const { return isZero() ? 0 : std::max(point, 0); }
  // Decimals up to the last one that is not zero.
  int decimalLength() const { return isZero() ? 0 : std::max(count - point, 0); }
};

// `magnitude` must be finite and not negative.
Decimal toDecimal(double magnitude) {
  // The shortest text that reads back as the number comes several times quicker than a fixed
  // count of digits. When it has at most 15 significant digits it is also the number rounded
  // to 15: a double lies within 2^-53 of it, well inside half a unit of the 15th digit.
  char text[40];
  auto written = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific);
  const char* mantissaEnd = std::find(text, written.ptr, 'e');
  const auto shortestDigits = mantissaEnd - text - (mantissaEnd - text > 1 ? 1 : 0);  // less the point
  if (shortestDigits > kSignificantDigits) {
    written = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific, kSignificantDigits - 1);
  }
  Decimal d;
  const char* p = text;
  for (; p < written.ptr && *p != 'e'; ++p) {
    if (*p >= '0' && *p <= '9' && d.count < kSignificantDigits) d.digits[static_cast<std::size_t>(d.count++)] = *p;
  }
  int exponent = 0;
  if (p < written.ptr) {
    ++p;
    const bool negative = p < written.ptr && *p == '-';
    if (p < written.ptr && (*p == '-' || *p == '+')) ++p;
    std::from_chars(p, written.ptr, exponent);
    if (negative) exponent = -exponent;
  }
  while (d.count > 0 && d.digits[static_cast<std::size_t>(d.count - 1)] == '0') --d.count;
  d.point = d.isZero() ? 0 : exponent + 1;
  return d;
}

void scale(Decimal& d, int powerOfTen) {
  if (!d.isZero()) d.point += powerOfTen;
}

// Rounds half away from zero to `decimals` places (negative: to tens, hundreds, ...).
void roundToDecimals(Decimal& d, int decimals) {
  if (d.isZero()) return;
  const int keep = d.point + decimals;
  if (keep >= d.count) return;
  if (keep < 0) {
    d = Decimal{};
    return;
  }
  const bool up = d.digits[static_cast<std::size_t>(keep)] >= '5';
  d.count = keep;
  if (up) {
    while (d.count > 0 && d.digits[static_cast<std::size_t>(d.count - 1)] == '9') --d.count;
    if (d.count == 0) {
      d.digits[0] = '1';
      d.count = 1;
      ++d.point;
    } else {
      ++d.digits[static_cast<std::size_t>(d.count - 1)];
    }
  }
  while (d.count > 0 && d.digits[static_cast<std::size_t>(d.count - 1)] == '0') --d.count;
  if (d.isZero()) d.point = 0;
}

void roundToSignificant(Decimal& d, int significant) { roundToDecimals(d, significant - d.point); }

void appendInteger(std::int64_t value, int minDigits, std::string& out) {
  char text[24];
  const auto written = std::to_chars(text, text + sizeof text, value);
  const auto length = static_cast<int>(written.ptr - text);
  if (length < minDigits) out.append(static_cast<std::size_t>(minDigits - length), '0');
  out.append(text, written.ptr);
}

// ---- General ----------------------------------------------------------------------------

// Integer digits (at least "0"), then the decimals if any.
void appendPlain(const Decimal& d, std::string& out) {
  if (d.integerLength() == 0) out += '0';
  for (int place = d.integerLength() - 1; place >= 0; --place) out += d.integerDigit(place);
  if (d.decimalLength() == 0) return;
  out += '.';
  for (int i = 0; i < d.decimalLength(); ++i) out += d.decimalDigit(i);
}

// Six significant digits without trailing zeros, and an exponent of at least two digits.
void appendGeneralScientific(Decimal d, std::string& out) {
  roundToSignificant(d, 6);
  const int exponent = d.point - 1;
  out += d.at(0);
  if (d.count > 1) {
    out += '.';
    for (int i = 1; i < d.count; ++i) out += d.at(i);
  }
  out += exponent < 0 ? "E-" : "E+";
  appendInteger(std::abs(exponent), 2, out);
}

// ---- Digit placeholders -----------------------------------------------------------------

// An integer shown right-aligned in a group of placeholders: digits without a placeholder of
// their own go to the first one, placeholders without a digit show '0', a space or nothing.
struct IntegerField {
  Decimal value;
  int placeholders = 0;
  bool grouped = false;  // thousands separators
  int minLength = 0;     // 1: zero shows as "0" even under '#'

  int length() const { return std::max(value.integerLength(), minLength); }

  void appendDigit(int place, std::string& out) const {
    out += value.integerDigit(place);
    if (grouped && place > 0 && place % 3 == 0) out += ',';
  }

  void appendAll(std::string& out) const {
    for (int place = length() - 1; place >= 0; --place) appendDigit(place, out);
  }

  void appendPlace(const Token& token, std::string& out) const {
    const int place = placeholders - 1 - token.width;
    if (token.width == 0) {
      for (int extra = length() - 1; extra > place; --extra) appendDigit(extra, out);
    }
    if (place < length()) {
      appendDigit(place, out);
    } else if (token.placeholder != '#') {
      const char pad = token.placeholder == '0' ? '0' : ' ';
      out += pad;
      if (grouped && place > 0 && place % 3 == 0) out += pad == '0' ? ',' : ' ';
    }
  }
};

// Decimals shown left-aligned: placeholders past the last significant digit show '0', a space
// or nothing.
void appendDecimalPlace(const Decimal& d, int placeholders, const Token& token, std::string& out) {
  if (token.width < std::min(d.decimalLength(), placeholders)) {
    out += d.decimalDigit(token.width);
  } else if (token.placeholder == '0') {
    out += '0';
  } else if (token.placeholder == '?') {
    out += ' ';
  }
}

void renderFixed(const Section& section, double magnitude, std::string& out) {
  Decimal d = toDecimal(magnitude);
  scale(d, section.powerOfTen);
  const int decimals = section.count(DigitGroup::Decimals);
  roundToDecimals(d, decimals);
  const IntegerField whole{d, section.count(DigitGroup::Integer), section.thousands, 0};
  for (const Token& token : section.tokens) {
    switch (token.kind) {
      case FormatToken::Literal:
        out += token.text;
        break;
      case FormatToken::Digit:
        if (token.group == DigitGroup::Integer) {
          whole.appendPlace(token, out);
        } else {
          appendDecimalPlace(d, decimals, token, out);
        }
        break;
      case FormatToken::DecimalPoint:
        if (whole.placeholders == 0) whole.appendAll(out);  // .00 still shows 12.50
        out += '.';
        break;
      default:
        break;
    }
  }
}

int floorMod(int value, int divisor) {
  const int rest = value % divisor;
  return rest < 0 ? rest + divisor : rest;
}

void renderScientific(const Section& section, double magnitude, std::string& out) {
  const int integers = section.count(DigitGroup::Integer);
  const int decimals = section.count(DigitGroup::Decimals);
  Decimal mantissa = toDecimal(magnitude);
  scale(mantissa, section.powerOfTen);
  int exponent = 0;
  if (!mantissa.isZero()) {
    // With several integer placeholders the exponent is a multiple of their count (##0.0E+0
    // is engineering notation); the mantissa then has 1 to that many integer digits.
    const int step = std::max(integers, 1);
    const int first = mantissa.point - 1;
    const int shown = integers == 0 ? 0 : floorMod(first, step) + 1;
    exponent = first + 1 - shown;
    mantissa.point -= exponent;
    roundToDecimals(mantissa, decimals);
    if (mantissa.point > integers) {  // rounded up into one digit more than there is room for
      exponent += step;
      mantissa.point -= step;
    }
  }
  const IntegerField whole{mantissa, integers, false, 0};
  const IntegerField power{toDecimal(std::abs(exponent)), section.count(DigitGroup::Exponent), false, 1};
  for (const Token& token : section.tokens) {
    switch (token.kind) {
      case FormatToken::Literal:
        out += token.text;
        break;
      case FormatToken::Digit:
        if (token.group == DigitGroup::Integer) {
          whole.appendPlace(token, out);
        } else if (token.group == DigitGroup::Decimals) {
          appendDecimalPlace(mantissa, decimals, token, out);
        } else {
          power.appendPlace(token, out);
        }
        break;
      case FormatToken::DecimalPoint:
        if (integers == 0) whole.appendAll(out);
        out += '.';
        break;
      case FormatToken::Exponent:
        out += token.text;
        if (exponent < 0) {
          out += '-';
        } else if (token.plusSign) {
          out += '+';
        }
        if (power.placeholders == 0) power.appendAll(out);
        break;
      default:
        break;
    }
  }
}

struct Fraction {
  double numerator = 0;
  double denominator = 1;
};

// The last convergent of the continued fraction of `x` whose denominator is at most
// `maxDenominator`. Excel shows these, not the closest fraction (0.456 under ??/?? is 26/57,
// though 31/68 is nearer), as Excel-made tables checked by the SheetJS frac project show; the
// floating-point steps and the 5e-10 end test follow the method those tables match.
Fraction approximate(double x, double maxDenominator) {
  Fraction best{std::floor(x), 1};
  double p0 = 0, q0 = 1, p1 = 1, q1 = 0;
  double rest = x;
  for (int step = 0; step < 64; ++step) {
    const double a = std::floor(rest);
    const double p = a * p1 + p0;
    const double q = a * q1 + q0;
    if (q > maxDenominator) break;
    best = {p, q};
    if (rest - a < 5e-10) break;
    rest = 1 / (rest - a);
    p0 = p1;
    q0 = q1;
    p1 = p;
    q1 = q;
  }
  return best;
}

// Characters (not bytes) of a UTF-8 text.
std::size_t characters(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::size_t blankWidth(const Token& token) {
  return token.kind == FormatToken::Literal || token.kind == FormatToken::FixedDenominator ? characters(token.text) : 1;
}

void renderFraction(const Section& section, double magnitude, std::string& out) {
  const double value = magnitude * std::pow(10.0, section.powerOfTen);
  const bool mixed = section.count(DigitGroup::Integer) > 0;
  double whole = mixed ? std::floor(value) : 0;
  Fraction fraction;
  if (section.fixedDenominator >= 1) {
    fraction = {std::round((value - whole) * section.fixedDenominator), section.fixedDenominator};
  } else {
    const int digits = std::min(section.count(DigitGroup::Denominator), kMaxDenominatorDigits);
    fraction = approximate(value - whole, std::pow(10.0, digits) - 1);
  }
  if (!std::isfinite(value) || !std::isfinite(fraction.numerator)) {
    out += kNotShownText;
    return;
  }
  if (mixed && fraction.numerator >= fraction.denominator) {  // rounded up to a whole
    whole += std::floor(fraction.numerator / fraction.denominator);
    fraction.numerator = std::fmod(fraction.numerator, fraction.denominator);
  }
  // A mixed fraction without a fractional part shows the whole number and blanks.
  const bool blank = mixed && fraction.numerator == 0;
  const IntegerField wholeField{toDecimal(whole), section.count(DigitGroup::Integer), section.thousands,
                                whole == 0 && fraction.numerator == 0 ? 1 : 0};
  const IntegerField numerator{toDecimal(fraction.numerator), section.count(DigitGroup::Numerator), false, 1};
  const IntegerField denominator{toDecimal(fraction.denominator), section.count(DigitGroup::Denominator), false, 1};
  for (std::size_t i = 0; i < section.tokens.size(); ++i) {
    const Token& token = section.tokens[i];
    if (blank && i >= section.fractionBegin && i <= section.fractionEnd) {
      out.append(blankWidth(token), ' ');
      continue;
    }
    switch (token.kind) {
      case FormatToken::Literal:
      case FormatToken::FixedDenominator:
        out += token.text;
        break;
      case FormatToken::FractionSlash:
        out += '/';
        break;
      case FormatToken::Digit:
        if (token.group == DigitGroup::Integer) {
          wholeField.appendPlace(token, out);
        } else if (token.group == DigitGroup::Numerator) {
          numerator.appendPlace(token, out);
        } else if (section.denominatorPadsRight) {
          // ?? keeps the slash in place: the denominator starts right after it.
          if (token.width == 0) {
            denominator.appendAll(out);
          } else if (token.width >= denominator.length() && token.placeholder != '#') {
            out += token.placeholder == '0' ? '0' : ' ';
          }
        } else {
          denominator.appendPlace(token, out);
        }
        break;
      default:
        break;
    }
  }
}

// ---- Dates and times --------------------------------------------------------------------

constexpr std::string_view kMonthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                            "July",    "August",   "September", "October", "November", "December"};
constexpr std::string_view kDayNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

void appendName(std::string_view name, int width, std::string& out) { out += width == 3 ? name.substr(0, 3) : name; }

void appendAmPm(const Token& token, bool afternoon, std::string& out) {
  if (token.text.size() == 5) {  // AM/PM as written: am/pm shows am and pm
    out += std::string_view(token.text).substr(afternoon ? 3 : 0, 2);
  } else {  // A/P
    out += token.text[afternoon ? 2 : 0];
  }
}

void renderDateTime(const Section& section, double serial, bool date1904, std::string& out) {
  const std::optional<DateTimeParts> parts = splitSerial(serial, date1904, section.secondDigits);
  if (!parts) {
    out += kNotShownText;
    return;
  }
  const int hour12 = parts->hour % 12 == 0 ? 12 : parts->hour % 12;
  for (const Token& token : section.tokens) {
    const int twoDigits = token.width >= 2 ? 2 : 1;
    switch (token.kind) {
      case FormatToken::Literal:
        out += token.text;
        break;
      case FormatToken::Year:
        if (token.width <= 2) {
          appendInteger(parts->year % 100, 2, out);
        } else {
          appendInteger(parts->year, 4, out);
        }
        break;
      case FormatToken::Month:
        if (token.width <= 2) {
          appendInteger(parts->month, twoDigits, out);
        } else if (token.width == 5) {
          out += kMonthNames[parts->month - 1][0];
        } else {
          appendName(kMonthNames[parts->month - 1], token.width, out);
        }
        break;
      case FormatToken::Day:
        if (token.width <= 2) {
          appendInteger(parts->day, twoDigits, out);
        } else {
          appendName(kDayNames[parts->weekday], token.width, out);
        }
        break;
      case FormatToken::Hour:
        appendInteger(section.twelveHour ? hour12 : parts->hour, twoDigits, out);
        break;
      case FormatToken::Minute:
        appendInteger(parts->minute, twoDigits, out);
        break;
      case FormatToken::Second:
        appendInteger(parts->second, twoDigits, out);
        break;
      case FormatToken::SubSecond: {
        std::string digits;
        appendInteger(parts->fraction, section.secondDigits, digits);
        out += '.';
        out += std::string_view(digits).substr(0, static_cast<std::size_t>(token.width));
        break;
      }
      case FormatToken::AmPm:
        appendAmPm(token, parts->hour >= 12, out);
        break;
      case FormatToken::ElapsedHours:
        appendInteger(parts->elapsedHours, token.width, out);
        break;
      case FormatToken::ElapsedMinutes:
        appendInteger(parts->elapsedMinutes, token.width, out);
        break;
      case FormatToken::ElapsedSeconds:
        appendInteger(parts->elapsedSeconds, token.width, out);
        break;
      default:
        break;
    }
  }
}

void renderGeneralSection(const Section& section, double magnitude, std::string& out) {
  for (const Token& token : section.tokens) {
    if (token.kind == FormatToken::General) {
      appendGeneral(magnitude, out);
    } else {
      out += token.text;
    }
  }
}

}  // namespace

void appendGeneral(double value, std::string& out) {
  if (!std::isfinite(value)) {
    out += kNotFiniteText;
    return;
  }
  if (value < 0) {
    out += '-';
    value = -value;
  }
  if (value < 1e11 && value == std::floor(value)) {  // an integer that fits, -0 included
    appendInteger(static_cast<std::int64_t>(value), 1, out);
    return;
  }
  const Decimal d = toDecimal(value);
  const int first = d.point - 1;  // the power of ten of the first digit
  if (first >= 11 || first <= -10) {
    appendGeneralScientific(d, out);
    return;
  }
  Decimal fixed = d;
  if (first >= -4) {  // 10 significant digits fit in 11 characters
    roundToDecimals(fixed, first >= 0 ? std::max(0, 9 - first) : 9);
    if (fixed.integerLength() > 11) {
      appendGeneralScientific(d, out);
    } else {
      appendPlain(fixed, out);
    }
    return;
  }
  // Below 0.0001 the leading zeros eat the room: fixed only where no digit is lost.
  roundToDecimals(fixed, 12);
  if (fixed.decimalLength() <= 9) {
    appendPlain(fixed, out);
  } else {
    appendGeneralScientific(d, out);
  }
}

std::string formatGeneral(double value) {
  std::string text;
  appendGeneral(value, text);
  return text;
}

void renderNumber(const Section& section, double value, bool date1904, std::string& out) {
  if (!std::isfinite(value)) {
    out += kNotFiniteText;
    return;
  }
  if (section.kind == SectionKind::DateTime) {
    renderDateTime(section, value, date1904, out);
    return;
  }
  if (value < 0) out += '-';
  const double magnitude = std::fabs(value);
  switch (section.kind) {
    case SectionKind::Number:
      renderFixed(section, magnitude, out);
      break;
    case SectionKind::Scientific:
      renderScientific(section, magnitude, out);
      break;
    case SectionKind::Fraction:
      renderFraction(section, magnitude, out);
      break;
    case SectionKind::General:
      renderGeneralSection(section, magnitude, out);
      break;
    case SectionKind::DateTime:
    case SectionKind::Text:
      break;
  }
}

void renderText(const Section& section, std::string_view text, std::string& out) {
  for (const Token& token : section.tokens) {
    if (token.kind == FormatToken::Text) {
      out += text;
    } else {
      out += token.text;
    }
  }
}

}  // namespace corvane::xlsx
