// A host that writes down every call the plug-in makes of it, in order, and answers from a few
// settings: the program name, the menu groups loaded, the number of pull-down menus, the files
// that exist and the system language. The field engine is the headless one, watched through a
// wrapper that adds its calls to the same log.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/printf.h"
#include "core/textutil.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "host/acdbdatabasereactor.h"
#include "host/acedcommandstack.h"
#include "host/aceditor.h"
#include "host/acedmenu.h"
#include "host/acedprompts.h"
#include "host/acfdui.h"
#include "host/hostsession.h"
#include "host/hostsystem.h"
#include "host/hostui.h"
#include "host/registry.h"

namespace corvane::testing {

using Log = std::vector<std::wstring>;

class RecordingFieldEngine : public host::AcFdFieldEngine {
 public:
  RecordingFieldEngine(host::AcFdFieldEngine& real, Log& log) : real_(real), log_(log) {}
  host::Acad::ErrorStatus registerEvaluatorLoader(host::AcFdFieldEvaluatorLoader* loader) override {
    log_.push_back(L"registerEvaluatorLoader");
    return real_.registerEvaluatorLoader(loader);
  }
  host::Acad::ErrorStatus unregisterEvaluatorLoader(host::AcFdFieldEvaluatorLoader* loader) override {
    log_.push_back(L"unregisterEvaluatorLoader");
    return real_.unregisterEvaluatorLoader(loader);
  }
  host::Acad::ErrorStatus addFieldReactor(host::AcFdFieldReactor* reactor) override {
    log_.push_back(L"addFieldReactor");
    return real_.addFieldReactor(reactor);
  }
  host::Acad::ErrorStatus removeFieldReactor(host::AcFdFieldReactor* reactor) override {
    log_.push_back(L"removeFieldReactor");
    return real_.removeFieldReactor(reactor);
  }
  host::Acad::ErrorStatus evaluateFields(host::AcDbDatabase* db, const std::vector<host::AcDbObjectId>& fields,
                                         int context, BatchResult* result = nullptr) override {
    return real_.evaluateFields(db, fields, context, result);
  }

 private:
  host::AcFdFieldEngine& real_;
  Log& log_;
};

// The headless host application with its field engine watched.
class RecordingServices : public headless::HostApplication {
 public:
  explicit RecordingServices(Log& log) : recording_(engine(), log) {}
  host::AcFdFieldEngine* fieldEngine() override { return &recording_; }

 private:
  RecordingFieldEngine recording_;
};

class RecordingSession : public host::HostSession,
                         public host::AcEdCommandStack,
                         public host::AcEditor,
                         public host::AcEdMenu,
                         public host::HostUi,
                         public host::HostSystem,
                         public host::Registry,
                         public host::CAcFdUiFieldManager {
 public:
  explicit RecordingSession(Log& log) : log_(log) {}

  // What the host answers.
  std::wstring programName = L"acad";
  std::wstring module = L"C:\\Program Files\\Halvek\\Corvane\\Corvane.arx";
  std::set<std::wstring> loadedGroups;
  int pullDowns = 12;
  std::set<std::wstring> files;  // paths that exist
  int language = host::kLangEnglishUS;
  bool hasEditor = true;
  bool document = true;

  // HostSession
  host::AcEdCommandStack& commandStack() override { return *this; }
  host::AcEditor* editor() override {
    log_.push_back(L"editor");
    return hasEditor ? this : nullptr;
  }
  host::AcEdPrompts& prompts() override { std::abort(); }  // the shell asks nothing
  host::AcEdMenu& menus() override { return *this; }
  host::HostUi& ui() override { return *this; }
  host::HostSystem& system() override { return *this; }
  host::Registry& registry() override { return *this; }
  host::CAcFdUiFieldManager* fieldManager() override { return this; }
  host::ExcelAutomation* excel() override { return nullptr; }
  std::wstring program() const override {
    log_.push_back(L"program");
    return programName;
  }
  int command(const std::vector<std::wstring>& arguments) override {
    std::wstring line = L"command";
    for (const auto& a : arguments) line += L" " + a;
    log_.push_back(line);
    if (arguments.size() == 2 && core::equalsNoCase(arguments[0], L"_.menuload") && files.count(arguments[1]))
      loadedGroups.insert(L"CORVANE");
    return host::RTNORM;
  }
  int queueExpr(std::wstring_view expression) override {
    log_.push_back(L"queueExpr " + std::wstring(expression));
    return host::RTNORM;
  }
  bool hasCurrentDocument() const override {
    log_.push_back(L"hasCurrentDocument");
    return document;
  }
  host::Acad::ErrorStatus sendStringToExecute(std::wstring_view text, bool activate, bool wrapUp, bool echo) override {
    log_.push_back(core::format(L"sendStringToExecute %s %d %d %d", core::replaceAll(text, L"\n", L"\\n"),
                                activate ? 1 : 0, wrapUp ? 1 : 0, echo ? 1 : 0));
    return host::Acad::eOk;
  }
  host::Acad::ErrorStatus addDatabaseReactor(host::AcDbDatabase* db, host::AcDbDatabaseReactor*) override {
    log_.push_back(db ? L"addDatabaseReactor" : L"addDatabaseReactor null");
    return host::Acad::eOk;
  }
  host::Acad::ErrorStatus removeDatabaseReactor(host::AcDbDatabase*, host::AcDbDatabaseReactor*) override {
    log_.push_back(L"removeDatabaseReactor");
    return host::Acad::eOk;
  }

  // AcEdCommandStack
  host::Acad::ErrorStatus addCommand(std::wstring_view group, std::wstring_view globalName,
                                     std::wstring_view localName, int flags, host::AcRxFunction function) override {
    log_.push_back(core::format(L"addCommand %s %s %s %d", group, globalName, localName, flags));
    commands.push_back({std::wstring(localName), std::move(function)});
    return host::Acad::eOk;
  }
  host::Acad::ErrorStatus removeGroup(std::wstring_view group) override {
    log_.push_back(L"removeGroup " + std::wstring(group));
    commands.clear();
    return host::Acad::eOk;
  }
  bool hasCommand(std::wstring_view) const override { return false; }
  struct Registered {
    std::wstring localName;
    host::AcRxFunction function;
  };
  std::vector<Registered> commands;
  // Runs a registered command by its local name.
  bool run(std::wstring_view localName) {
    for (auto& c : commands) {
      if (core::equalsNoCase(c.localName, localName)) {
        c.function();
        return true;
      }
    }
    return false;
  }

  // AcEditor
  void addReactor(host::AcEditorReactor*) override { log_.push_back(L"addEditorReactor"); }
  void removeReactor(host::AcEditorReactor*) override { log_.push_back(L"removeEditorReactor"); }

  // AcEdMenu
  bool isMenuGroupLoaded(std::wstring_view group) const override {
    log_.push_back(L"isMenuGroupLoaded " + std::wstring(group));
    return loadedGroups.count(core::toUpper(group)) > 0;
  }
  int menuCmd(std::wstring_view command) override {
    log_.push_back(L"menuCmd " + std::wstring(command));
    int n = 0;
    if (std::swscanf(std::wstring(command).c_str(), L"P%d.1=?", &n) == 1 && command.back() == L'?')
      return n >= 1 && n <= pullDowns ? host::RTKWORD : host::RTERROR;
    return host::RTNORM;
  }

  // HostUi
  int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) override {
    log_.push_back(core::format(L"messageBox %s|%s|%u", caption, text, flags));
    return host::IDOK;
  }
  int setStatusBarProgressMeter(std::wstring_view, int, int) override { return 0; }
  int setStatusBarProgressMeterPos(int) override { return 0; }
  void restoreStatusBar() override {}

