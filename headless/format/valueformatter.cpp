#include "headless/format/valueformatter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "headless/format/rtos.h"
#include "host/formataffix.h"

namespace corvane::headless {

namespace {

struct Conversion {
  int code = 0;
  double factor = 1.0;
};

// A format string taken apart.
struct FieldFormat {
  bool hasCode = false;
  std::wstring before;  // literal text before the first code
  std::wstring after;   // literal text after it, codes removed
  std::optional<int> units;
  std::optional<int> precision;
  std::optional<int> zeroMask;
  int quantity = 0;
  std::vector<Conversion> conversions;
  wchar_t decimalSeparator = 0;
  wchar_t thousandsSeparator = 0;
  std::wstring prefix;
  std::wstring suffix;
  int textCase = 0;
};

enum class Code {
  kUnits,
  kPrecision,
  kZeros,
  kConvert,
  kQuantity,
  kAffixes,
  kDecimal,
  kThousands,
  kCase,
  kOther
};

// The codes the host knows. Angle, file-name, point and the other codes that do not apply to
// the values formatted here are read and dropped, so that they never show as text.
std::optional<Code> codeNamed(wchar_t a, wchar_t b) {
  struct Entry {
    const wchar_t* name;
    Code code;
  };
  static constexpr Entry kCodes[] = {
      {L"lu", Code::kUnits},    {L"pr", Code::kPrecision}, {L"zs", Code::kZeros},   {L"ct", Code::kConvert},
      {L"qf", Code::kQuantity}, {L"ps", Code::kAffixes},   {L"ds", Code::kDecimal}, {L"th", Code::kThousands},
      {L"tc", Code::kCase},     {L"au", Code::kOther},     {L"fn", Code::kOther},   {L"pt", Code::kOther},
      {L"sn", Code::kOther},    {L"bl", Code::kOther},     {L"lw", Code::kOther},   {L"ls", Code::kOther},
  };
  const wchar_t x = core::toLowerChar(a);
  const wchar_t y = core::toLowerChar(b);
  for (const auto& e : kCodes) {
    if (e.name[0] == x && e.name[1] == y) return e.code;
  }
  return std::nullopt;
}

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The digits at `pos`; a number too long for an int saturates.
std::optional<int> readNumber(std::wstring_view text, std::size_t& pos) {
  if (pos >= text.size() || !isDigit(text[pos])) return std::nullopt;
  std::int64_t n = 0;
  while (pos < text.size() && isDigit(text[pos])) {
    n = std::min<std::int64_t>(n * 10 + (text[pos] - L'0'), INT32_MAX);
    ++pos;
  }
  return static_cast<int>(n);
}

// The text between '[' at `pos` and its closing ']'; a backslash escapes the next character
// when `escapes` is set. An unclosed bracket runs to the end of the format.
std::wstring readBracket(std::wstring_view text, std::size_t& pos, bool escapes) {
  std::wstring inside;
  ++pos;
  while (pos < text.size() && text[pos] != L']') {
    if (escapes && text[pos] == L'\\' && pos + 1 < text.size()) inside += text[pos++];
    inside += text[pos++];
  }
  if (pos < text.size()) ++pos;
  return inside;
}

void splitAffixes(std::wstring_view inside, FieldFormat& f) {
  std::size_t comma = std::wstring_view::npos;
  for (std::size_t i = 0; i < inside.size(); ++i) {
    if (inside[i] == L'\\') {
      ++i;
    } else if (inside[i] == L',') {
      comma = i;
      break;
    }
  }
  // Without a comma the whole text is the prefix.
  f.prefix = host::unescapeAffix(inside.substr(0, comma));
  f.suffix = comma == std::wstring_view::npos ? std::wstring() : host::unescapeAffix(inside.substr(comma + 1));
}

std::optional<wchar_t> separator(std::optional<int> code) {
  if (!code || *code <= 0 || *code > 0xFFFF) return std::nullopt;
  return static_cast<wchar_t>(*code);
}

FieldFormat parseFormat(std::wstring_view text) {
  FieldFormat f;
  std::wstring* literal = &f.before;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const auto code =
        text[pos] == L'%' && pos + 2 < text.size() ? codeNamed(text[pos + 1], text[pos + 2]) : std::nullopt;
    if (!code) {
      *literal += text[pos++];
      continue;
    }
    pos += 3;
    const std::optional<int> number = readNumber(text, pos);
    std::optional<std::wstring> bracket;
    if ((*code == Code::kConvert || *code == Code::kAffixes) && pos < text.size() && text[pos] == L'[') {
      bracket = readBracket(text, pos, *code == Code::kAffixes);
    }
    switch (*code) {
      case Code::kUnits:
        if (number) f.units = *number;
        break;
      case Code::kPrecision:
        if (number) f.precision = std::clamp(*number, 0, 8);
        break;
      case Code::kZeros:
        if (number) f.zeroMask = *number & 15;
        break;
      case Code::kConvert:
        if (number == 1 || number == 4) {
          f.conversions.push_back({*number, 1.0});
        } else if (number == 8 && bracket) {
          // A factor that does not start with a number leaves the value as it is.
          std::size_t used = 0;
          const double factor = core::wcstod(*bracket, &used);
          if (used > 0) f.conversions.push_back({8, factor});
        }
        break;
      case Code::kQuantity:
        if (number) f.quantity = *number;
        break;
      case Code::kAffixes:
        if (bracket) splitAffixes(*bracket, f);
        break;
      case Code::kDecimal:
        if (auto c = separator(number)) f.decimalSeparator = *c;
        break;
      case Code::kThousands:
        if (auto c = separator(number)) f.thousandsSeparator = *c;
        break;
      case Code::kCase:
        if (number) f.textCase = *number;
        break;
      case Code::kOther: break;
    }
    f.hasCode = true;
    literal = &f.after;
  }
  // With no code at all the number comes first and the literal text follows it.
  if (!f.hasCode) std::swap(f.before, f.after);
  return f;
}

double convert(double value, const FieldFormat& f) {
  for (const auto& c : f.conversions) {
    switch (c.code) {
      case 1: value = 1.0 / value; break;
      case 4: value /= 144.0; break;
      default: value *= c.factor; break;
    }
  }
  return value;
}

// The DIMZIN that gives the same feet, inches and decimal zeros as a %zs mask.
int dimzinOfMask(int mask) {
  static constexpr int kFeetInches[] = {1, 3, 2, 0};  // by bits 1 (zero feet) and 2 (zero inches)
  return kFeetInches[mask & 3] | (mask & 12);
}

// Groups the integer digits of the first number in the text and replaces its decimal point.
std::wstring applySeparators(std::wstring text, wchar_t decimal, wchar_t thousands) {
  if (decimal != 0) std::replace(text.begin(), text.end(), L'.', decimal);
  if (thousands == 0) return text;
  const auto first = std::find_if(text.begin(), text.end(), isDigit);
  const auto last = std::find_if_not(first, text.end(), isDigit);
  std::size_t start = static_cast<std::size_t>(first - text.begin());
  std::size_t end = static_cast<std::size_t>(last - text.begin());
  while (end - start > 3) {
    end -= 3;
    text.insert(end, 1, thousands);
  }
  return text;
}

std::wstring cText(double value) { return core::format(L"%f", value); }

std::wstring formatNumber(double value, const FieldFormat& f, const DrawingUnits& du) {
  value = convert(value, f);
  const bool explicitUnits = f.units && *f.units >= 1 && *f.units <= 5;
  int units = explicitUnits ? *f.units : (du.lunits >= 1 && du.lunits <= 5 ? du.lunits : 2);
  // An area has no feet-and-inches form: it is shown in decimal square units.
  if ((f.quantity & 1) != 0 && (units == 3 || units == 4)) units = 2;
  const int precision = f.precision ? *f.precision : std::clamp(du.luprec, 0, 8);
  const int quantityZeros = (f.quantity >> 8) & 15;
  int dimzin = 0;
  if (f.zeroMask || quantityZeros != 0) {
    dimzin = dimzinOfMask(f.zeroMask.value_or(0) | quantityZeros);
  } else if (!explicitUnits) {
    // "Current units" look like every other distance in the drawing, DIMZIN included; a field
    // with units of its own suppresses only what its %zs says.
    dimzin = du.dimzin;
  } else {
    dimzin = dimzinOfMask(0);
  }
  const auto text = rtos(value, {units, precision, dimzin, du.unitmode});
  // Not finite, or too large to count in fractions: the C runtime's text.
  if (!text) return cText(value);
  return applySeparators(*text, f.decimalSeparator, f.thousandsSeparator);
}

bool needsRealFormatting(const FieldFormat& f) {
  return f.units || f.precision || f.zeroMask || !f.conversions.empty() || (f.quantity & ~1) != 0;
}

std::wstring caseOf(const std::wstring& text, int textCase) {
  switch (textCase) {
    case 1: return core::toUpper(text);
    case 2: return core::toLower(text);
    case 3: {
      std::wstring out = core::toLower(text);
      if (!out.empty()) out[0] = core::toUpperChar(out[0]);
      return out;
    }
    case 4: {
      std::wstring out = core::toLower(text);
      bool wordStart = true;
      for (auto& c : out) {
        if (wordStart) c = core::toUpperChar(c);
        wordStart = core::isSpace(c);
      }
      return out;
    }
    default: return text;
  }
}

// --- dates -----------------------------------------------------------------------------------

struct DateTime {
  int year, month, day, hour, minute, second, weekday;  // weekday 0 = Sunday
};

// OLE automation dates count days from 1899-12-30; before it the time of day still counts
// forwards from midnight (-1.25 is 1899-12-29 06:00).
std::optional<DateTime> fromOleDate(double ole) {
  if (!std::isfinite(ole) || ole < -657434.0 || ole >= 2958466.0) return std::nullopt;  // years 100 to 9999
  auto days = static_cast<std::int64_t>(std::trunc(ole));
  auto seconds = static_cast<std::int64_t>(std::llround(std::fabs(ole - std::trunc(ole)) * 86400.0));
  if (seconds >= 86400) {
    seconds -= 86400;
    days += 1;
  }
  // Civil date from days since 1970-01-01 (proleptic Gregorian).
  const std::int64_t z = days - 25569 + 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t doe = z - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  DateTime t{};
  t.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  t.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  t.year = static_cast<int>(yoe + era * 400 + (t.month <= 2 ? 1 : 0));
  t.hour = static_cast<int>(seconds / 3600);
  t.minute = static_cast<int>(seconds / 60 % 60);
  t.second = static_cast<int>(seconds % 60);
  t.weekday = static_cast<int>(((days - 25569) % 7 + 7 + 4) % 7);  // 1970-01-01 was a Thursday
  return t;
}

std::wstring padded(int n, int width) { return core::format(L"%0*d", width, n); }

// Date pictures as the host's date fields take them: d dd ddd dddd, M MM MMM MMMM, y yy yyyy,
// h hh H HH, m mm, s ss, t tt; text in single quotes is copied.
std::wstring datePicture(const DateTime& t, std::wstring_view picture) {
  static constexpr const wchar_t* kMonths[] = {L"January",   L"February", L"March",    L"April",
                                               L"May",       L"June",     L"July",     L"August",
                                               L"September", L"October",  L"November", L"December"};
  static constexpr const wchar_t* kDays[] = {L"Sunday",   L"Monday", L"Tuesday", L"Wednesday",
                                             L"Thursday", L"Friday", L"Saturday"};
  std::wstring out;
  std::size_t i = 0;
  while (i < picture.size()) {
    const wchar_t c = picture[i];
    if (c == L'\'') {
      const std::size_t close = picture.find(L'\'', i + 1);
      const std::size_t end = close == std::wstring_view::npos ? picture.size() : close;
      out += picture.substr(i + 1, end - i - 1);
      i = end == picture.size() ? end : end + 1;
      continue;
    }
    std::size_t run = 1;
    while (i + run < picture.size() && picture[i + run] == c) ++run;
    const int n = static_cast<int>(run);
    const int hour12 = t.hour % 12 == 0 ? 12 : t.hour % 12;
    switch (c) {
      case L'd':
        if (n <= 2)
          out += padded(t.day, n);
        else
          out += n == 3 ? std::wstring(kDays[t.weekday], 3) : kDays[t.weekday];
        break;
      case L'M':
        if (n <= 2)
          out += padded(t.month, n);
        else
          out += n == 3 ? std::wstring(kMonths[t.month - 1], 3) : kMonths[t.month - 1];
        break;
      case L'y': out += n <= 2 ? padded(t.year % 100, n) : padded(t.year, 4); break;
      case L'h': out += padded(hour12, std::min(n, 2)); break;
      case L'H': out += padded(t.hour, std::min(n, 2)); break;
      case L'm': out += padded(t.minute, std::min(n, 2)); break;
      case L's': out += padded(t.second, std::min(n, 2)); break;
      case L't':
        out += (t.hour < 12 ? std::wstring(L"AM") : std::wstring(L"PM")).substr(0, n == 1 ? 1 : 2);
        break;
      default: out.append(run, c); break;
    }
    i += run;
  }
  return out;
}

// --- the value types -------------------------------------------------------------------------

std::wstring wrap(const std::wstring& body, const FieldFormat& f) {
  return f.before + f.prefix + body + f.suffix + f.after;
}

std::wstring formatPoint(const double* coordinates, std::size_t count, std::wstring_view format,
                         const DrawingUnits& du) {
  std::wstring body;
  const FieldFormat f = parseFormat(format);
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) body += L", ";
    body += format.empty() ? cText(coordinates[i]) : formatNumber(coordinates[i], f, du);
  }
  return format.empty() ? body : wrap(body, f);
}

}  // namespace

