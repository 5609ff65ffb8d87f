#include "plugin/measure/asdkblockcountevaluator.h"

namespace corvane {

int AsdkBlockCountEvaluator::evaluateField(host::AcDbField* /*field*/, host::AcDbDatabase* /*db*/, host::AcFdFieldValue& /*value*/) {
  // Not computed yet: the field reports "other error" and keeps the value it had.
  return host::AcDbField::kOtherError;
}

}  // namespace corvane
