#pragma once

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of text file fields: the contents of a text file.
class AsdkTextFileEvaluator : public AsdkFieldEvaluator<AsdkTextFileEvaluator> {
 public:
  static constexpr std::size_t kRow = kTextFileRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
};

}  // namespace corvane
