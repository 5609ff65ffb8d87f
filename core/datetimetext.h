// Date-times as text in the user's locale, the way time stamps of linked files are kept:
// "11/24/2026 8:46:30 PM" (month, day, year; twelve-hour clock), the locale of this host.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane::core {

// An OLE date as text, to the nearest second; a date midnight sharp shows no time, as the
// system's conversion leaves it out. Empty for a date out of range.
std::wstring dateTimeText(double oleDate);

// Reads a date-time back: "M/D/YYYY", optionally followed by "h:mm[:ss]" and "AM"/"PM" (a
// 24-hour time without them), or the ISO form "YYYY-MM-DD[ |T]hh:mm[:ss]". Blanks around are
// ignored; nullopt for anything else or a date that does not exist.
std::optional<double> parseDateTimeText(std::wstring_view text) noexcept;

}  // namespace corvane::core
