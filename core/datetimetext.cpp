#include "core/datetimetext.h"

#include "core/oledate.h"
#include "core/printf.h"
#include "core/textutil.h"

namespace corvane::core {

namespace {

// Reads 1 to `maxDigits` digits at `at`.
std::optional<int> number(std::wstring_view text, std::size_t& at, std::size_t maxDigits) noexcept {
  int value = 0;
  std::size_t digits = 0;
  while (at < text.size() && digits < maxDigits && text[at] >= L'0' && text[at] <= L'9') {
    value = value * 10 + (text[at] - L'0');
    ++at;
    ++digits;
  }
  if (digits == 0) return std::nullopt;
  return value;
}

bool take(std::wstring_view text, std::size_t& at, wchar_t c) noexcept {
  if (at < text.size() && text[at] == c) {
    ++at;
    return true;
  }
  return false;
}

void skipBlanks(std::wstring_view text, std::size_t& at) noexcept {
  while (at < text.size() && (text[at] == L' ' || text[at] == L'\t')) ++at;
}

// "h:mm[:ss][ AM|PM]" from `at` to the end.
bool readTime(std::wstring_view text, std::size_t& at, DateTimeParts& parts) noexcept {
  const auto hour = number(text, at, 2);
  if (!hour || !take(text, at, L':')) return false;
  const auto minute = number(text, at, 2);
  if (!minute) return false;
  parts.hour = *hour;
  parts.minute = *minute;
  if (take(text, at, L':')) {
    const auto second = number(text, at, 2);
    if (!second) return false;
    parts.second = *second;
  }
  skipBlanks(text, at);
  const std::wstring_view marker = text.substr(at);
  if (marker.empty()) return true;
  const bool am = equalsNoCase(marker, L"AM");
  if (!am && !equalsNoCase(marker, L"PM")) return false;
  if (parts.hour < 1 || parts.hour > 12) return false;
  parts.hour = parts.hour % 12 + (am ? 0 : 12);
  at = text.size();
  return true;
}

}  // namespace

std::wstring dateTimeText(double oleDate) {
  const auto parts = fromOleDate(oleDate);
  if (!parts) return {};
  std::wstring text = format(L"%d/%d/%d", parts->month, parts->day, parts->year);
  if (parts->hour == 0 && parts->minute == 0 && parts->second == 0) return text;
  const int hour12 = parts->hour % 12 == 0 ? 12 : parts->hour % 12;
  return text + format(L" %d:%02d:%02d %s", hour12, parts->minute, parts->second, parts->hour < 12 ? L"AM" : L"PM");
}

std::optional<double> parseDateTimeText(std::wstring_view text) noexcept {
  text = trimmed(text);
  DateTimeParts parts;
  std::size_t at = 0;
  const auto first = number(text, at, 4);
  if (!first) return std::nullopt;
  if (take(text, at, L'-')) {
    const auto month = number(text, at, 2);
    if (!month || !take(text, at, L'-')) return std::nullopt;
    const auto day = number(text, at, 2);
    if (!day) return std::nullopt;
    parts.year = *first;
    parts.month = *month;
    parts.day = *day;
    if (at < text.size() && (text[at] == L'T' || text[at] == L' ')) ++at;
  } else {
    if (!take(text, at, L'/')) return std::nullopt;
    const auto day = number(text, at, 2);
    if (!day || !take(text, at, L'/')) return std::nullopt;
    const auto year = number(text, at, 4);
    if (!year) return std::nullopt;
    parts.month = *first;
    parts.day = *day;
    parts.year = *year;
  }
  skipBlanks(text, at);
  if (at < text.size() && !readTime(text, at, parts)) return std::nullopt;
  if (at != text.size()) return std::nullopt;
  return toOleDate(parts);
}

}  // namespace corvane::core
