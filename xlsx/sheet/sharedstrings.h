// The shared string table (xl/sharedStrings.xml): the texts "s" cells point at by index.
// Stored as one block of text and an offset per string, so a table of a million strings
// costs little more than its text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xlsx/sheet/xmlstream.h"

namespace corvane::xlsx {

class SharedStrings {
 public:
  // Each <si> gives one string: its <t>, or the <t> of all its rich-text runs one after the
  // other. Phonetic runs (<rPh>) are left out and _xHHHH_ escapes decoded. nullopt, with the
  // reason in `error`, for a part that is not a well-formed string table.
  static std::optional<SharedStrings> parse(const ChunkSource& source, std::string& error);

  std::size_t size() const noexcept { return ends_.size(); }
  // Empty for an index past the end.
  std::string_view at(std::size_t index) const noexcept;

 private:
  friend class SharedStringsReader;
  std::string text_;
  std::vector<std::uint64_t> ends_;  // string i is text_[ends_[i-1], ends_[i])
};

}  // namespace corvane::xlsx
