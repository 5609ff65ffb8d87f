#include "dxf/textpieces.h"

#include <cstdint>

namespace corvane::dxf {

namespace {

// The length of the escape starting at `at`: 2 for "^ " and "^@" to "^_", else 1.
std::size_t unitAt(std::wstring_view text, std::size_t at) noexcept {
  if (text[at] != L'^' || at + 1 >= text.size()) return 1;
  const wchar_t next = text[at + 1];
  return next == L' ' || (next >= L'@' && next <= L'_') ? 2 : 1;
}

}  // namespace

std::wstring decodeCarets(std::wstring_view text) {
  if (text.find(L'^') == std::wstring_view::npos) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    if (unitAt(text, i) == 2) {
      const wchar_t next = text[i + 1];
      out.push_back(next == L' ' ? L'^' : static_cast<wchar_t>(next - L'@'));
      i += 2;
    } else {
      out.push_back(text[i++]);
    }
  }
  return out;
}

std::wstring escapeControlCharacters(std::wstring_view text) {
  std::wstring out;
  out.reserve(text.size());
  for (const wchar_t c : text) {
    if (static_cast<std::uint32_t>(c) < 0x20) {
      out.push_back(L'^');
      out.push_back(static_cast<wchar_t>(c + L'@'));
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::wstring decodeUnitSeparators(std::wstring_view text) {
  if (text.find(L"^_") == std::wstring_view::npos) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t unit = unitAt(text, i);
    if (unit == 2 && text[i + 1] == L'_') out.push_back(L'\x1F');
    else out.append(text.substr(i, unit));
    i += unit;
  }
  return out;
}

std::vector<std::wstring_view> splitPieces(std::wstring_view text, std::size_t size) {
  std::vector<std::wstring_view> pieces;
  if (size == 0) size = kTextPieceSize;
  std::size_t start = 0;
  std::size_t pos = 0;
  std::size_t count = 0;
  while (pos < text.size()) {
    if (count == size) {
      pieces.push_back(text.substr(start, pos - start));
      start = pos;
      count = 0;
    }
    pos += unitAt(text, pos);
    ++count;
  }
  pieces.push_back(text.substr(start, pos - start));
  return pieces;
}

}  // namespace corvane::dxf
