#include "core/printf.h"

#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "core/utf8.h"

namespace corvane::core {

namespace {

enum Flag : unsigned { kLeft = 1, kPlus = 2, kSpace = 4, kAlternate = 8, kZero = 16 };

enum class Length { kNone, kChar, kShort, kLong, kLongLong, kPointer, kLongDouble, kWide };

// Widths and precisions beyond this are template mistakes, not output anybody wants.
constexpr std::int64_t kMaxWidth = 1 << 20;

struct Spec {
  unsigned flags = 0;
  int width = 0;
  int precision = -1;  // -1: none given
  Length length = Length::kNone;
  wchar_t conversion = 0;
};

class Formatter {
 public:
  Formatter(std::wstring_view format, const FormatArg* args, std::size_t count)
      : format_(format), args_(args), count_(count) {}

  std::wstring run();

 private:
  [[noreturn]] void fail(const char* what) const {
    throw std::invalid_argument("format \"" + toUtf8(format_) + "\", conversion at " + std::to_string(start_) +
                                ": " + what);
  }

  const FormatArg& take() {
    if (next_ >= count_) fail("more conversions than arguments");
    return args_[next_++];
  }
  std::int64_t takeCount();  // a '*' width or precision
  // "h" (narrow) and "l"/"w" (wide) only say how wide the caller's characters are; all of
  // ours are wide.
  void checkTextLength(const Spec& spec) const {
    if (spec.length != Length::kNone && spec.length != Length::kShort && spec.length != Length::kLong &&
        spec.length != Length::kWide) {
      fail("this length modifier does not apply to %s or %c");
    }
  }
  void parseSpec(Spec& spec);
  int parseNumber();

  void appendInteger(const Spec& spec, const FormatArg& arg);
  void appendReal(const Spec& spec, const FormatArg& arg);
  void appendText(const Spec& spec, std::wstring_view text);
  template <typename T>
  void appendNarrow(const Spec& spec, bool integer, T value);

