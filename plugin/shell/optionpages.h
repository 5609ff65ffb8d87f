// The option pages of the field dialog as the host's dialog sees them. Each field's page is a
// plain class of its own subsystem; an adapter here gives it the host's page shape: the code
// its controls make, loading from an existing field, and its controls by keyword for a dialog
// shown without windows.
//
// Every page also takes "CODE <field code>": a code typed in full, which stands for the page's
// own until another control is set.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "host/acfdui.h"
#include "host/hostservices.h"
#include "host/hostsession.h"
#include "host/hostui.h"
#include "plugin/formula/portformulapagehost.h"
#include "plugin/measure/portdialoghost.h"

namespace corvane {

class CRegistry;
class LinkedSources;

// What the pages are made with: the drawing, the editor session (its prompts for picks, its UI
// for message boxes), the settings and the linked fields' ways out of the drawing.
struct OptionPageSources {
  host::AcDbHostApplicationServices& services;
  host::HostSession& session;
  CRegistry& registry;
  LinkedSources& linked;
  // The table whose cells a formula placed nowhere reads, as chosen on the formula page; kept
  // by the application from one opening of the page to the next.
  std::function<host::AcDbObjectId()> ownerTable;
  std::function<void(host::AcDbObjectId)> chooseOwnerTable;
};

class OptionPages {
 public:
  explicit OptionPages(const OptionPageSources& sources);

  // A new page for a field id of the dialog hook, its controls as for a new field; null for an
  // id whose page this build does not have. `codeChanged` is called whenever a control changed
  // the code, so that the dialog's field-code box can follow.
  std::unique_ptr<host::CAcFdUiFieldOptionDialog> make(unsigned fieldId, std::function<void()> codeChanged);

  host::AcDbHostApplicationServices& services() noexcept { return sources_.services; }
  host::HostUi& ui() { return sources_.session.ui(); }

 private:
  OptionPageSources sources_;
  // Made with the first page: the session's prompts are not reached before a dialog opens.
  std::optional<PortDialogHost> dialogHost_;
  std::optional<PortFormulaPageHost> formulaHost_;
};

}  // namespace corvane
