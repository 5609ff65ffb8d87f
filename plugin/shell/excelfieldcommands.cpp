// The commands that carry field values between the drawing and the user's Excel: the export of
// a picked object's fields (or of any field set up in the field dialog) into the active cell, and
// the update of the cells an export filled.
#include "core/printf.h"
#include "host/acedprompts.h"
#include "host/acfdui.h"
#include "host/hostservices.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/cexportfiledtoexceldialog.h"
#include "plugin/workflows/updatefieldsinexcel.h"

namespace corvane {

namespace {

// A choice between two keywords, the first the default; the index chosen, or -1 on cancel.
int askChoice(host::AcEdPrompts& prompts, std::wstring_view prompt, const wchar_t* first, const wchar_t* second,
              int current) {
  prompts.initGet(0, core::format(L"%s %s", first, second));
  std::wstring keyword;
  const int asked = prompts.getKword(
      core::format(L"%s [%s/%s] <%s>: ", prompt, first, second, current == 0 ? first : second), keyword);
  if (asked == host::RTNONE || (asked == host::RTNORM && keyword.empty())) return current;
  if (asked != host::RTNORM) return -1;
  return keyword == second ? 1 : 0;
}

enum class ExportChoice { kCancelled, kObject, kFieldDialog };

// The dialog on the command line: the two choices by keyword until an object is picked or the
// field dialog is asked for.
ExportChoice runExportDialog(CExportFiledToExcelDialog& dialog, host::AcEdPrompts& prompts,
                             host::AcDbHostApplicationServices& services) {
  for (;;) {
    prompts.initGet(0, L"Path Direction Dialog");
    host::AcDbObjectId picked;
    host::AcGePoint3d at;
    const int asked = prompts.entSel(
        core::format(L"\nSelect a text, multiline text, block reference or table with fields (%s, move %s) "
                     L"[Path/Direction/Dialog]: ",
                     CExportFiledToExcelDialog::kPathTypes[dialog.pathType],
                     CExportFiledToExcelDialog::kMoveDirections[dialog.moveDirection]),
        picked, at);
    if (asked == host::RTKWORD) {
      std::wstring keyword;
      prompts.getInput(keyword);
      if (keyword == L"Dialog") return ExportChoice::kFieldDialog;
      const bool path = keyword == L"Path";
      const int chosen =
          path ? askChoice(prompts, L"\nPath of the drawing in the notes", L"Full", L"Relative", dialog.pathType)
               : askChoice(prompts, L"\nMove the active cell", L"Down", L"Right", dialog.moveDirection);
      if (chosen < 0) return ExportChoice::kCancelled;
      if (path) {
        dialog.OnPathTypeChanged(chosen);
      } else {
        dialog.moveDirection = chosen;
      }
      continue;
    }
    if (asked != host::RTNORM) return ExportChoice::kCancelled;
    if (dialog.SetOwner(picked)) return ExportChoice::kObject;
    services.print(L"\nThe object shows no field.");
  }
}

// The host's field dialog with the export button in it: any field, set up on its page, goes to
// the active cell at each press, until the dialog is closed.
void exportFromFieldDialog(CExportFiledToExcelDialog& dialog, host::HostSession& session,
                           AsdkCustomOptionDialogHook* hook, host::AcDbHostApplicationServices& services) {
  host::CAcFdUiFieldManager* manager = session.fieldManager();
  if (!manager || !hook) {
    services.print(L"\nThe field dialog is not available.");
    return;
  }
  // The button reads the choices from the settings.
  dialog.SaveChoices();
  // Whichever way the dialog closes, the next one opened elsewhere has no export button.
  struct Running {
    AsdkCustomOptionDialogHook& hook;
    explicit Running(AsdkCustomOptionDialogHook& h) : hook(h) { hook.setExportFieldsRunning(true); }
    ~Running() { hook.setExportFieldsRunning(false); }
  } running(*hook);
  host::CAcFdUiFieldDialogHook::FieldHolder made;
  manager->InvokeFieldDialog(services.workingDatabase(), made);
}

}  // namespace

void CCorvaneApp::Corvane_Export_Fields_to_Excel() {
  if (!session_) return;
  CExportFiledToExcelDialog dialog(*linked_, registry_);
  switch (runExportDialog(dialog, session_->prompts(), services_)) {
    case ExportChoice::kObject:
      dialog.OnOK();
      break;
    case ExportChoice::kFieldDialog:
      exportFromFieldDialog(dialog, *session_, dialogHook_.get(), services_);
      break;
    case ExportChoice::kCancelled:
      break;
  }
}

void CCorvaneApp::Corvane_Update_Fields_In_Excel() {
  if (!session_) return;
  UpdateFieldsInExcel update(*linked_, &session_->prompts(), &session_->ui(), {});
  update.Run();
}

}  // namespace corvane
