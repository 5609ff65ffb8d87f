#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

using host::Acad;
using host::AcDbField;

Acad::ErrorStatus compileFieldRecord(AcDbField* field, host::AcDbDatabase* /*db*/, host::AcFdFieldResult* result,
                                     const wchar_t* dataKey) {
  if (!field) return Acad::eInvalidInput;
  const std::wstring code = field->getFieldCode(AcDbField::kEvaluatedChildren | AcDbField::kStripOptions);
  if (code.empty()) {
    if (result) result->setEvaluationStatus(AcDbField::kInvalidCode, 0, {});
    return Acad::eInvalidInput;
  }
  return field->setData(dataKey, host::AcFdFieldValue(code));
}

Acad::ErrorStatus finishEvaluation(host::AcFdFieldResult* result, int status, const host::AcFdFieldValue& value,
                                   bool notYetEvaluatedIsOk, std::wstring_view message) {
  Acad::ErrorStatus es = Acad::eInvalidInput;
  if (status == AcDbField::kSuccess) {
    es = result ? result->setFieldValue(value) : Acad::eInvalidInput;
  } else if (status == AcDbField::kNotYetEvaluated && notYetEvaluatedIsOk) {
    es = Acad::eOk;
  }
  if (result) result->setEvaluationStatus(status, 0, status == AcDbField::kSuccess ? std::wstring_view() : message);
  return es;
}

std::wstring_view fieldArguments(std::wstring_view record) noexcept {
  if (record.empty() || record.front() != L'\\') return record;
  std::size_t end = 1;
  while (end < record.size() && record[end] != L' ' && record[end] != L'\t') ++end;
  if (end < record.size()) ++end;  // the blank after the id
  return record.substr(end);
}

Acad::ErrorStatus formatFieldText(host::AcFdFieldEvaluator& evaluator, AcDbField* field, wchar_t*& text) {
  std::wstring formatted;
  const Acad::ErrorStatus es = evaluator.format(field, formatted);
  if (es != Acad::eOk) {
    text = nullptr;
    return es;
  }
  return host::acutNewString(formatted.c_str(), text);
}

}  // namespace corvane
