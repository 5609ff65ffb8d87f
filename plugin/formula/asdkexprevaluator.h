#pragma once

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of formula fields: an expression over cells, fields, properties and variables.
class AsdkExprEvaluator : public AsdkFieldEvaluator<AsdkExprEvaluator> {
 public:
  static constexpr std::size_t kRow = kExprRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
};

}  // namespace corvane
