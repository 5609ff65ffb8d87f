// The commands that make and re-point Excel cell fields in bulk: fields for the cells selected
// in the user's Excel, and the manager of the workbooks the drawing's fields name.
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/multicellfields.h"
#include "plugin/workflows/workbooksmanager.h"

namespace corvane {

void CCorvaneApp::Corvane_Multi_Cell_Fields() {
  if (!session_) return;
  MultiCellFields(*linked_, registry_, *session_).Run();
}

void CCorvaneApp::Corvane_Workbooks_Manager() {
  if (!session_) return;
  RunWorkbooksManager(*linked_, registry_, *session_);
}

}  // namespace corvane
