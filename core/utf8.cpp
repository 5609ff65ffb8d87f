#include "core/utf8.h"

#include <cstdint>

namespace corvane::core {

namespace {

constexpr wchar_t kReplacement = 0xFFFD;

inline bool isContinuation(unsigned char b) noexcept { return (b & 0xC0) == 0x80; }

void appendUtf8(std::string& out, std::uint32_t cp) {
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

}  // namespace

std::wstring fromUtf8(std::string_view text) {
  // Never more characters than bytes: write into a buffer of that size, cut it at the end.
  std::wstring out(text.size(), L'\0');
  wchar_t* o = out.data();
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    const unsigned char lead = p[i];
    if (lead < 0x80) {
      *o++ = static_cast<wchar_t>(lead);
      ++i;
      continue;
    }
    // The second byte's range is narrower for some leads: that is what rules out overlong
    // forms, surrogates and code points above U+10FFFF without decoding them first.
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      if (lead == 0xE0) low = 0xA0;
      if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      if (lead == 0xF0) low = 0x90;
      if (lead == 0xF4) high = 0x8F;
    }
    if (length == 0 || i + 1 >= n || p[i + 1] < low || p[i + 1] > high) {
      *o++ = kReplacement;
      ++i;
      continue;
    }
    // One replacement for the longest prefix of a valid sequence, as Unicode recommends.
    std::size_t taken = 2;
    while (taken < length && i + taken < n && isContinuation(p[i + taken])) ++taken;
    if (taken < length) {
      *o++ = kReplacement;
      i += taken;
      continue;
    }
    std::uint32_t cp = lead & (length == 2 ? 0x1Fu : length == 3 ? 0x0Fu : 0x07u);
    for (std::size_t k = 1; k < length; ++k) cp = (cp << 6) | (p[i + k] & 0x3Fu);
    *o++ = static_cast<wchar_t>(cp);
    i += length;
  }
  out.resize(static_cast<std::size_t>(o - out.data()));
  return out;
}

std::string toUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t cp = static_cast<std::uint32_t>(text[i]);
    // Texts that came from 16-bit sources may hold surrogate pairs; only unpaired ones are
    // malformed.
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size()) {
      const auto next = static_cast<std::uint32_t>(text[i + 1]);
      if (next >= 0xDC00 && next <= 0xDFFF) {
        cp = 0x10000 + ((cp - 0xD800) << 10) + (next - 0xDC00);
        ++i;
      }
    }
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = kReplacement;
    appendUtf8(out, cp);
  }
  return out;
}

}  // namespace corvane::core
