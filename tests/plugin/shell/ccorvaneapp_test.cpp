#include "plugin/shell/ccorvaneapp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/table.h"
#include "headless/hostapplication.h"
#include "host/acdbtable.h"
#include "recordinghost.h"

namespace corvane {
namespace {

using testing::Log;
using testing::RecordingServices;
using testing::RecordingSession;

constexpr const wchar_t* kFolder = L"C:\\Program Files\\Halvek\\Corvane";
const std::wstring kMenu = std::wstring(kFolder) + L"\\Corvane.cuix";
const std::wstring kMarker = std::wstring(kFolder) + L"\\halvek.cfg";

// The plug-in in a recording host, with a drawing open.
struct Rig {
  Log log;
  RecordingServices services{log};
  headless::Database db{services};
  RecordingSession session{log};
  std::wstring printed;
  Rig() {
    services.setWorkingDatabase(&db);
    services.setOutput([this](std::wstring_view text) { printed += text; });
  }
  // The calls logged from the first one that starts with `from`, up to the end.
  Log from(const std::wstring& first) const {
    const auto it = std::find_if(log.begin(), log.end(), [&](const std::wstring& l) { return l.rfind(first, 0) == 0; });
    return Log(it, log.end());
  }
};

// The command table as the product documents it.
const wchar_t* const kLocalNames[] = {
    L"Corvane_Test",          L"Corvane_Insert_Fields_To_Drawings", L"Corvane_Multi_Cell_Fields",
    L"Corvane_Define_Object", L"Corvane_List_DefObj_InSession",     L"Corvane_Workbooks_Manager",
    L"Corvane_AutoFill_Formulas", L"Corvane_Update_Fields_In_Excel", L"Corvane_Export_Fields_to_Excel",
    L"Corvane_Website",       L"Corvane_About",                     L"Corvane_Support",
    L"Corvane_Faq",           L"Corvane_New",                       L"Corvane_Demo",
    L"Corvane_Help",          L"Corvane_Live_Update",               L"Corvane_LoadMenu",
};

TEST(CCorvaneApp, InitialisationTakesItsStepsInOrder) {
  Rig rig;
  CCorvaneApp app(rig.services, rig.session);
  EXPECT_TRUE(rig.log.empty());  // nothing happens before the host's message
  EXPECT_EQ(app.acrxEntryPoint(host::AcRx::kInitAppMsg), host::AcRx::kRetOK);

  Log expected;
  for (const wchar_t* name : kLocalNames) expected.push_back(core::format(L"addCommand Halvek _%s %s 0", name, name));
  const Log rest = {
      L"RegisterFieldDialogHook",
      L"moduleFileName",
      L"isMenuGroupLoaded Corvane",
      L"program",
      L"queueExpr (command \"Corvane_LoadMenu\")",
      L"editor",
      L"addEditorReactor",
      L"addDatabaseReactor",
      L"registerEvaluatorLoader",
      L"addFieldReactor",
  };
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(rig.log, expected);
  EXPECT_TRUE(app.fieldServicesRegistered());
  EXPECT_TRUE(app.commandsRegistered());
  EXPECT_EQ(app.moduleFolder(), kFolder);
  EXPECT_TRUE(app.registry().isSetUp());  // rooted, yet nothing made in the registry
  EXPECT_EQ(app.registry().keyPath(L"Corvane"), L"Software\\Halvek\\Corvane");
  ASSERT_NE(app.editorReactor(), nullptr);
  EXPECT_TRUE(app.editorReactor()->isAttached());
  EXPECT_NE(app.databaseReactor(), nullptr);
  EXPECT_EQ(app.menuTimerId(), 0u);
  EXPECT_EQ(rig.services.engine().loaderCount(), 1u);
  EXPECT_EQ(rig.services.engine().reactorCount(), 1u);
}

TEST(CCorvaneApp, MenuLoadingIsArrangedByEditionAndMarker) {
  struct Case {
    const char* what;
    const wchar_t* program;
    bool groupLoaded;
    bool menuFile;
    bool marker;
    Log expected;  // the calls between the module folder and the editor reactor
  } const cases[] = {
      {"full host", L"acad", false, true, false,
       {L"isMenuGroupLoaded Corvane", L"program", L"queueExpr (command \"Corvane_LoadMenu\")"}},
      {"full host, marker ignored", L"ACAD", false, true, true,
       {L"isMenuGroupLoaded Corvane", L"program", L"queueExpr (command \"Corvane_LoadMenu\")"}},
      {"light edition", L"acadlt", false, true, false,
       {L"isMenuGroupLoaded Corvane", L"program", L"fileExists " + kMenu, L"fileExists " + kMarker, L"setTimer 500"}},
      {"light edition, any case", L"AcadLT", false, true, false,
       {L"isMenuGroupLoaded Corvane", L"program", L"fileExists " + kMenu, L"fileExists " + kMarker, L"setTimer 500"}},
      {"light edition with the marker", L"acadlt", false, true, true,
       {L"isMenuGroupLoaded Corvane", L"program", L"fileExists " + kMenu, L"fileExists " + kMarker}},
      {"light edition without a menu file", L"acadlt", false, false, false,
       {L"isMenuGroupLoaded Corvane", L"program", L"fileExists " + kMenu}},
      {"menu loaded already", L"acad", true, true, false, {L"isMenuGroupLoaded Corvane"}},
      {"menu loaded already, light edition", L"acadlt", true, true, false, {L"isMenuGroupLoaded Corvane"}},
  };
  for (const auto& c : cases) {
    Rig rig;
    rig.session.programName = c.program;
    if (c.groupLoaded) rig.session.loadedGroups.insert(L"CORVANE");
    if (c.menuFile) rig.session.files.insert(kMenu);
    if (c.marker) rig.session.files.insert(kMarker);
    CCorvaneApp app(rig.services, rig.session);
    app.onInitialize();
    Log between = rig.from(L"isMenuGroupLoaded");
    between.erase(std::find(between.begin(), between.end(), L"editor"), between.end());
    EXPECT_EQ(between, c.expected) << c.what;
    const bool timer = !c.expected.empty() && c.expected.back() == L"setTimer 500";
    EXPECT_EQ(app.menuTimerId() != 0, timer) << c.what;
  }
}

TEST(CCorvaneApp, TheMenuTimerSendsTheMenuCommandOnceThereIsADocument) {
  Rig rig;
  rig.session.programName = L"acadlt";
  rig.session.files.insert(kMenu);
  rig.session.document = false;
  CCorvaneApp app(rig.services, rig.session);
  app.onInitialize();
  ASSERT_NE(app.menuTimerId(), 0u);
  ASSERT_TRUE(rig.session.timer);

  struct Tick {
    bool document;
    bool loaded;
    Log expected;
    bool running;  // afterwards
  } const ticks[] = {
      {false, false, {L"isMenuGroupLoaded Corvane", L"hasCurrentDocument"}, true},  // nothing yet: fires again
      {true, false,
       {L"isMenuGroupLoaded Corvane", L"hasCurrentDocument", L"sendStringToExecute Corvane_LoadMenu\\n 0 1 1",
        L"killTimer 7"},
       false},
  };
  for (const auto& tick : ticks) {
    rig.session.document = tick.document;
    if (tick.loaded) rig.session.loadedGroups.insert(L"CORVANE");
    rig.log.clear();
    rig.session.timer(app.menuTimerId());
    EXPECT_EQ(rig.log, tick.expected);
    EXPECT_EQ(app.menuTimerId() != 0, tick.running);
  }

  // A menu loaded by other means ends the timer without a command.
  Rig other;
  other.session.programName = L"acadlt";
  other.session.files.insert(kMenu);
  CCorvaneApp app2(other.services, other.session);
  app2.onInitialize();
  other.session.loadedGroups.insert(L"CORVANE");
  other.log.clear();
  other.session.timer(app2.menuTimerId());
  EXPECT_EQ(other.log, (Log{L"isMenuGroupLoaded Corvane", L"hasCurrentDocument", L"killTimer 7"}));
  EXPECT_EQ(app2.menuTimerId(), 0u);
}

TEST(CCorvaneApp, LoadMenuPutsTheMenuBeforeTheHostsLastTwo) {
  struct Case {
    int pullDowns;
    int position;
  } const cases[] = {
      {0, 1},  // n = 1
      {1, 2},  // n = 2: after the one there is
      {2, 1},  // n = 3: before both
      {3, 2},
      {12, 11},
  };
  for (const auto& c : cases) {
    Rig rig;
    rig.session.pullDowns = c.pullDowns;
    rig.session.files.insert(kMenu);
    CCorvaneApp app(rig.services, rig.session);
    app.onInitialize();
    rig.log.clear();
    ASSERT_TRUE(rig.session.run(L"Corvane_LoadMenu"));
    Log expected{L"fileExists " + kMenu, L"command _.menuload " + kMenu};
    for (int i = 1; i <= c.pullDowns + 1; ++i) expected.push_back(core::format(L"menuCmd P%d.1=?", i));
    expected.push_back(core::format(L"menuCmd P%d=+Corvane.pop1", c.position));
    expected.push_back(L"isMenuGroupLoaded Corvane");
    EXPECT_EQ(rig.log, expected) << c.pullDowns;
    EXPECT_EQ(rig.printed, L"") << c.pullDowns;
  }
}

TEST(CCorvaneApp, LoadMenuWithoutItsFileSaysSo) {
  struct Case {
    int language;
    const wchar_t* menu;
  } const cases[] = {
      {host::kLangEnglishUS, L"C:\\Program Files\\Halvek\\Corvane\\Corvane.cuix"},
      {host::kLangJapanese, L"C:\\Program Files\\Halvek\\Corvane\\Corvane.jp.cuix"},
  };
  for (const auto& c : cases) {
    Rig rig;
    rig.session.language = c.language;
    CCorvaneApp app(rig.services, rig.session);
    app.onInitialize();
    EXPECT_EQ(app.menuFilePath(), c.menu);
    rig.log.clear();
    ASSERT_TRUE(rig.session.run(L"Corvane_LoadMenu"));
    EXPECT_EQ(rig.log, (Log{std::wstring(L"fileExists ") + c.menu, L"isMenuGroupLoaded Corvane"}));
    EXPECT_EQ(rig.printed,
              L"\nFailed to load the menu and toolbar of Corvane. Please load Corvane.cuix from the installation "
              L"folder of Corvane manually.");
  }
}

TEST(CCorvaneApp, UnloadUndoesOnlyWhatInitialisationDid) {
  {
    Rig rig;
    CCorvaneApp app(rig.services, rig.session);
    EXPECT_EQ(app.acrxEntryPoint(host::AcRx::kUnloadAppMsg), host::AcRx::kRetOK);
    EXPECT_TRUE(rig.log.empty());
    EXPECT_FALSE(app.fieldServicesRegistered());
  }
  Rig rig;
  {
    CCorvaneApp app(rig.services, rig.session);
    app.onInitialize();
    rig.log.clear();
    app.onUnload();
    EXPECT_EQ(rig.log, (Log{L"removeGroup Halvek", L"editor", L"removeEditorReactor", L"unregisterEvaluatorLoader",
                            L"removeFieldReactor"}));
    EXPECT_EQ(app.editorReactor(), nullptr);
    EXPECT_FALSE(app.fieldServicesRegistered());
    EXPECT_EQ(rig.services.engine().loaderCount(), 0u);
    rig.log.clear();
    app.onUnload();  // twice: nothing left to undo
    EXPECT_TRUE(rig.log.empty());
    rig.log.clear();
  }
  // The module goes: the hook and the database reactor with it.
  EXPECT_EQ(rig.log, (Log{L"removeDatabaseReactor", L"UnregisterFieldDialogHook"}));
}

TEST(CCorvaneApp, WithoutAnEditorTheReactorStaysDetached) {
  Rig rig;
  rig.session.hasEditor = false;
  CCorvaneApp app(rig.services, rig.session);
  app.onInitialize();
  ASSERT_NE(app.editorReactor(), nullptr);
  EXPECT_FALSE(app.editorReactor()->isAttached());
  EXPECT_EQ(std::count(rig.log.begin(), rig.log.end(), L"addEditorReactor"), 0);
}

TEST(CCorvaneApp, DrawingLoadKeepsTheDrawingsName) {
  Rig rig;
  CCorvaneApp app(rig.services, rig.session);
  app.onInitialize();
  EXPECT_EQ(app.acrxEntryPoint(host::AcRx::kLoadDwgMsg), host::AcRx::kRetOK);
  EXPECT_EQ(app.currentDrawingName(), L"");  // never saved: nothing to keep
  rig.db.setFilename(L"C:\\Work\\site.dwg");
  app.acrxEntryPoint(host::AcRx::kLoadDwgMsg);
  EXPECT_EQ(app.currentDrawingName(), L"C:\\Work\\site.dwg");
  rig.db.setFilename(L"");
  app.acrxEntryPoint(host::AcRx::kLoadDwgMsg);
  EXPECT_EQ(app.currentDrawingName(), L"C:\\Work\\site.dwg");
}

TEST(CCorvaneApp, CommandTable) {
  const auto commands = CCorvaneApp::commands();
  ASSERT_EQ(commands.size(), std::size(kLocalNames));
  std::set<std::wstring> seen;
  for (std::size_t i = 0; i < commands.size(); ++i) {
    EXPECT_STREQ(commands[i].localName, kLocalNames[i]);
    EXPECT_EQ(std::wstring(commands[i].globalName), std::wstring(L"_") + commands[i].localName);
    EXPECT_TRUE(seen.insert(core::toUpper(commands[i].localName)).second) << commands[i].localName;
    EXPECT_NE(commands[i].action, nullptr);
  }
}

TEST(CCorvaneApp, CommandsOfTheShell) {
  struct Case {
    const wchar_t* command;
    std::wstring printed;
    std::wstring call;  // the host call it makes, if any
  } const cases[] = {
      {L"Corvane_Test", L"\n6.687500", L""},
      {L"Corvane_Help", L"", L"shellExecute open C:\\Program Files\\Halvek\\Corvane\\Corvane.chm 1"},
      // Without Excel there is nothing to take cells from.
      {L"Corvane_Multi_Cell_Fields", L"", L"messageBox Halvek Corvane|Please start Excel and open a workbook first.|64"},
      {L"Corvane_List_DefObj_InSession", L"", L""},  // nothing read in this session yet
  };
  for (const auto& c : cases) {
    Rig rig;
    CCorvaneApp app(rig.services, rig.session);
    app.onInitialize();
    rig.log.clear();
    ASSERT_TRUE(rig.session.run(c.command));
    EXPECT_EQ(rig.printed, c.printed) << c.command;
    EXPECT_EQ(rig.log, c.call.empty() ? Log{} : Log{c.call}) << c.command;
  }

  // The product's pages open in the browser, each its own.
  std::set<std::wstring> pages;
  for (const wchar_t* command : {L"Corvane_Website", L"Corvane_Support", L"Corvane_Faq", L"Corvane_New",
                                 L"Corvane_Demo", L"Corvane_Live_Update"}) {
    Rig rig;
    CCorvaneApp app(rig.services, rig.session);
    app.onInitialize();
    rig.log.clear();
    ASSERT_TRUE(rig.session.run(command));
    ASSERT_EQ(rig.log.size(), 1u) << command;
    EXPECT_EQ(rig.log[0].rfind(L"shellExecute open ", 0), 0u) << command;
    EXPECT_TRUE(rig.log[0].find(L"https://") != std::wstring::npos || rig.log[0].find(L"mailto:") != std::wstring::npos);
    pages.insert(rig.log[0]);
  }
  EXPECT_EQ(pages.size(), 6u);

  Rig rig;
  CCorvaneApp app(rig.services, rig.session);
  app.onInitialize();
  rig.log.clear();
  ASSERT_TRUE(rig.session.run(L"Corvane_About"));
  ASSERT_EQ(rig.log.size(), 1u);
  EXPECT_EQ(rig.log[0].rfind(L"messageBox Halvek Corvane|Corvane ", 0), 0u) << rig.log[0];
  EXPECT_EQ(rig.log[0].substr(rig.log[0].rfind(L'|')), L"|64");  // OK with the information icon
}

}  // namespace
}  // namespace corvane

