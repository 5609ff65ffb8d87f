// The option page of the formula field: the expression with its units and precision, the
// functions of the formula language, cells picked from a table, fields and variables put into
// the expression, and a preview that evaluates the formula as the field will.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/objectid.h"
#include "plugin/fields/combolist.h"
#include "plugin/fields/showmodal.h"
#include "plugin/formula/caddfieldcodevardialog.h"
#include "plugin/formula/cinsertfieldcodedialog.h"
#include "plugin/formula/formulapagehost.h"

namespace corvane {

namespace host {
class AcDbField;
}

class AsdkFormulaOptionDialog {
 public:
  static constexpr const wchar_t* kCaption = L"Corvane";
  static constexpr const wchar_t* kPickCellPrompt = L"\nSelect table cell:";
  static constexpr const wchar_t* kOwnerTablePrompt = L"\nSelect the owner table of the field.";

  // `ownerTable` is the table chosen in an earlier run of the page (null when none);
  // `chooseOwnerTable` hands a newly chosen one to the formula fields, which read its cells
  // while they are placed nowhere.
  AsdkFormulaOptionDialog(FormulaPageHost& host, host::AcDbObjectId ownerTable,
                          std::function<void(host::AcDbObjectId)> chooseOwnerTable);

  // A new formula: no expression, units "(none)", the precision list disabled, the functions
  // of the language listed and the owner table shown when one was chosen.
  void onInitDialog();
  // An existing formula field: its expression, and the units and precision its format names;
  // a field in a table cell makes that table the owner table.
  // Returns the evaluation status of the reading: 2, 64 without the data record, 16 for a
  // record that is no text.
  int setFieldToEdit(const host::AcDbField& field);

  // The controls. After changing the selection of a list call its handler.
  std::wstring expression;
  // Where picked cells and embedded fields go into the expression; past the end appends.
  std::size_t caret = std::wstring::npos;
  ComboList units;
  ComboList precision;
  std::vector<std::wstring> functions;

  void onUnitsChanged();
  // "Select table cell": with object snaps off for the pick, the address of the table cell
  // under a point goes into the expression. A prompt result code.
  int onPickCell();
  // "Insert field": a field code from the field-code dialog goes into the expression as an
  // ACAD_FIELD argument.
  bool onInsertField(const ShowModal<CInsertFieldCodeDialog>& show);
  // "Variables": the drawing's formula variables, kept when the dialog closes with OK.
  bool onVariables(const ShowModal<CAddFieldCodeVarDialog>& show);
  // A function of the list goes in as "NAME()" with the caret between the parentheses, ready
  // for its arguments. False for an index past the list.
  bool onInsertFunction(std::size_t index);
  // A variable of the drawing goes in by its name, spelled as it was defined; false (nothing
  // changes) for a name the drawing does not define, compared without regard to case.
  bool onInsertVariable(std::wstring_view name);
  // "Evaluate": a formula placed nowhere asks for its owner table first; then the formula is
  // evaluated in a temporary field. False when no owner table was chosen.
  bool onPreview();

  std::wstring formatString() const;
  std::wstring fieldCode() const;

  const std::wstring& previewText() const noexcept { return previewText_; }
  // The handle of the chosen owner table, empty when none.
  const std::wstring& ownerTableText() const noexcept { return ownerTableText_; }

 private:
  void insertIntoExpression(const std::wstring& text);
  bool chooseOwnerTable();
  void useOwnerTable(host::AcDbObjectId table);
  void showAsText();

  FormulaPageHost& host_;
  host::AcDbObjectId ownerTable_;
  std::function<void(host::AcDbObjectId)> chooseOwnerTable_;
  bool fieldHasOwner_ = false;
  std::wstring ownerTableText_;
  std::wstring previewText_;
};

}  // namespace corvane
