#pragma once

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of defined-object fields: the text of an object of another drawing.
class AsdkDefinedObjectEvaluator : public AsdkFieldEvaluator<AsdkDefinedObjectEvaluator> {
 public:
  ~AsdkDefinedObjectEvaluator() override = default;
  static constexpr std::size_t kRow = kDefinedObjectRow;
  // The only worker that may be replaced: a "not yet evaluated" answer is not a failure.
  virtual int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
  static constexpr bool kNotYetEvaluatedIsOk = true;
};

}  // namespace corvane
