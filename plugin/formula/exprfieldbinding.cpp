#include "plugin/formula/exprfieldbinding.h"

#include "core/printf.h"
#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "plugin/fields/fieldreferences.h"

namespace corvane {

using host::Acad;

std::optional<std::wstring> ExprFieldBinding::ObjectProperty(std::wstring_view handle, std::wstring_view property) {
  host::AcDbDatabase* db = services_.workingDatabase();
  const auto parsed = host::AcDbHandle::fromText(handle);
  if (!db || !parsed) return std::nullopt;
  host::AcDbObjectId id;
  if (db->getAcDbObjectId(id, *parsed) != Acad::eOk) return std::nullopt;
  host::AcValue value;
  if (services_.getPropertyValue(id, property, value) != Acad::eOk) return std::nullopt;
  return valueText(value);
}

std::optional<std::wstring> ExprFieldBinding::SystemVariable(std::wstring_view name) {
  return evaluateInTemporaryField(core::format(L"%%<\\AcVar %s>%%", name));
}

std::wstring ExprFieldBinding::EvaluateFieldCode(std::wstring_view fieldCode) {
  if (fieldCode.size() < 2) return L"####";
  const auto span = services_.findField(fieldCode);
  if (!span) return std::wstring(fieldCode);
  // An object-property code travels with handles; the host's field wants ids.
  const std::wstring code = FormulaFieldHandlesToIds(services_, fieldCode);
  return evaluateInTemporaryField(code).value_or(L"####");
}

std::optional<std::wstring> ExprFieldBinding::evaluateInTemporaryField(std::wstring_view code) {
  host::AcDbDatabase* db = services_.workingDatabase();
  const auto field = services_.newField();
  if (!db || !field || field->setFieldCode(code) != Acad::eOk) return std::nullopt;
  field->evaluate(host::AcDbField::kDemand, db);
  if (field->evaluationStatus() != host::AcDbField::kSuccess) return std::nullopt;
  host::AcValue value;
  if (field->getValue(value) != Acad::eOk) return std::nullopt;
  return valueText(value);
}

}  // namespace corvane