namespace corvane {
namespace {

// A formula placed nowhere reads the cells of whichever table the dialog chose last.
TEST(CCorvaneApp, UnplacedFormulasReadTheDialogsTable) {
  headless::HostApplication host;
  headless::Database db(host);
  host.setWorkingDatabase(&db);
  CCorvaneApp app(host);
  app.onInitialize();
  const auto tableWith = [&](const wchar_t* a1) {
    const auto id = db.appendEntity(std::make_unique<headless::Table>(1, 1));
    host::AcDbObjectPointer<host::AcDbTable> table(host, id, host::AcDb::kForWrite);
    table->setValue(0, 0, a1, host::AcValueOptions::kConvertTextToValue);
    return id;
  };
  const auto first = tableWith(L"21");
  const auto second = tableWith(L"2.5");
  const auto field = headless::Field::create(db, L"%<\\VxExpr (A1*2)>%");
  const auto shown = [&] {
    host.engine().evaluateFields(&db, {field}, host::AcDbField::kDemand, nullptr);
    return db.get<headless::Field>(field)->getDisplayText();
  };
  struct Step {
    host::AcDbObjectId table;
    const wchar_t* display;
  } const steps[] = {{first, L"42"}, {second, L"5"}, {first, L"42"}};
  EXPECT_NE(shown(), L"42");  // no table chosen: A1 is no cell
  for (const auto& step : steps) {
    app.setDialogOwnerTable(step.table);
    EXPECT_EQ(shown(), step.display);
  }
  app.onUnload();
}

}  // namespace
}  // namespace corvane
