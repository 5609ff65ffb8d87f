// The host's field dialog in the headless editor (the FIELD command). The object that will hold
// the field is picked first; then the dialog opens over every registered hook and reads its
// controls from the script, one line each:
//
//   CATEGORY name        shows the fields of one category ("All" for every category)
//   NAME field name      chooses a field and shows its option page
//   OPTIONS              lists the page's controls
//   KEYWORD text         sets a control of the page (CODE takes a whole field code)
//   PREVIEW              evaluates the field code and shows the result
//   button caption       presses the button of a panel a hook added (EXPORT, say)
//   OK                   makes the field and puts it in place
//   CANCEL               closes the dialog; so do "^C" and the end of the script
//
// A text, multiline text or attribute that already is a field, or a cell that holds one, is
// edited: the dialog opens on that field's page, filled from it, and the new field takes its
// place.
//
// A plug-in can also open the dialog for a new field of its own (InvokeFieldDialog): there is
// nothing to pick, and OK hands the field made to the plug-in.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "headless/editor/fieldplacement.h"
#include "host/acfdui.h"

namespace corvane::headless {

class Database;
class EditorPrompts;
class FieldDialogManager;
class HostApplication;

class FieldDialog : public host::CAcFdUiFieldDialog {
 public:
  using Print = std::function<void(std::wstring_view)>;

  FieldDialog(HostApplication& host, FieldDialogManager& hooks, EditorPrompts& prompts, Print print);
  ~FieldDialog() override;

  // The command: the pick, the dialog, and the field put in place on OK. Returns the object
  // that was changed, or null when nothing was.
  host::AcDbObjectId run();
  // The dialog for a new field over a database: OK puts the field made into `field`. IDOK or
  // IDCANCEL.
  int runForNewField(host::AcDbDatabase* db, host::CAcFdUiFieldDialogHook::FieldHolder& field);

  // The dialog's own steps, as run() takes them after the pick.
  // Opens over every registered hook, on the field the place shows when it shows one.
  void open(const FieldPlace& place);
  // One line of the dialog (see above); false once the dialog has closed.
  bool handle(const std::wstring& line);
  void close(int result);
  bool isOpen() const noexcept { return open_; }

  unsigned GetCurrentFieldId() const override { return current_ ? current_->fieldId : 0; }
  bool SelectField(unsigned fieldId, unsigned categoryId) override;
  host::CAcFdUiFieldOptionDialog* GetCurrentOptionDialog() override { return page_; }
  void SetFieldCode(std::wstring_view code) override;
  void FocusFieldCode() override { focusedCodeBox_ = true; }
  host::AcDbDatabase* GetDatabase() const override;
  bool AddPanel(host::CAcFdUiFieldDialogPanel& panel, int left, int aboveBottom) override;
  void RemovePanel(host::CAcFdUiFieldDialogPanel& panel) override;

  const std::wstring& fieldCodeBox() const noexcept { return codeBox_; }
  bool codeBoxFocused() const noexcept { return focusedCodeBox_; }
  struct Panel {
    host::CAcFdUiFieldDialogPanel* panel;
    int left;
    int aboveBottom;
  };
  const std::vector<Panel>& panels() const noexcept { return panels_; }

 private:
  struct Entry {
    host::CAcFdUiFieldDialogHook* hook;
    unsigned categoryId;
    std::wstring category;
    unsigned fieldId;
    std::wstring name;
  };

  std::optional<FieldPlace> pickPlace();
  void openOver(const FieldPlace* place);
  void readControls();
  // The panel whose button has this caption, or null.
  host::CAcFdUiFieldDialogPanel* panelWithButton(std::wstring_view caption) const;
  void press(host::CAcFdUiFieldDialogPanel& panel);
  void listEntries();
  bool choose(std::wstring_view name);
  void preview();
  bool confirm();

  HostApplication& host_;
  FieldDialogManager& hooks_;
  EditorPrompts& prompts_;
  Print print_;
  Database* db_ = nullptr;
  std::vector<Entry> entries_;
  std::wstring category_;  // empty: every category
  const Entry* current_ = nullptr;
  host::CAcFdUiFieldOptionDialog* page_ = nullptr;
  std::wstring codeBox_;
  bool focusedCodeBox_ = false;
  std::optional<FieldPlace> place_;
  std::wstring editedCode_;
  host::AcDbObjectId placed_;
  std::vector<Panel> panels_;
  // Where OK leaves the field of a dialog opened for a new one.
  host::CAcFdUiFieldDialogHook::FieldHolder* newField_ = nullptr;
  bool open_ = false;
};

}  // namespace corvane::headless
