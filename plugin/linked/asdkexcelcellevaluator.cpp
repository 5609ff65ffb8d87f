#include "plugin/linked/asdkexcelcellevaluator.h"

#include <cstdlib>

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "host/acdbdatabase.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/linked/excelcellcode.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/linked/linkedtimestamp.h"

namespace corvane {

using host::AcDbField;

namespace {

constexpr std::int32_t kFirstDispatchError = static_cast<std::int32_t>(0x80040200);
constexpr std::int32_t kLastDispatchError = static_cast<std::int32_t>(0x8004FFFF);
constexpr wchar_t kWebMarker[] = L"https:";

// The user's OneDrive folder, where web workbooks have a local copy that Excel keeps.
std::wstring oneDriveFolder() {
  const char* folder = std::getenv("OneDrive");
  return folder ? core::fromUtf8(folder) : std::wstring();
}

}  // namespace

std::wstring ComErrorText(host::ExcelAutomation* excel, const host::ExcelError& error) {
  if (!error.text.empty()) return error.text;
  if (error.code >= kFirstDispatchError && error.code <= kLastDispatchError)
    return core::format(L"IDispatch error #%d", error.code - kFirstDispatchError);
  if (excel) {
    std::wstring text = excel->errorText(error.code);
    if (!text.empty()) return text;
  }
  return core::format(L"Unknown error 0x%0lX", static_cast<unsigned long>(static_cast<std::uint32_t>(error.code)));
}

int AsdkExcelCellEvaluator::evaluateField(AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value,
                                          std::wstring& message) {
  const wchar_t* dataKey = kEvaluatorTable[kRow].dataKey;
  if (!sources_) {
    message = L"Excel cannot be reached here.";
    return AcDbField::kOtherError;
  }
  LinkedSources& sources = *sources_;
  host::AcDbHostApplicationServices& services = sources.services();

  host::AcValue record;
  if (const auto es = field->getData(dataKey, record); es != host::Acad::eOk) {
    message = core::format(L"Can't get the data of %s: %d.", dataKey, static_cast<int>(es));
    services.print(L"\n" + message);
    return AcDbField::kOtherError;
  }
  std::wstring code;
  if (!record.get(code)) {
    message = core::format(L"The data of %s is corrupted.", dataKey);
    services.print(L"\n" + message);
    return AcDbField::kInvalidCode;
  }
  const ExcelCellReference reference = SplitExcelCellReference(QuotedReference(code).value_or(std::wstring()));
  if (reference.workbook.empty()) {
    message = L"The workbook is empty.";
    services.print(L"\n" + message);
    return AcDbField::kInvalidCode;
  }

  // A relative workbook lives beside the drawing that names it.
  const bool web = reference.workbook.find(kWebMarker) != std::wstring::npos;
  std::wstring path = reference.workbook;
  if (!web && core::isRelativePath(path)) {
    std::wstring drawing = db ? db->getFilename() : std::wstring();
    if (drawing.empty()) drawing = sources.currentDocumentPath();
    path = core::absolutePath(core::folderOf(drawing), path);
  }

  const bool inDrawing = services.isValid(field->objectId());
  std::optional<double> modified;
  if (!web) {
    modified = sources.fileStatus(path).modified;
    if (modified && inDrawing) {
      if (auto kept = UnchangedValue(*field, *modified)) {
        services.print(core::format(L"\n%s is up to date.", path));
        value = std::move(*kept);
        return AcDbField::kSuccess;
      }
    }
  }

  if (web) {
    std::shared_ptr<host::ExcelApplication>& running = sources.webExcel();
    if (!running && sources.excel()) {
      if (auto active = sources.excel()->activeObject(); active && *active) running = std::move(active).value();
    }
    if (running && fetch(*running, path, reference.worksheet, reference.cell, code, value)) {
      return AcDbField::kSuccess;
    }
    const std::wstring oneDrive = oneDriveFolder();
    if (!oneDrive.empty() && core::startsWithNoCase(path, oneDrive)) {
      const std::wstring alert = core::format(
          L"%s is kept in your OneDrive folder. Open it in Excel, then update the field again.", path);
      if (sources.ui()) {
        sources.ui()->messageBox(alert, L"Halvek Corvane", host::MB_OK | host::MB_ICONINFORMATION);
      } else {
        services.print(L"\n" + alert);
      }
      host::AcValue present;
      field->getValue(present);
      value = present;
      return AcDbField::kSuccess;
    }
  }

  ExcelUtils& excel = sources.evaluationExcel();
  if (!excel.privateExcel() && !excel.StartPrivateExcel()) {
    message = L"Can't start Excel.";
    services.print(L"\n" + message);
    return AcDbField::kOtherError;
  }
  host::ExcelApplication& instance = *excel.privateExcel();
  if (core::startsWithNoCase(path, kWebMarker)) instance.setVisible(true);
  services.print(core::format(L"\nOpening %s", path));
  if (fetch(instance, path, reference.worksheet, reference.cell, code, value)) {
    if (modified && inDrawing) WriteTimeStamp(*field, *modified);
    services.print(core::format(L"\nUpdate %s successfully.", path));
  }
  return AcDbField::kSuccess;
}

bool AsdkExcelCellEvaluator::fetch(host::ExcelApplication& excel, std::wstring_view path,
                                   std::wstring_view worksheet, std::wstring_view cell, std::wstring_view code,
                                   host::AcFdFieldValue& value) {
  host::AcDbHostApplicationServices& services = sources_->services();
  const auto failed = [&value](std::wstring text) {
    value = host::AcFdFieldValue(std::move(text));
    return false;
  };

  // An open workbook of the same name from another folder is another file.
  std::shared_ptr<host::ExcelWorkbook> workbook;
  for (std::int32_t i = 1; i <= excel.workbookCount() && !workbook; ++i) {
    auto open = excel.workbook(i);
    if (open && *open && core::samePath((*open)->fullName(), path)) workbook = std::move(open).value();
  }
  if (!workbook) {
    auto opened = excel.openWorkbook(path, 1, 1);
    if (!opened || !*opened) {
      const std::wstring described = opened ? std::wstring() : ComErrorText(sources_->excel(), opened.error());
      const std::wstring text = described.empty() ? core::format(L"%s is not found.", path)
                                                  : core::format(L"%s is not found: %s.", path, described);
      services.print(L"\n" + text);
      return failed(text);
    }
    workbook = std::move(opened).value();
  }
  auto sheet = workbook->worksheet(worksheet);
  if (!sheet || !*sheet) return failed(core::format(L"%s:%s is not found.", path, worksheet));
  auto range = (*sheet)->range(cell);
  if (!range || !*range) {
    if (!range) services.print(L"\n" + ComErrorText(sources_->excel(), range.error()));
    return failed(core::format(L"%s:%s:%s is not found.", path, worksheet, cell));
  }
  auto text = (*range)->text();
  if (!text) {
    services.print(L"\n" + ComErrorText(sources_->excel(), text.error()));
    return failed(core::format(L"%s:%s:%s is not found.", path, worksheet, cell));
  }
  value = host::AcFdFieldValue(ApplyMidOption(*text, code));
  return true;
}

}  // namespace corvane
