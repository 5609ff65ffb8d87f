#pragma once

#include <string>

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of block count fields: how many references of a block a drawing holds.
class AsdkBlockCountEvaluator : public AsdkFieldEvaluator<AsdkBlockCountEvaluator> {
 public:
  static constexpr std::size_t kRow = kBlockCountRow;
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value, std::wstring& message);
};

}  // namespace corvane
