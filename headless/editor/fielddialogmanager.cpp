#include "headless/editor/fielddialogmanager.h"

#include <algorithm>

#include "headless/editor/fielddialog.h"
#include "host/hostui.h"

namespace corvane::headless {

FieldDialogManager::FieldDialogManager(HostApplication& host, EditorPrompts& prompts, Print print)
    : host_(host), prompts_(prompts), print_(std::move(print)) {}

bool FieldDialogManager::RegisterFieldDialogHook(host::CAcFdUiFieldDialogHook* hook) {
  if (!hook || std::find(hooks_.begin(), hooks_.end(), hook) != hooks_.end()) return false;
  hooks_.push_back(hook);
  return true;
}

bool FieldDialogManager::UnregisterFieldDialogHook(host::CAcFdUiFieldDialogHook* hook) {
  const auto it = std::find(hooks_.begin(), hooks_.end(), hook);
  if (it == hooks_.end()) return false;
  hooks_.erase(it);
  return true;
}

int FieldDialogManager::InvokeFieldDialog(host::AcDbDatabase* db, host::CAcFdUiFieldDialogHook::FieldHolder& field) {
  FieldDialog dialog(host_, *this, prompts_, print_);
  return dialog.runForNewField(db, field);
}

}  // namespace corvane::headless
