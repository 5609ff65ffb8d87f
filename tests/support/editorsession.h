// A drawing open in the headless editor: its settings in a file of the test's own, its command
// line collected in `out`, the script answering prompts and message boxes.
#pragma once

#include <string>
#include <string_view>

#include "headless/db/database.h"
#include "headless/editor/session.h"
#include "headless/hostapplication.h"
#include "headless/settings/registryfile.h"
#include "support/scratchfolder.h"

namespace corvane::testing {

struct EditorSession {
  ScratchFolder folder;
  headless::HostApplication host;
  headless::Database db{host};
  std::wstring out;
  headless::RegistryFile registry{folder / "registry.reg", [](std::wstring_view) {}};
  headless::Session session;

  explicit EditorSession(std::wstring_view script = L"") : session(host, headless::Script(script), options()) {
    host.setOutput([this](std::wstring_view text) { out += text; });
    session.openDocument(&db);
  }
  headless::Session::Options options() {
    headless::Session::Options o;
    o.registry = &registry;
    o.progress = nullptr;
    o.notice = [](std::wstring_view) {};
    return o;
  }
};

}  // namespace corvane::testing
