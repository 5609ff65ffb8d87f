#include "core/oledate.h"

#include <cmath>
#include <ctime>

namespace corvane::core {

namespace {

constexpr double kSecondsPerDay = 86400.0;
// Days from 0000-03-01 (proleptic Gregorian) to 1899-12-30, the OLE epoch.
constexpr std::int64_t kEpochDays = 693899;
constexpr std::int64_t kUnixEpochOle = 25569;  // 1970-01-01 as an OLE day
constexpr double kMinDate = -657434.0;          // 0100-01-01
constexpr double kMaxDate = 2958465.99999;      // 9999-12-31 23:59:59

bool isLeap(int year) noexcept { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) noexcept {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeap(year) ? 29 : kDays[month - 1];
}

// Days since 0000-03-01 of a civil date: years start in March so that the leap day ends them.
std::int64_t civilDays(int year, int month, int day) noexcept {
  const std::int64_t y = month <= 2 ? year - 1 : year;
  const std::int64_t m = month <= 2 ? month + 9 : month - 3;
  return 365 * y + y / 4 - y / 100 + y / 400 + (153 * m + 2) / 5 + day - 1;
}

void civilFromDays(std::int64_t days, int& year, int& month, int& day) noexcept {
  const std::int64_t era = days / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t mp = (5 * dayOfYear + 2) / 153;
  day = static_cast<int>(dayOfYear - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
}

DateTimeParts fromTm(const std::tm& tm) noexcept {
  return {tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec};
}

}  // namespace

std::optional<double> toOleDate(const DateTimeParts& p) noexcept {
  if (p.year < 100 || p.year > 9999 || p.month < 1 || p.month > 12 || p.day < 1 ||
      p.day > daysInMonth(p.year, p.month) || p.hour < 0 || p.hour > 23 || p.minute < 0 || p.minute > 59 ||
      p.second < 0 || p.second > 59) {
    return std::nullopt;
  }
  const double days = static_cast<double>(civilDays(p.year, p.month, p.day) - kEpochDays);
  const double fraction = (p.hour * 3600 + p.minute * 60 + p.second) / kSecondsPerDay;
  // Before the epoch the fraction still counts forward from the day's start.
  return days >= 0 ? days + fraction : days - fraction;
}

std::optional<DateTimeParts> fromOleDate(double date) noexcept {
  if (!std::isfinite(date) || date < kMinDate || date > kMaxDate) return std::nullopt;
  const double whole = std::trunc(date);
  const double fraction = std::abs(date - whole);
  auto seconds = static_cast<std::int64_t>(std::llround(fraction * kSecondsPerDay));
  auto days = static_cast<std::int64_t>(whole);
  if (seconds >= 86400) {
    seconds -= 86400;
    ++days;  // the time counts forward from the day's start on both sides of the epoch
  }
  DateTimeParts parts;
  civilFromDays(days + kEpochDays, parts.year, parts.month, parts.day);
  parts.hour = static_cast<int>(seconds / 3600);
  parts.minute = static_cast<int>(seconds / 60 % 60);
  parts.second = static_cast<int>(seconds % 60);
  return parts;
}

double oleDateFromUnix(std::int64_t seconds) noexcept {
  const std::int64_t days = seconds >= 0 ? seconds / 86400 : -((-seconds + 86399) / 86400);
  const std::int64_t rest = seconds - days * 86400;
  const auto ole = static_cast<double>(days + kUnixEpochOle);
  return ole >= 0 ? ole + rest / kSecondsPerDay : ole - rest / kSecondsPerDay;
}

std::int64_t unixFromOleDate(double date) noexcept {
  const double whole = std::trunc(date);
  const auto seconds = std::llround(std::abs(date - whole) * kSecondsPerDay);
  return (static_cast<std::int64_t>(whole) - kUnixEpochOle) * 86400 + seconds;
}

DateTimeParts localNow() noexcept { return localParts(static_cast<std::int64_t>(std::time(nullptr))); }

DateTimeParts localParts(std::int64_t unixSeconds) noexcept {
  const auto t = static_cast<std::time_t>(unixSeconds);
  std::tm tm{};
  localtime_r(&t, &tm);
  return fromTm(tm);
}

std::optional<double> localOleDate(std::int64_t unixSeconds, long nanoseconds) noexcept {
  const auto whole = toOleDate(localParts(unixSeconds));
  if (!whole) return std::nullopt;
  const double fraction = static_cast<double>(nanoseconds) / 1e9 / kSecondsPerDay;
  return *whole >= 0 ? *whole + fraction : *whole - fraction;
}

}  // namespace corvane::core
