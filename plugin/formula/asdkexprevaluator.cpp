#include "plugin/formula/asdkexprevaluator.h"

#include <cmath>
#include <exception>

#include "core/crt.h"
#include "host/acdbdatabase.h"
#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprvalue.h"
#include "plugin/formula/formulavariablebinding.h"

namespace corvane {

using host::AcDbField;

namespace {
constexpr const wchar_t* kDataKey = L"VxExpr Data";
}  // namespace

std::wstring FormulaExpressionOf(std::wstring_view record) {
  const std::size_t open = record.find(L'(');
  const std::size_t close = record.rfind(L')');
  if (open != std::wstring_view::npos && close != std::wstring_view::npos && close > open) {
    return std::wstring(record.substr(open + 1, close - open - 1));
  }
  // No parentheses: whatever follows the evaluator id.
  const std::size_t blank = record.find(L' ');
  return blank == std::wstring_view::npos ? std::wstring() : std::wstring(record.substr(blank + 1));
}

host::AcFdFieldValue FormulaResultValue(const std::wstring& result, const std::wstring& format) {
  if (!IsNumericText(result)) {
    // A result that is a string literal ("'abc'") keeps the engine's literal marker; a drawing
    // must not show it, so it goes here, at both ends as concatenation drops it.
    std::wstring_view text(result);
    while (!text.empty() && text.front() == L'\x13') text.remove_prefix(1);
    while (!text.empty() && text.back() == L'\x13') text.remove_suffix(1);
    return host::AcFdFieldValue(text.empty() ? std::wstring(L" ") : std::wstring(text));
  }
  const std::int32_t whole = core::leadingInteger(result);
  const double real = core::wtof(result);
  host::AcFdFieldValue value = std::fabs(real - whole) <= 1e-5 ? host::AcFdFieldValue(whole) : host::AcFdFieldValue(real);
  if (!format.empty()) value.setFormat(format);
  return value;
}

int AsdkExprEvaluator::evaluateField(AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value) {
  host::AcValue record;
  if (field->getData(kDataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring code;
  if (!record.get(code)) return AcDbField::kInvalidCode;
  if (!db) return AcDbField::kOtherError;

  FormulaVariableBinding binding(db->services());
  binding.bindContext(*field, dialogOwnerTable_ ? *dialogOwnerTable_ : host::AcDbObjectId());
  ExprEngine engine(FormulaExpressionOf(code), binding);
  std::wstring result;
  try {
    // A failure leaves its message in the result, which the field shows like any value.
    engine.Evaluate(result);
  } catch (const std::exception&) {
    result = L"#VALUE!";
  }
  value = FormulaResultValue(result, field->getFormat());
  return AcDbField::kSuccess;
}

}  // namespace corvane
