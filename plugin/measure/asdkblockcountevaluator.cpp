#include "plugin/measure/asdkblockcountevaluator.h"

#include <climits>

#include "host/acdbdatabase.h"
#include "host/hostservices.h"
#include "plugin/measure/blockcount.h"

namespace corvane {

using host::AcDbField;

int AsdkBlockCountEvaluator::evaluateField(AcDbField* field, host::AcDbDatabase* /*db*/, host::AcFdFieldValue& value,
                                           std::wstring& message) {
  host::AcValue record;
  if (field->getData(kEvaluatorTable[kRow].dataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring text;
  if (!record.get(text)) return AcDbField::kInvalidCode;
  const BlockCountQuery query = parseBlockCount(fieldArguments(text));
  if (!query.error.empty()) {
    message = query.error;
    return AcDbField::kInvalidCode;
  }
  // Counted in the drawing being worked on.
  host::AcDbDatabase* db = field->database();
  host::AcDbDatabase* working = db ? db->services().workingDatabase() : nullptr;
  const long count = working ? countBlocks(*working, query) : 0;
  value = host::AcFdFieldValue(static_cast<std::int32_t>(count > INT32_MAX ? INT32_MAX : count));
  return AcDbField::kSuccess;
}

}  // namespace corvane
