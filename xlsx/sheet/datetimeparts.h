// The calendar date and clock time of a serial date-time as a workbook stores it.
//
// A serial counts days; its fraction is the time of day. In the 1900 system day 1 is
// 1900-01-01 and, as in Lotus 1-2-3, day 60 is 1900-02-29, a day that never was, so day 0 reads
// 1900-01-00. In the 1904 system day 0 is 1904-01-01, day 1462 of the 1900 system. Both end
// with 9999-12-31.
#pragma once

#include <cstdint>
#include <optional>

namespace corvane::xlsx {

struct DateTimeParts {
  int year = 1900;
  int month = 1;    // 1-12
  int day = 0;      // 1-31; 0 only for 1900-01-00
  int weekday = 6;  // 0 Sunday - 6 Saturday; before 1900-03-01 Excel's count, one day off the calendar
  int hour = 0;
  int minute = 0;
  int second = 0;
  int fraction = 0;  // the part of the second, in units of 10^-fractionDigits
  // Whole hours, minutes and seconds since serial 0, for the elapsed-time codes.
  std::int64_t elapsedHours = 0;
  std::int64_t elapsedMinutes = 0;
  std::int64_t elapsedSeconds = 0;
};

// Largest serial day of the 1900 system: 9999-12-31.
inline constexpr std::int64_t kLastSerialDay1900 = 2958465;
// Days between the two systems' day 0.
inline constexpr std::int64_t kDate1904Offset = 1462;

// The parts of `serial`. The serial is rounded to the nearest second, or 10^-fractionDigits of a
// second (fractionDigits 1 to 3), before it is split, so that a time a hair short of a minute
// shows that minute and never 60 seconds. Nothing is rounded to a coarser unit: a format without
// seconds does not show them, it does not round them into the minute. nullopt when the serial is
// no date: negative, not a number, or after 9999-12-31 once rounded.
std::optional<DateTimeParts> splitSerial(double serial, bool date1904, int fractionDigits);

}  // namespace corvane::xlsx
