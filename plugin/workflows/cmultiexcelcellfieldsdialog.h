// The dialog of the multi cell fields command: the workbook and worksheet of the user's Excel,
// how the workbook's path is written, where the fields go (a table, or texts one by one),
// whether cells are named by their defined names, and the "\MID" cut every field gets. The
// third target links one text to Excel's active cell instead of the selection.
#pragma once

#include <string>
#include <string_view>

#include "plugin/support/cregistry.h"

namespace corvane {

class ExcelUtils;
class LinkedSources;

class CMultiExcelCellFieldsDialog {
 public:
  enum Target : int { kTableTarget = 0, kTextTarget = 1, kActiveCellTarget = 2 };

  CMultiExcelCellFieldsDialog(LinkedSources& sources, CRegistry& registry);

  // Opening: the workbook and worksheet are Excel's active ones, and whether Excel has a selection.
  void Init(ExcelUtils& excel);

  // The controls.
  std::wstring workbook;  // the workbook's full name
  std::wstring worksheet;
  bool hasSelection = false;
  int target = kTableTarget;
  bool useCellNames = false;
  int midStart = 0;
  int midLength = 0;
  int pathType() const noexcept { return pathType_; }

  // The path-type list ("Full Path", "Relative Path"): relative is refused while the drawing was
  // never saved, and then nothing is kept; a choice that stands goes to the settings. False when
  // refused.
  bool OnPathTypeChanged(int type);
  // Checks the workbook, the worksheet and the selection, in that order, saying what is wrong.
  bool Validate();
  // OK: validates and fixes the workbook's path as the codes will carry it.
  bool OnOK();

  // The path written into the codes, once OK was accepted.
  const std::wstring& workbookPath() const noexcept { return workbookPath_; }
  // The code of the field of one cell: an absolute address ("$B$3") or a defined name.
  std::wstring Code(std::wstring_view cell) const;

 private:
  LinkedSources& sources_;
  CRegistry& registry_;
  int pathType_;
  std::wstring workbookPath_;
};

}  // namespace corvane
