#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/hostui.h"

namespace corvane {

// A table cell named the way formulas name it: column letters then row digits, each part
// optionally pinned with "$" ("A1", "$B$12", "AA3"). Row and column are 1-based.
struct CellAddress {
  int row = 0;
  int column = 0;
};

// One or two column letters in bijective base 26 (column = letter code - 64, then
// column * 26 - 64 + code). Lower-case letters are accepted but map past "Z" ("a" is 33), as
// the column arithmetic is done on the code. nullopt when the text is not an address.
std::optional<CellAddress> ParseCellAddress(std::wstring_view text) noexcept;

// Two addresses joined by one ":" ("A1:B3").
struct CellRange {
  CellAddress first;
  CellAddress last;
};
std::optional<CellRange> ParseCellRange(std::wstring_view text) noexcept;

// What is wrong with a text written as a cell address ("$", letters, "$", digits), as a message
// naming it: more than two column letters, or row 0. nullopt for a good address and for a text
// not written as one.
std::optional<std::wstring> CellAddressProblem(std::wstring_view text);
// The same for a text written as a range: a ":" with an address's start (a letter or "$") on
// one side. A half range, a second ":" and a side that is no address are named too; "12:30"
// is no range.
std::optional<std::wstring> CellRangeProblem(std::wstring_view text);

// The address of a 1-based row and column: one letter up to column 26, two above ("AB3" for
// column 28); past "ZZ" the first character runs on beyond "Z". A row or column below 1 is
// reported in a message box and gives an empty text.
std::wstring FormatCellAddress(int row, int column, host::HostUi& ui);

}  // namespace corvane
