#include "plugin/formula/formulavariablebinding.h"

#include <algorithm>

#include "core/textutil.h"

namespace corvane {

std::optional<std::wstring> FormulaVariableBinding::SystemVariable(std::wstring_view name) {
  if (!variables_) variables_ = ReadFormulaVariables(services());
  const auto found = std::find_if(variables_->begin(), variables_->end(),
                                  [name](const FormulaVariable& v) { return core::equalsNoCase(v.name, name); });
  if (found != variables_->end()) return EvaluateFieldCode(found->fieldCode);
  return ExprFieldBinding::SystemVariable(name);
}

}  // namespace corvane
