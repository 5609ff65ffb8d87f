#include "plugin/shell/asdkdatabasereactor.h"

#include "host/acdbobject.h"

namespace corvane {

void AsdkDataBaseReactor::objectModified(const host::AcDbDatabase* /*db*/, const host::AcDbObject* object) {
  if (!state_.tableEditInProgress || !object) return;
  if (object->dxfName() != L"ACAD_TABLE") return;
  tableModified_ = 1;
  if (state_.editedTableId.isNull()) state_.editedTableId = object->objectId();
}

}  // namespace corvane
