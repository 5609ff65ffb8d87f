// The code of an Excel cell field and what it names: the workbook, the worksheet and the cell
// (an absolute address or a defined name) between double quotes, optionally followed by a
// "\MID(start,length)" option that cuts the cell's text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

struct ExcelCellReference {
  std::wstring workbook;
  std::wstring worksheet;
  std::wstring cell;
  bool operator==(const ExcelCellReference&) const = default;
};

// The text between the first two double quotes of a code; nullopt without two quotes.
std::optional<std::wstring> QuotedReference(std::wstring_view code);
// "workbook:worksheet:cell" split from the right, so that a drive's colon stays in the path.
ExcelCellReference SplitExcelCellReference(std::wstring_view reference);

// " \MID(start,length)": each number written only when above 0; empty when neither is.
std::wstring MidOptionText(int start, int length);
// Codes as the option dialog writes them: no workbook chosen, a cell by defined name, and a
// cell by column letters and row number.
std::wstring EmptyExcelCellCode();
std::wstring ExcelCellCodeByName(std::wstring_view workbook, std::wstring_view worksheet, std::wstring_view name,
                                 int midStart = 0, int midLength = 0);
std::wstring ExcelCellCodeByAddress(std::wstring_view workbook, std::wstring_view worksheet,
                                    std::wstring_view column, int row, int midStart = 0, int midLength = 0);

// A cell's text cut by the "\MID" option of `code` (the whole text without one); an empty
// result is a single no-break space, so that the field never shows nothing.
std::wstring ApplyMidOption(std::wstring_view text, std::wstring_view code);

}  // namespace corvane
