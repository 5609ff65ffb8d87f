#include "plugin/measure/asdktablecellfieldoptiondialog.h"

#include "core/printf.h"
#include "host/acdbfield.h"
#include "host/acedprompts.h"
#include "plugin/fields/asdkfieldevaluator.h"
#include "plugin/fields/evaluatortable.h"
#include "plugin/measure/tablecellreference.h"

namespace corvane {

using host::AcDbField;

void AsdkTableCellFieldOptionDialog::onInitDialog() {
  reference.clear();
  previewText_.clear();
}

int AsdkTableCellFieldOptionDialog::setFieldToEdit(const AcDbField& field) {
  onInitDialog();
  host::AcValue record;
  if (field.getData(kEvaluatorTable[kTableCellRow].dataKey, record) != host::Acad::eOk) return AcDbField::kSuccess;
  std::wstring text;
  if (!record.get(text)) return AcDbField::kInvalidCode;
  reference = fieldArguments(text);
  host::AcValue value;
  if (field.getValue(value) == host::Acad::eOk) previewText_ = host_.formatValue(value, L"");
  return AcDbField::kSuccess;
}

int AsdkTableCellFieldOptionDialog::onPickCell() {
  TableCellPick pick;
  int result = 0;
  {
    ShortVarOverride noSnaps(host_, L"OSMODE", 0);
    result = host_.pickTableCell(kPickPrompt, pick);
  }
  if (result != host::RTNORM) return result;
  if (pick.table.isNull() || pick.row < 0 || pick.column < 0) {
    reference.clear();
    previewText_.clear();
    return result;
  }
  reference = TableCellReferenceText(pick.tableHandle, pick.row + 1, pick.column + 1);
  refreshPreview();
  return result;
}

void AsdkTableCellFieldOptionDialog::refreshPreview() {
  const PreviewResult result = host_.preview(fieldCode());
  previewText_ = result.status == AcDbField::kSuccess
                     ? result.text
                     : core::format(L"Failed to evaluate the field: %d.", result.status);
}

std::wstring AsdkTableCellFieldOptionDialog::fieldCode() const {
  return core::format(L"%%<\\%s %s>%%", kEvaluatorTable[kTableCellRow].evaluatorId, reference);
}

}  // namespace corvane
