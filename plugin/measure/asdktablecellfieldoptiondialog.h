// The option page of the table cell field: a cell picked in the drawing, the reference text it
// gives and a preview of the field that reads it.
#pragma once

#include <string>

#include "plugin/fields/optionpagehost.h"

namespace corvane {

namespace host {
class AcDbField;
}

class AsdkTableCellFieldOptionDialog {
 public:
  static constexpr const wchar_t* kPickPrompt = L"\nSelect table cell:";

  explicit AsdkTableCellFieldOptionDialog(OptionPageHost& host) : host_(host) {}

  // A new field: no cell, no preview.
  void onInitDialog();
  // An existing field: its reference text and its present value. Returns 16 when the field's
  // record is no text and 2 otherwise; a field without a record leaves the page empty.
  int setFieldToEdit(const host::AcDbField& field);

  // The cell reference text box: "Table(<handle>).$B$3".
  std::wstring reference;

  // "Select table cell": with object snaps off for the pick, the cell under a point of the
  // drawing. A point on no table clears the reference and the preview. A prompt result code;
  // a cancelled pick changes nothing.
  int onPickCell();
  // Evaluates the page's code in a temporary field and shows its text, or why it failed.
  void refreshPreview();

  std::wstring fieldCode() const;
  const std::wstring& previewText() const noexcept { return previewText_; }

 private:
  OptionPageHost& host_;
  std::wstring previewText_;
};

}  // namespace corvane
