// The multi cell fields command: Excel cell fields for every cell selected in the user's Excel,
// put into the cells of a drawing table from a picked start cell, or one by one into texts,
// multiline texts, multileaders and attributes, or into new multiline texts placed by the user.
// The same command also links one text to Excel's active cell.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/excel.h"
#include "host/objectid.h"

namespace corvane {

namespace host {
class HostSession;
}  // namespace host

class CMultiExcelCellFieldsDialog;
class CRegistry;
class ExcelUtils;
class LinkedSources;

// One area of Excel's selection by its first and last row and column (1-based).
struct SelectionArea {
  int firstRow = 0;
  int firstColumn = 0;
  int lastRow = 0;
  int lastColumn = 0;
  bool operator==(const SelectionArea&) const = default;
};
// Whether the area names cells at all: it starts on the sheet and does not end before it starts.
bool IsUsableArea(const SelectionArea& area) noexcept;
SelectionArea AreaOf(const host::ExcelRange& range);

// A selected cell: what its field names it by, and its place in the selection, 0-based. The
// areas are stacked, each below the one before, so that the table gets them in the order they
// were selected.
struct SelectedCell {
  std::wstring reference;  // "$B$3" or a defined name
  int row = 0;
  int column = 0;
  bool operator==(const SelectedCell&) const = default;
};

class MultiCellFields {
 public:
  MultiCellFields(LinkedSources& sources, CRegistry& registry, host::HostSession& session);
  void Run();

  // One text, multiline text or attribute linked to a cell of Excel's active sheet: the active
  // cell unless the user types another address. Excel is asked for its state only once the
  // object is picked, so that the user may still move to the cell meanwhile. The workbook's
  // path is written as the command's path-type setting says.
  void LinkActiveCell();

  // The cells of the areas, area by area and row by row. With names, each cell is asked for
  // its defined name; a cell without one is addressed as it is when the user agrees and left
  // out otherwise. Nullopt after an Excel failure, which has been reported.
  std::optional<std::vector<SelectedCell>> ReadSelection(ExcelUtils& excel, bool useCellNames);

 private:
  bool attach(ExcelUtils& excel);
  bool pickTextForCell(host::AcDbObjectId& picked);
  std::optional<std::wstring> askCellAddress(const std::wstring& activeCell);
  bool runDialog(CMultiExcelCellFieldsDialog& dialog);
  bool pickStartCell(host::AcDbObjectId& table, int& row, int& column);
  void fillTable(const CMultiExcelCellFieldsDialog& dialog, const std::vector<SelectedCell>& cells,
                 host::AcDbObjectId table, int startRow, int startColumn);
  void fillTexts(const CMultiExcelCellFieldsDialog& dialog, const std::vector<SelectedCell>& cells);
  // One cell into a text the user picks; false when the user cancelled.
  enum class TextStep { kDone, kSwitch, kCancelled };
  TextStep linkToText(const std::wstring& code, const std::wstring& cell);
  TextStep insertNewText(const std::wstring& code, const std::wstring& cell);
  void evaluate(const std::vector<host::AcDbObjectId>& fields, const wchar_t* progress);
  void excelFailure(ExcelUtils& excel, const host::ExcelError& error);
  int message(std::wstring_view text, unsigned flags);

  LinkedSources& sources_;
  CRegistry& registry_;
  host::HostSession& session_;
};

}  // namespace corvane
