#include "plugin/workflows/cexportfieldbuttondialog.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "core/filepath.h"
#include "core/printf.h"
#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "host/excel.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/fieldreferences.h"
#include "plugin/linked/excelutils.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/fields/showmodal.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/workflows/exportfieldowners.h"

namespace corvane {

namespace {

// The letters of an absolute address "$B$3", for the range of the whole column.
std::wstring columnOf(std::wstring_view address) {
  const std::size_t start = address.starts_with(L'$') ? 1 : 0;
  std::size_t end = start;
  while (end < address.size() && address[end] != L'$' && !(address[end] >= L'0' && address[end] <= L'9')) ++end;
  return std::wstring(address.substr(start, end - start));
}

}  // namespace

CExportFieldButtonDialog::CExportFieldButtonDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources), registry_(registry) {}

bool CExportFieldButtonDialog::refuse(std::wstring_view text) {
  LinkedMessage(sources_, text, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  return false;
}

bool CExportFieldButtonDialog::OnBnClickedButtonExportField() {
  return Export(fieldCode, std::clamp(registry_.get(settings::kExportFieldPathType), 0, 1),
                std::clamp(registry_.get(settings::kExportFieldMoveDirection), 0, 1));
}

bool CExportFieldButtonDialog::Export(std::wstring_view code, int pathType, int moveDirection) {
  host::AcDbHostApplicationServices& services = sources_.services();
  // 1. The note names the drawing by its file, so an unsaved drawing cannot be exported.
  const std::wstring drawing = sources_.currentDocumentPath();
  if (drawing.empty()) return refuse(L"You must save the drawing before exporting the field.");

  // 2, 3. The value, from a field evaluated in the drawing: a formula of a table cell in its
  // table (the code then carries the table's reference), so that it shows what its cell does.
  std::wstring value;
  {
    host::AcDbDatabase* const db = services.workingDatabase();
    std::wstring own(code);
    host::AcDbHostApplicationServices::FieldHolder field =
        db ? NewFieldForExportedCode(services, *db, own) : host::AcDbHostApplicationServices::FieldHolder();
    int status = host::AcDbField::kNotYetEvaluated;
    if (field && field->setFieldCode(own) == host::Acad::eOk) {
      field->evaluate(host::AcDbField::kPreview, db);
      status = field->evaluationStatus();
    }
    if (status != host::AcDbField::kSuccess) {
      return refuse(core::format(L"Cannot evaluate the current field.\n%s\nError Code: %d", code, status));
    }
    if (const host::Acad::ErrorStatus es = field->formatValue(value); es != host::Acad::eOk) {
      return refuse(core::format(L"Cannot get the value of the current field.\n%s\n%d", code, static_cast<int>(es)));
    }
  }

  // 4. The user's Excel, with a workbook.
  ExcelUtils excel(sources_.excel(), sources_.ui(), services);
  if (!excel.AttachRunningExcel(true, std::nullopt, 1, 0) || !excel.EnsureWorkbook() || !excel.workbook()) {
    return refuse(L"Please start Excel and open a workbook first.");
  }
  const std::shared_ptr<host::ExcelRange> cell = excel.application()->activeCell();
  const std::shared_ptr<host::ExcelWorksheet> sheet = cell ? cell->worksheet() : nullptr;
  if (!sheet) return refuse(L"Unknown error in OnBnClickedButtonExportField.");

  // 5. Where the value goes.
  const std::shared_ptr<host::ExcelWorkbook> book = sheet->workbook() ? sheet->workbook() : excel.workbook();
  const std::wstring address = cell->address();
  const std::wstring target = core::format(L"%s[%s]:%s", book->name(), sheet->name(), address);

  // 6. A relative path leads from the workbook's folder, where the update resolves it again.
  std::wstring path = drawing;
  if (pathType == kRelativePathType) {
    const std::optional<std::wstring> relative = core::relativePathTo(book->fullName(), drawing);
    if (!relative) {
      return refuse(core::format(L"Failed to create a relative path from %s to %s.", book->fullName(), drawing));
    }
    path = *relative;
  }

  // 7. The value, the note, the column's width, then the move.
  const std::wstring note = core::format(L"%s|%s", path, ObjIdToHandle(services, code));
  const auto written = [&]() -> bool {
    if (!cell->setValues({{host::ExcelValue(value)}})) return false;
    auto existing = cell->comment();
    if (!existing) return false;
    if (*existing && !cell->deleteComment()) return false;
    if (!cell->addComment(note)) return false;
    if (auto column = sheet->range(columnOf(address) + L":" + columnOf(address)); column) (*column)->autoFitColumns();
    return true;
  }();
  // 8. What the object model refused half-way.
  if (!written) return refuse(L"Unknown error in OnBnClickedButtonExportField.");
  services.print(core::format(L"\nSuccessfully export %s to %s.\n", code, target));
  target_ = target;
  note_ = note;
  const bool right = moveDirection == kMoveRight;
  auto next = cell->offset(right ? 0 : 1, right ? 1 : 0);
  if (!next || !(*next)->select()) return refuse(L"Unknown error in OnBnClickedButtonExportField.");
  return true;
}

}  // namespace corvane
