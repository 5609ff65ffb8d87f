// The commands of the defined-object list: the list kept in the settings, worked through its
// dialog, and the objects read in this session.
#include "core/datetimetext.h"
#include "core/printf.h"
#include "host/acdbobject.h"
#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "plugin/linked/cdefineobjectdialog.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane {

namespace {

std::wstring timeStampText(const CDefinedObjectTime& time) {
  if (time.status == CDefinedObjectTime::kNull) return {};
  const std::wstring text = time.status == CDefinedObjectTime::kValid ? core::dateTimeText(time.date) : std::wstring();
  return text.empty() ? L"Invalid DateTime" : text;
}

// The dialog on the command line: one keyword a button, until the user is done.
void runDefineObjectDialog(CDefineObjectDialog& dialog, host::AcEdPrompts& prompts,
                           host::AcDbHostApplicationServices& services) {
  for (;;) {
    prompts.initGet(0, L"Add Remove Folder List eXit");
    std::wstring keyword;
    const int asked = prompts.getKword(
        core::format(L"\nDefined objects: %d. [Add/Remove/Folder/List/eXit] <eXit>: ", dialog.rows().size()), keyword);
    if (asked != host::RTNORM || keyword.empty() || keyword == L"eXit") return;
    if (keyword == L"Add") {
      host::AcDbObjectId picked;
      host::AcGePoint3d at;
      if (prompts.entSel(L"\nSelect object:", picked, at) != host::RTNORM) continue;
      std::wstring description;
      if (prompts.getString(true, L"\nDescription: ", description) != host::RTNORM) continue;
      dialog.Add(services.handle(picked).text(), description);
    } else if (keyword == L"Remove") {
      int number = 0;
      if (prompts.getInt(L"\nNumber of the object to remove: ", number) != host::RTNORM) continue;
      dialog.selected = number - 1;
      dialog.Remove();
    } else if (keyword == L"Folder") {
      std::wstring oldFolder, newFolder;
      if (prompts.getString(true, L"\nPick the old folder: ", oldFolder) != host::RTNORM) continue;
      if (prompts.getString(true, L"\nPick the new folder: ", newFolder) != host::RTNORM) continue;
      dialog.ReplaceFolder(oldFolder, newFolder);
    } else if (keyword == L"List") {
      int number = 0;
      for (const CDefinedObject& row : dialog.rows()) {
        services.print(
            core::format(L"\n%d. %s, %s, %s, %s", ++number, row.drawing, row.handle, row.type, row.description));
      }
    }
  }
}

}  // namespace

void CCorvaneApp::Corvane_Define_Object() {
  if (!session_) return;
  CDefineObjectDialog dialog(*linked_, registry_);
  runDefineObjectDialog(dialog, session_->prompts(), services_);
}

void CCorvaneApp::Corvane_List_DefObj_InSession() {
  for (const CDefinedObject& record : linked_->definedObjects()) {
    services_.print(core::format(L"\n%s, %s, %s, %s, %s, %s.", record.drawing, timeStampText(record.timeStamp),
                                 record.handle, record.type, record.value, record.description));
  }
}

}  // namespace corvane
