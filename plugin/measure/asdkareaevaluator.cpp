#include "plugin/measure/asdkareaevaluator.h"

#include "plugin/measure/entitymeasure.h"
#include "plugin/measure/measurefield.h"

namespace corvane {

int AsdkAreaEvaluator::evaluateField(host::AcDbField* field, host::AcDbDatabase* /*db*/, host::AcFdFieldValue& value,
                                   std::wstring& message) {
  return evaluateObjectSetField(field, kEvaluatorTable[kRow].dataKey, entityArea, value, message);
}

}  // namespace corvane
