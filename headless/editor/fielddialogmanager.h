// The field dialog's manager in the headless host: it keeps the hooks that plug-ins register,
// so that their categories and field names can be listed, and runs the field dialog for a new
// field when a plug-in asks for it, its controls read from the script.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "host/acfdui.h"

namespace corvane::headless {

class EditorPrompts;
class HostApplication;

class FieldDialogManager : public host::CAcFdUiFieldManager {
 public:
  using Print = std::function<void(std::wstring_view)>;

  FieldDialogManager(HostApplication& host, EditorPrompts& prompts, Print print);

  // False for a null hook or one registered already.
  bool RegisterFieldDialogHook(host::CAcFdUiFieldDialogHook* hook) override;
  bool UnregisterFieldDialogHook(host::CAcFdUiFieldDialogHook* hook) override;
  int InvokeFieldDialog(host::AcDbDatabase* db, host::CAcFdUiFieldDialogHook::FieldHolder& field) override;
  const std::vector<host::CAcFdUiFieldDialogHook*>& hooks() const noexcept { return hooks_; }

 private:
  HostApplication& host_;
  EditorPrompts& prompts_;
  Print print_;
  std::vector<host::CAcFdUiFieldDialogHook*> hooks_;
};

}  // namespace corvane::headless
