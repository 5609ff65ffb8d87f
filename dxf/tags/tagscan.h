// Finding one tag in a file's bytes, for the reader's first pass and for reading a record
// again later from where it stood. Both passes must agree tag for tag, so they share this.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "dxf/tags/groupcode.h"
#include "dxf/tags/tag.h"

namespace corvane::dxf::scan {

// Group code lines are short: blanks, an optional minus, digits, blanks. Returns false for
// anything else or a code outside 16 bits.
inline bool parseCode(const char* p, const char* end, int& code) noexcept {
  while (p < end && (*p == ' ' || *p == '\t')) ++p;
  while (end > p && (end[-1] == ' ' || end[-1] == '\t')) --end;
  bool negative = false;
  if (p < end && *p == '-') {
    negative = true;
    ++p;
  }
  if (p == end || end - p > 6) return false;
  int value = 0;
  for (; p < end; ++p) {
    if (*p < '0' || *p > '9') return false;
    value = value * 10 + (*p - '0');
  }
  if (negative) value = -value;
  if (value < -32768 || value > 32767) return false;
  code = value;
  return true;
}

enum class Found : std::uint8_t {
  Tag,
  BadCode,    // the code line holds no group code
  NoValue,    // the file ends after the code line
  LongLead,   // the code line is longer than a tag can say
  Truncated,  // binary: the file ends inside the tag
};

// The ASCII tag whose code line starts at `pos` (< n). On BadCode, `codeTextEnd` marks the
// end of the code line's text for the message.
struct AsciiTag {
  Found found = Found::Tag;
  int code = 0;
  const char* codeTextEnd = nullptr;
  Tag tag;
};

// Inlined: the reader calls it for every tag of a file.
[[gnu::always_inline]] inline AsciiTag asciiTagAt(const char* base, std::size_t n, std::size_t pos) noexcept {
  AsciiTag out;
  const char* codeLine = base + pos;
  // Code lines are a few bytes long: looking at them directly beats a call per line.
  const char* codeEnd = codeLine;
  while (codeEnd < base + n && *codeEnd != '\n') ++codeEnd;
  const bool lastLine = codeEnd == base + n;
  const char* codeTextEnd = codeEnd;
  if (codeTextEnd > codeLine && codeTextEnd[-1] == '\r') --codeTextEnd;
  out.codeTextEnd = codeTextEnd;
  if (!parseCode(codeLine, codeTextEnd, out.code)) {
    out.found = Found::BadCode;
    return out;
  }
  if (lastLine || codeEnd + 1 == base + n) {
    out.found = Found::NoValue;
    return out;
  }
  const std::size_t valuePos = static_cast<std::size_t>(codeEnd + 1 - base);
  if (valuePos - pos > Tag::kMaxLead) {
    out.found = Found::LongLead;
    return out;
  }
  const char* valueEnd = static_cast<const char*>(std::memchr(base + valuePos, '\n', n - valuePos));
  std::size_t valueSize;
  unsigned lineEnd;
  if (valueEnd != nullptr) {
    valueSize = static_cast<std::size_t>(valueEnd - (base + valuePos));
    lineEnd = 1;
  } else {
    valueSize = n - valuePos;
    lineEnd = 0;
  }
  if (valueSize > 0 && base[valuePos + valueSize - 1] == '\r') {
    --valueSize;
    ++lineEnd;
  }
  out.tag = Tag{.value = static_cast<std::uint32_t>(valuePos),
                .size = static_cast<std::uint32_t>(valueSize),
                .code = static_cast<std::int16_t>(out.code),
                .packed = Tag::pack(TagForm::Text, lineEnd, true, static_cast<unsigned>(valuePos - pos))};
  return out;
}

// The binary tag at `pos` (< n). On Truncated, `needed` is the value bytes the tag lacks
// (0 when its code or a text's end is what is missing) and `code` is set once known.
struct BinaryTag {
  Found found = Found::Tag;
  int code = 0;
  bool codeRead = false;
  std::size_t needed = 0;
  std::size_t valueAt = 0;  // where the value would start
  Tag tag;
};

[[gnu::always_inline]] inline BinaryTag binaryTagAt(const char* text, std::size_t n, std::size_t pos, bool twoByteCodes) noexcept {
  BinaryTag out;
  const auto* base = reinterpret_cast<const unsigned char*>(text);
  const std::size_t start = pos;
  if (twoByteCodes) {
    if (n - pos < 2) return out.found = Found::Truncated, out;
    out.code = static_cast<std::int16_t>(base[pos] | (base[pos + 1] << 8));
    pos += 2;
  } else if (base[pos] == 255) {
    if (n - pos < 3) return out.found = Found::Truncated, out;
    out.code = static_cast<std::int16_t>(base[pos + 1] | (base[pos + 2] << 8));
    pos += 3;
  } else {
    out.code = base[pos++];
  }
  out.codeRead = true;
  out.valueAt = pos;
  std::size_t size = 0;
  TagForm form = TagForm::Text;
  switch (valueKind(out.code)) {
    case ValueKind::String: {
      const void* zero = std::memchr(base + pos, 0, n - pos);
      if (zero == nullptr) return out.found = Found::Truncated, out;
      size = static_cast<std::size_t>(static_cast<const unsigned char*>(zero) - (base + pos));
      form = TagForm::BinaryString;
      break;
    }
    case ValueKind::Chunk:
      if (pos >= n) return out.found = Found::Truncated, out;
      size = base[pos++];
      form = TagForm::BinaryChunk;
      break;
    case ValueKind::Double: size = 8; form = TagForm::BinaryDouble; break;
    case ValueKind::Int16: size = 2; form = TagForm::BinaryInt16; break;
    case ValueKind::Int32: size = 4; form = TagForm::BinaryInt32; break;
    case ValueKind::Int64: size = 8; form = TagForm::BinaryInt64; break;
    case ValueKind::Bool: size = 1; form = TagForm::BinaryBool; break;
  }
  if (form != TagForm::BinaryString && n - pos < size) {
    out.valueAt = pos;
    out.needed = size;
    out.found = Found::Truncated;
    return out;
  }
  out.tag.code = static_cast<std::int16_t>(out.code);
  out.tag.value = static_cast<std::uint32_t>(pos);
  // At most three code bytes and a length byte lead to the value.
  out.tag.packed = Tag::pack(form, 0, true, static_cast<unsigned>(pos - start));
  out.tag.size = static_cast<std::uint32_t>(size);
  return out;
}

}  // namespace corvane::dxf::scan
