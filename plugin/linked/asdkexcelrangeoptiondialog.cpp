#include "plugin/linked/asdkexcelrangeoptiondialog.h"

#include <algorithm>

#include "core/crt.h"
#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"
#include "plugin/linked/excelcellcode.h"
#include "plugin/linked/excelutils.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

namespace {

bool isDigit(wchar_t c) noexcept { return c >= L'0' && c <= L'9'; }
bool isLetter(wchar_t c) noexcept { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

}  // namespace

AsdkExcelRangeOptionDialog::AsdkExcelRangeOptionDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources),
      registry_(registry),
      recent_(registry, settings::kExcelCellRecentFiles),
      pathType_(std::clamp(registry.get(settings::kExcelFieldPathType), 0, 2)) {
  recent_.ReadList();
}

bool AsdkExcelRangeOptionDialog::SetFieldCode(std::wstring_view code) {
  const auto quoted = QuotedReference(code);
  if (!quoted) return false;
  const ExcelCellReference reference = SplitExcelCellReference(*quoted);
  if (reference.workbook.empty()) return false;
  workbook = reference.workbook;
  worksheet = reference.worksheet;
  // "$AB$12" is an address; anything else a defined name.
  const std::wstring& cell = reference.cell;
  const std::size_t second = cell.size() > 1 ? cell.find(L'$', 1) : std::wstring::npos;
  if (!cell.empty() && cell[0] == L'$' && second != std::wstring::npos) {
    byName = false;
    column = cell.substr(1, second - 1);
    row = cell.substr(second + 1);
  } else {
    byName = true;
    cellName = cell;
  }
  midStart = midLength = 0;
  if (const std::size_t mid = code.find(L"\\MID("); mid != std::wstring_view::npos) {
    const std::wstring_view arguments = code.substr(mid + 5);
    const std::size_t comma = arguments.find(L',');
    midStart = std::max(0, core::leadingInteger(arguments.substr(0, comma)));
    if (comma != std::wstring_view::npos) midLength = std::max(0, core::leadingInteger(arguments.substr(comma + 1)));
  }
  pathType_ = core::isRelativePath(workbook) ? kRelativePathType : kFullPathType;
  return true;
}

bool AsdkExcelRangeOptionDialog::OnPathTypeChanged(int type) {
  return ChoosePathType(sources_, registry_, settings::kExcelFieldPathType, type, 2, pathType_);
}

bool AsdkExcelRangeOptionDialog::OnBrowsed(std::wstring_view path) {
  if (sources_.fileStatus(path).kind != host::HostSystem::FileKind::kFile) {
    LinkedMessage(sources_, core::format(L"Cannot find %s.", path), kMessageCaption, host::MB_OK);
    return false;
  }
  workbook = path;
  recent_.Add(path);
  recent_.WriteList();
  // The workbook is shown in the user's Excel, so that a sheet and a cell can be picked there.
  ExcelUtils excel(sources_.excel(), sources_.ui(), sources_.services());
  if (excel.AttachRunningExcel(true, path, 1, 0)) {
    if (!excel.workbook()) excel.OpenWorkbook(path, 1, 0);
    excel.EnsureWorkbook();
    if (excel.worksheet() && worksheet.empty()) worksheet = excel.worksheet()->name();
  }
  return true;
}

void AsdkExcelRangeOptionDialog::refuse(std::wstring_view text, bool information) {
  if (information) {
    LinkedMessage(sources_, text, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  } else {
    LinkedMessage(sources_, text, L"Corvane", host::MB_OK);
  }
}

bool AsdkExcelRangeOptionDialog::Validate() {
  if (byName && core::trimmed(cellName).empty()) {
    refuse(L"The cell name can't be empty.", true);
    return false;
  }
  if (worksheet.empty()) {
    refuse(L"The worksheet can't be empty.", true);
    return false;
  }
  if (workbook.empty()) {
    refuse(L"The workbook can't be empty.", true);
    return false;
  }
  if (byName) return true;
  const std::wstring_view rowText = core::trimmed(row);
  if (core::leadingInteger(rowText) <= 0) {
    refuse(L"Invalid row.", false);
    return false;
  }
  if (!std::all_of(rowText.begin(), rowText.end(), isDigit)) {
    refuse(L"Invalid char in the row.", false);
    return false;
  }
  const std::wstring_view columnText = core::trimmed(column);
  if (columnText.empty() || columnText.size() > 2) {
    refuse(L"Invalid column.", false);
    return false;
  }
  // A column may be typed as its number.
  const bool number = std::all_of(columnText.begin(), columnText.end(), isDigit);
  if (number ? core::leadingInteger(columnText) <= 0 : !std::all_of(columnText.begin(), columnText.end(), isLetter)) {
    refuse(number ? L"Invalid column." : L"Invalid char in the column.", false);
    return false;
  }
  return true;
}

bool AsdkExcelRangeOptionDialog::OnOK() {
  if (!Validate()) return false;
  const std::wstring path = PathForCode(sources_, workbook, pathType_);
  registry_.write(settings::kExcelFieldPathType, pathType_);
  if (byName) {
    code_ = ExcelCellCodeByName(path, worksheet, core::trimmed(cellName), midStart, midLength);
  } else {
    const std::wstring_view columnText = core::trimmed(column);
    const bool number = std::all_of(columnText.begin(), columnText.end(), isDigit);
    const std::wstring letters =
        number ? ExcelUtils::ColumnLetters(core::leadingInteger(columnText)) : core::toUpper(columnText);
    code_ =
        ExcelCellCodeByAddress(path, worksheet, letters, core::leadingInteger(core::trimmed(row)), midStart, midLength);
  }
  recent_.Add(workbook);
  recent_.WriteList();
  return true;
}

}  // namespace corvane
