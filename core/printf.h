// printf-style formatting of the system's message templates with C semantics.
//
// Each conversion is checked against the type of its argument at run time: integers for
// %d %i %u %x %X %o %c, floating point (or integers, widened) for %e %E %f %g %G, text for
// %s. A template that asks for an argument of another kind, or for more arguments than
// given, is a programming error and throws std::invalid_argument.
//
// Length modifiers follow the Windows data model the templates were written for: "l" is 32
// bits (%ld, %lu, %08lx), "ll" and "I64" are 64 bits, "h" is 16 bits; an integer argument is
// cut to that width the way the callee of a C call would see it. A modifier that means
// nothing for its conversion ("%Ld", "%hf") is a programming error too.
//
// Widths and precisions of %s and %c count characters; the '0' flag pads them with zeros, as
// the Windows runtime does. Infinities and NaNs print as "inf" and "nan" ("INF", "NAN" for
// %E and %G).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace corvane::core {

class FormatArg {
 public:
  template <typename T>
    requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, wchar_t> &&
             std::is_signed_v<T>)
  FormatArg(T v) : value_(static_cast<std::int64_t>(v)) {}  // NOLINT(google-explicit-constructor)
  template <typename T>
    requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, wchar_t> &&
             std::is_unsigned_v<T>)
  FormatArg(T v) : value_(static_cast<std::uint64_t>(v)) {}  // NOLINT(google-explicit-constructor)
  FormatArg(bool v) : value_(static_cast<std::int64_t>(v)) {}      // NOLINT(google-explicit-constructor)
  FormatArg(wchar_t v) : value_(Char{v}) {}                        // NOLINT(google-explicit-constructor)
  FormatArg(double v) : value_(v) {}                               // NOLINT(google-explicit-constructor)
  FormatArg(float v) : value_(static_cast<double>(v)) {}           // NOLINT(google-explicit-constructor)
  FormatArg(std::wstring_view v) : value_(v) {}                    // NOLINT(google-explicit-constructor)
  FormatArg(const std::wstring& v) : value_(std::wstring_view(v)) {}  // NOLINT(google-explicit-constructor)
  FormatArg(const wchar_t* v) : value_(v ? std::wstring_view(v) : std::wstring_view(L"(null)")) {}  // NOLINT

  struct Char {
    wchar_t c;
  };
  using Value = std::variant<std::int64_t, std::uint64_t, double, std::wstring_view, Char>;
  const Value& value() const noexcept { return value_; }

 private:
  Value value_;
};

std::wstring vformat(std::wstring_view format, const FormatArg* args, std::size_t count);

template <typename... Args>
std::wstring format(std::wstring_view fmt, const Args&... args) {
  if constexpr (sizeof...(Args) == 0) {
    return vformat(fmt, nullptr, 0);
  } else {
    const FormatArg list[] = {FormatArg(args)...};
    return vformat(fmt, list, sizeof...(Args));
  }
}

}  // namespace corvane::core
