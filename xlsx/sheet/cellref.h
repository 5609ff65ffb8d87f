// A1-style cell references as a sheet's XML writes them: "AB12" is row 12, column 28. Rows and
// columns are 1-based and bounded by the largest sheet (row 1048576, column XFD = 16384).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::xlsx {

inline constexpr std::uint32_t kMaxRow = 1048576;
inline constexpr std::uint32_t kMaxColumn = 16384;

struct CellRef {
  std::uint32_t row = 0, column = 0;
  friend bool operator==(const CellRef&, const CellRef&) = default;
};

// "$" before the column and/or the row is accepted and forgotten. Anything else - blanks,
// lower-case letters, a missing part, a row or column past the limits - gives nullopt.
std::optional<CellRef> parseCellRef(std::string_view text);
// Empty for a reference outside the sheet's limits.
std::string cellRefText(CellRef ref, bool absolute = false);

// The letters of a column, "A" for 1; empty outside 1..16384.
std::string columnLetters(std::uint32_t column);

struct CellRange {
  CellRef first, last;
  friend bool operator==(const CellRange&, const CellRange&) = default;
};

// "A1:C3", or "A1" as a one-cell range. The corners come back ordered (first is top-left),
// whichever way the text gives them.
std::optional<CellRange> parseCellRange(std::string_view text);
// "A1:C3", or "A1" for a one-cell range.
std::string cellRangeText(const CellRange& range);

}  // namespace corvane::xlsx
