#include "core/textutil.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace corvane::core {

namespace {

// Every letter with a case partner lies below U+0530 (end of the Cyrillic Supplement block).
constexpr std::uint32_t kFoldLimit = 0x0530;

struct CaseTables {
  std::array<wchar_t, kFoldLimit> lower{};
  std::array<wchar_t, kFoldLimit> upper{};
};

constexpr CaseTables buildCaseTables() {
  CaseTables t;
  for (std::uint32_t c = 0; c < kFoldLimit; ++c) t.lower[c] = t.upper[c] = static_cast<wchar_t>(c);
  auto pair = [&t](std::uint32_t up, std::uint32_t low) {
    t.lower[up] = static_cast<wchar_t>(low);
    t.upper[low] = static_cast<wchar_t>(up);
  };
  auto shifted = [&pair](std::uint32_t first, std::uint32_t last, std::uint32_t offset) {
    for (std::uint32_t c = first; c <= last; ++c) pair(c, c + offset);
  };
  // Blocks where the capital is the first of each code-point pair (upper even, or odd).
  auto alternating = [&pair](std::uint32_t first, std::uint32_t last) {
    for (std::uint32_t c = first; c < last; c += 2) pair(c, c + 1);
  };
  shifted(0x41, 0x5A, 0x20);
  shifted(0xC0, 0xD6, 0x20);  // U+00D7 is the multiplication sign
  shifted(0xD8, 0xDE, 0x20);
  pair(0x178, 0xFF);
  // U+0130 and U+0131 (dotted capital I, dotless small i) and U+0138, U+0149, U+017F have
  // no partner of their own: mapping them would make folding lose its one-to-one property.
  alternating(0x100, 0x12F);
  alternating(0x132, 0x137);
  alternating(0x139, 0x148);
  alternating(0x14A, 0x177);
  alternating(0x179, 0x17E);
  // Greek; the final sigma U+03C2 stays as it is for the same reason.
  pair(0x386, 0x3AC);
  shifted(0x388, 0x38A, 0x25);
  pair(0x38C, 0x3CC);
  shifted(0x38E, 0x38F, 0x3F);
  shifted(0x391, 0x3A1, 0x20);
  shifted(0x3A3, 0x3AB, 0x20);
  alternating(0x3D8, 0x3EF);
  // Cyrillic and Cyrillic Supplement.
  shifted(0x400, 0x40F, 0x50);
  shifted(0x410, 0x42F, 0x20);
  alternating(0x460, 0x481);
  alternating(0x48A, 0x4BF);
  pair(0x4C0, 0x4CF);
  alternating(0x4C1, 0x4CE);
  alternating(0x4D0, 0x52F);
  return t;
}

constexpr CaseTables kCase = buildCaseTables();

inline std::uint32_t folded(wchar_t c) noexcept {
  const auto u = static_cast<std::uint32_t>(c);
  return u < kFoldLimit ? static_cast<std::uint32_t>(kCase.lower[u]) : u;
}

std::size_t firstNonSpace(std::wstring_view text) noexcept {
  std::size_t i = 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  return i;
}

std::size_t endOfNonSpace(std::wstring_view text) noexcept {
  std::size_t n = text.size();
  while (n > 0 && isSpace(text[n - 1])) --n;
  return n;
}

}  // namespace

wchar_t toUpperChar(wchar_t c) noexcept {
  const auto u = static_cast<std::uint32_t>(c);
  return u < kFoldLimit ? kCase.upper[u] : c;
}

wchar_t toLowerChar(wchar_t c) noexcept {
  const auto u = static_cast<std::uint32_t>(c);
  return u < kFoldLimit ? kCase.lower[u] : c;
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
    const std::uint32_t ca = folded(a[i]);
    const std::uint32_t cb = folded(b[i]);
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

bool equalsNoCase(std::wstring_view a, std::wstring_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && folded(a[i]) != folded(b[i])) return false;
  }
  return true;
}

bool startsWithNoCase(std::wstring_view text, std::wstring_view prefix) noexcept {
  return text.size() >= prefix.size() && equalsNoCase(text.substr(0, prefix.size()), prefix);
}

std::size_t findNoCase(std::wstring_view text, std::wstring_view what, std::size_t from) noexcept {
  if (from > text.size() || what.size() > text.size() - from) return std::wstring_view::npos;
  if (what.empty()) return from;
  const std::uint32_t first = folded(what[0]);
  const std::wstring_view rest = what.substr(1);
  for (std::size_t i = from; i + what.size() <= text.size(); ++i) {
    if (folded(text[i]) == first && equalsNoCase(text.substr(i + 1, rest.size()), rest)) return i;
  }
  return std::wstring_view::npos;
}

bool isSpace(wchar_t c) noexcept { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

std::wstring_view trimmed(std::wstring_view text) noexcept {
  const std::size_t end = endOfNonSpace(text);
  const std::size_t begin = firstNonSpace(text.substr(0, end));
  return text.substr(begin, end - begin);
}

std::wstring trim(std::wstring_view text) { return std::wstring(trimmed(text)); }

std::wstring trimLeft(std::wstring_view text) { return std::wstring(text.substr(firstNonSpace(text))); }

std::wstring trimRight(std::wstring_view text) { return std::wstring(text.substr(0, endOfNonSpace(text))); }

std::wstring replaceAll(std::wstring_view text, std::wstring_view from, std::wstring_view to) {
  if (from.empty()) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size());
  std::size_t pos = 0;
  for (std::size_t at = text.find(from); at != std::wstring_view::npos; at = text.find(from, pos)) {
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
  for (std::size_t at = text.find(separator); at != std::wstring_view::npos; at = text.find(separator, start)) {
    parts.emplace_back(text.substr(start, at - start));
    start = at + 1;
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

std::wstring_view fileNameOf(std::wstring_view path) noexcept {
  const std::size_t slash = path.find_last_of(L"\\/");
  return slash == std::wstring_view::npos ? path : path.substr(slash + 1);
}

}  // namespace corvane::core
