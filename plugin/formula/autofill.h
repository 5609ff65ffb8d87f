// Moving the cell references of a formula the way a spreadsheet fills a formula into other
// cells: each reference moves by the distance from the source cell to the target cell, except a
// column or row pinned with "$".
#pragma once

#include <string>
#include <string_view>

namespace corvane {

// One word of letters, digits and "$" moved by the offsets when it is a cell reference: a column
// of letters in bijective base 26 ("A" 1, "Z" 26, "AA" 27), then a row of digits from 1, each part
// optionally pinned with "$" ("A1", "$A1", "A$1", "$A$1", "ab12"). Anything else, and a column
// past 675, comes back unchanged. A moved reference is written in upper case, with two letters
// above column 26. The result is not checked against the first column or row: a move past them
// gives characters before "A" or a row of 0 or less.
std::wstring ShiftCellReference(std::wstring_view word, int rowOffset, int columnOffset);

// Every word of the text (a run of letters, digits and "$", any other character ending it) put
// through ShiftCellReference. A word still open at the end of the text is dropped, so the text
// must end with a character that is not part of a word, as a field code's closing ">%" does.
// Characters outside ASCII belong to words, so that a name such as "Höhe1" is never taken
// apart into a reference.
std::wstring ShiftReferences(std::wstring_view text, int rowOffset, int columnOffset);

// The rest of a formula field's code after "%<\VxExpr ", up to and including its closing ">%"
// ("(A1*2) \f "%lu2">%"), for a cell rowOffset rows down and columnOffset columns right. The
// expression's references move; a format switch is copied as it is.
std::wstring ShiftFormulaFieldRest(std::wstring_view rest, int rowOffset, int columnOffset);

}  // namespace corvane
