#include "plugin/workflows/workbooksmanager.h"

#include <string>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acedprompts.h"
#include "host/hostsession.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/workflows/excelcellfieldsworkbookdialog.h"

namespace corvane {

namespace {

using Dialog = CExcelCellFieldsWorkbookDialog;

void list(const Dialog& dialog, host::AcDbHostApplicationServices& services) {
  int number = 0;
  for (const ExcelCellFieldRow& row : dialog.rows()) {
    services.print(core::format(L"\n%d. %s | %s | %s | %s", ++number, row.workbook, row.worksheet, row.cell, row.value));
  }
}

// "All", row numbers ("1 3" or "1,3"), or a text that the workbook, worksheet or cell of a row
// contains; nothing clears the selection.
void select(Dialog& dialog, std::wstring_view answer) {
  dialog.selected.clear();
  const std::wstring text = core::trim(answer);
  if (text.empty()) return;
  const auto& rows = dialog.rows();
  if (core::equalsNoCase(text, L"All")) {
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) dialog.selected.push_back(i);
    return;
  }
  if (text.find_first_not_of(L"0123456789, ") == std::wstring::npos) {
    for (const std::wstring& part : core::split(core::replaceAll(text, L",", L" "), L' ')) {
      if (!part.empty()) dialog.selected.push_back(core::leadingInteger(part) - 1);
    }
    return;
  }
  for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
    const ExcelCellFieldRow& row = rows[i];
    if (core::findNoCase(row.workbook, text) != std::wstring::npos ||
        core::findNoCase(row.worksheet, text) != std::wstring::npos ||
        core::findNoCase(row.cell, text) != std::wstring::npos) {
      dialog.selected.push_back(i);
    }
  }
}

}  // namespace

void RunWorkbooksManager(LinkedSources& sources, CRegistry& registry, host::HostSession& session) {
  host::AcEdPrompts& prompts = session.prompts();
  host::AcDbHostApplicationServices& services = sources.services();
  Dialog dialog(sources, registry);
  dialog.Load();
  list(dialog, services);
  for (;;) {
    prompts.initGet(0, L"Select Workbook Sheet Cell Shift Path List eXit");
    std::wstring keyword;
    const int asked = prompts.getKword(
        core::format(L"\nExcel cell fields: %d, selected: %d. [Select/Workbook/Sheet/Cell/Shift/Path/List/eXit] "
                     L"<eXit>: ",
                     dialog.rows().size(), dialog.selected.size()),
        keyword);
    if (asked != host::RTNORM || keyword == L"eXit") return;
    std::wstring first;
    std::wstring second;
    int changed = -1;
    if (keyword == L"Select") {
      if (prompts.getString(true, L"\nFields to select (numbers, All, or a text of their workbook, worksheet or cell): ",
                            first) != host::RTNORM)
        return;
      select(dialog, first);
    } else if (keyword == L"Workbook") {
      if (prompts.getString(true, L"\nNew workbook: ", first) != host::RTNORM ||
          prompts.getString(true, L"\nNew worksheet <unchanged>: ", second) != host::RTNORM)
        return;
      changed = dialog.ReplaceWorkbook(core::trim(first), core::trim(second));
    } else if (keyword == L"Sheet") {
      if (prompts.getString(true, L"\nNew worksheet: ", first) != host::RTNORM) return;
      changed = dialog.ReplaceWorksheet(core::trim(first));
    } else if (keyword == L"Cell") {
      if (prompts.getString(false, L"\nNew cell: ", first) != host::RTNORM) return;
      changed = dialog.ReplaceCell(core::trim(first));
    } else if (keyword == L"Shift") {
      prompts.initGet(0, L"Down Left Up Right");
      if (prompts.getKword(L"\nShift the cells [Down/Left/Up/Right]: ", first) != host::RTNORM) return;
      changed = dialog.ShiftCells(first == L"Down"   ? Dialog::kShiftDown
                                  : first == L"Left" ? Dialog::kShiftLeft
                                  : first == L"Up"   ? Dialog::kShiftUp
                                                     : Dialog::kShiftRight);
    } else if (keyword == L"Path") {
      prompts.initGet(0, L"Full Relative");
      if (prompts.getKword(L"\nPath type of a new workbook [Full/Relative] <Full>: ", first) == host::RTCAN) return;
      dialog.OnPathTypeChanged(first == L"Relative" ? kRelativePathType : kFullPathType);
    } else if (keyword == L"List") {
      list(dialog, services);
    }
    if (changed > 0) {
      services.print(core::format(L"\n%d field(s) rewritten.", changed));
      list(dialog, services);
    }
  }
}

}  // namespace corvane
