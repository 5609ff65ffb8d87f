#include "host/registry.h"

#include <cstring>

namespace corvane::host {

RegValue regString(std::wstring_view text) {
  RegValue value;
  value.type = REG_SZ;
  value.data.reserve((text.size() + 1) * 2);
  const auto unit = [&value](std::uint32_t u) {
    value.data.push_back(static_cast<std::uint8_t>(u & 0xFF));
    value.data.push_back(static_cast<std::uint8_t>((u >> 8) & 0xFF));
  };
  for (const wchar_t c : text) {
    const auto code = static_cast<std::uint32_t>(c);
    if (code >= 0x10000 && code <= 0x10FFFF) {
      unit(0xD800 + ((code - 0x10000) >> 10));
      unit(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      unit(code > 0xFFFF ? 0xFFFD : code);
    }
  }
  unit(0);
  return value;
}

RegValue regDword(std::uint32_t v) {
  RegValue value;
  value.type = REG_DWORD;
  for (int shift = 0; shift < 32; shift += 8) value.data.push_back(static_cast<std::uint8_t>((v >> shift) & 0xFF));
  return value;
}

RegValue regBinary(const void* data, std::size_t length) {
  RegValue value;
  value.type = REG_BINARY;
  if (length > 0) {
    value.data.resize(length);
    std::memcpy(value.data.data(), data, length);
  }
  return value;
}

bool readRegString(const RegValue& value, std::wstring& text) {
  if (value.type != REG_SZ && value.type != REG_EXPAND_SZ) return false;
  if (value.data.size() % 2 != 0) return false;
  std::wstring out;
  out.reserve(value.data.size() / 2);
  for (std::size_t i = 0; i + 1 < value.data.size(); i += 2) {
    const std::uint32_t u = value.data[i] | (static_cast<std::uint32_t>(value.data[i + 1]) << 8);
    if (u == 0) break;
    if (sizeof(wchar_t) == 4 && u >= 0xD800 && u <= 0xDBFF && i + 3 < value.data.size()) {
      const std::uint32_t low = value.data[i + 2] | (static_cast<std::uint32_t>(value.data[i + 3]) << 8);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        out.push_back(static_cast<wchar_t>(0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00)));
        i += 2;
        continue;
      }
    }
    out.push_back(static_cast<wchar_t>(u));
  }
  text = std::move(out);
  return true;
}

bool readRegDword(const RegValue& value, std::uint32_t& out) {
  if (value.type != REG_DWORD || value.data.size() != 4) return false;
  out = value.data[0] | (static_cast<std::uint32_t>(value.data[1]) << 8) |
        (static_cast<std::uint32_t>(value.data[2]) << 16) | (static_cast<std::uint32_t>(value.data[3]) << 24);
  return true;
}

}  // namespace corvane::host
