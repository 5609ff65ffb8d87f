// The workbooks manager: every Excel cell field of the drawing, listed by workbook, worksheet,
// cell and value, and re-pointed in bulk to another workbook, worksheet or cell, or moved one
// row or column, each field's code and data rewritten in place.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/objectid.h"
#include "plugin/support/cregistry.h"

namespace corvane {

namespace host {
class AcDbDatabase;
class AcDbHostApplicationServices;
}  // namespace host

class LinkedSources;

struct ExcelCellFieldRow {
  host::AcDbObjectId field;
  std::wstring workbook;
  std::wstring worksheet;
  std::wstring cell;
  std::wstring value;
  bool operator==(const ExcelCellFieldRow&) const = default;
};

// The Excel cell fields of the drawing, in the order of its field list; a field is listed only
// when its code names a workbook, a worksheet and a cell.
std::vector<ExcelCellFieldRow> CollectExcelCellFields(host::AcDbHostApplicationServices& services,
                                                      host::AcDbDatabase& db);

// A cell address moved by rows and columns, in the absolute form the codes carry ("$C$4").
// Nullopt for a text that is no address (a defined name) and for a move off the sheet.
std::optional<std::wstring> ShiftedCellAddress(std::wstring_view cell, int rows, int columns);

class CExcelCellFieldsWorkbookDialog {
 public:
  static constexpr const wchar_t* kColumns[] = {L"Workbook", L"Worksheet", L"Cell", L"Value"};
  enum Shift : int { kShiftDown = 0, kShiftLeft = 1, kShiftUp = 2, kShiftRight = 3 };

  CExcelCellFieldsWorkbookDialog(LinkedSources& sources, CRegistry& registry);

  // Lists the fields of the working drawing again; the selection is cleared.
  void Load();
  const std::vector<ExcelCellFieldRow>& rows() const noexcept { return rows_; }
  std::vector<int> selected;  // rows of the list, 0-based

  // The path-type list for a new workbook ("Full Path", "Relative Path"), kept in the settings;
  // relative is refused while the drawing was never saved, and then nothing is kept. False when
  // refused.
  int pathType() const noexcept { return pathType_; }
  bool OnPathTypeChanged(int type);

  // The buttons. Each asks the user first and gives the number of fields rewritten; a refusal
  // or a field whose code lacks the old text is said in a message box. After any change the
  // list is read again and the drawing's fields are evaluated.
  int ReplaceWorkbook(std::wstring_view workbook, std::wstring_view worksheet = {});
  int ReplaceWorksheet(std::wstring_view worksheet);
  int ReplaceCell(std::wstring_view cell);
  int ShiftCells(Shift direction);

 private:
  struct Change {
    std::wstring from;
    std::wstring to;
    bool exactlyOnce = false;
  };
  bool haveSelection();
  bool confirm(std::wstring_view question);
  int apply(const std::vector<std::vector<Change>>& changes, std::wstring_view newWorkbook);
  bool rewrite(const ExcelCellFieldRow& row, const std::vector<Change>& changes, std::wstring_view newWorkbook);
  void writeSourceTime(host::AcDbObjectId field, std::wstring_view workbook);
  void finish();

  LinkedSources& sources_;
  CRegistry& registry_;
  int pathType_;
  std::vector<ExcelCellFieldRow> rows_;
};

}  // namespace corvane
