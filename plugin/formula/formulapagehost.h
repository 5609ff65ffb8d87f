// What the formula page and its dialogs ask of the host beyond every option page's needs:
// field codes found in a text, a field code made into a formula argument, cell addresses,
// handles and the drawing's formula variables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/errorstatus.h"
#include "host/objectid.h"
#include "plugin/fields/optionpagehost.h"
#include "plugin/formula/formulavariables.h"

namespace corvane {

namespace host {
class AcDbField;
}

class FormulaPageHost : public virtual OptionPageHost {
 public:
  // Whether the text holds a field code (acdbHasFields).
  virtual bool holdsFieldCode(std::wstring_view text) = 0;
  // The first field code of the text as an ACAD_FIELD argument, object ids made handles.
  virtual std::wstring formulaArgument(std::wstring_view text) = 0;
  // The address of a 1-based cell as formulas write it ("AB3"); a row or column below 1 is
  // reported in a message box and gives an empty text.
  virtual std::wstring cellAddress(int row, int column) = 0;
  // An object's handle as upper-case hexadecimal; empty for an id that names nothing.
  virtual std::wstring handleText(host::AcDbObjectId id) = 0;
  // The table whose cell holds the field, walking up its owners; null for a field in no table.
  virtual host::AcDbObjectId owningTable(const host::AcDbField& field) = 0;
  virtual std::vector<FormulaVariable> variables() = 0;
  virtual host::Acad::ErrorStatus setVariables(const std::vector<FormulaVariable>& variables) = 0;
};

}  // namespace corvane
