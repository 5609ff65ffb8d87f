#include "core/printf.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace corvane::core {

namespace {

struct Spec {
  std::string flags;
  int width = -1;
  int precision = -1;
  int bits = 32;  // integer width the length modifier selects
  wchar_t conversion = 0;
};

[[noreturn]] void fail(const char* what) { throw std::invalid_argument(std::string("format: ") + what); }

const FormatArg& take(const FormatArg* args, std::size_t count, std::size_t& next) {
  if (next >= count) fail("more conversions than arguments");
  return args[next++];
}

std::int64_t asInteger(const FormatArg& arg) {
  const auto& v = arg.value();
  if (const auto* i = std::get_if<std::int64_t>(&v)) return *i;
  if (const auto* u = std::get_if<std::uint64_t>(&v)) return static_cast<std::int64_t>(*u);
  if (const auto* c = std::get_if<FormatArg::Char>(&v)) return static_cast<std::int64_t>(c->c);
  fail("an integer conversion needs an integer argument");
}

double asReal(const FormatArg& arg) {
  const auto& v = arg.value();
  if (const auto* d = std::get_if<double>(&v)) return *d;
  if (const auto* i = std::get_if<std::int64_t>(&v)) return static_cast<double>(*i);
  if (const auto* u = std::get_if<std::uint64_t>(&v)) return static_cast<double>(*u);
  fail("a floating-point conversion needs a number");
}

void appendAscii(std::wstring& out, const char* text, int length) {
  for (int i = 0; i < length; ++i) out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(text[i])));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// Runs the C library's own conversion on a rebuilt narrow spec; the process never changes
// its locale, so the decimal point is '.'.
template <typename T>
void appendNumber(std::wstring& out, const Spec& spec, const char* length, char conversion, T value) {
  std::string format = "%" + spec.flags;
  if (spec.width >= 0) format += std::to_string(spec.width);
  if (spec.precision >= 0) format += "." + std::to_string(spec.precision);
  format += length;
  format.push_back(conversion);
  char small[128];
  const int n = std::snprintf(small, sizeof small, format.c_str(), value);
  if (n < 0) fail("conversion failed");
  if (static_cast<std::size_t>(n) < sizeof small) {
    appendAscii(out, small, n);
    return;
  }
  std::string big(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), format.c_str(), value);
  appendAscii(out, big.data(), n);
}
#pragma GCC diagnostic pop

void appendPadded(std::wstring& out, const Spec& spec, std::wstring_view text) {
  const std::size_t width = spec.width > 0 ? static_cast<std::size_t>(spec.width) : 0;
  const bool left = spec.flags.find('-') != std::string::npos;
  if (!left && text.size() < width) out.append(width - text.size(), L' ');
  out.append(text);
  if (left && text.size() < width) out.append(width - text.size(), L' ');
}

void appendInteger(std::wstring& out, const Spec& spec, std::int64_t raw) {
  const bool isSigned = spec.conversion == L'd' || spec.conversion == L'i';
  const char conversion = static_cast<char>(spec.conversion);
  if (isSigned) {
    std::int64_t v = raw;
    if (spec.bits == 32) v = static_cast<std::int32_t>(raw);
    else if (spec.bits == 16) v = static_cast<std::int16_t>(raw);
    else if (spec.bits == 8) v = static_cast<std::int8_t>(raw);
    appendNumber(out, spec, "ll", conversion, static_cast<long long>(v));
  } else {
    auto v = static_cast<std::uint64_t>(raw);
    if (spec.bits == 32) v = static_cast<std::uint32_t>(v);
    else if (spec.bits == 16) v = static_cast<std::uint16_t>(v);
    else if (spec.bits == 8) v = static_cast<std::uint8_t>(v);
    appendNumber(out, spec, "ll", conversion, static_cast<unsigned long long>(v));
  }
}

}  // namespace

std::wstring vformat(std::wstring_view format, const FormatArg* args, std::size_t count) {
  std::wstring out;
  out.reserve(format.size() + 16);
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    const wchar_t c = format[i];
    if (c != L'%') {
      out.push_back(c);
      continue;
    }
    if (++i >= format.size()) fail("a lone '%' ends the template");
    if (format[i] == L'%') {
      out.push_back(L'%');
      continue;
    }
    Spec spec;
    while (i < format.size() && std::wstring_view(L"-+ #0").find(format[i]) != std::wstring_view::npos) {
      spec.flags.push_back(static_cast<char>(format[i++]));
    }
    if (i < format.size() && format[i] == L'*') {
      spec.width = static_cast<int>(asInteger(take(args, count, next)));
      if (spec.width < 0) {
        spec.flags.push_back('-');
        spec.width = -spec.width;
      }
      ++i;
    } else {
      while (i < format.size() && format[i] >= L'0' && format[i] <= L'9') {
        spec.width = (spec.width < 0 ? 0 : spec.width) * 10 + (format[i++] - L'0');
        if (spec.width > 100000) fail("field width too large");
      }
    }
    if (i < format.size() && format[i] == L'.') {
      ++i;
      spec.precision = 0;
      if (i < format.size() && format[i] == L'*') {
        spec.precision = static_cast<int>(asInteger(take(args, count, next)));
        ++i;
      } else {
        while (i < format.size() && format[i] >= L'0' && format[i] <= L'9') {
          spec.precision = spec.precision * 10 + (format[i++] - L'0');
          if (spec.precision > 100000) fail("precision too large");
        }
      }
    }
    // Length: "l" is 32 bits as in the Windows data model the templates come from.
    if (format.substr(i, 3) == L"I64") spec.bits = 64, i += 3;
    else if (format.substr(i, 3) == L"I32") spec.bits = 32, i += 3;
    else if (format.substr(i, 2) == L"ll") spec.bits = 64, i += 2;
    else if (format.substr(i, 2) == L"hh") spec.bits = 8, i += 2;
    else if (i < format.size() && format[i] == L'h') spec.bits = 16, ++i;
    else if (i < format.size() && (format[i] == L'l' || format[i] == L'L' || format[i] == L'w')) ++i;
    if (i >= format.size()) fail("a conversion is cut off");
    spec.conversion = format[i];
    switch (spec.conversion) {
      case L'd': case L'i': case L'u': case L'x': case L'X': case L'o':
        appendInteger(out, spec, asInteger(take(args, count, next)));
        break;
      case L'e': case L'E': case L'f': case L'F': case L'g': case L'G': case L'a': case L'A':
        appendNumber(out, spec, "", static_cast<char>(spec.conversion), asReal(take(args, count, next)));
        break;
      case L's': case L'S': {
        const auto* text = std::get_if<std::wstring_view>(&take(args, count, next).value());
        if (!text) fail("%s needs a text argument");
        std::wstring_view shown = *text;
        if (spec.precision >= 0 && shown.size() > static_cast<std::size_t>(spec.precision)) {
          shown = shown.substr(0, static_cast<std::size_t>(spec.precision));
        }
        appendPadded(out, spec, shown);
        break;
      }
      case L'c': case L'C': {
        const FormatArg& arg = take(args, count, next);
        wchar_t ch = 0;
        if (const auto* chr = std::get_if<FormatArg::Char>(&arg.value())) ch = chr->c;
        else ch = static_cast<wchar_t>(asInteger(arg));
        appendPadded(out, spec, std::wstring_view(&ch, 1));
        break;
      }
      default:
        fail("unknown conversion");
    }
  }
  return out;
}

}  // namespace corvane::core
