// What kind of value a group code carries. An ASCII file spells every value as text; a binary
// file stores it in the form its kind asks for, so the kind decides how many bytes follow.
#pragma once

#include <cstdint>

namespace corvane::dxf {

enum class ValueKind : std::uint8_t {
  String,  // text in the file's encoding; also handles, which are hexadecimal text
  Double,  // 8-byte IEEE double in binary files
  Int16,
  Int32,
  Int64,
  Bool,    // one byte in binary files
  Chunk,   // binary data: hexadecimal text in ASCII, a length byte and raw bytes in binary
};

ValueKind valueKind(int code) noexcept;

inline bool isNumeric(ValueKind kind) noexcept {
  return kind != ValueKind::String && kind != ValueKind::Chunk;
}

}  // namespace corvane::dxf
