#pragma once

#include <string>

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of area fields: the total area of a set of drawing objects.
class AsdkAreaEvaluator : public AsdkFieldEvaluator<AsdkAreaEvaluator> {
 public:
  static constexpr std::size_t kRow = kAreaRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value, std::wstring& message);
};

}  // namespace corvane
