// One group code and its value. A tag read from a file points into the file's bytes, so an
// unchanged tag is written back exactly as it stood; a tag set or made later points into the
// document's own store and is always text.
#pragma once

#include <cstdint>

namespace corvane::dxf {

// How the value bytes of a tag are stored.
enum class TagForm : std::uint8_t {
  Text,          // an ASCII file's value line (without its line end), or a value set later
  BinaryString,  // zero-terminated text in a binary file (the zero is not part of the value)
  BinaryDouble,  // 8 bytes, little-endian
  BinaryInt16,
  BinaryInt32,
  BinaryInt64,
  BinaryBool,    // 1 byte
  BinaryChunk,   // the data bytes after the length byte
};

struct Tag {
  static constexpr std::uint32_t kNotRead = 0xFFFFFFFFu;

  std::uint32_t start = kNotRead;  // first byte of the tag (its group code) in the file
  std::uint32_t value = 0;         // first value byte, in the file or in the document's store
  std::uint32_t size = 0;          // value bytes
  std::int16_t code = 0;
  TagForm form = TagForm::Text;
  std::uint8_t lineEnd = 0;        // ASCII: bytes of the value line's end (0 at the end of file)

  bool wasRead() const noexcept { return start != kNotRead; }
  // One past the tag's last byte in the file.
  std::uint32_t end() const noexcept {
    switch (form) {
      case TagForm::Text: return value + size + lineEnd;
      case TagForm::BinaryString: return value + size + 1;
      default: return value + size;
    }
  }
};

static_assert(sizeof(Tag) == 16, "tags are kept by the million; keep them small");

}  // namespace corvane::dxf
