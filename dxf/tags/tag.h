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
  static constexpr std::uint32_t kNotRead = 0xFFFFFFFFu;  // no file or store offset reaches it
  // Group code lines longer than this (blanks around the code) are refused by the reader.
  static constexpr std::uint32_t kMaxLead = 1023;

  std::uint32_t value = 0;  // first value byte, in the file or in the document's store
  std::uint32_t size = 0;   // value bytes
  std::int16_t code = 0;
  // Packed, and kept whole, so that a tag is made in one write: the form (3 bits), the bytes of
  // an ASCII value line's end (2 bits, 0 at the end of file), whether the value lies in the
  // file's bytes (1 bit) and the bytes from the tag's first byte (its group code) to its value
  // (10 bits): the code line in ASCII; the code, and a chunk's length byte, in binary.
  std::uint16_t packed = 0;

  static constexpr std::uint16_t pack(TagForm form, unsigned lineEnd, bool read, unsigned lead) noexcept {
    return static_cast<std::uint16_t>(static_cast<unsigned>(form) | (lineEnd & 3u) << 3 | (read ? 1u : 0u) << 5 |
                                      (lead & kMaxLead) << 6);
  }
  TagForm form() const noexcept { return static_cast<TagForm>(packed & 7u); }
  unsigned lineEnd() const noexcept { return (packed >> 3) & 3u; }
  bool wasRead() const noexcept { return (packed & 0x20u) != 0; }
  unsigned lead() const noexcept { return packed >> 6; }

  // The tag's first byte in the file.
  std::uint32_t start() const noexcept { return value - lead(); }
  // One past the tag's last byte in the file.
  std::uint32_t end() const noexcept {
    switch (form()) {
      case TagForm::Text: return value + size + lineEnd();
      case TagForm::BinaryString: return value + size + 1;
      default: return value + size;
    }
  }
};

static_assert(sizeof(Tag) == 12, "tags are kept by the million; keep them small");

}  // namespace corvane::dxf
