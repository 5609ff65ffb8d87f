#pragma once

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of table cell fields: a cell of another table.
class AsdkTableCellEvaluator : public AsdkFieldEvaluator<AsdkTableCellEvaluator> {
 public:
  static constexpr std::size_t kRow = kTableCellRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
};

}  // namespace corvane
