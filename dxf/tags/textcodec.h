// Text values between the file's bytes and the host's wide text. Drawings from AC1021 on are
// UTF-8; older ones use the code page named by $DWGCODEPAGE and spell characters outside it
// as \U+XXXX, which is decoded in every version.
#pragma once

#include <string>
#include <string_view>

#include "dxf/tags/codepage.h"

namespace corvane::dxf {

class TextCodec {
 public:
  TextCodec() noexcept = default;  // UTF-8
  // A null page stands for a code page not known here: ASCII decodes, other bytes become
  // U+FFFD, and every non-ASCII character is written as an escape.
  static TextCodec forCodePage(const CodePage* page) noexcept { return TextCodec(false, page); }
  static TextCodec utf8() noexcept { return TextCodec(); }

  bool isUtf8() const noexcept { return utf8_; }
  const CodePage* codePage() const noexcept { return page_; }

  std::wstring decode(std::string_view bytes) const;
  std::string encode(std::wstring_view text) const;

 private:
  TextCodec(bool utf8, const CodePage* page) noexcept : utf8_(utf8), page_(page) {}
  bool utf8_ = true;
  const CodePage* page_ = nullptr;
};

}  // namespace corvane::dxf
