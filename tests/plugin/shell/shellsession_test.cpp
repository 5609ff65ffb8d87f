// The plug-in loaded into the headless editor, its commands run the way a user's script runs them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/db/database.h"
#include "headless/editor/session.h"
#include "headless/hostapplication.h"
#include "headless/settings/registryfile.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/scratchfolder.h"

namespace corvane {
namespace {

using testing::ScratchFolder;

struct Rig {
  ScratchFolder folder;
  headless::HostApplication host;
  headless::Database db{host};
  std::wstring out;
  std::vector<std::wstring> notices;
  headless::RegistryFile registry{folder / "config/registry.reg", [this](std::wstring_view t) { notices.emplace_back(t); }};
  headless::Session session;

  static headless::Session::Options options(Rig& rig, const wchar_t* program) {
    headless::Session::Options o;
    o.program = program;
    o.moduleFile = (rig.folder / "install/corvane").wstring();
    o.registry = &rig.registry;
    o.progress = nullptr;
    o.notice = [&rig](std::wstring_view t) { rig.notices.emplace_back(t); };
    return o;
  }
  // `files` are made in the module's folder first.
  Rig(std::wstring_view script, const wchar_t* program, std::vector<std::string> files)
      : session(host, headless::Script(script), prepare(*this, files, program)) {
    host.setOutput([this](std::wstring_view t) { out += t; });
    session.openDocument(&db);
  }
  static headless::Session::Options prepare(Rig& rig, const std::vector<std::string>& files, const wchar_t* program) {
    for (const auto& name : files) ScratchFolder::write(rig.folder / ("install/" + name), "x");
    return options(rig, program);
  }
  std::wstring install(const wchar_t* name) const { return (folder / "install").wstring() + L"\\" + name; }
};

std::wstring menuLoaded(const std::wstring& path) {
  return L"\nCommand: Corvane_LoadMenu\nCommand: _.menuload\nEnter name of customization file to load: " + path +
         L"\nCustomization file loaded. Customization group: Corvane";
}

TEST(ShellSession, LoadingThePluginLoadsItsMenu) {
  const std::wstring saysWhatToDo =
      L"\nCommand: Corvane_LoadMenu\nFailed to load the menu and toolbar of Corvane. Please load Corvane.cuix "
      L"from the installation folder of Corvane manually.";
  struct Case {
    const char* what;
    const wchar_t* program;
    std::vector<std::string> files;
    bool loaded;
    std::wstring printed;  // when the menu is not loaded
  } const cases[] = {
      {"full host: an expression queued for idle time", L"acad", {"Corvane.cuix"}, true, L""},
      {"light edition: the timer sends the command", L"acadlt", {"Corvane.cuix"}, true, L""},
      {"light edition with the marker file", L"acadlt", {"Corvane.cuix", "halvek.cfg"}, false, L""},
      {"light edition without a menu file", L"acadlt", {}, false, L""},
      {"full host without a menu file: the command says what to do", L"acad", {}, false, saysWhatToDo},
  };
  for (const auto& c : cases) {
    Rig rig(L"", c.program, c.files);
    CCorvaneApp app(rig.host, rig.session);
    ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
    EXPECT_EQ(rig.session.menuBar().isMenuGroupLoaded(L"Corvane"), c.loaded) << c.what;
    EXPECT_EQ(rig.out, c.loaded ? menuLoaded(rig.install(L"Corvane.cuix")) : c.printed) << c.what;
    EXPECT_EQ(rig.session.os().timerCount(), 0u) << c.what;
    EXPECT_EQ(app.menuTimerId(), 0u) << c.what;
    if (c.loaded) {
      const auto& bar = rig.session.menuBar().bar();
      ASSERT_EQ(bar.size(), 13u);
      EXPECT_EQ(bar[10].label, L"Corvane");  // before "Window" and "Help"
    }
  }
}

TEST(ShellSession, AScriptedSessionWithTheShellsCommands) {
  Rig rig(L"Corvane_Test\n_CORVANE_ABOUT\n[OK]\ncorvane_help\nCorvane_LoadMenu\nCorvane_Workbooks_Manager\neXit\n"
          L"Corvane_About\nNot_A_Command\n",
          L"acad", {"Corvane.cuix", "Corvane.chm"});
  CCorvaneApp app(rig.host, rig.session);
  rig.session.loadApplication(app);
  rig.out.clear();
  EXPECT_EQ(rig.session.runScript(), 1);
  const std::wstring about =
      L"** Halvek Corvane (Information) **\nCorvane 0.1.0\nLive fields for drawings: formulas, table "
      L"cells, areas, lengths, block counts, Excel cells, text files and objects of other drawings."
      L"\n\nhttps://halvek.example/corvane/\n[OK] -> OK";
  EXPECT_EQ(rig.out, L"\nCommand: Corvane_Test\n6.687500\nCommand: _CORVANE_ABOUT\n" + about +
                         L"\nCommand: corvane_help\nCommand: Corvane_LoadMenu\nCommand: _.menuload\n"
                         L"Enter name of customization file to load: " + rig.install(L"Corvane.cuix") +
                         L"\nThe customization group \"Corvane\" is already loaded."
                         L"\nCommand: Corvane_Workbooks_Manager"
                         L"\nExcel cell fields: 0, selected: 0. [Select/Workbook/Sheet/Cell/Shift/Path/List/eXit] "
                         L"<eXit>: eXit"
                         L"\nCommand: Corvane_About\n" + about +
                         L" (default)\nCommand: Not_A_Command\nUnknown command \"NOT_A_COMMAND\".");
  // The menu stands on the bar once, however often it is loaded.
  EXPECT_EQ(rig.session.menuBar().bar().size(), 13u);
  ASSERT_EQ(rig.session.os().shellRequests().size(), 1u);
  EXPECT_EQ(rig.session.os().shellRequests()[0].file, rig.install(L"Corvane.chm"));
  EXPECT_TRUE(rig.session.os().shellRequests()[0].found);
  ASSERT_EQ(rig.session.terminalUi().boxes().size(), 2u);
  EXPECT_TRUE(rig.session.terminalUi().boxes()[0].answeredByScript);
}

TEST(ShellSession, ReactorsFollowTableEditingCommands) {
  Rig rig(L"^C\n", L"acad", {});
  CCorvaneApp app(rig.host, rig.session);
  rig.session.loadApplication(app);
  EXPECT_EQ(rig.session.editorReactors().size(), 1u);
  ASSERT_EQ(rig.session.databaseReactors(&rig.db).size(), 1u);
  auto& state = app.reactorState();
  bool seenDuring = false;
  rig.session.commandStack().addCommand(L"HOST", L"_TABLEDIT", L"TABLEDIT", 0, [&] {
    seenDuring = state.tableEditInProgress;
    host::AcGePoint3d p;
    rig.session.prompts().getPoint(nullptr, L"\nPick a cell: ", p);  // the script cancels it
  });
  rig.session.commandStack().addCommand(L"HOST", L"_OTHER", L"OTHER", 0, [&] { seenDuring = state.tableEditInProgress; });

  state.copyMap[L"1F"] = L"2A";
  rig.session.runCommand(L"tabledit");
  EXPECT_TRUE(seenDuring);
  EXPECT_TRUE(state.copyMap.empty());  // emptied as every command starts
  EXPECT_FALSE(state.tableEditInProgress);  // the cancelled command ended it
  rig.session.runCommand(L"OTHER");
  EXPECT_FALSE(seenDuring);

  // Unloading takes the commands and the editor reactor away.
  rig.session.unloadApplication(app);
  EXPECT_TRUE(rig.session.editorReactors().empty());
  EXPECT_FALSE(rig.session.commandStack().hasCommand(L"Corvane_Test"));
  EXPECT_TRUE(rig.session.commandStack().hasCommand(L"OTHER"));
}

TEST(ShellSession, SettingsLiveInTheRegistryFile) {
  Rig rig(L"", L"acad", {});
  {
    CCorvaneApp app(rig.host, rig.session);
    EXPECT_FALSE(app.registry().write(settings::kExportFieldMoveDirection, 1));  // not set up before the message
    rig.session.loadApplication(app);
    EXPECT_FALSE(std::filesystem::exists(rig.folder / "config/registry.reg"));  // nothing made at start-up
    ASSERT_TRUE(app.registry().write(settings::kExportFieldMoveDirection, 1));
    rig.session.unloadApplication(app);
  }
  EXPECT_EQ(ScratchFolder::read(rig.folder / "config/registry.reg"),
            "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n"
            "\"ExportFieldMoveDirection\"=dword:00000001\n");
  EXPECT_EQ(rig.session.fieldDialogs().hooks().size(), 0u);  // the module went, its hook with it
}

}  // namespace
}  // namespace corvane
