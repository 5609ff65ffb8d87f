#include "dxf/tags/textcodec.h"

#include <cstdint>

#include "core/utf8.h"

namespace corvane::dxf {

namespace {

int hexDigit(wchar_t c) noexcept {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  return -1;
}

// The code unit of "\U+XXXX" starting at `at`, or -1 when no escape starts there.
long escapeAt(const std::wstring& text, std::size_t at) noexcept {
  if (at + 7 > text.size() || text[at] != L'\\' || text[at + 1] != L'U' || text[at + 2] != L'+') return -1;
  long value = 0;
  for (std::size_t i = at + 3; i < at + 7; ++i) {
    const int digit = hexDigit(text[i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

void appendCodePoint(std::wstring& out, char32_t c) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (c >= 0x10000) {
      c -= 0x10000;
      out.push_back(static_cast<wchar_t>(0xD800 + (c >> 10)));
      out.push_back(static_cast<wchar_t>(0xDC00 + (c & 0x3FF)));
      return;
    }
  }
  out.push_back(static_cast<wchar_t>(c));
}

// Characters beyond the BMP are written as two escapes of their surrogates; they join again
// on reading.
std::wstring decodeEscapes(std::wstring text) {
  const std::size_t first = text.find(L"\\U+");
  if (first == std::wstring::npos) return text;
  std::wstring out(text, 0, first);
  std::size_t i = first;
  while (i < text.size()) {
    const long unit = escapeAt(text, i);
    if (unit < 0) {
      out.push_back(text[i++]);
      continue;
    }
    i += 7;
    char32_t c = static_cast<char32_t>(unit);
    if (unit >= 0xD800 && unit < 0xDC00) {
      const long low = escapeAt(text, i);
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (static_cast<char32_t>(low) - 0xDC00);
        i += 7;
      }
    }
    appendCodePoint(out, c);
  }
  return out;
}

void appendEscape(std::string& out, std::uint32_t unit) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  out += "\\U+";
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kHex[(unit >> shift) & 15]);
}

}  // namespace

std::wstring TextCodec::decode(std::string_view bytes) const {
  std::wstring text;
  if (utf8_) {
    text = core::fromUtf8(bytes);
  } else {
    text.reserve(bytes.size());
    for (unsigned char byte : bytes) {
      if (page_ != nullptr) {
        appendCodePoint(text, page_->decode(byte));
      } else {
        text.push_back(byte < 0x80 ? static_cast<wchar_t>(byte) : L'\uFFFD');
      }
    }
  }
  return decodeEscapes(std::move(text));
}

std::string TextCodec::encode(std::wstring_view text) const {
  if (utf8_) return core::toUtf8(text);
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = static_cast<char32_t>(text[i]);
    if constexpr (sizeof(wchar_t) == 2) {
      if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[i + 1]) - 0xDC00);
        ++i;
      }
    }
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
      continue;
    }
    if (page_ != nullptr) {
      if (const auto byte = page_->encode(c)) {
        out.push_back(static_cast<char>(*byte));
        continue;
      }
    }
    if (c >= 0x10000) {
      const char32_t v = c - 0x10000;
      appendEscape(out, 0xD800 + (v >> 10));
      appendEscape(out, 0xDC00 + (v & 0x3FF));
    } else {
      appendEscape(out, c);
    }
  }
  return out;
}

}  // namespace corvane::dxf
