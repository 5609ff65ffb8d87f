#include "plugin/measure/measurefield.h"

#include "core/printf.h"
#include "host/acdbdatabase.h"
#include "host/hostservices.h"
#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

using host::AcDbField;

int readObjectSetRecord(const AcDbField& field, const wchar_t* dataKey, ObjectSet& set, std::wstring& message) {
  host::AcValue record;
  if (field.getData(dataKey, record) != host::Acad::eOk) {
    message = core::format(L"The field has no \"%s\" record.", dataKey);
    return AcDbField::kOtherError;
  }
  std::wstring stored;
  if (!record.get(stored)) {
    message = core::format(L"The \"%s\" record of the field is not a text.", dataKey);
    return AcDbField::kInvalidCode;
  }
  const std::wstring_view text = fieldArguments(stored);
  if (!hasObjectSetPrefix(text)) {
    message = L"The object set does not begin with \"Object(\".";
    return AcDbField::kInvalidCode;
  }
  set = parseObjectSet(text);
  if (!set.error.empty()) {
    message = set.error;
    return AcDbField::kInvalidCode;
  }
  return AcDbField::kSuccess;
}

int evaluateObjectSetField(AcDbField* field, const wchar_t* dataKey, EntityMeasure measure,
                           host::AcFdFieldValue& value, std::wstring& message) {
  ObjectSet set;
  if (const int status = readObjectSetRecord(*field, dataKey, set, message); status != AcDbField::kSuccess) {
    return status;
  }
  // The set is always taken from the drawing being worked on.
  host::AcDbDatabase* db = field->database();
  host::AcDbDatabase* working = db ? db->services().workingDatabase() : nullptr;
  const double sum = working ? sumObjectSet(*working, field->ownerId(), set, measure) : 0.0;
  value = host::AcFdFieldValue(sum);
  return AcDbField::kSuccess;
}

}  // namespace corvane
