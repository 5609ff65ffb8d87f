// The headless host as an editor: it loads plug-ins, keeps their commands, runs commands by
// name with the script answering their prompts and message boxes, tells editor reactors how
// each command went, and between commands does what the host does when idle (expressions
// queued by plug-ins, timers, text sent for execution).
//
// The command line goes through the host application's print. A plug-in loaded here must be
// unloaded or destroyed before the session ends.
#pragma once

#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "headless/editor/commandstack.h"
#include "headless/editor/editorprompts.h"
#include "headless/editor/fielddialogmanager.h"
#include "headless/editor/menubar.h"
#include "headless/editor/osservices.h"
#include "headless/editor/script.h"
#include "headless/editor/terminalui.h"
#include "host/acdbdatabasereactor.h"
#include "host/aceditor.h"
#include "host/acrxarxapp.h"
#include "host/hostsession.h"
#include "host/registry.h"

namespace corvane::headless {

class Database;
class HostApplication;

class Session : public host::HostSession, public host::AcEditor {
 public:
  struct Options {
    std::wstring program = L"acad";  // "acadlt": the light edition, which evaluates no expressions
    std::wstring moduleFile;         // the plug-in's module; its folder holds the menu and help files
    host::Registry* registry = nullptr;  // null: the user's registry file
    bool editor = true;                  // whether the host has an editor object
    std::FILE* progress = stderr;
    const bool* progressIsTerminal = nullptr;  // null: asks the system
    std::function<void(std::wstring_view)> notice;  // notes of the registry and the shell; stderr when empty
  };
  enum class Outcome { kEnded, kCancelled, kFailed, kUnknown };

  Session(HostApplication& host, Script script, Options options);
  ~Session() override;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  host::AcEdCommandStack& commandStack() override { return commands_; }
  host::AcEditor* editor() override { return options_.editor ? this : nullptr; }
  host::AcEdPrompts& prompts() override { return prompts_; }
  host::AcEdMenu& menus() override { return menus_; }
  host::HostUi& ui() override { return ui_; }
  host::HostSystem& system() override { return os_; }
  host::Registry& registry() override { return *registry_; }
  host::CAcFdUiFieldManager* fieldManager() override { return &fieldDialogs_; }
  host::ExcelAutomation* excel() override { return excel_; }
  // The Excel the session's commands reach (the workbook backend wired in by the program).
  void setExcel(host::ExcelAutomation* excel) noexcept { excel_ = excel; }
  std::wstring program() const override { return options_.program; }
  int command(const std::vector<std::wstring>& arguments) override;
  int queueExpr(std::wstring_view expression) override;
  bool hasCurrentDocument() const override;
  host::Acad::ErrorStatus sendStringToExecute(std::wstring_view text, bool activate, bool wrapUpInactiveDoc,
                                              bool echo) override;
  host::Acad::ErrorStatus addDatabaseReactor(host::AcDbDatabase* db, host::AcDbDatabaseReactor* reactor) override;
  host::Acad::ErrorStatus removeDatabaseReactor(host::AcDbDatabase* db, host::AcDbDatabaseReactor* reactor) override;

  void addReactor(host::AcEditorReactor* reactor) override;
  void removeReactor(host::AcEditorReactor* reactor) override;
  const std::vector<host::AcEditorReactor*>& editorReactors() const noexcept { return reactors_; }

  // Sends the initialisation message (and the drawing-load message when a drawing is open),
  // then goes idle. A plug-in that answers with an error is not kept.
  host::AcRx::AppRetCode loadApplication(host::AcRxArxApp& app);
  host::AcRx::AppRetCode unloadApplication(host::AcRxArxApp& app);
  // Makes a drawing the current one and sends the loaded plug-ins the drawing-load message.
  void openDocument(Database* db);

  // Runs one command as typed at the command prompt, then goes idle.
  Outcome runCommand(std::wstring_view typed);
  // Runs the script's lines as commands (their prompts reading the lines that follow) until it
  // ends; returns how many were unknown or failed.
  int runScript();
  // What the host does between commands: queued expressions, one round of timers, and the
  // text sent for execution.
  void idle();
  // Commands that stopped with an error since the session began.
  int failures() const noexcept { return failures_; }

  // Tells the drawing's reactors that an object changed.
  void notifyObjectModified(const host::AcDbObject& object);
  std::vector<host::AcDbDatabaseReactor*> databaseReactors(const host::AcDbDatabase* db) const;

  HostApplication& host() noexcept { return host_; }
  Script& script() noexcept { return script_; }
  CommandStack& commands() noexcept { return commands_; }
  MenuBar& menuBar() noexcept { return menus_; }
  OsServices& os() noexcept { return os_; }
  TerminalUi& terminalUi() noexcept { return ui_; }
  EditorPrompts& editorPrompts() noexcept { return prompts_; }
  FieldDialogManager& fieldDialogs() noexcept { return fieldDialogs_; }

 private:
  Outcome execute(std::wstring_view typed);
  bool builtin(std::wstring_view name) const;
  void runBuiltin(std::wstring_view name);
  void editTableCell();
  void evaluate(const std::wstring& expression);
  void print(std::wstring_view text);

  HostApplication& host_;
  Options options_;
  Script script_;
  std::unique_ptr<host::Registry> ownRegistry_;
  host::Registry* registry_;
  CommandStack commands_;
  EditorPrompts prompts_;
  MenuBar menus_;
  OsServices os_;
  TerminalUi ui_;
  FieldDialogManager fieldDialogs_;
  host::ExcelAutomation* excel_ = nullptr;
  std::vector<host::AcEditorReactor*> reactors_;
  std::map<const host::AcDbDatabase*, std::vector<host::AcDbDatabaseReactor*>> databaseReactors_;
  std::vector<host::AcRxArxApp*> apps_;
  std::deque<std::wstring> queued_;  // expressions
  std::deque<std::wstring> sent_;    // lines sent for execution
  int failures_ = 0;
};

}  // namespace corvane::headless
