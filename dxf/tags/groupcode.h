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

// Asked once for every tag read; inline so that reading a file does not call out for it.
inline ValueKind valueKind(int code) noexcept {
  if (code < 0) return ValueKind::String;
  if (code < 10) return ValueKind::String;
  if (code < 60) return ValueKind::Double;
  if (code < 80) return ValueKind::Int16;
  if (code >= 90 && code < 100) return ValueKind::Int32;
  if (code >= 110 && code < 150) return ValueKind::Double;
  if (code >= 160 && code < 170) return ValueKind::Int64;
  if (code >= 170 && code < 180) return ValueKind::Int16;
  if (code >= 210 && code < 240) return ValueKind::Double;
  if (code >= 270 && code < 290) return ValueKind::Int16;
  if (code >= 290 && code < 300) return ValueKind::Bool;
  if (code >= 310 && code < 320) return ValueKind::Chunk;
  if (code >= 370 && code < 390) return ValueKind::Int16;
  if (code >= 400 && code < 410) return ValueKind::Int16;
  if (code >= 420 && code < 430) return ValueKind::Int32;  // 430-439 are colour names
  if (code >= 440 && code < 460) return ValueKind::Int32;
  if (code >= 460 && code < 470) return ValueKind::Double;
  if (code == 1004) return ValueKind::Chunk;
  if (code >= 1010 && code < 1060) return ValueKind::Double;
  if (code >= 1060 && code < 1071) return ValueKind::Int16;
  if (code == 1071) return ValueKind::Int32;
  // Everything else, the undefined ranges included, is text: it keeps unknown codes readable.
  return ValueKind::String;
}


inline bool isNumeric(ValueKind kind) noexcept {
  return kind != ValueKind::String && kind != ValueKind::Chunk;
}

}  // namespace corvane::dxf
