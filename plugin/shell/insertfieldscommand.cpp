// The insert fields command: the rules and drawings of its dialog, then every drawing in turn
// read, given its fields, and saved back.
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/acedprompts.h"
#include "host/errorstatus.h"
#include "host/hostservices.h"
#include "host/hostsession.h"
#include "host/hostsystem.h"
#include "host/hostui.h"
#include "plugin/measure/portdialoghost.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/insertfieldsintodrawing.h"
#include "plugin/workflows/insertfieldstodrawingsdialog.h"

namespace corvane {

namespace {

// The dialog on the command line: one keyword a button; true when it was closed with OK.
bool runInsertFieldsDialog(CInsertFieldsToDrawingsDialog& dialog, host::AcEdPrompts& prompts) {
  for (;;) {
    prompts.initGet(0, L"Rule Remove Drawing Unlist OK Cancel");
    std::wstring keyword;
    const int asked =
        prompts.getKword(core::format(L"\nRules: %d, drawings: %d. [Rule/Remove/Drawing/Unlist/OK/Cancel] <OK>: ",
                                      dialog.rules().size(), dialog.drawings().size()),
                         keyword);
    if (asked != host::RTNORM) return false;
    if (keyword.empty() || keyword == L"OK") {
      dialog.OnOK();
      return true;
    }
    int number = 0;
    if (keyword == L"Rule") {
      if (prompts.getString(true, L"\nBlock name: ", dialog.blockName) != host::RTNORM) continue;
      if (prompts.getString(true, L"\nAttribute tag: ", dialog.tag) != host::RTNORM) continue;
      if (prompts.getString(true, L"\nField code: ", dialog.fieldCode) != host::RTNORM) continue;
      dialog.OnAddRule();
    } else if (keyword == L"Remove") {
      if (prompts.getInt(L"\nNumber of the rule to remove: ", number) != host::RTNORM) continue;
      dialog.OnRemoveRule(static_cast<std::size_t>(number - 1));
    } else if (keyword == L"Drawing") {
      std::wstring path;
      if (prompts.getString(true, L"\nSelect a drawing: ", path) != host::RTNORM) continue;
      dialog.OnAddDrawings({path});
    } else if (keyword == L"Unlist") {
      if (prompts.getInt(L"\nNumber of the drawing to remove: ", number) != host::RTNORM) continue;
      dialog.OnRemoveDrawings({static_cast<std::size_t>(number - 1)});
    } else {
      return false;
    }
  }
}

// One drawing of the batch; a failure is printed and the batch goes on.
void insertFieldsIntoFile(host::AcDbHostApplicationServices& services, host::HostSession& session,
                          const std::wstring& path, const FieldRules& rules) {
  if (path.empty()) return;
  host::AcDbDatabase* current = services.workingDatabase();
  if (current && core::equalsNoCase(current->getFilename(), path)) {
    // The open drawing is changed in place; saving it is the user's call.
    InsertFieldsIntoDrawing(services, *current, rules);
    services.print(core::format(L"\nSuccessfully update %s.", path));
    return;
  }
  if (!session.system().fileExists(path)) {
    services.print(core::format(L"\nCannot find %s.", path));
    return;
  }
  host::AcDbHostApplicationServices::DatabaseHolder side;
  std::wstring reason;
  if (const auto es = services.readDrawingFile(path, side, reason); es != host::Acad::eOk || !side) {
    services.print(
        core::format(L"\nFailed to open %s: %s.", path, reason.empty() ? host::acadErrorStatusText(es) : reason));
    return;
  }
  services.setWorkingDatabase(side.get());
  InsertFieldsIntoDrawing(services, *side, rules);
  services.setWorkingDatabase(current);
  reason.clear();
  if (const auto es = services.saveDrawingFile(*side, path, reason); es != host::Acad::eOk) {
    services.print(
        core::format(L"\nFailed to save %s: %s.", path, reason.empty() ? host::acadErrorStatusText(es) : reason));
  }
  services.print(core::format(L"\nSuccessfully update %s.", path));
}

}  // namespace

void CCorvaneApp::Corvane_Insert_Fields_To_Drawings() {
  if (!session_) return;
  CInsertFieldsToDrawingsDialog dialog(registry_, session_->ui());
  PortDialogHost blocks(services_, session_->prompts(), session_->ui());
  dialog.OnInitDialog(blocks.blockNames());
  if (!runInsertFieldsDialog(dialog, session_->prompts())) return;

  const InsertFieldsRun& run = dialog.run();
  host::HostUi& ui = session_->ui();
  ui.setStatusBarProgressMeter(L"Inserting the fields ...", 0, static_cast<int>(run.drawings.size()) + 1);
  for (std::size_t i = 0; i < run.drawings.size(); ++i) {
    ui.setStatusBarProgressMeterPos(static_cast<int>(i));
    insertFieldsIntoFile(services_, *session_, run.drawings[i], run.codes);
  }
  ui.restoreStatusBar();
}

}  // namespace corvane