std::wstring formatValue(const host::AcValue& value, std::wstring_view format, const DrawingUnits& units) {
  switch (value.dataType()) {
    case host::AcValue::kDouble: {
      double v = 0;
      value.get(v);
      // With no format the host writes a real the C way, six decimals whatever LUPREC says.
      if (format.empty()) return cText(v);
      const FieldFormat f = parseFormat(format);
      return wrap(formatNumber(v, f, units), f);
    }
    case host::AcValue::kLong: {
      std::int32_t v = 0;
      value.get(v);
      if (format.empty()) return core::format(L"%d", v);
      const FieldFormat f = parseFormat(format);
      // Units, precision or a conversion make it a real number; otherwise it stays whole.
      if (needsRealFormatting(f)) return wrap(formatNumber(v, f, units), f);
      return wrap(applySeparators(core::format(L"%d", v), 0, f.thousandsSeparator), f);
    }
    case host::AcValue::kString: {
      std::wstring v;
      value.get(v);
      if (format.empty()) return v;
      const FieldFormat f = parseFormat(format);
      return wrap(caseOf(v, f.textCase), f);
    }
    case host::AcValue::kPoint: {
      host::AcValue::Point2d p{};
      value.get(p);
      return formatPoint(p.data(), p.size(), format, units);
    }
    case host::AcValue::k3dPoint: {
      host::AcValue::Point3d p{};
      value.get(p);
      return formatPoint(p.data(), p.size(), format, units);
    }
    case host::AcValue::kDate: {
      host::AcValue::Date d;
      value.get(d);
      const auto t = fromOleDate(d.oleDate);
      if (!t) return cText(d.oleDate);
      // The short-date picture of the host's (US English) locale.
      return datePicture(*t, format.empty() ? std::wstring_view(L"M/d/yyyy") : format);
    }
    case host::AcValue::kObjectId: {
      host::AcDbObjectId id;
      value.get(id);
      return core::format(L"%llu", id.asOldId());
    }
    default: return L"";
  }
}

}  // namespace corvane::headless
