#include "headless/editor/fielddialogmanager.h"

#include <algorithm>

namespace corvane::headless {

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

}  // namespace corvane::headless
