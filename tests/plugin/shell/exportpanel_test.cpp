// The export button's panel in the field dialog: there only while the export command shows the
// dialog, pressed from the script as EXPORT, and each press puts the field the dialog shows into
// the active cell of the user's Excel.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/printf.h"
#include "core/utf8.h"
#include "headless/db/line.h"
#include "headless/db/text.h"
#include "headless/editor/fielddialog.h"
#include "headless/editor/fieldplacement.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/workflows/cexportfieldbuttondialog.h"
#include "support/editorsession.h"
#include "xlsx/bookapplication.h"
#include "xlsx/bookautomation.h"

namespace corvane {
namespace {

using Hook = AsdkCustomOptionDialogHook;

// The user's Excel, counting how often a command looks for it.
struct CountingExcel : xlsx::BookAutomation {
  int looked = 0;
  host::ExcelResult<std::shared_ptr<host::ExcelApplication>> activeObject() override {
    ++looked;
    return BookAutomation::activeObject();
  }
};

// A drawing open in the editor with the plug-in loaded, and the user's Excel beside it.
struct Rig : testing::EditorSession {
  CountingExcel excel;
  CCorvaneApp app{host, session};
  std::shared_ptr<host::ExcelWorkbook> book;

  explicit Rig(bool saved = true) {
    if (saved) db.setFilename(path("site.dxf"));
    session.setExcel(&excel);
    EXPECT_EQ(session.loadApplication(app), host::AcRx::kRetOK);
  }
  ~Rig() { session.unloadApplication(app); }
  std::wstring path(const std::string& name) const { return core::fromUtf8((folder / name).string()); }
  void openBook() {
    book = *excel.start().addWorkbook();
    ASSERT_TRUE(book->saveAs(path("book.xlsx")));
  }
  std::shared_ptr<host::ExcelRange> cell(const wchar_t* address) { return *book->activeSheet()->range(address); }
  std::wstring activeCell() { return excel.start().activeCell()->address(); }
  Hook& hook() { return *app.dialogHook(); }
  std::vector<std::wstring> boxTexts() {
    std::vector<std::wstring> texts;
    for (const auto& box : session.terminalUi().boxes()) texts.push_back(box.text);
    return texts;
  }
};

TEST(ExportPanel, IsInTheDialogOnlyWhileTheExportRuns) {
  Rig rig;
  const host::AcDbObjectId text =
      rig.db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 0.2, L"old"));
  const headless::FieldPlace place =
      *headless::findFieldPlace(rig.db, rig.db.get<headless::Text>(text)->handle().text()).place;
  headless::FieldDialog dialog(rig.host, rig.session.fieldDialogs(), rig.session.editorPrompts(),
                               [&](std::wstring_view t) { rig.out += t; });
  struct Case {
    const char* what;
    bool running;
  } const cases[] = {{"the FIELD command on its own", false},
                     {"the export command showing the dialog", true},
                     {"FIELD again once the export is over", false}};
  for (const auto& c : cases) {
    rig.hook().setExportFieldsRunning(c.running);
    dialog.open(place);
    if (!c.running) {
      EXPECT_TRUE(dialog.panels().empty()) << c.what;
      EXPECT_EQ(rig.hook().exportPanel(), nullptr) << c.what;
    } else {
      ASSERT_EQ(dialog.panels().size(), 1u) << c.what;
      const auto& panel = dialog.panels().front();
      EXPECT_EQ(panel.panel->GetTemplateName(), std::wstring(L"IDD_DIALOG_QUORVAUI_EXPORT_FIELD"));
      EXPECT_EQ(panel.left, 12);
      EXPECT_EQ(panel.aboveBottom, 33);
      EXPECT_NE(rig.hook().exportPanel(), nullptr);
    }
    // Without the panel the button is no control at all; with it the press needs a field.
    rig.out.clear();
    dialog.handle(L"NAME VX Formula");
    dialog.handle(L"EXPORT");
    EXPECT_EQ(rig.out.find(L"The page has no control EXPORT.") != std::wstring::npos, !c.running) << c.what;
    dialog.close(host::IDCANCEL);
    EXPECT_TRUE(dialog.panels().empty()) << c.what;
    EXPECT_EQ(rig.hook().exportPanel(), nullptr) << c.what << ": released with the dialog";
  }
}

TEST(ExportPanel, TheExportCommandExportsEachFieldSetUpInTheDialog) {
  Rig rig;
  rig.openBook();
  rig.cell(L"B2")->select();
  const host::AcDbObjectId line = rig.db.appendEntity(
      std::make_unique<headless::Line>(headless::Line::Point{1, 1, 0}, headless::Line::Point{4, 5, 0}));
  // Not picked: a length of all objects would count it too.
  rig.db.appendEntity(
      std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{10, 0, 0}));
  const std::wstring handle = rig.host.handle(line).text();
  rig.session.script().append(
      L"Dialog\nNAME VX Formula\nEXPRESSION 6*7\nEXPORT\nNAME VX Objects Length\nADD\n"
      L"(handent \"" +
      handle + L"\")\n\nEXPORT\nCANCEL\n");
  rig.session.runCommand(L"Corvane_Export_Fields_to_Excel");
  EXPECT_TRUE(rig.session.script().empty()) << rig.out;
  EXPECT_FALSE(rig.hook().exportFieldsRunning()) << "the flag is down once the dialog closed";

  EXPECT_EQ(*rig.cell(L"B2")->text(), L"42") << rig.out;
  EXPECT_EQ(*rig.cell(L"B3")->text(), L"5") << rig.out;
  EXPECT_EQ(rig.activeCell(), L"$B$4");
  const std::wstring drawing = rig.path("site.dxf");
  EXPECT_EQ(*rig.cell(L"B2")->comment(), drawing + L"|%<\\VxExpr (6*7)>%");
  const std::optional<std::wstring> lengthNote = *rig.cell(L"B3")->comment();
  ASSERT_TRUE(lengthNote);
  EXPECT_TRUE(lengthNote->starts_with(drawing + L"|%<\\AcLength ")) << *lengthNote;
  EXPECT_NE(lengthNote->find(handle), std::wstring::npos) << *lengthNote << ": the line is named by its handle";
  EXPECT_NE(rig.out.find(L"Successfully export %<\\VxExpr (6*7)>% to book.xlsx[Sheet1]:$B$2."), std::wstring::npos)
      << rig.out;

  // The next FIELD shows no export button.
  rig.session.script().append(L"x\n");
  rig.out.clear();
  rig.session.runCommand(L"FIELD");
  EXPECT_EQ(rig.out.find(L"/Export/"), std::wstring::npos) << rig.out;
}

TEST(ExportPanel, AnUnsavedDrawingIsRefusedBeforeExcelIsLookedFor) {
  Rig rig(/*saved=*/false);
  rig.session.script().append(L"Dialog\nNAME VX Formula\nEXPRESSION (6*7)\nEXPORT\nCANCEL\n");
  rig.session.runCommand(L"Corvane_Export_Fields_to_Excel");
  EXPECT_EQ(rig.boxTexts(), std::vector<std::wstring>{L"You must save the drawing before exporting the field."});
  EXPECT_EQ(rig.excel.looked, 0);
  EXPECT_FALSE(rig.excel.running());
}

}  // namespace
}  // namespace corvane
