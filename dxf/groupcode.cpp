#include "dxf/groupcode.h"

namespace corvane::dxf {

ValueKind valueKind(int code) noexcept {
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

}  // namespace corvane::dxf
