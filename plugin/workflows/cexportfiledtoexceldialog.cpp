#include "plugin/workflows/cexportfiledtoexceldialog.h"

#include <algorithm>

#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/workflows/cexportfieldbuttondialog.h"

namespace corvane {

CExportFiledToExcelDialog::CExportFiledToExcelDialog(LinkedSources& sources, CRegistry& registry)
    : pathType(std::clamp(registry.get(settings::kExportFieldPathType), 0, 1)),
      moveDirection(std::clamp(registry.get(settings::kExportFieldMoveDirection), 0, 1)),
      sources_(sources),
      registry_(registry) {}

bool CExportFiledToExcelDialog::SetOwner(host::AcDbObjectId object) {
  fields_ = FieldsOfObject(sources_.services(), object);
  return !fields_.empty();
}

bool CExportFiledToExcelDialog::OnPathTypeChanged(int type) {
  return ChoosePathType(sources_, registry_, settings::kExportFieldPathType, type, 1, pathType);
}

void CExportFiledToExcelDialog::SaveChoices() {
  pathType = std::clamp(pathType, 0, 1);
  moveDirection = std::clamp(moveDirection, 0, 1);
  registry_.write(settings::kExportFieldPathType, pathType);
  registry_.write(settings::kExportFieldMoveDirection, moveDirection);
}

int CExportFiledToExcelDialog::OnOK() {
  SaveChoices();
  CExportFieldButtonDialog button(sources_, registry_);
  int exported = 0;
  for (const ExportableField& field : fields_) {
    // A refused field would leave the active cell where the next value then lands.
    if (!button.Export(field.code, pathType, moveDirection)) break;
    ++exported;
  }
  return exported;
}

}  // namespace corvane
