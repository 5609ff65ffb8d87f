// The option page of the Excel cell field: the workbook (typed, browsed or taken from the
// recent files), the worksheet, the cell by column and row or by defined name, the "\MID" cut
// and how the workbook's path is written.
#pragma once

#include <string>
#include <string_view>

#include "plugin/support/crecentfilelistex.h"
#include "plugin/support/cregistry.h"

namespace corvane {

class LinkedSources;

class AsdkExcelRangeOptionDialog {
 public:
  static constexpr const wchar_t* kBrowseFilter =
      L"Microsoft Excel Files(*.xls;*.xlsx)|*.xls;*.xlsx|All Files(*.*)|*.*||";
  static constexpr const wchar_t* kBrowseDefault = L"*.xls;*.xlsx";

  AsdkExcelRangeOptionDialog(LinkedSources& sources, CRegistry& registry);

  // The controls.
  std::wstring workbook;
  std::wstring worksheet;
  std::wstring column;
  std::wstring row;
  bool byName = false;
  std::wstring cellName;
  int midStart = 0;
  int midLength = 0;
  int pathType() const noexcept { return pathType_; }

  // Fills the controls from a field's code; false when the code names no cell.
  bool SetFieldCode(std::wstring_view code);
  // The path-type list: "Relative Path" is refused (with a message) while the drawing was
  // never saved, and then nothing is kept; a choice that stands goes to the settings. False
  // when refused.
  bool OnPathTypeChanged(int type);
  // The workbook the file picker chose: refused when it does not exist; otherwise it goes to
  // the recent files and is shown in the user's Excel.
  bool OnBrowsed(std::wstring_view path);
  // Checks the controls in the dialog's order, saying what is wrong in a message box.
  bool Validate();
  // OK: validates, then builds the code (see code()); false when the controls are refused.
  bool OnOK();
  const std::wstring& code() const noexcept { return code_; }
  CRecentFileListEx& recentFiles() noexcept { return recent_; }

 private:
  void refuse(std::wstring_view text, bool information);

  LinkedSources& sources_;
  CRegistry& registry_;
  CRecentFileListEx recent_;
  int pathType_;
  std::wstring code_;
};

}  // namespace corvane
