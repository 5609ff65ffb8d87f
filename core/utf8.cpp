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
    // Lead byte, then the allowed range of the second byte, which rules out overlong forms,
    // surrogates and code points past U+10FFFF. A broken sequence becomes one U+FFFD for
    // its longest valid beginning, and decoding resumes at the byte that broke it.
    int length = 0;
    char32_t cp = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (b >= 0xC2 && b <= 0xDF) length = 2, cp = b & 0x1F;
    else if (b >= 0xE0 && b <= 0xEF) length = 3, cp = b & 0x0F, low = b == 0xE0 ? 0xA0 : 0x80, high = b == 0xED ? 0x9F : 0xBF;
    else if (b >= 0xF0 && b <= 0xF4) length = 4, cp = b & 0x07, low = b == 0xF0 ? 0x90 : 0x80, high = b == 0xF4 ? 0x8F : 0xBF;
    std::size_t taken = 1;
    bool ok = length > 0;
    for (; ok && taken < static_cast<std::size_t>(length); ++taken) {
      const std::size_t at = i + taken;
      const unsigned char lo = taken == 1 ? low : 0x80, hi = taken == 1 ? high : 0xBF;
      if (at >= n || p[at] < lo || p[at] > hi) {
        ok = false;
        break;
      }
      cp = (cp << 6) | (p[at] & 0x3F);
    }
    out.push_back(ok ? static_cast<wchar_t>(cp) : static_cast<wchar_t>(0xFFFD));
    i += taken;
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
