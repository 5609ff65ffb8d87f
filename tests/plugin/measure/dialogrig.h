// A drawing with the plug-in loaded, an editor whose prompts and message boxes are answered from a script, and a
// settings file: what the measurement fields' option pages run against.
#pragma once

#include <string>

#include "headless/editor/editorprompts.h"
#include "headless/editor/script.h"
#include "headless/editor/terminalui.h"
#include "headless/settings/registryfile.h"
#include "plugin/measure/portdialoghost.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/support/cregistry.h"
#include "support/scratchfolder.h"
#include "support/testdrawing.h"

namespace corvane::testing {

struct DialogRig : TestDrawing {
  CCorvaneApp app{host};
  headless::Script script;
  std::wstring said;  // prompts, answers and message boxes
  bool terminal = false;
  headless::EditorPrompts prompts{script, host, [this](std::wstring_view t) { said += t; }};
  headless::TerminalUi ui{script, [this](std::wstring_view t) { said += t; }, nullptr, &terminal};
  ScratchFolder folder;
  headless::RegistryFile file{folder / "registry.reg", [](std::wstring_view) {}};
  CRegistry registry{&file};
  PortDialogHost dialogHost{host, prompts, ui};

  DialogRig() {
    app.onInitialize();
    registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
  }
  ~DialogRig() { app.onUnload(); }

  std::wstring handleOf(host::AcDbObjectId id) { return host.handle(id).text(); }
  template <typename T>
  host::AcDbObjectId put(std::unique_ptr<T> entity, std::wstring layer) {
    entity->setLayer(std::move(layer));
    return db.appendEntity(std::move(entity));
  }
  void answer(std::wstring_view lines) { script.append(lines); }
  // The text of the one message box shown so far, or how many there were.
  std::wstring box() const {
    const auto& boxes = ui.boxes();
    return boxes.size() == 1 ? boxes[0].text : std::to_wstring(boxes.size()) + L" boxes";
  }
};

}  // namespace corvane::testing
