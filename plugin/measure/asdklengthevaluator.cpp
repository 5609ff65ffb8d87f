#include "plugin/measure/asdklengthevaluator.h"

#include "plugin/measure/entitymeasure.h"
#include "plugin/measure/measurefield.h"

namespace corvane {

int AsdkLengthEvaluator::evaluateField(host::AcDbField* field, host::AcDbDatabase* /*db*/, host::AcFdFieldValue& value,
                                   std::wstring& message) {
  return evaluateObjectSetField(field, kEvaluatorTable[kRow].dataKey, entityLength, value, message);
}

}  // namespace corvane
