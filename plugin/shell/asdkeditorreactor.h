// The plug-in's editor reactor: it watches commands so that state kept for one command does
// not leak into the next, and notes when a table-editing command starts.
#pragma once

#include "host/aceditor.h"
#include "host/hostsession.h"
#include "plugin/shell/reactorstate.h"

namespace corvane {

class AsdkEditorReactor : public host::AcEditorReactor {
 public:
  // With `attachNow` the reactor adds itself to the host editor at once; when the host has no
  // editor it stays detached.
  AsdkEditorReactor(host::HostSession& session, ReactorState& state, bool attachNow);
  ~AsdkEditorReactor() override;
  AsdkEditorReactor(const AsdkEditorReactor&) = delete;
  AsdkEditorReactor& operator=(const AsdkEditorReactor&) = delete;

  void attach();
  void detach();
  bool isAttached() const noexcept { return attached_; }

  void commandWillStart(const wchar_t* command) override;
  void commandEnded(const wchar_t* command) override;
  void commandCancelled(const wchar_t* command) override;
  void commandFailed(const wchar_t* command) override;

  static bool isTableEditCommand(const wchar_t* command) noexcept;

 private:
  void endCommand();

  host::HostSession& session_;
  ReactorState& state_;
  bool attached_ = false;
};

}  // namespace corvane
