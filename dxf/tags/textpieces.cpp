#include "dxf/tags/textpieces.h"

#include <cstdint>
#include <utility>

namespace corvane::dxf {

std::wstring decodeCarets(std::wstring_view text) {
  if (text.find(L'^') == std::wstring_view::npos) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t next = i + 1 < text.size() ? text[i + 1] : L'\0';
    if (text[i] == L'^' && (next == L' ' || (next >= L'@' && next <= L'_'))) {
      out.push_back(next == L' ' ? L'^' : static_cast<wchar_t>(next - L'@'));
      ++i;
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

std::wstring decodeCarets(std::wstring&& text) {
  if (text.find(L'^') == std::wstring::npos) return std::move(text);
  return decodeCarets(std::wstring_view(text));
}

std::wstring encodeCarets(std::wstring_view text) {
  std::wstring out;
  out.reserve(text.size());
  for (const wchar_t c : text) {
    if (static_cast<std::uint32_t>(c) < 0x20) {
      out.push_back(L'^');
      out.push_back(static_cast<wchar_t>(c + L'@'));
    } else if (c == L'^') {
      out.append(L"^ ");
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::vector<std::wstring_view> splitPieces(std::wstring_view text, std::size_t size) {
  if (size == 0) size = kTextPieceSize;
  std::vector<std::wstring_view> pieces;
  do {
    pieces.push_back(text.substr(0, size));
    text.remove_prefix(pieces.back().size());
  } while (!text.empty());
  return pieces;
}

}  // namespace corvane::dxf
