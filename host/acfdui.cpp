#include "host/acfdui.h"

#include "host/acdbfield.h"

namespace corvane::host {

bool CAcFdUiFieldDialogHook::GetPreview(AcDbField* field, std::wstring& preview) {
  if (!field) return false;
  field->evaluate(AcDbField::kPreview, db_);
  preview = field->getDisplayText();
  return field->evaluationStatus() == AcDbField::kSuccess;
}

}  // namespace corvane::host
