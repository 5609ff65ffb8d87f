#include "plugin/workflows/multicellfields.h"

#include <algorithm>

#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbattribute.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "host/acdbmtext.h"
#include "host/acdbtable.h"
#include "host/acdbtext.h"
#include "host/acedprompts.h"
#include "host/acfd.h"
#include "host/hostsession.h"
#include "host/hostui.h"
#include "plugin/linked/excelutils.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/fields/showmodal.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/workflows/cmultiexcelcellfieldsdialog.h"
#include "plugin/workflows/excelcellfieldsworkbookdialog.h"

namespace corvane {

using host::AcDbObjectId;
using host::AcDbObjectPointer;

namespace {

constexpr const wchar_t* kNoExcel = L"Please start Excel and open a workbook first.";
constexpr const wchar_t* kUnsavedWorkbook = L"Please save your workbook before inserting the field.";
constexpr const wchar_t* kTextProperty = L"TEXT";
constexpr const wchar_t* kConstantAttribute = L"\nCan't change the value of a constant attribute.";
constexpr const wchar_t* kMLeaderRecord = L"MULTILEADER";

const wchar_t* yesNo(bool value) { return value ? L"Yes" : L"No"; }

const wchar_t* targetName(int target) {
  switch (target) {
    case CMultiExcelCellFieldsDialog::kTextTarget:
      return L"Texts";
    case CMultiExcelCellFieldsDialog::kActiveCellTarget:
      return L"Active cell";
    default:
      return L"Table";
  }
}

bool isConstantAttribute(host::AcDbEntity& entity) {
  return entity.isKindOf(host::AcDbAttribute::desc()) && static_cast<host::AcDbAttribute&>(entity).isConstant();
}

// Whether the entity's text can take a field: texts, attributes, multiline texts, multileaders.
bool holdsText(const host::AcDbEntity& entity) {
  return entity.isKindOf(host::AcDbText::desc()) || entity.isKindOf(host::AcDbMText::desc()) ||
         entity.dxfName() == kMLeaderRecord;
}

}  // namespace

bool IsUsableArea(const SelectionArea& area) noexcept {
  return area.firstRow >= 1 && area.firstColumn >= 1 && area.lastRow >= area.firstRow &&
         area.lastColumn >= area.firstColumn;
}

SelectionArea AreaOf(const host::ExcelRange& range) {
  return {range.row(), range.column(), range.row() + range.rowCount() - 1, range.column() + range.columnCount() - 1};
}

MultiCellFields::MultiCellFields(LinkedSources& sources, CRegistry& registry, host::HostSession& session)
    : sources_(sources), registry_(registry), session_(session) {}

int MultiCellFields::message(std::wstring_view text, unsigned flags) {
  return LinkedMessage(sources_, text, kMessageCaption, flags);
}

void MultiCellFields::Run() {
  ExcelUtils excel(session_, sources_.services());
  if (!attach(excel)) return;
  CMultiExcelCellFieldsDialog dialog(sources_, registry_);
  dialog.Init(excel);
  const bool accepted = runDialog(dialog);
  if (accepted && dialog.target == CMultiExcelCellFieldsDialog::kActiveCellTarget) {
    // The link reads Excel afresh once its text is picked.
    excel.ResetExcel();
    LinkActiveCell();
    return;
  }
  AcDbObjectId table;
  int row = 0;
  int column = 0;
  if (accepted && (dialog.target != CMultiExcelCellFieldsDialog::kTableTarget || pickStartCell(table, row, column))) {
    if (const auto cells = ReadSelection(excel, dialog.useCellNames)) {
      if (table.isNull()) {
        fillTexts(dialog, *cells);
      } else {
        fillTable(dialog, *cells, table, row, column);
      }
    }
  }
  excel.ResetExcel();
}

bool MultiCellFields::attach(ExcelUtils& excel) {
  const bool attached = excel.AttachRunningExcel(true, std::nullopt, 1, 0);
  // No workbook is made for the user: the fields are to show cells of one of theirs.
  if (!attached || !excel.application() || excel.application()->workbookCount() < 1 || !excel.EnsureWorkbook() ||
      !excel.workbook() || !excel.worksheet()) {
    message(kNoExcel, host::MB_OK | host::MB_ICONINFORMATION);
    excel.ResetExcel();
    return false;
  }
  if (excel.workbook()->path().empty()) {
    message(kUnsavedWorkbook, host::MB_OK | host::MB_ICONINFORMATION);
    excel.ResetExcel();
    return false;
  }
  return true;
}

// The dialog on the command line: one keyword a control, until OK is accepted or the user cancels.
bool MultiCellFields::runDialog(CMultiExcelCellFieldsDialog& dialog) {
  host::AcEdPrompts& prompts = session_.prompts();
  host::AcDbHostApplicationServices& services = sources_.services();
  for (;;) {
    services.print(core::format(
        L"\nWorkbook: %s, worksheet: %s, path: %s, target: %s, cell names: %s, MID start: %d, MID length: %d.",
        dialog.workbook, dialog.worksheet, dialog.pathType() == kRelativePathType ? L"Relative Path" : L"Full Path",
        targetName(dialog.target), yesNo(dialog.useCellNames),
        dialog.midStart, dialog.midLength));
    prompts.initGet(0, L"Target Names Mid Path OK Cancel");
    std::wstring keyword;
    const int asked = prompts.getKword(L"\nMulti cell fields [Target/Names/Mid/Path/OK/Cancel] <OK>: ", keyword);
    if (asked == host::RTCAN || keyword == L"Cancel") return false;
    if (asked == host::RTNONE || keyword == L"OK") {
      if (dialog.OnOK()) return true;
      continue;
    }
    std::wstring choice;
    if (keyword == L"Target") {
      prompts.initGet(0, L"Table Texts Cell");
      if (prompts.getKword(L"\nPut the fields into [Table/Texts/Cell (one text linked to the active cell)] <Table>: ",
                           choice) == host::RTCAN) {
        return false;
      }
      dialog.target = choice == L"Texts"  ? CMultiExcelCellFieldsDialog::kTextTarget
                      : choice == L"Cell" ? CMultiExcelCellFieldsDialog::kActiveCellTarget
                                          : CMultiExcelCellFieldsDialog::kTableTarget;
    } else if (keyword == L"Names") {
      prompts.initGet(0, L"Yes No");
      if (prompts.getKword(L"\nAddress the cells by their names? [Yes/No] <No>: ", choice) == host::RTCAN) return false;
      dialog.useCellNames = choice == L"Yes";
    } else if (keyword == L"Mid") {
      for (int* value : {&dialog.midStart, &dialog.midLength}) {
        prompts.initGet(host::RSG_NONEG, L"");
        int number = *value;
        const int got = prompts.getInt(
            core::format(value == &dialog.midStart ? L"\nMID start <%d>: " : L"\nMID length <%d>: ", *value), number);
        if (got == host::RTCAN) return false;
        if (got == host::RTNORM) *value = number;
      }
    } else if (keyword == L"Path") {
      prompts.initGet(0, L"Full Relative");
      if (prompts.getKword(L"\nPath type [Full/Relative] <Full>: ", choice) == host::RTCAN) return false;
      dialog.OnPathTypeChanged(choice == L"Relative" ? kRelativePathType : kFullPathType);
    }
  }
}

bool MultiCellFields::pickStartCell(AcDbObjectId& table, int& row, int& column) {
  host::AcDbHostApplicationServices& services = sources_.services();
  host::AcDbDatabase* db = services.workingDatabase();
  if (!db) return false;
  for (;;) {
    host::AcGePoint3d point;
    if (session_.prompts().getPoint(nullptr, L"\nSelect the start cell:", point) != host::RTNORM) return false;
    AcDbObjectPointer<host::AcDbBlockTableRecord> space(services, db->currentSpaceId(), host::AcDb::kForRead);
    if (!space) return false;
    for (auto it = space->newIterator(); !it.done(); it.step()) {
      AcDbObjectPointer<host::AcDbTable> candidate(services, it.objectId(), host::AcDb::kForRead);
      if (!candidate) continue;
      int hitRow = -1;
      int hitColumn = -1;
      if (candidate->hitTest(point, host::AcGeVector3d{0.0, 0.0, 1.0}, hitRow, hitColumn) && hitRow >= 0 &&
          hitColumn >= 0) {
        table = it.objectId();
        row = hitRow;
        column = hitColumn;
        return true;
      }
    }
    services.print(L"\nNo table cell there.");
  }
}

std::optional<std::vector<SelectedCell>> MultiCellFields::ReadSelection(ExcelUtils& excel, bool useCellNames) {
  std::vector<SelectedCell> cells;
  const auto selection = excel.application() ? excel.application()->selection() : nullptr;
  if (!selection) return cells;
  const auto sheet = selection->worksheet();
  int top = 0;
  for (const auto& range : selection->areas()) {
    const SelectionArea area = AreaOf(*range);
    if (!IsUsableArea(area)) continue;
    for (int r = area.firstRow; r <= area.lastRow; ++r) {
      for (int c = area.firstColumn; c <= area.lastColumn; ++c) {
        const std::wstring address = excel.AbsoluteCellAddress(r, c);
        std::wstring reference = address;
        if (useCellNames) {
          auto cell = sheet->range(address);
          if (!cell) {
            excelFailure(excel, cell.error());
            return std::nullopt;
          }
          if (auto name = (*cell)->name()) {
            reference = std::move(name).value();
          } else if (message(core::format(L"%s doesn't have a name. Do you want to use the cell address to create "
                                          L"the field?",
                                          address),
                             host::MB_YESNO | host::MB_ICONQUESTION) != host::IDYES) {
            continue;
          }
        }
        cells.push_back({std::move(reference), top + r - area.firstRow, c - area.firstColumn});
      }
    }
    top += area.lastRow - area.firstRow + 1;
  }
  return cells;
}

void MultiCellFields::fillTable(const CMultiExcelCellFieldsDialog& dialog, const std::vector<SelectedCell>& cells,
                                AcDbObjectId tableId, int startRow, int startColumn) {
  host::AcDbHostApplicationServices& services = sources_.services();
  int rows = 0;
  int columns = 0;
  for (const SelectedCell& cell : cells) {
    rows = std::max(rows, cell.row + 1);
    columns = std::max(columns, cell.column + 1);
  }
  std::vector<AcDbObjectId> fields;
  {
    AcDbObjectPointer<host::AcDbTable> table(services, tableId, host::AcDb::kForWrite);
    if (!table) {
      services.print(core::format(L"\nCannot open the table: %s.", host::acadErrorStatusText(table.openStatus())));
      return;
    }
    // The table grows at its end, its last row and column lending their looks to the new ones.
    if (const int have = table->numRows(); have < startRow + rows) {
      table->insertRowsAndInherit(have, have - 1, startRow + rows - have);
    }
    if (const int have = table->numColumns(); have < startColumn + columns) {
      table->insertColumnsAndInherit(have, have - 1, startColumn + columns - have);
    }
    host::HostUi& ui = session_.ui();
    ui.setStatusBarProgressMeter(L"Creating the Excel Cell Fields...", 0, static_cast<int>(cells.size()));
    int done = 0;
    for (const SelectedCell& cell : cells) {
      const int row = startRow + cell.row;
      const int column = startColumn + cell.column;
      if (table->setValue(row, column, dialog.Code(cell.reference), host::AcValueOptions::kParseTextForFieldCode) ==
          host::Acad::eOk) {
        if (const AcDbObjectId field = table->fieldId(row, column); !field.isNull()) fields.push_back(field);
      }
      ui.setStatusBarProgressMeterPos(++done);
    }
    ui.restoreStatusBar();
  }
  evaluate(fields, nullptr);
}

void MultiCellFields::fillTexts(const CMultiExcelCellFieldsDialog& dialog, const std::vector<SelectedCell>& cells) {
  bool linking = true;
  for (const SelectedCell& cell : cells) {
    const std::wstring code = dialog.Code(cell.reference);
    for (;;) {
      const TextStep step = linking ? linkToText(code, cell.reference) : insertNewText(code, cell.reference);
      if (step == TextStep::kCancelled) return;
      if (step == TextStep::kDone) break;
      linking = !linking;
    }
  }
}

MultiCellFields::TextStep MultiCellFields::linkToText(const std::wstring& code, const std::wstring& cell) {
  host::AcDbHostApplicationServices& services = sources_.services();
  host::AcEdPrompts& prompts = session_.prompts();
  const std::wstring prompt = core::format(
      L"\nLink %s to a Text, MText, MLeader or Attribute or [Create a new field from %s/Skip %s]:", cell, cell, cell);
  for (;;) {
    prompts.initGet(host::RSG_NONULL, L"C S");
    AcDbObjectId picked;
    host::AcGePoint3d at;
    const int asked = prompts.nEntSel(prompt, picked, at);
    if (asked == host::RTCAN) return TextStep::kCancelled;
    if (asked == host::RTKWORD) {
      std::wstring keyword;
      prompts.getInput(keyword);
      return keyword == L"C" ? TextStep::kSwitch : TextStep::kDone;
    }
    if (asked != host::RTNORM) continue;
    {
      AcDbObjectPointer<host::AcDbEntity> entity(services, picked, host::AcDb::kForRead);
      if (!entity) continue;
      // A constant attribute is refused and its cell left without a field; the run goes on.
      if (isConstantAttribute(*entity.object())) {
        services.print(kConstantAttribute);
        return TextStep::kDone;
      }
      if (!holdsText(*entity.object())) {
        services.print(L"\nThat is not a Text, MText, MLeader or Attribute.");
        continue;
      }
    }
    AcDbObjectId field;
    if (const auto es = services.setField(picked, kTextProperty, code, field); es != host::Acad::eOk) {
      services.print(core::format(L"\nCannot link the field: %s.", host::acadErrorStatusText(es)));
      continue;
    }
    evaluate({field}, L"Updating the linked field...");
    return TextStep::kDone;
  }
}

MultiCellFields::TextStep MultiCellFields::insertNewText(const std::wstring& code, const std::wstring& cell) {
  host::AcDbHostApplicationServices& services = sources_.services();
  host::AcEdPrompts& prompts = session_.prompts();
  const std::wstring prompt = core::format(
      L"\nSpecify insertion point to create a new field from %s or [Link %s to an existing text/Skip %s]:", cell,
      cell, cell);
  for (;;) {
    prompts.initGet(host::RSG_NONULL, L"L S");
    host::AcGePoint3d point;
    const int asked = prompts.getPoint(nullptr, prompt, point);
    if (asked == host::RTCAN) return TextStep::kCancelled;
    if (asked == host::RTKWORD) {
      std::wstring keyword;
      prompts.getInput(keyword);
      return keyword == L"L" ? TextStep::kSwitch : TextStep::kDone;
    }
    if (asked != host::RTNORM) continue;
    host::AcDbDatabase* db = services.workingDatabase();
    AcDbObjectId text;
    AcDbObjectId field;
    auto es = db ? services.appendMText(db->currentSpaceId(), point, L"", text) : host::Acad::eNoDatabase;
    if (es == host::Acad::eOk) es = services.setField(text, kTextProperty, code, field);
    if (es != host::Acad::eOk) {
      services.print(core::format(L"\nCannot create the field: %s.", host::acadErrorStatusText(es)));
      return TextStep::kDone;
    }
    if (AcDbObjectPointer<host::AcDbField> opened(services, field, host::AcDb::kForWrite); opened) {
      opened->setEvaluationOption(host::AcDbField::kAutomatic);
    }
    evaluate({field}, L"Updating the inserted field...");
    return TextStep::kDone;
  }
}

void MultiCellFields::evaluate(const std::vector<AcDbObjectId>& fields, const wchar_t* progress) {
  host::AcDbHostApplicationServices& services = sources_.services();
  host::AcFdFieldEngine* engine = services.fieldEngine();
  if (fields.empty() || !engine) return;
  host::HostUi& ui = session_.ui();
  if (progress) ui.setStatusBarProgressMeter(progress, 0, 1);
  engine->evaluateFields(services.workingDatabase(), fields, host::AcDbField::kDemand);
  if (progress) {
    ui.setStatusBarProgressMeterPos(1);
    ui.restoreStatusBar();
  }
}

void MultiCellFields::LinkActiveCell() {
  host::AcDbHostApplicationServices& services = sources_.services();
  AcDbObjectId picked;
  if (!pickTextForCell(picked)) return;
  ExcelUtils excel(session_, services);
  if (!excel.AttachRunningExcel(true, std::nullopt, 1, 0) || !excel.application() ||
      excel.application()->workbookCount() < 1 || !excel.EnsureWorkbook() || !excel.workbook()) {
    message(L"Please start Excel and open your workbook first.", host::MB_OK | host::MB_ICONINFORMATION);
    excel.ResetExcel();
    return;
  }
  // The workbook the code names is the one holding the active cell, which is Excel's active one.
  if (excel.workbook()->path().empty()) {
    message(L"Please save your workbook first.", host::MB_OK | host::MB_ICONINFORMATION);
    excel.ResetExcel();
    return;
  }
  if (!excel.application()->selection()) {
    services.print(L"\nInvalid selection in Excel.");
    excel.ResetExcel();
    return;
  }
  const auto active = excel.application()->activeCell();
  const auto sheet = active ? active->worksheet() : nullptr;
  if (!sheet) {
    message(L"Can't get the current cell.", host::MB_OK | host::MB_ICONINFORMATION);
    excel.ResetExcel();
    return;
  }
  const std::wstring workbook = excel.workbook()->fullName();
  const std::wstring worksheet = sheet->name();
  const std::wstring defaultCell = active->address();
  excel.ResetExcel();

  const auto cell = askCellAddress(defaultCell);
  if (!cell) return;
  int pathType = std::clamp(registry_.get(settings::kMultiFieldsPathType), 0, 1);
  if (pathType == kRelativePathType && !RelativePathAllowed(sources_)) pathType = kFullPathType;
  const std::wstring code =
      core::format(L"%%<\\ExcelCell \"%s:%s:%s\">%%", PathForCode(sources_, workbook, pathType), worksheet, *cell);
  AcDbObjectId field;
  if (const auto es = services.setField(picked, kTextProperty, code, field); es != host::Acad::eOk) {
    services.print(core::format(L"\nCannot link the field: %s.", host::acadErrorStatusText(es)));
    return;
  }
  if (AcDbObjectPointer<host::AcDbField> opened(services, field, host::AcDb::kForWrite); opened) {
    opened->setEvaluationOption(host::AcDbField::kAutomatic);
  }
  evaluate({field}, L"Updating the linked field...");
}

// A text, a multiline text or an attribute that may take a field; false when the user gave none.
bool MultiCellFields::pickTextForCell(AcDbObjectId& picked) {
  host::AcDbHostApplicationServices& services = sources_.services();
  for (;;) {
    host::AcGePoint3d at;
    const int asked = session_.prompts().nEntSel(L"\nSelect a Text, MText or Attribute: ", picked, at);
    if (asked != host::RTNORM) return false;
    AcDbObjectPointer<host::AcDbEntity> entity(services, picked, host::AcDb::kForRead);
    if (!entity) continue;
    if (isConstantAttribute(*entity.object())) {
      services.print(kConstantAttribute);
      return false;
    }
    if (entity->isKindOf(host::AcDbText::desc()) || entity->isKindOf(host::AcDbMText::desc())) return true;
    services.print(L"\nThat is not a Text, MText or Attribute.");
  }
}

// The cell the link names, in the absolute form the codes carry; Enter takes the active cell.
// An address off the sheet or no address at all is refused and asked again.
std::optional<std::wstring> MultiCellFields::askCellAddress(const std::wstring& activeCell) {
  for (;;) {
    std::wstring typed;
    const int asked =
        session_.prompts().getString(false, core::format(L"\nEnter the cell address <%s>: ", activeCell), typed);
    if (asked == host::RTCAN) return std::nullopt;
    typed = core::trim(typed);
    if (asked == host::RTNONE || typed.empty()) return activeCell;
    if (auto address = ShiftedCellAddress(typed, 0, 0)) return address;
    sources_.services().print(core::format(L"\nInvalid cell address: %s.", typed));
  }
}

void MultiCellFields::excelFailure(ExcelUtils& excel, const host::ExcelError& error) {
  message(error.text.empty() ? std::wstring(L"Cannot get an active instance of Excel: unknown error.")
                             : core::format(L"Cannot get an active instance of Excel: %s.", error.text),
          host::MB_OK | host::MB_ICONERROR);
  excel.ResetExcel();
}

}  // namespace corvane
