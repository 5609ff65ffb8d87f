// Single-byte code pages of drawings saved before the UTF-8 versions, named as $DWGCODEPAGE
// names them. Bytes below 0x80 are ASCII in all of them; each page maps the upper half.
#pragma once

#include <optional>
#include <string_view>

namespace corvane::dxf {

class CodePage {
 public:
  // Case-insensitive ("ANSI_1252", "ansi_1252"); nullptr for a page not known here (the
  // double-byte pages among them).
  static const CodePage* find(std::string_view name) noexcept;
  static const CodePage& ansi1252() noexcept;

  std::string_view name() const noexcept { return name_; }
  // Bytes the page leaves undefined map to the C1 control of the same number, so every byte
  // decodes to something and encodes back to itself.
  char32_t decode(unsigned char byte) const noexcept {
    if (byte < 0x80) return byte;
    const char16_t mapped = upper_[byte - 0x80];
    return mapped != 0 ? mapped : static_cast<char32_t>(byte);
  }
  std::optional<unsigned char> encode(char32_t c) const noexcept;

  struct Table;
  explicit CodePage(const Table& table) noexcept;

 private:
  std::string_view name_;
  const char16_t* upper_;
};

}  // namespace corvane::dxf
