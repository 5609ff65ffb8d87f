#include "core/utf8.h"

namespace corvane::core {

std::wstring fromUtf8(std::string_view text) {
  std::wstring out;
  out.reserve(text.size());
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    const unsigned char b = p[i];
    if (b < 0x80) {
      out.push_back(static_cast<wchar_t>(b));
      ++i;
      continue;
    }
    int length = 0;
    char32_t cp = 0;
    char32_t min = 0;
    if (b >= 0xC2 && b <= 0xDF) length = 2, cp = b & 0x1F, min = 0x80;
    else if (b >= 0xE0 && b <= 0xEF) length = 3, cp = b & 0x0F, min = 0x800;
    else if (b >= 0xF0 && b <= 0xF4) length = 4, cp = b & 0x07, min = 0x10000;
    int taken = 1;
    bool ok = length > 0;
    for (; ok && taken < length; ++taken) {
      if (i + static_cast<std::size_t>(taken) >= n || (p[i + static_cast<std::size_t>(taken)] & 0xC0) != 0x80) {
        ok = false;
        break;
      }
      cp = (cp << 6) | (p[i + static_cast<std::size_t>(taken)] & 0x3F);
    }
    if (ok && (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))) ok = false;
    if (ok) {
      out.push_back(static_cast<wchar_t>(cp));
      i += static_cast<std::size_t>(length);
    } else {
      out.push_back(static_cast<wchar_t>(0xFFFD));
      i += static_cast<std::size_t>(taken < 1 ? 1 : taken);
    }
  }
  return out;
}

std::string toUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (const wchar_t wc : text) {
    auto cp = static_cast<char32_t>(wc);
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = 0xFFFD;
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

}  // namespace corvane::core
