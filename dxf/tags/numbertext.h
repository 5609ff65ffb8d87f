// Numbers as DXF spells them. Never locale-dependent: the decimal separator is always '.',
// and doubles are written with the fewest digits that read back to the same value.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::dxf {

// Blanks (space, tab) around the number are allowed, as padded files have them; a leading
// '+' too. Anything else makes the parse fail.
bool parseDouble(std::string_view text, double& value) noexcept;
bool parseInteger(std::string_view text, std::int64_t& value) noexcept;
// Handles are hexadecimal, 1 to 16 digits, either case.
bool parseHandle(std::string_view text, std::uint64_t& value) noexcept;
// Hexadecimal text of binary data (an even number of digits) to bytes, appended to `bytes`.
bool parseHexBytes(std::string_view text, std::string& bytes);

// Integral values get ".0" so that the text still reads as a real number.
void appendDouble(std::string& out, double value);
void appendInteger(std::string& out, std::int64_t value);
// Upper case, no leading zeros.
void appendHandle(std::string& out, std::uint64_t value);
void appendHexBytes(std::string& out, std::string_view bytes);

inline std::string formatDouble(double value) {
  std::string text;
  appendDouble(text, value);
  return text;
}
inline std::string formatHandle(std::uint64_t value) {
  std::string text;
  appendHandle(text, value);
  return text;
}

}  // namespace corvane::dxf
