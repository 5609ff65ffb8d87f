#include "xlsx/sheet/datetimeparts.h"

#include <cmath>

namespace corvane::xlsx {
namespace {

struct CivilDate {
  int year;
  int month;
  int day;
};

// The proleptic Gregorian date `days` after 1970-01-01 (H. Hinnant's civil_from_days).
CivilDate civilFromDays(std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;  // 0 = March
  const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  const int year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
  return {year, month, day};
}

// Day `serialDay` of the 1900 system. From 1900-03-01 on, serial 25569 is 1970-01-01; before the
// phantom 1900-02-29 every day sits one serial lower than that count says.
CivilDate civilFromSerialDay(std::int64_t serialDay) {
  if (serialDay == 0) return {1900, 1, 0};
  if (serialDay == 60) return {1900, 2, 29};
  return civilFromDays(serialDay - (serialDay < 60 ? 25568 : 25569));
}

std::int64_t ticksPerSecond(int fractionDigits) {
  std::int64_t ticks = 1;
  for (int i = 0; i < fractionDigits; ++i) ticks *= 10;
  return ticks;
}

}  // namespace

std::optional<DateTimeParts> splitSerial(double serial, bool date1904, int fractionDigits) {
  if (fractionDigits < 0) fractionDigits = 0;
  if (fractionDigits > 3) fractionDigits = 3;
  const std::int64_t lastDay = date1904 ? kLastSerialDay1900 - kDate1904Offset : kLastSerialDay1900;
  // Also refuses NaN, and keeps the tick count below far from overflowing.
  if (!(serial >= 0.0 && serial < static_cast<double>(lastDay + 1))) return std::nullopt;

  const std::int64_t perSecond = ticksPerSecond(fractionDigits);
  const std::int64_t perDay = 86400 * perSecond;
  const std::int64_t ticks = std::llround(serial * static_cast<double>(perDay));
  const std::int64_t serialDay = ticks / perDay;
  if (serialDay > lastDay) return std::nullopt;

  DateTimeParts parts;
  const std::int64_t day1900 = serialDay + (date1904 ? kDate1904Offset : 0);
  const CivilDate date = civilFromSerialDay(day1900);
  parts.year = date.year;
  parts.month = date.month;
  parts.day = date.day;
  // Excel calls 1900-01-01 a Sunday and keeps counting through the phantom leap day.
  parts.weekday = static_cast<int>((day1900 + 6) % 7);

  const std::int64_t seconds = ticks / perSecond;
  parts.fraction = static_cast<int>(ticks % perSecond);
  parts.elapsedSeconds = seconds;
  parts.elapsedMinutes = seconds / 60;
  parts.elapsedHours = seconds / 3600;
  parts.second = static_cast<int>(seconds % 60);
  parts.minute = static_cast<int>(parts.elapsedMinutes % 60);
  parts.hour = static_cast<int>(parts.elapsedHours % 24);
  return parts;
}

}  // namespace corvane::xlsx
