// Number conversions with exactly the edge behaviour of the Windows C runtime calls that the
// host code relies on. They never look at the process locale: the decimal separator is '.'.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace corvane::core {

// _wtol / _wtoi: leading white space, an optional sign, decimal digits; stops at the first
// other character; 0 when there are no digits. The Windows long is 32 bits wide; values out
// of range saturate at INT32_MIN / INT32_MAX.
std::int32_t wtol(std::wstring_view text) noexcept;
// The "leading integer" of a text: the same conversion as _wtoi.
inline std::int32_t leadingInteger(std::wstring_view text) noexcept { return wtol(text); }
// _wtoi64: as wtol, 64 bits wide, saturating at INT64_MIN / INT64_MAX.
std::int64_t wtoi64(std::wstring_view text) noexcept;
// Unsigned 64-bit decimal (the host writes object ids this way), saturating at UINT64_MAX.
// As _wcstoui64, a minus sign negates the value modulo 2^64.
std::uint64_t wtoui64(std::wstring_view text) noexcept;

// wcstod: leading white space, then the longest prefix that is a decimal number (sign,
// digits with an optional '.', optional exponent), "INF"/"INFINITY"/"NAN" in any case, or a
// hexadecimal number "0x..." with an optional binary exponent. `consumed` receives the
// number of characters used (0 when no number starts the text, and the result is then 0).
// Overflow gives +-HUGE_VAL, underflow 0 or a denormal, as the runtime does.
double wcstod(std::wstring_view text, std::size_t* consumed = nullptr) noexcept;
// _wtof: wcstod without the consumed count.
inline double wtof(std::wstring_view text) noexcept { return wcstod(text, nullptr); }

}  // namespace corvane::core
