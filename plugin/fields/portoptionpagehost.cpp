#include "plugin/fields/portoptionpagehost.h"

#include <cstdint>
#include <vector>

#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "host/acdbtable.h"

namespace corvane {

using host::AcDbObjectId;
using host::AcDbObjectPointer;
namespace AcDb = host::AcDb;

PreviewResult PortOptionPageHost::preview(const std::wstring& code) {
  PreviewResult result;
  host::AcDbHostApplicationServices::FieldHolder field = services_.newField();
  if (!field || field->setFieldCode(code) != host::Acad::eOk) {
    result.status = host::AcDbField::kInvalidCode;
    return result;
  }
  field->evaluate(host::AcDbField::kPreview, services_.workingDatabase());
  result.status = field->evaluationStatus();
  host::AcValue value;
  if (field->getValue(value) == host::Acad::eOk) {
    std::int32_t whole = 0;
    if (!value.get(result.value) && value.get(whole)) result.value = whole;
    result.isString = value.dataType() == host::AcValue::kString;
  }
  result.text = field->getDisplayText();
  return result;
}

int PortOptionPageHost::pickTableCell(std::wstring_view prompt, TableCellPick& pick) {
  pick = {};
  host::AcGePoint3d point;
  const int result = prompts_.getPoint(nullptr, prompt, point);
  if (result != host::RTNORM) return result;
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db) return result;
  const host::ResBufList filter{{0, std::wstring(L"ACAD_TABLE")}};
  std::vector<AcDbObjectId> tables;
  if (prompts_.ssGet(L"X", &filter, tables) != host::RTNORM) return result;
  // The port has no current viewport to ask, so the view is the plan view along Z.
  const host::AcGeVector3d view{0.0, 0.0, 1.0};
  for (const AcDbObjectId id : tables) {
    AcDbObjectPointer<host::AcDbTable> table(services_, id, AcDb::kForRead);
    if (!table || table->ownerId() != db->currentSpaceId()) continue;
    int row = -1, column = -1;
    if (!table->hitTest(point, view, row, column)) continue;
    pick = {id, services_.handle(id).text(), row, column};
    break;
  }
  return result;
}

int PortOptionPageHost::pickTable(std::wstring_view prompt, AcDbObjectId& table, host::Acad::ErrorStatus& opened) {
  host::AcGePoint3d at;
  const int result = prompts_.entSel(prompt, table, at);
  if (result != host::RTNORM) return result;
  opened = AcDbObjectPointer<host::AcDbTable>(services_, table, AcDb::kForRead).openStatus();
  return result;
}

}  // namespace corvane
