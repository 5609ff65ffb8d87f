#include "plugin/measure/asdktablecellevaluator.h"

#include "host/acdbdatabase.h"
#include "host/acdbtable.h"
#include "host/hostservices.h"
#include "plugin/measure/tablecellreference.h"

namespace corvane {

using host::AcDbField;

int AsdkTableCellEvaluator::evaluateField(AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value) {
  host::AcValue record;
  if (field->getData(kEvaluatorTable[kRow].dataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring text;
  if (!record.get(text)) return AcDbField::kInvalidCode;
  const auto reference = ParseTableCellReference(text);
  if (!reference || !db) return AcDbField::kInvalidCode;

  // The table is looked up in the working drawing, as the host's own lookup does.
  host::AcDbHostApplicationServices& services = db->services();
  host::AcDbDatabase* working = services.workingDatabase();
  const auto handle = host::AcDbHandle::fromText(reference->handle);
  host::AcDbObjectId tableId;
  if (!working || !handle || working->getAcDbObjectId(tableId, *handle) != host::Acad::eOk) {
    return AcDbField::kInvalidCode;
  }
  host::AcDbObjectPointer<host::AcDbTable> table(services, tableId, host::AcDb::kForRead);
  if (!table) return AcDbField::kInvalidCode;
  const int row = reference->row, column = reference->column;
  // The host's table answers any index; this one refuses cells it does not have.
  if (row >= table->numRows() || column >= table->numColumns()) return AcDbField::kInvalidCode;

  host::AcValue::DataType dataType = host::AcValue::kUnknown;
  host::AcValueOptions::UnitType unitType = host::AcValueOptions::kUnitless;
  table->getDataType(row, column, dataType, unitType);
  const auto content = table->contentType(row, column);
  if (content == host::AcDb::kCellContentTypeField ||
      (content == host::AcDb::kCellContentTypeValue && dataType != host::AcValue::kString &&
       dataType != host::AcValue::kGeneral)) {
    value = table->value(row, column);
  } else {
    std::wstring cellText;
    table->textString(row, column, host::AcValueOptions::kIgnoreMtextFormat, cellText);
    value = host::AcFdFieldValue(cellText);
  }
  return AcDbField::kSuccess;
}

}  // namespace corvane
