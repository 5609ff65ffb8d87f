// The workbooks manager command: its dialog worked from the command line, one keyword a button.
#pragma once

namespace corvane {

namespace host {
class HostSession;
}  // namespace host

class CRegistry;
class LinkedSources;

void RunWorkbooksManager(LinkedSources& sources, CRegistry& registry, host::HostSession& session);

}  // namespace corvane
