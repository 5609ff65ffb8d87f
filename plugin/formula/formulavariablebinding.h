// The formula field's view of the drawing with the drawing's formula variables in it: a name
// bound in the variable dialog reads the value of its field code, ahead of a system variable
// of the same name.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugin/formula/exprfieldbinding.h"
#include "plugin/formula/formulavariables.h"

namespace corvane {

class FormulaVariableBinding : public ExprFieldBinding {
 public:
  using ExprFieldBinding::ExprFieldBinding;

  std::optional<std::wstring> SystemVariable(std::wstring_view name) override;

 private:
  // Read on the first name asked for; the binding lives for one evaluation.
  std::optional<std::vector<FormulaVariable>> variables_;
};

}  // namespace corvane
