// The variable dialog of the formula page: names bound to field codes, shown as rows of
// "Variable" and "Field Code" and kept with the drawing when the dialog is closed with OK.
#pragma once

#include <string>
#include <vector>

#include "plugin/formula/formulapagehost.h"
#include "plugin/formula/formulavariables.h"

namespace corvane {

class CAddFieldCodeVarDialog {
 public:
  static constexpr const wchar_t* kCaption = L"Corvane";
  // The characters a name may not hold, in the order the message lists them.
  static constexpr const wchar_t* kReservedCharacters = L"/\\\"': *?<>|%,;(){}[]&";

  explicit CAddFieldCodeVarDialog(FormulaPageHost& host) : host_(host) {}

  // The rows kept with the drawing.
  void onInitDialog();

  // The list and its selection (row indexes).
  std::vector<FormulaVariable> rows;
  std::vector<int> selectedRows;
  // The edit part.
  std::wstring name;
  std::wstring fieldCode;

  // Adds the edited variable, or updates the row of the same name (in any case) once the user
  // agrees. False, with a message, for a name or code that is refused, and when the user keeps
  // the row as it is.
  bool onAdd();
  // Removes the selected rows once the user agrees.
  bool onRemove();
  // OK: the rows are written to the drawing in one go. False (with a message) when the drawing
  // refuses them; the drawing keeps its previous variables then.
  bool onOK();

 private:
  void say(const std::wstring& text, const wchar_t* caption);

  FormulaPageHost& host_;
};

}  // namespace corvane
