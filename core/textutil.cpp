#include "core/textutil.h"

#include <algorithm>

namespace corvane::core {

namespace {

// Latin Extended-A pairs upper/lower as even/odd code points, except in two runs where the
// pairing is shifted by one, and for a few letters with no partner of the same width.
bool latinExtendedUpperIsEven(wchar_t c) {
  return (c >= 0x0100 && c <= 0x0137) || (c >= 0x014A && c <= 0x0177);
}
bool latinExtendedUpperIsOdd(wchar_t c) { return (c >= 0x0139 && c <= 0x0148) || (c >= 0x0179 && c <= 0x017E); }

}  // namespace

wchar_t toLowerChar(wchar_t c) noexcept {
  if (c < 0x80) return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c + 32) : c;
  if ((c >= 0x00C0 && c <= 0x00DE && c != 0x00D7)) return static_cast<wchar_t>(c + 32);
  if (c == 0x0178) return 0x00FF;
  if (latinExtendedUpperIsEven(c)) return (c % 2 == 0) ? static_cast<wchar_t>(c + 1) : c;
  if (latinExtendedUpperIsOdd(c)) return (c % 2 == 1) ? static_cast<wchar_t>(c + 1) : c;
  if (c >= 0x0391 && c <= 0x03A9 && c != 0x03A2) return static_cast<wchar_t>(c + 32);
  if (c >= 0x0410 && c <= 0x042F) return static_cast<wchar_t>(c + 32);
  if (c >= 0x0400 && c <= 0x040F) return static_cast<wchar_t>(c + 80);
  return c;
}

wchar_t toUpperChar(wchar_t c) noexcept {
  if (c < 0x80) return (c >= L'a' && c <= L'z') ? static_cast<wchar_t>(c - 32) : c;
  if ((c >= 0x00E0 && c <= 0x00FE && c != 0x00F7)) return static_cast<wchar_t>(c - 32);
  if (c == 0x00FF) return 0x0178;
  if (latinExtendedUpperIsEven(static_cast<wchar_t>(c - 1)) && c % 2 == 1) return static_cast<wchar_t>(c - 1);
  if (latinExtendedUpperIsOdd(static_cast<wchar_t>(c - 1)) && c % 2 == 0) return static_cast<wchar_t>(c - 1);
  if (c >= 0x03B1 && c <= 0x03C9 && c != 0x03C2) return static_cast<wchar_t>(c - 32);
  if (c >= 0x0430 && c <= 0x044F) return static_cast<wchar_t>(c - 32);
  if (c >= 0x0450 && c <= 0x045F) return static_cast<wchar_t>(c - 80);
  return c;
}

std::wstring toUpper(std::wstring_view text) {
  std::wstring out(text);
  for (auto& c : out) c = toUpperChar(c);
  return out;
}

std::wstring toLower(std::wstring_view text) {
  std::wstring out(text);
  for (auto& c : out) c = toLowerChar(c);
  return out;
}

int compareNoCase(std::wstring_view a, std::wstring_view b) noexcept {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const auto ca = static_cast<std::uint32_t>(toLowerChar(a[i]));
    const auto cb = static_cast<std::uint32_t>(toLowerChar(b[i]));
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

bool equalsNoCase(std::wstring_view a, std::wstring_view b) noexcept {
  return a.size() == b.size() && compareNoCase(a, b) == 0;
}

bool startsWithNoCase(std::wstring_view text, std::wstring_view prefix) noexcept {
  return text.size() >= prefix.size() && equalsNoCase(text.substr(0, prefix.size()), prefix);
}

std::size_t findNoCase(std::wstring_view text, std::wstring_view what, std::size_t from) noexcept {
  if (what.size() > text.size()) return std::wstring_view::npos;
  for (std::size_t i = from; i + what.size() <= text.size(); ++i) {
    if (equalsNoCase(text.substr(i, what.size()), what)) return i;
  }
  return std::wstring_view::npos;
}

bool isSpace(wchar_t c) noexcept { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

std::wstring trimLeft(std::wstring_view text) {
  std::size_t i = 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  return std::wstring(text.substr(i));
}

std::wstring trimRight(std::wstring_view text) {
  std::size_t n = text.size();
  while (n > 0 && isSpace(text[n - 1])) --n;
  return std::wstring(text.substr(0, n));
}

std::wstring trim(std::wstring_view text) { return trimLeft(trimRight(text)); }

std::wstring replaceAll(std::wstring_view text, std::wstring_view from, std::wstring_view to) {
  if (from.empty()) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size());
  std::size_t pos = 0;
  while (true) {
    const std::size_t at = text.find(from, pos);
    if (at == std::wstring_view::npos) break;
    out.append(text.substr(pos, at - pos));
    out.append(to);
    pos = at + from.size();
  }
  out.append(text.substr(pos));
  return out;
}

std::vector<std::wstring> split(std::wstring_view text, wchar_t separator) {
  std::vector<std::wstring> parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t at = text.find(separator, start);
    if (at == std::wstring_view::npos) {
      parts.emplace_back(text.substr(start));
      return parts;
    }
    parts.emplace_back(text.substr(start, at - start));
    start = at + 1;
  }
}

}  // namespace corvane::core
