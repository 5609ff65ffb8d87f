// The reference a table cell field keeps: "Table(<handle>).$B$3" — a table by handle and a
// cell by its absolute name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

struct TableCellReference {
  std::wstring handle;  // hexadecimal, upper case
  int row = 0;          // 0-based
  int column = 0;       // 0-based
};

// Reads a reference the way the field does: upper-cased, matched against the table-reference
// pattern, the cell name read from its first "$" (one or two column letters). nullopt for
// every malformed reference; the caller reports that as an invalid code.
std::optional<TableCellReference> ParseTableCellReference(std::wstring_view text);

// The absolute name of a 1-based cell: "$B$3", "$AB$4". Columns past 702 give a first
// character beyond "Z", as the host's arithmetic does.
std::wstring AbsoluteCellName(int row, int column);

// "Table(<handle>).name", what the field's record and code hold.
std::wstring TableCellReferenceText(std::wstring_view handle, int row, int column);

}  // namespace corvane
