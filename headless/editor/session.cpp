#include "headless/editor/session.h"

#include <algorithm>
#include <exception>

#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "headless/db/database.h"
#include "headless/editor/copycommand.h"
#include "headless/editor/fielddialog.h"
#include "host/acdbtable.h"
#include "headless/hostapplication.h"
#include "headless/settings/registryfile.h"
#include "host/acdbobject.h"

namespace corvane::headless {

using host::Acad;

namespace {

// Expressions and sent text may queue more of the same; the host stops somewhere.
constexpr int kMaxIdleRounds = 64;

constexpr const wchar_t* kBuiltins[] = {L"MENULOAD", L"MENUUNLOAD", L"TABLEDIT", L"EDITTABLECELL",
                                        L"COPY",     L"COPYTOLAYOUT", L"FIELD"};

// The quoted texts of "(command "NAME" "ARG" ...)"; nullopt for any other expression.
std::optional<std::vector<std::wstring>> commandCall(std::wstring_view expression) {
  expression = core::trimmed(expression);
  if (expression.size() < 2 || expression.front() != L'(' || expression.back() != L')') return std::nullopt;
  std::wstring_view inner = expression.substr(1, expression.size() - 2);
  if (!core::startsWithNoCase(inner, L"command") || inner.size() == 7 || !core::isSpace(inner[7])) return std::nullopt;
  inner.remove_prefix(7);
  std::vector<std::wstring> items;
  std::size_t pos = 0;
  while (true) {
    while (pos < inner.size() && core::isSpace(inner[pos])) ++pos;
    if (pos == inner.size()) break;
    if (inner[pos] != L'"') return std::nullopt;
    std::wstring item;
    for (++pos; pos < inner.size() && inner[pos] != L'"'; ++pos) {
      if (inner[pos] == L'\\' && pos + 1 < inner.size()) ++pos;
      item.push_back(inner[pos]);
    }
    if (pos == inner.size()) return std::nullopt;
    ++pos;
    items.push_back(std::move(item));
  }
  if (items.empty()) return std::nullopt;
  return items;
}

}  // namespace

Session::Session(HostApplication& host, Script script, Options options)
    : host_(host),
      options_(std::move(options)),
      script_(std::move(script)),
      registry_(options_.registry),
      prompts_(script_, host_, [this](std::wstring_view text) { print(text); }),
      os_(options_.moduleFile, options_.notice),
      ui_(script_, [this](std::wstring_view text) { print(text); }, options_.progress, options_.progressIsTerminal),
      fieldDialogs_(host_, prompts_, [this](std::wstring_view text) { print(text); }) {
  if (!registry_) {
    ownRegistry_ = std::make_unique<RegistryFile>(RegistryFile::defaultPath(), options_.notice);
    registry_ = ownRegistry_.get();
  }
}

Session::~Session() = default;

void Session::print(std::wstring_view text) { host_.print(text); }

bool Session::hasCurrentDocument() const { return host_.workingDatabase() != nullptr; }

void Session::addReactor(host::AcEditorReactor* reactor) {
  if (reactor && std::find(reactors_.begin(), reactors_.end(), reactor) == reactors_.end())
    reactors_.push_back(reactor);
}

void Session::removeReactor(host::AcEditorReactor* reactor) {
  reactors_.erase(std::remove(reactors_.begin(), reactors_.end(), reactor), reactors_.end());
}

Acad::ErrorStatus Session::addDatabaseReactor(host::AcDbDatabase* db, host::AcDbDatabaseReactor* reactor) {
  if (!db) return Acad::eNoDatabase;
  if (!reactor) return Acad::eNullPtr;
  auto& list = databaseReactors_[db];
  if (std::find(list.begin(), list.end(), reactor) == list.end()) list.push_back(reactor);
  return Acad::eOk;
}

Acad::ErrorStatus Session::removeDatabaseReactor(host::AcDbDatabase* db, host::AcDbDatabaseReactor* reactor) {
  const auto it = databaseReactors_.find(db);
  if (it == databaseReactors_.end()) return Acad::eKeyNotFound;
  auto& list = it->second;
  const auto found = std::find(list.begin(), list.end(), reactor);
  if (found == list.end()) return Acad::eKeyNotFound;
  list.erase(found);
  return Acad::eOk;
}

std::vector<host::AcDbDatabaseReactor*> Session::databaseReactors(const host::AcDbDatabase* db) const {
  const auto it = databaseReactors_.find(db);
  return it == databaseReactors_.end() ? std::vector<host::AcDbDatabaseReactor*>() : it->second;
}

void Session::notifyObjectModified(const host::AcDbObject& object) {
  const host::AcDbDatabase* db = object.database();
  for (auto* reactor : databaseReactors(db)) reactor->objectModified(db, &object);
}

host::AcRx::AppRetCode Session::loadApplication(host::AcRxArxApp& app) {
  const auto result = app.acrxEntryPoint(host::AcRx::kInitAppMsg);
  if (result != host::AcRx::kRetOK) return result;
  apps_.push_back(&app);
  if (hasCurrentDocument()) app.acrxEntryPoint(host::AcRx::kLoadDwgMsg);
  idle();
  return result;
}

host::AcRx::AppRetCode Session::unloadApplication(host::AcRxArxApp& app) {
  const auto it = std::find(apps_.begin(), apps_.end(), &app);
  if (it == apps_.end()) return host::AcRx::kRetError;
  apps_.erase(it);
  return app.acrxEntryPoint(host::AcRx::kUnloadAppMsg);
}

void Session::openDocument(Database* db) {
  host_.setWorkingDatabase(db);
  if (!db) return;
  for (auto* app : std::vector<host::AcRxArxApp*>(apps_)) app->acrxEntryPoint(host::AcRx::kLoadDwgMsg);
}

bool Session::builtin(std::wstring_view name) const {
  const std::wstring_view bare = CommandStack::bareName(name);
  return std::any_of(std::begin(kBuiltins), std::end(kBuiltins),
                     [bare](const wchar_t* b) { return core::equalsNoCase(bare, b); });
}

Session::Outcome Session::execute(std::wstring_view typed) {
  print(core::format(L"\nCommand: %s", typed));
  const std::wstring_view marks = typed.substr(0, typed.size() - CommandStack::bareName(typed).size());
  // "." asks for the host's own command even where a plug-in defines one of the same name.
  const bool preferBuiltin = marks.find(L'.') != std::wstring_view::npos && builtin(typed);
  const CommandStack::Command* command = preferBuiltin ? nullptr : commands_.lookup(typed);
  if (!command && !builtin(typed)) {
    print(core::format(L"\nUnknown command \"%s\".", core::toUpper(CommandStack::bareName(typed))));
    return Outcome::kUnknown;
  }
  const std::wstring name =
      core::toUpper(CommandStack::bareName(command ? std::wstring_view(command->globalName) : typed));
  // The function is copied: the command may remove its own group.
  const host::AcRxFunction function = command ? command->function : host::AcRxFunction();

  for (auto* reactor : std::vector<host::AcEditorReactor*>(reactors_)) reactor->commandWillStart(name.c_str());
  const bool outerCancelled = prompts_.cancelled();
  prompts_.setCancelled(false);
  bool failed = false;
  try {
    if (function) {
      function();
    } else {
      runBuiltin(name);
    }
  } catch (const std::exception& e) {
    print(core::format(L"\n; error: %s", core::fromUtf8(e.what())));
    failed = true;
  } catch (...) {
    print(L"\n; error: the command stopped with an unknown exception");
    failed = true;
  }
  const bool cancelled = prompts_.cancelled();
  prompts_.setCancelled(outerCancelled);
  if (failed) ++failures_;

  const auto reactors = reactors_;
  for (auto* reactor : reactors) {
    if (failed) {
      reactor->commandFailed(name.c_str());
    } else if (cancelled) {
      reactor->commandCancelled(name.c_str());
    } else {
      reactor->commandEnded(name.c_str());
    }
  }
  return failed ? Outcome::kFailed : cancelled ? Outcome::kCancelled : Outcome::kEnded;
}

void Session::runBuiltin(std::wstring_view name) {
  std::wstring answer;
  if (core::equalsNoCase(name, L"MENULOAD")) {
    if (prompts_.getString(true, L"\nEnter name of customization file to load: ", answer) != host::RTNORM) return;
    if (!os_.fileExists(answer)) {
      print(core::format(L"\nCannot find the customization file \"%s\".", answer));
      return;
    }
    const std::wstring group = MenuBar::groupOfFile(answer);
    if (!menus_.loadGroup(group)) {
      print(core::format(L"\nThe customization group \"%s\" is already loaded.", group));
      return;
    }
    print(core::format(L"\nCustomization file loaded. Customization group: %s", group));
  } else if (core::equalsNoCase(name, L"MENUUNLOAD")) {
    if (prompts_.getString(true, L"\nEnter the name of the customization group to unload: ", answer) != host::RTNORM)
      return;
    if (!menus_.unloadGroup(answer)) {
      print(core::format(L"\nThe customization group \"%s\" is not loaded.", answer));
      return;
    }
    print(core::format(L"\nCustomization group %s unloaded.", answer));
  } else if (core::equalsNoCase(name, L"TABLEDIT") || core::equalsNoCase(name, L"EDITTABLECELL")) {
    editTableCell();
  } else if (core::equalsNoCase(name, L"COPY")) {
    copyObjects(*this);
  } else if (core::equalsNoCase(name, L"COPYTOLAYOUT")) {
    copyToLayout(*this);
  } else if (core::equalsNoCase(name, L"FIELD")) {
    FieldDialog dialog(host_, fieldDialogs_, prompts_, [this](std::wstring_view text) { print(text); });
    const host::AcDbObjectId changed = dialog.run();
    if (auto* object = changed.isNull() ? nullptr : dynamic_cast<Database*>(host_.workingDatabase())->lookup(changed))
      notifyObjectModified(*object);
  }
}

void Session::editTableCell() {
  // The table and its cell are picked, the cell selected for editing, its new text typed; the
  // table is changed as one modification, as the host's in-place editor changes it.
  host::AcDbObjectId picked;
  host::AcGePoint3d at;
  if (prompts_.entSel(L"\nSelect a table: ", picked, at) != host::RTNORM) return;
  host::AcDbObjectPointer<host::AcDbTable> table(host_, picked, host::AcDb::kForWrite);
  if (!table) {
    print(L"\nThe object is not a table.");
    return;
  }
  int row = 0, column = 0;
  if (prompts_.getInt(L"\nRow of the cell: ", row) != host::RTNORM ||
      prompts_.getInt(L"\nColumn of the cell: ", column) != host::RTNORM)
    return;
  if (row < 1 || column < 1 || row > table->numRows() || column > table->numColumns()) {
    print(core::format(L"\nThe table has no cell in row %d, column %d.", row, column));
    return;
  }
  std::wstring text;
  if (prompts_.getString(true, L"\nCell text: ", text) != host::RTNORM) return;
  table->setSubSelection(row - 1, row - 1, column - 1, column - 1);
  const host::Acad::ErrorStatus es = table->setValue(row - 1, column - 1, text, host::AcValueOptions::kConvertTextToValue | host::AcValueOptions::kParseTextForFieldCode);
  table->clearSubSelection();
  if (es != host::Acad::eOk) {
    print(core::format(L"\nThe cell cannot take the text: %s.", host::acadErrorStatusText(es)));
    return;
  }
  notifyObjectModified(*table.object());
}

int Session::command(const std::vector<std::wstring>& arguments) {
  if (arguments.empty() || arguments.front().empty()) return host::RTERROR;
  const int batch = script_.pushFront(std::vector<std::wstring>(arguments.begin() + 1, arguments.end()));
  const Outcome outcome = execute(arguments.front());
  script_.dropBatch(batch);  // answers the command did not ask for
  switch (outcome) {
    case Outcome::kEnded: return host::RTNORM;
    case Outcome::kCancelled: return host::RTCAN;
    default: return host::RTERROR;
  }
}

int Session::queueExpr(std::wstring_view expression) {
  if (core::equalsNoCase(options_.program, L"acadlt")) return host::RTERROR;
  queued_.emplace_back(expression);
  return host::RTNORM;
}

Acad::ErrorStatus Session::sendStringToExecute(std::wstring_view text, bool /*activate*/, bool /*wrapUpInactiveDoc*/,
                                               bool /*echo*/) {
  if (!hasCurrentDocument()) return Acad::eNoDatabase;
  Script lines(text);
  while (auto line = lines.next()) sent_.push_back(std::move(*line));
  return Acad::eOk;
}

void Session::evaluate(const std::wstring& expression) {
  const auto call = commandCall(expression);
  if (!call) {
    print(core::format(L"\n; error: this host evaluates (command ...) expressions only: %s", expression));
    return;
  }
  command(*call);
}

void Session::idle() {
  for (int round = 0; round < kMaxIdleRounds; ++round) {
    bool worked = false;
    while (!queued_.empty()) {
      const std::wstring expression = std::move(queued_.front());
      queued_.pop_front();
      evaluate(expression);
      worked = true;
    }
    if (round == 0) os_.fireTimers();
    if (!sent_.empty()) {
      // The sent lines are typed input: commands, and answers to their prompts.
      const int batch = script_.pushFront(std::vector<std::wstring>(sent_.begin(), sent_.end()));
      sent_.clear();
      while (script_.nextBatch() == batch) {
        const std::wstring line = core::trim(*script_.next());
        if (!line.empty() && !Script::isCancel(line)) execute(line);
      }
      worked = true;
    }
    if (!worked && queued_.empty() && sent_.empty()) break;
  }
}

Session::Outcome Session::runCommand(std::wstring_view typed) {
  const Outcome outcome = execute(core::trimmed(typed));
  idle();
  return outcome;
}

int Session::runScript() {
  int problems = 0;
  while (auto line = script_.next()) {
    const std::wstring typed = core::trim(*line);
    if (typed.empty() || Script::isCancel(typed)) continue;
    const Outcome outcome = runCommand(typed);
    if (outcome == Outcome::kUnknown || outcome == Outcome::kFailed) ++problems;
  }
  return problems;
}

}  // namespace corvane::headless
