#include "headless/db/compacttext.h"

#include <cstdint>

namespace corvane::headless {

namespace {

// Lead bytes by length: 0xxxxxxx, 110xxxxx, 1110xxxx, 11110xxx, 111110xx, 1111110x, and
// 11111110 followed by six continuation bytes for the values past 31 bits.
constexpr unsigned char kLead[] = {0x00, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0xFE};

std::size_t lengthOf(std::uint32_t c) noexcept {
  if (c < 0x80) return 1;
  if (c < 0x800) return 2;
  if (c < 0x10000) return 3;
  if (c < 0x200000) return 4;
  if (c < 0x4000000) return 5;
  if (c < 0x80000000u) return 6;
  return 7;
}

std::size_t lengthOfLead(unsigned char lead) noexcept {
  if (lead < 0x80) return 1;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF8) return 4;
  if (lead < 0xFC) return 5;
  if (lead < 0xFE) return 6;
  return 7;
}

}  // namespace

CompactText::CompactText(std::wstring_view text) {
  std::size_t size = 0;
  for (const wchar_t w : text) size += lengthOf(static_cast<std::uint32_t>(w));
  bytes_.resize(size);
  char* out = bytes_.data();
  for (const wchar_t w : text) {
    const auto c = static_cast<std::uint32_t>(w);
    const std::size_t n = lengthOf(c);
    if (n == 1) {
      *out++ = static_cast<char>(c);
      continue;
    }
    // Six bits a continuation byte, the rest in the lead (none in the seven-byte form's lead).
    std::uint64_t rest = c;
    for (std::size_t i = n - 1; i > 0; --i) {
      out[i] = static_cast<char>(0x80 | (rest & 0x3F));
      rest >>= 6;
    }
    out[0] = static_cast<char>(kLead[n] | (n == 7 ? 0 : rest));
    out += n;
  }
}

std::wstring CompactText::wide() const {
  std::wstring text;
  wide(text);
  return text;
}

void CompactText::wide(std::wstring& text) const {
  text.clear();
  text.reserve(bytes_.size());
  const auto* p = reinterpret_cast<const unsigned char*>(bytes_.data());
  const auto* end = p + bytes_.size();
  while (p < end) {
    const std::size_t n = lengthOfLead(*p);
    if (n == 1) {
      text.push_back(static_cast<wchar_t>(*p++));
      continue;
    }
    std::uint64_t c = n == 7 ? 0 : (*p & (0x7Fu >> n));
    for (std::size_t i = 1; i < n; ++i) c = (c << 6) | (p[i] & 0x3F);
    text.push_back(static_cast<wchar_t>(static_cast<std::uint32_t>(c)));
    p += n;
  }
}

}  // namespace corvane::headless
