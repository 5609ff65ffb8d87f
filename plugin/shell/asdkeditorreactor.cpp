#include "plugin/shell/asdkeditorreactor.h"

#include "core/textutil.h"

namespace corvane {

AsdkEditorReactor::AsdkEditorReactor(host::HostSession& session, ReactorState& state, bool attachNow)
    : session_(session), state_(state) {
  if (attachNow) attach();
}

AsdkEditorReactor::~AsdkEditorReactor() { detach(); }

void AsdkEditorReactor::attach() {
  if (attached_) return;
  host::AcEditor* editor = session_.editor();
  if (!editor) return;
  editor->addReactor(this);
  attached_ = true;
}

void AsdkEditorReactor::detach() {
  if (!attached_) return;
  if (host::AcEditor* editor = session_.editor()) editor->removeReactor(this);
  attached_ = false;
}

bool AsdkEditorReactor::isTableEditCommand(const wchar_t* command) noexcept {
  if (!command) return false;
  return core::equalsNoCase(command, L"TABLEDIT") || core::equalsNoCase(command, L"EDITTABLECELL");
}

void AsdkEditorReactor::commandWillStart(const wchar_t* command) {
  state_.copyMap.clear();
  if (isTableEditCommand(command)) state_.tableEditInProgress = true;
}

void AsdkEditorReactor::commandEnded(const wchar_t* /*command*/) { endCommand(); }

void AsdkEditorReactor::commandCancelled(const wchar_t* /*command*/) { endCommand(); }

void AsdkEditorReactor::commandFailed(const wchar_t* /*command*/) { endCommand(); }

void AsdkEditorReactor::endCommand() {
  state_.editedTableId = host::AcDbObjectId();
  state_.tableEditInProgress = false;
}

}  // namespace corvane
