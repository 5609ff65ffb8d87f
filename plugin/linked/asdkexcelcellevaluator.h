#pragma once

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of Excel cell fields: the displayed text of a workbook cell.
class AsdkExcelCellEvaluator : public AsdkFieldEvaluator<AsdkExcelCellEvaluator> {
 public:
  static constexpr std::size_t kRow = kExcelCellRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
};

}  // namespace corvane
