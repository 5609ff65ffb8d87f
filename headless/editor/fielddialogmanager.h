// The field dialog's manager in the headless host, which has no field dialog of its own: it
// keeps the hooks that plug-ins register, so that their categories and field names can be
// listed.
#pragma once

#include <vector>

#include "host/acfdui.h"

namespace corvane::headless {

class FieldDialogManager : public host::CAcFdUiFieldManager {
 public:
  // False for a null hook or one registered already.
  bool RegisterFieldDialogHook(host::CAcFdUiFieldDialogHook* hook) override;
  bool UnregisterFieldDialogHook(host::CAcFdUiFieldDialogHook* hook) override;
  const std::vector<host::CAcFdUiFieldDialogHook*>& hooks() const noexcept { return hooks_; }

 private:
  std::vector<host::CAcFdUiFieldDialogHook*> hooks_;
};

}  // namespace corvane::headless
