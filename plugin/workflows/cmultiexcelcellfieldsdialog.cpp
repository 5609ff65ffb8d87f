#include "plugin/workflows/cmultiexcelcellfieldsdialog.h"

#include <algorithm>

#include "core/printf.h"
#include "host/hostui.h"
#include "plugin/linked/excelcellcode.h"
#include "plugin/linked/excelutils.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/fields/showmodal.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

CMultiExcelCellFieldsDialog::CMultiExcelCellFieldsDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources),
      registry_(registry),
      pathType_(std::clamp(registry.get(settings::kMultiFieldsPathType), 0, 1)) {}

void CMultiExcelCellFieldsDialog::Init(ExcelUtils& excel) {
  workbook = excel.workbook() ? excel.workbook()->fullName() : std::wstring();
  worksheet = excel.worksheet() ? excel.worksheet()->name() : std::wstring();
  hasSelection = excel.application() && excel.application()->selection() != nullptr;
}

bool CMultiExcelCellFieldsDialog::OnPathTypeChanged(int type) {
  return ChoosePathType(sources_, registry_, settings::kMultiFieldsPathType, type, 1, pathType_);
}

bool CMultiExcelCellFieldsDialog::Validate() {
  const wchar_t* refusal = workbook.empty()    ? L"Invalid workbook."
                           : worksheet.empty() ? L"Invalid worksheet."
                           : !hasSelection     ? L"Invalid selection."
                                               : nullptr;
  if (!refusal) return true;
  LinkedMessage(sources_, refusal, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  return false;
}

bool CMultiExcelCellFieldsDialog::OnOK() {
  if (!Validate()) return false;
  workbookPath_ = PathForCode(sources_, workbook, pathType_);
  registry_.write(settings::kMultiFieldsPathType, pathType_);
  return true;
}

std::wstring CMultiExcelCellFieldsDialog::Code(std::wstring_view cell) const {
  return core::format(L"%%<\\ExcelCell \"%s:%s:%s\"%s>%%", workbookPath_, worksheet, cell,
                      MidOptionText(midStart, midLength));
}

}  // namespace corvane
