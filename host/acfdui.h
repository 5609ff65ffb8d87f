// The host's field dialog as far as a plug-in extends it. The dialog lists categories and field
// names; a dialog hook adds its own, hands the dialog an option page for each of its fields,
// fills a page from a field being edited and builds the new field when the user confirms. The
// field manager keeps the hooks that are registered.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/hostservices.h"

namespace corvane::host {

class AcDbDatabase;
class AcDbField;

// An option page as the host's dialog sees it: it makes a field code from its controls, fills
// its controls from an existing field, and hears when its field is chosen in the list.
class CAcFdUiFieldOptionDialog {
 public:
  virtual ~CAcFdUiFieldOptionDialog() = default;

  // The code the controls make now; empty while they make none.
  virtual std::wstring GetFieldCode() = 0;
  // Whether the controls make a field at all; a page that checks them says in a message box
  // what is wrong.
  virtual bool HasUsableSelection() { return true; }
  // Fills the controls from an existing field of the page's type; false when the field does
  // not read, the controls keeping what they had.
  virtual bool LoadFromField(const AcDbField& field) = 0;
  virtual void OnFieldSelected() {}

  // The controls of a page shown without a window (a script answers them): each is set by a
  // keyword and the text typed for it.
  struct Control {
    std::wstring keyword;
    std::wstring help;
  };
  virtual std::vector<Control> GetControls() const = 0;
  // False, with the reason in `error`, for an unknown keyword or a text the control refuses.
  virtual bool SetControl(std::wstring_view keyword, std::wstring_view text, std::wstring& error) = 0;
};

// A panel of a plug-in's own inside the field dialog, made from a dialog template of the
// plug-in's module, with one button that acts on the field the dialog shows.
class CAcFdUiFieldDialogPanel {
 public:
  virtual ~CAcFdUiFieldDialogPanel() = default;

  // The dialog template the panel is made from.
  virtual std::wstring_view GetTemplateName() const = 0;
  // The caption of the panel's button; a dialog shown without a window takes it as a control.
  virtual std::wstring_view GetButtonText() const = 0;
  // The button was pressed while the field-code box showed `fieldCode`.
  virtual bool OnButtonPressed(std::wstring_view fieldCode) = 0;
};

// The host's field dialog as a hook reaches it.
class CAcFdUiFieldDialog {
 public:
  virtual ~CAcFdUiFieldDialog() = default;

  // The id of the field chosen in the list; 0 while none is.
  virtual unsigned GetCurrentFieldId() const = 0;
  // Chooses a field of a category in the list, as a click would; false when the list has no
  // such field.
  virtual bool SelectField(unsigned fieldId, unsigned categoryId) = 0;
  // The page shown for the chosen field, or null.
  virtual CAcFdUiFieldOptionDialog* GetCurrentOptionDialog() = 0;
  // Shows a code in the dialog's field-code box.
  virtual void SetFieldCode(std::wstring_view code) = 0;
  // Puts the keyboard focus into the field-code box.
  virtual void FocusFieldCode() = 0;
  virtual AcDbDatabase* GetDatabase() const = 0;

  // Makes a panel a child of the dialog, `left` units from the left and `aboveBottom` units
  // above the bottom of the client area, keeping its own size and z-order, and shows it without
  // activating it. The plug-in's resources are current while the template is read. The panel
  // stays the caller's, who removes it before it goes. False when the dialog takes no panel or
  // has this one already.
  virtual bool AddPanel(CAcFdUiFieldDialogPanel& /*panel*/, int /*left*/, int /*aboveBottom*/) { return false; }
  virtual void RemovePanel(CAcFdUiFieldDialogPanel& /*panel*/) {}
};

class CAcFdUiFieldDialogHook {
 public:
  using FieldHolder = AcDbHostApplicationServices::FieldHolder;

  virtual ~CAcFdUiFieldDialogHook() = default;

  // Appends the evaluator ids whose fields the hook edits; returns the list's size.
  virtual int GetEvaluatorIds(std::vector<std::wstring>& ids) = 0;

  // The dialog opens over a database; the base keeps both and the context until it closes.
  virtual bool BeginFieldDialog(CAcFdUiFieldDialog* dialog, AcDbDatabase* db, int context) {
    dialog_ = dialog;
    db_ = db;
    context_ = context;
    return true;
  }
  // The dialog closes with its result (IDOK, IDCANCEL).
  virtual bool EndFieldDialog(int /*result*/) {
    dialog_ = nullptr;
    db_ = nullptr;
    fieldToEdit_ = nullptr;
    return true;
  }
  // The dialog edits an existing field; the base keeps it and refuses none.
  virtual bool SetFieldToEdit(AcDbField* field) {
    fieldToEdit_ = field;
    return field != nullptr;
  }
  // The page of a field of the hook; `page` is left as it was for any other id.
  virtual bool GetOptionDialog(unsigned /*fieldId*/, CAcFdUiFieldOptionDialog*& /*page*/) { return false; }
  // What the dialog shows of a field before it is placed: the field evaluated in the preview
  // context against the dialog's database, then its text.
  virtual bool GetPreview(AcDbField* field, std::wstring& preview);
  // Asks the hook to put the chosen page's code into the field-code box.
  virtual bool UpdateFieldCode() { return false; }
  virtual bool OnFieldSelected(unsigned /*fieldId*/) { return false; }
  // The field the user confirmed, made by the hook; the base makes none.
  virtual bool CreateField(unsigned /*fieldId*/, FieldHolder& field) {
    field.reset();
    return false;
  }
  virtual bool GetCategories(std::vector<std::wstring>& names, std::vector<unsigned>& ids) = 0;
  // Field names of a category; category -1 asks for every category.
  virtual bool GetFieldNames(int categoryId, std::vector<std::wstring>& names, std::vector<unsigned>& ids,
                             bool& sort) = 0;

  CAcFdUiFieldDialog* GetFieldDialog() const noexcept { return dialog_; }
  AcDbDatabase* GetDatabase() const noexcept { return db_; }
  int GetContext() const noexcept { return context_; }
  AcDbField* GetFieldToEdit() const noexcept { return fieldToEdit_; }

 private:
  CAcFdUiFieldDialog* dialog_ = nullptr;
  AcDbDatabase* db_ = nullptr;
  int context_ = 0;
  AcDbField* fieldToEdit_ = nullptr;
};

class CAcFdUiFieldManager {
 public:
  virtual ~CAcFdUiFieldManager() = default;
  virtual bool RegisterFieldDialogHook(CAcFdUiFieldDialogHook* hook) = 0;
  virtual bool UnregisterFieldDialogHook(CAcFdUiFieldDialogHook* hook) = 0;
  // AcFdUiInvokeFieldDialog for a new field over a database: the dialog runs modally over every
  // registered hook; the field made on OK goes to `field`, which is null after a cancel.
  // Returns IDOK or IDCANCEL.
  virtual int InvokeFieldDialog(AcDbDatabase* db, CAcFdUiFieldDialogHook::FieldHolder& field) = 0;
};

}  // namespace corvane::host