  // HostSystem
  std::wstring moduleFileName() const override {
    log_.push_back(L"moduleFileName");
    return module;
  }
  bool fileExists(std::wstring_view path) const override {
    log_.push_back(L"fileExists " + std::wstring(path));
    return files.count(std::wstring(path)) > 0;
  }
  FileStatus fileStatus(std::wstring_view path) const override {
    return {files.count(std::wstring(path)) ? FileKind::kFile : FileKind::kMissing, std::nullopt};
  }
  bool readFile(std::wstring_view, std::string& bytes, std::wstring& reason) const override {
    bytes.clear();
    reason = L"The shell's host reads no files.";
    return false;
  }
  int systemDefaultLangId() const override { return language; }
  std::uintptr_t setTimer(unsigned periodMs, TimerCallback callback) override {
    log_.push_back(core::format(L"setTimer %u", periodMs));
    timer = std::move(callback);
    return 7;
  }
  bool killTimer(std::uintptr_t id) override {
    // The callback may be the one running: it stays, and only the log tells.
    log_.push_back(core::format(L"killTimer %u", static_cast<unsigned>(id)));
    return true;
  }
  std::intptr_t shellExecute(std::wstring_view verb, std::wstring_view file, int show) override {
    log_.push_back(core::format(L"shellExecute %s %s %d", verb, file, show));
    return 42;
  }
  TimerCallback timer;

  // Registry: nothing is stored; the calls are what matter.
  host::RegStatus openKey(host::RegistryHive, std::wstring_view path, bool) override {
    log_.push_back(L"openKey " + std::wstring(path));
    return host::RegStatus::kSuccess;
  }
  host::RegStatus queryValue(host::RegistryHive, std::wstring_view, std::wstring_view name, host::RegValue&) override {
    log_.push_back(L"queryValue " + std::wstring(name));
    return host::RegStatus::kFileNotFound;
  }
  host::RegStatus setValue(host::RegistryHive, std::wstring_view, std::wstring_view name,
                           const host::RegValue&) override {
    log_.push_back(L"setValue " + std::wstring(name));
    return host::RegStatus::kSuccess;
  }
  host::RegStatus deleteValue(host::RegistryHive, std::wstring_view, std::wstring_view) override {
    return host::RegStatus::kFileNotFound;
  }
  host::RegStatus deleteKey(host::RegistryHive, std::wstring_view) override { return host::RegStatus::kFileNotFound; }
  host::RegStatus enumValues(host::RegistryHive, std::wstring_view, std::vector<std::wstring>&) override {
    return host::RegStatus::kFileNotFound;
  }
  host::RegStatus enumKeys(host::RegistryHive, std::wstring_view, std::vector<std::wstring>&) override {
    return host::RegStatus::kFileNotFound;
  }

  // CAcFdUiFieldManager
  bool RegisterFieldDialogHook(host::CAcFdUiFieldDialogHook*) override {
    log_.push_back(L"RegisterFieldDialogHook");
    return true;
  }
  bool UnregisterFieldDialogHook(host::CAcFdUiFieldDialogHook*) override {
    log_.push_back(L"UnregisterFieldDialogHook");
    return true;
  }
  int InvokeFieldDialog(host::AcDbDatabase*, host::CAcFdUiFieldDialogHook::FieldHolder& field) override {
    log_.push_back(L"InvokeFieldDialog");
    field.reset();
    return host::IDCANCEL;
  }

 private:
  Log& log_;
};

}  // namespace corvane::testing
