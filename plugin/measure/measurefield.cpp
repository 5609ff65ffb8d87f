#include "plugin/measure/measurefield.h"

#include "host/acdbdatabase.h"
#include "host/hostservices.h"
#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

using host::AcDbField;

int evaluateObjectSetField(AcDbField* field, const wchar_t* dataKey, EntityMeasure measure,
                           host::AcFdFieldValue& value, std::wstring& message) {
  host::AcValue record;
  if (field->getData(dataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring stored;
  if (!record.get(stored)) return AcDbField::kInvalidCode;
  const std::wstring_view text = fieldArguments(stored);
  if (!hasObjectSetPrefix(text)) {
    message = L"The object set does not begin with \"Object(\".";
    return AcDbField::kInvalidCode;
  }
  const ObjectSet set = parseObjectSet(text);
  if (!set.error.empty()) {
    message = set.error;
    return AcDbField::kInvalidCode;
  }
  // The set is always taken from the drawing being worked on.
  host::AcDbDatabase* db = field->database();
  host::AcDbDatabase* working = db ? db->services().workingDatabase() : nullptr;
  const double sum = working ? sumObjectSet(*working, field->ownerId(), set, measure) : 0.0;
  value = host::AcFdFieldValue(sum);
  return AcDbField::kSuccess;
}

}  // namespace corvane
