// The formula variables of a drawing: names bound to field codes, kept with the drawing so
// that its formulas read the same values wherever it is opened. A formula that names one gets
// the value of its field code.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/errorstatus.h"
#include "host/hostservices.h"

namespace corvane {

struct FormulaVariable {
  std::wstring name;
  std::wstring fieldCode;
  bool operator==(const FormulaVariable&) const = default;
};

// The extended data of the drawing's named-objects dictionary that holds them: per variable a
// "{" "}" group of the name and the code, the code cut into pieces short enough for one
// extended-data string each.
inline constexpr const wchar_t* kFormulaVariablesApp = L"CORVANE_FORMULA_VARIABLES";

// The variables of the working drawing, in the order they were added; none without a drawing.
std::vector<FormulaVariable> ReadFormulaVariables(host::AcDbHostApplicationServices& services);
// Replaces the working drawing's variables in one write; on failure they stay as they were.
host::Acad::ErrorStatus WriteFormulaVariables(host::AcDbHostApplicationServices& services,
                                              const std::vector<FormulaVariable>& variables);

}  // namespace corvane
