// Text kept one byte a character where it can be: drawings hold texts by the hundred thousand,
// almost all of them ASCII, which a wide string keeps at four bytes a character and mostly on
// the heap. Characters are spelt as UTF-8 spells them, extended past its range so that every
// wchar_t value (lone surrogates and values no code point has included) comes back as it was.
#pragma once

#include <string>
#include <string_view>

namespace corvane::headless {

class CompactText {
 public:
  CompactText() = default;
  explicit CompactText(std::wstring_view text);

  std::wstring wide() const;
  // The same into `text`, which keeps its room: no allocation once it has held a text as long.
  void wide(std::wstring& text) const;
  bool empty() const noexcept { return bytes_.empty(); }
  // The stored bytes, for tests of the spelling.
  const std::string& bytes() const noexcept { return bytes_; }

  bool operator==(const CompactText&) const = default;

 private:
  std::string bytes_;
};

}  // namespace corvane::headless