  std::wstring_view format_;
  const FormatArg* args_;
  std::size_t count_;
  std::size_t next_ = 0;
  std::size_t pos_ = 0;
  std::size_t start_ = 0;  // where the current conversion begins, for messages
  std::wstring out_;
};

std::wstring Formatter::run() {
  out_.reserve(format_.size() + 16);
  while (pos_ < format_.size()) {
    const std::size_t percent = format_.find(L'%', pos_);
    out_.append(format_.substr(pos_, percent == std::wstring_view::npos ? std::wstring_view::npos : percent - pos_));
    if (percent == std::wstring_view::npos) break;
    start_ = percent;
    pos_ = percent + 1;
    if (pos_ < format_.size() && format_[pos_] == L'%') {
      out_.push_back(L'%');
      ++pos_;
      continue;
    }
    Spec spec;
    parseSpec(spec);
    switch (spec.conversion) {
      case L'd':
      case L'i':
      case L'u':
      case L'x':
      case L'X':
      case L'o':
        appendInteger(spec, take());
        break;
      case L'e':
      case L'E':
      case L'f':
      case L'g':
      case L'G':
        appendReal(spec, take());
        break;
      case L's': {
        checkTextLength(spec);
        const auto* text = std::get_if<std::wstring_view>(&take().value());
        if (!text) fail("%s needs a text argument");
        std::wstring_view shown = *text;
        if (spec.precision >= 0 && shown.size() > static_cast<std::size_t>(spec.precision)) {
          shown = shown.substr(0, static_cast<std::size_t>(spec.precision));
        }
        appendText(spec, shown);
        break;
      }
      case L'c': {
        checkTextLength(spec);
        const FormatArg::Value& value = take().value();
        wchar_t c = 0;
        if (const auto* ch = std::get_if<FormatArg::Char>(&value)) {
          c = ch->c;
        } else if (const auto* i = std::get_if<std::int64_t>(&value)) {
          c = static_cast<wchar_t>(*i);
        } else if (const auto* u = std::get_if<std::uint64_t>(&value)) {
          c = static_cast<wchar_t>(*u);
        } else {
          fail("%c needs a character or an integer argument");
        }
        appendText(spec, std::wstring_view(&c, 1));
        break;
      }
      default:
        fail("unknown conversion character");
    }
  }
  return std::move(out_);
}

int Formatter::parseNumber() {
  std::int64_t value = 0;
  while (pos_ < format_.size() && format_[pos_] >= L'0' && format_[pos_] <= L'9') {
    value = value * 10 + (format_[pos_++] - L'0');
    if (value > kMaxWidth) fail("width or precision too large");
  }
  return static_cast<int>(value);
}

std::int64_t Formatter::takeCount() {
  const FormatArg::Value& value = take().value();
  std::int64_t n = 0;
  if (const auto* i = std::get_if<std::int64_t>(&value)) {
    n = *i;
  } else if (const auto* u = std::get_if<std::uint64_t>(&value)) {
    if (*u > static_cast<std::uint64_t>(kMaxWidth)) fail("'*' width or precision too large");
    n = static_cast<std::int64_t>(*u);
  } else {
    fail("'*' needs an integer argument");
  }
  if (n > kMaxWidth || n < -kMaxWidth) fail("'*' width or precision too large");
  return n;
}

void Formatter::parseSpec(Spec& spec) {
  for (; pos_ < format_.size(); ++pos_) {
    const wchar_t c = format_[pos_];
    if (c == L'-') spec.flags |= kLeft;
    else if (c == L'+') spec.flags |= kPlus;
    else if (c == L' ') spec.flags |= kSpace;
    else if (c == L'#') spec.flags |= kAlternate;
    else if (c == L'0') spec.flags |= kZero;
    else break;
  }
  if (pos_ < format_.size() && format_[pos_] == L'*') {
    ++pos_;
    const std::int64_t width = takeCount();
    // A negative '*' width means left alignment, as in C.
    if (width < 0) spec.flags |= kLeft;
    spec.width = static_cast<int>(width < 0 ? -width : width);
  } else {
    spec.width = parseNumber();
  }
  if (pos_ < format_.size() && format_[pos_] == L'.') {
    ++pos_;
    if (pos_ < format_.size() && format_[pos_] == L'*') {
      ++pos_;
      const std::int64_t precision = takeCount();
      spec.precision = precision < 0 ? -1 : static_cast<int>(precision);
    } else {
      spec.precision = parseNumber();
    }
  }
  const std::wstring_view rest = format_.substr(pos_);
  auto consume = [&](std::size_t n, Length length) {
    pos_ += n;
    spec.length = length;
  };
  if (rest.starts_with(L"I64")) consume(3, Length::kLongLong);
  else if (rest.starts_with(L"I32")) consume(3, Length::kLong);
  else if (rest.starts_with(L"ll")) consume(2, Length::kLongLong);
  else if (rest.starts_with(L"hh")) consume(2, Length::kChar);
  else if (rest.starts_with(L"h")) consume(1, Length::kShort);
  else if (rest.starts_with(L"l")) consume(1, Length::kLong);
  else if (rest.starts_with(L"I") || rest.starts_with(L"z") || rest.starts_with(L"t") || rest.starts_with(L"j")) {
    consume(1, Length::kPointer);
  } else if (rest.starts_with(L"L")) consume(1, Length::kLongDouble);
  else if (rest.starts_with(L"w")) consume(1, Length::kWide);
  if (pos_ >= format_.size()) fail("the template ends inside a conversion");
  spec.conversion = format_[pos_++];
}

void Formatter::appendInteger(const Spec& spec, const FormatArg& arg) {
  const FormatArg::Value& value = arg.value();
  std::uint64_t bits = 0;
  if (const auto* i = std::get_if<std::int64_t>(&value)) bits = static_cast<std::uint64_t>(*i);
  else if (const auto* u = std::get_if<std::uint64_t>(&value)) bits = *u;
  else if (const auto* c = std::get_if<FormatArg::Char>(&value)) bits = static_cast<std::uint64_t>(c->c);
  else fail("an integer conversion needs an integer argument");

  // The callee sees only as many bits as the length modifier names; int and long are both
  // 32 bits wide in the data model the templates were written for.
  int width = 32;
  switch (spec.length) {
    case Length::kChar: width = 8; break;
    case Length::kShort: width = 16; break;
    case Length::kNone:
    case Length::kLong: width = 32; break;
    case Length::kLongLong:
    case Length::kPointer: width = 64; break;
    default: fail("this length modifier does not apply to integers");
  }
  const bool isSigned = spec.conversion == L'd' || spec.conversion == L'i';
  if (width < 64) {
    const std::uint64_t mask = (std::uint64_t{1} << width) - 1;
    bits &= mask;
    if (isSigned && (bits >> (width - 1)) != 0) bits |= ~mask;  // sign extension
  }
  // The common plain "%d", "%ld", "%u" skip the C library.
  if (spec.flags == 0 && spec.width == 0 && spec.precision < 0 && spec.conversion != L'x' &&
      spec.conversion != L'X' && spec.conversion != L'o') {
    char buffer[24];
    const auto result = isSigned ? std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(bits))
                                 : std::to_chars(buffer, buffer + sizeof buffer, bits);
    for (const char* p = buffer; p != result.ptr; ++p) out_.push_back(static_cast<wchar_t>(*p));
    return;
  }
  if (isSigned) appendNarrow(spec, true, static_cast<long long>(static_cast<std::int64_t>(bits)));
  else appendNarrow(spec, true, static_cast<unsigned long long>(bits));
}

void Formatter::appendReal(const Spec& spec, const FormatArg& arg) {
  if (spec.length != Length::kNone && spec.length != Length::kLong && spec.length != Length::kLongDouble) {
    fail("this length modifier does not apply to floating point");
  }
  const FormatArg::Value& value = arg.value();
  double real = 0.0;
  if (const auto* d = std::get_if<double>(&value)) real = *d;
  else if (const auto* i = std::get_if<std::int64_t>(&value)) real = static_cast<double>(*i);
  else if (const auto* u = std::get_if<std::uint64_t>(&value)) real = static_cast<double>(*u);
  else fail("a floating-point conversion needs a number");
  // Without flags or width, to_chars gives the C library's digits (the standard defines it
  // by printf's %e, %f and %g) at a fraction of the cost: "%G" runs on every formula result.
  if (spec.flags == 0 && spec.width == 0) {
    const bool upper = spec.conversion == L'E' || spec.conversion == L'G';
    const std::chars_format form = spec.conversion == L'f'                              ? std::chars_format::fixed
                                   : (spec.conversion == L'e' || spec.conversion == L'E') ? std::chars_format::scientific
                                                                                          : std::chars_format::general;
    char buffer[400];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, real, form, spec.precision < 0 ? 6 : spec.precision);
    if (result.ec == std::errc()) {
      for (const char* p = buffer; p != result.ptr; ++p) {
        const char ch = upper && *p >= 'a' && *p <= 'z' ? static_cast<char>(*p - 'a' + 'A') : *p;
        out_.push_back(static_cast<wchar_t>(ch));
      }
      return;
    }
  }
  appendNarrow(spec, false, real);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// Numbers come from the C library with a rebuilt narrow spec: that is what makes them match
// the runtime digit for digit. The process never changes its locale, so the point is '.'.
template <typename T>
void Formatter::appendNarrow(const Spec& spec, bool integer, T value) {
  char narrow[48];
  char* p = narrow;
  *p++ = '%';
  if (spec.flags & kLeft) *p++ = '-';
  if (spec.flags & kPlus) *p++ = '+';
  if (spec.flags & kSpace) *p++ = ' ';
  if (spec.flags & kAlternate) *p++ = '#';
  if (spec.flags & kZero) *p++ = '0';
  char* const end = narrow + sizeof narrow - 6;  // room for ".", "ll", the conversion and NUL
  if (spec.width > 0) p = std::to_chars(p, end, spec.width).ptr;
  if (spec.precision >= 0) {
    *p++ = '.';
    p = std::to_chars(p, end, spec.precision).ptr;
  }
  if (integer) {
    *p++ = 'l';
    *p++ = 'l';
  }
  *p++ = static_cast<char>(spec.conversion);
  *p = '\0';

  char buffer[512];
  const int n = std::snprintf(buffer, sizeof buffer, narrow, value);
  if (n < 0) fail("the C library rejected the conversion");
  const char* text = buffer;
  std::string big;
  if (static_cast<std::size_t>(n) >= sizeof buffer) {
    big.resize(static_cast<std::size_t>(n) + 1);
    std::snprintf(big.data(), big.size(), narrow, value);
    text = big.data();
  }
  const std::size_t at = out_.size();
  out_.resize(at + static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) out_[at + static_cast<std::size_t>(k)] = static_cast<wchar_t>(static_cast<unsigned char>(text[k]));
}
#pragma GCC diagnostic pop

void Formatter::appendText(const Spec& spec, std::wstring_view text) {
  const std::size_t width = static_cast<std::size_t>(spec.width);
  const std::size_t padding = text.size() < width ? width - text.size() : 0;
  if (spec.flags & kLeft) {
    out_.append(text);
    out_.append(padding, L' ');
    return;
  }
  // The Windows runtime honours the '0' flag for texts and characters too.
  out_.append(padding, (spec.flags & kZero) ? L'0' : L' ');
  out_.append(text);
}

}  // namespace

std::wstring vformat(std::wstring_view format, const FormatArg* args, std::size_t count) {
  return Formatter(format, args, count).run();
}

}  // namespace corvane::core
