#pragma once

#include <string>
#include <string_view>

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

// The evaluator of formula fields: an expression over cells, fields, properties and variables.
class AsdkExprEvaluator : public AsdkFieldEvaluator<AsdkExprEvaluator> {
 public:
  static constexpr std::size_t kRow = kExprRow;
  // `dialogOwnerTable`: the process-wide table chosen in the formula dialog, which binds a
  // field that has no owner of its own; it belongs to the application and outlives this.
  explicit AsdkExprEvaluator(const host::AcDbObjectId* dialogOwnerTable = nullptr)
      : dialogOwnerTable_(dialogOwnerTable) {}
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);

 private:
  const host::AcDbObjectId* dialogOwnerTable_;
};

// The expression of a formula field's record "\VxExpr (expression)": what stands between the
// first opening and the last closing parenthesis (the text after the id when there are none).
std::wstring FormulaExpressionOf(std::wstring_view record);
// The engine's result as the field's value: numeric text within 1e-5 of its leading integer
// becomes that 32-bit integer, other numeric text a double, both carrying the field's format;
// anything else is a string (without the engine's literal marker), an empty one a single blank.
host::AcFdFieldValue FormulaResultValue(const std::wstring& result, const std::wstring& format);

}  // namespace corvane
