// OLE date-times, the dates automation hands over: days since 1899-12-30 as a double, the time
// of day as the fraction. Before that day the whole part counts back while the fraction still
// counts forward (-1.25 is 1899-12-29 06:00), as the system's conversions read it.
#pragma once

#include <cstdint>
#include <optional>

namespace corvane::core {

struct DateTimeParts {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  bool operator==(const DateTimeParts&) const = default;
};

// SystemTimeToVariantTime: nullopt for a date outside 100-01-01 .. 9999-12-31 or a field out
// of range (month 13, hour 24, February 30, ...).
std::optional<double> toOleDate(const DateTimeParts& parts) noexcept;
// VariantTimeToSystemTime: the parts, rounded to the second; nullopt outside the same range.
std::optional<DateTimeParts> fromOleDate(double date) noexcept;

// Seconds since 1970-01-01 00:00 UTC as an OLE date of the same clock, and back.
double oleDateFromUnix(std::int64_t seconds) noexcept;
std::int64_t unixFromOleDate(double date) noexcept;

// The local time now, and the local broken-down time of a moment.
DateTimeParts localNow() noexcept;
DateTimeParts localParts(std::int64_t unixSeconds) noexcept;
// A moment (seconds and nanoseconds since 1970 UTC) as a local OLE date, the fraction of its
// second kept: file times are compared to within half a second.
std::optional<double> localOleDate(std::int64_t unixSeconds, long nanoseconds) noexcept;

}  // namespace corvane::core
