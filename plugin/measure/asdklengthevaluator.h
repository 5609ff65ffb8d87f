#pragma once

#include <string>

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of length fields: the total length of a set of drawing objects.
class AsdkLengthEvaluator : public AsdkFieldEvaluator<AsdkLengthEvaluator> {
 public:
  static constexpr std::size_t kRow = kLengthRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value, std::wstring& message);
};

}  // namespace corvane
