// The option pages of the linked fields and the defined-object list, worked as a user works
// them, with the headless editor showing their message boxes and a script answering them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/text.h"
#include "plugin/linked/asdkdefinedobjectoptiondialog.h"
#include "plugin/linked/asdkexcelrangeoptiondialog.h"
#include "plugin/linked/asdktextfilefieldoptiondialog.h"
#include "plugin/linked/cdefineobjectdialog.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/support/corvanesettings.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

using testing::ScratchFolder;

struct Rig : testing::EditorSession {
  LinkedSources sources{host, session};
  CRegistry registry{&session.registry()};

  // `drawing` empty: a drawing never saved.
  explicit Rig(std::wstring_view script = L"", const std::string& drawing = "plans/site/plan.dxf")
      : EditorSession(script) {
    if (!drawing.empty()) {
      ScratchFolder::write(folder / drawing, "0\nEOF\n");
      db.setFilename((folder / drawing).wstring());
    }
    registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
  }
  std::wstring path(const std::string& name) const { return (folder / name).wstring(); }
  // The boxes shown so far as "caption: text", and forgotten.
  std::vector<std::wstring> boxes() {
    std::vector<std::wstring> shown;
    for (const auto& box : session.terminalUi().boxes()) shown.push_back(box.caption + L": " + box.text);
    return shown;
  }
};

TEST(AsdkExcelRangeOptionDialog, RefusesInTheDialogsOrderAndBuildsTheCode) {
  struct Case {
    const char* what;
    bool byName;
    const wchar_t* name;
    const wchar_t* worksheet;
    const wchar_t* workbook;
    const wchar_t* row;
    const wchar_t* column;
    std::wstring expected;  // the box, or the code built
  } const cases[] = {
      {"an empty name before all else", true, L"  ", L"", L"", L"", L"",
       L"Halvek Corvane: The cell name can't be empty."},
      {"no worksheet", false, L"", L"", L"", L"x", L"x", L"Halvek Corvane: The worksheet can't be empty."},
      {"no workbook", false, L"", L"Costs", L"", L"", L"", L"Halvek Corvane: The workbook can't be empty."},
      {"row zero", false, L"", L"Costs", L"C:\\b.xlsx", L"0", L"C", L"Corvane: Invalid row."},
      {"row with letters after digits", false, L"", L"Costs", L"C:\\b.xlsx", L"12a", L"C",
       L"Corvane: Invalid char in the row."},
      {"three letters", false, L"", L"Costs", L"C:\\b.xlsx", L"7", L"AAA", L"Corvane: Invalid column."},
      {"no column", false, L"", L"Costs", L"C:\\b.xlsx", L"7", L" ", L"Corvane: Invalid column."},
      {"a sign in the column", false, L"", L"Costs", L"C:\\b.xlsx", L"7", L"A-",
       L"Corvane: Invalid char in the column."},
      {"a column by number", false, L"", L"Costs", L"C:\\b.xlsx", L" 7 ", L"3",
       L"%<\\ExcelCell \"C:\\b.xlsx:Costs:$C$7\">%"},
      {"letters in lower case", false, L"", L"Costs", L"C:\\b.xlsx", L"12", L"ab",
       L"%<\\ExcelCell \"C:\\b.xlsx:Costs:$AB$12\">%"},
      {"a defined name", true, L" Total ", L"Costs", L"C:\\b.xlsx", L"", L"",
       L"%<\\ExcelCell \"C:\\b.xlsx:Costs:Total\">%"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Rig rig;
    AsdkExcelRangeOptionDialog dialog(rig.sources, rig.registry);
    dialog.byName = c.byName;
    dialog.cellName = c.name;
    dialog.worksheet = c.worksheet;
    dialog.workbook = c.workbook;
    dialog.row = c.row;
    dialog.column = c.column;
    const bool ok = dialog.OnOK();
    const auto boxes = rig.boxes();
    if (c.expected.rfind(L"%<", 0) == 0) {
      EXPECT_TRUE(ok);
      EXPECT_EQ(dialog.code(), c.expected);
      EXPECT_TRUE(boxes.empty());
      EXPECT_EQ(dialog.recentFiles()[0], c.workbook);
    } else {
      EXPECT_FALSE(ok);
      EXPECT_EQ(boxes, std::vector<std::wstring>{c.expected});
    }
  }
}

TEST(AsdkExcelRangeOptionDialog, WritesThePathAsItsTypeSaysAndReadsACodeBack) {
  Rig rig;
  ScratchFolder::write(rig.folder / "plans/books/costs.xlsx", "not read here");
  AsdkExcelRangeOptionDialog dialog(rig.sources, rig.registry);
  dialog.workbook = rig.path("plans/books/costs.xlsx");
  dialog.worksheet = L"Costs";
  dialog.column = L"B";
  dialog.row = L"2";
  dialog.midStart = 2;
  dialog.OnPathTypeChanged(kRelativePathType);
  ASSERT_TRUE(dialog.OnOK());
  EXPECT_EQ(dialog.code(), L"%<\\ExcelCell \"../books/costs.xlsx:Costs:$B$2\" \\MID(2,)>%");
  EXPECT_EQ(rig.registry.get(settings::kExcelFieldPathType), kRelativePathType);
  dialog.OnPathTypeChanged(kFileNameOnlyType);
  ASSERT_TRUE(dialog.OnOK());
  EXPECT_EQ(dialog.code(), L"%<\\ExcelCell \"costs.xlsx:Costs:$B$2\" \\MID(2,)>%");

  // A code read back fills the controls it came from.
  AsdkExcelRangeOptionDialog again(rig.sources, rig.registry);
  ASSERT_TRUE(again.SetFieldCode(L"\\ExcelCell \"C:\\Books\\a.xlsx:Sheet 1:$AB$12\" \\MID(3,4)"));
  EXPECT_EQ(again.workbook, L"C:\\Books\\a.xlsx");
  EXPECT_EQ(again.worksheet, L"Sheet 1");
  EXPECT_FALSE(again.byName);
  EXPECT_EQ(again.column + L"/" + again.row, L"AB/12");
  EXPECT_EQ(again.midStart * 10 + again.midLength, 34);
  ASSERT_TRUE(again.SetFieldCode(L"\\ExcelCell \"a.xlsx:S:Total\""));
  EXPECT_TRUE(again.byName);
  EXPECT_EQ(again.cellName, L"Total");
  EXPECT_EQ(again.pathType(), kRelativePathType);
  EXPECT_FALSE(again.SetFieldCode(L"\\ExcelCell "));
}

TEST(AsdkExcelRangeOptionDialog, RelativePathsNeedASavedDrawingAndACommonRoot) {
  {
    Rig unsaved(L"", "");
    AsdkExcelRangeOptionDialog dialog(unsaved.sources, unsaved.registry);
    unsaved.registry.write(settings::kExcelFieldPathType, kRelativePathType);
    EXPECT_FALSE(dialog.OnPathTypeChanged(kRelativePathType));
    EXPECT_EQ(dialog.pathType(), kFullPathType);
    // The refusal is no choice of the user's: the settings keep what they had.
    EXPECT_EQ(unsaved.registry.get(settings::kExcelFieldPathType), kRelativePathType);
    EXPECT_EQ(unsaved.boxes(), std::vector<std::wstring>{std::wstring(L"Halvek Corvane: ") + kSaveDrawingFirst});
  }
  Rig rig;
  AsdkExcelRangeOptionDialog dialog(rig.sources, rig.registry);
  dialog.workbook = L"D:\\elsewhere\\b.xlsx";
  dialog.worksheet = L"S";
  dialog.cellName = L"N";
  dialog.byName = true;
  dialog.OnPathTypeChanged(kRelativePathType);
  ASSERT_TRUE(dialog.OnOK());
  EXPECT_EQ(dialog.code(), L"%<\\ExcelCell \"D:\\elsewhere\\b.xlsx:S:N\">%");
  EXPECT_EQ(dialog.pathType(), kFullPathType);
  EXPECT_EQ(rig.boxes(), std::vector<std::wstring>{L"Halvek Corvane: Failed to create a relative path from " +
                                                   rig.path("plans/site/plan.dxf") + L" to D:\\elsewhere\\b.xlsx."});
  EXPECT_FALSE(dialog.OnBrowsed(rig.path("missing.xlsx")));
}

TEST(AsdkTextFileFieldOptionDialog, BuildsTheCodeAndOpensOnAnExistingField) {
  Rig rig;
  AsdkTextFileFieldOptionDialog dialog(rig.sources, rig.registry);
  dialog.OnBrowsed(rig.path("plans/notes/a.txt"));
  EXPECT_EQ(dialog.FieldCode(), L"%<\\TextField " + rig.path("plans/notes/a.txt") + L">%");
  dialog.OnPathTypeChanged(kRelativePathType);
  EXPECT_EQ(dialog.FieldCode(), L"%<\\TextField ../notes/a.txt>%");
  EXPECT_EQ(dialog.recentFiles()[0], rig.path("plans/notes/a.txt"));

  auto field = rig.host.newField();
  field->setFieldCode(L"%<\\TextField data/b.txt>%");
  field->setData(L"TextField Data", host::AcValue(L"\\TextField data/b.txt"));
  AsdkTextFileFieldOptionDialog opened(rig.sources, rig.registry);
  EXPECT_EQ(opened.Load(*field), host::AcDbField::kSuccess);
  EXPECT_EQ(opened.path, L"data/b.txt");
  EXPECT_EQ(opened.pathType(), kRelativePathType);
  field->setData(L"TextField Data", host::AcValue(std::int32_t{3}));
  EXPECT_EQ(opened.Load(*field), host::AcDbField::kInvalidCode);
}

TEST(CDefineObjectDialog, AddsRemovesAndMovesObjectsKeptInTheSettings) {
  Rig rig(L"[OK]\n[OK]\n[OK]\n[No]\n[Yes]\n[OK]\n[Yes]\n");
  const auto text =
      rig.db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 2.5, L"Plot 14"));
  const std::wstring handle = rig.host.handle(text).text();
  const std::wstring drawing = rig.path("plans/site/plan.dxf");
  // Another drawing's object, kept from an earlier session, sorts before this drawing's.
  rig.registry.writeString(settings::kDefinedObject, rig.path("a/other.dxf") + L"|2B|M Text", L"title");

  CDefineObjectDialog dialog(rig.sources, rig.registry);
  ASSERT_EQ(dialog.rows().size(), 1u);
  EXPECT_FALSE(dialog.Add(L"FFFF", L"nothing"));
  ASSERT_TRUE(dialog.Add(handle, L"the plot"));
  EXPECT_FALSE(dialog.Add(handle, L"again"));
  ASSERT_EQ(dialog.rows().size(), 2u);
  EXPECT_EQ(dialog.rows()[1].drawing + L"|" + dialog.rows()[1].type, drawing + L"|Text");
  EXPECT_EQ(rig.registry.getString(settings::kDefinedObject, drawing + L"|" + handle + L"|Text", L""), L"the plot");
  EXPECT_EQ(rig.boxes(), (std::vector<std::wstring>{L"Halvek Corvane: Invalid object handle.",
                                                    L"Halvek Corvane: An object you specified already exists."}));

  dialog.selected = -1;
  EXPECT_FALSE(dialog.Remove());
  dialog.selected = 0;
  EXPECT_FALSE(dialog.Remove());  // answered No
  EXPECT_EQ(dialog.rows().size(), 2u);
  EXPECT_TRUE(dialog.Remove());  // answered Yes
  EXPECT_EQ(ReadDefinedObjects(rig.registry).size(), 1u);

  EXPECT_FALSE(dialog.ReplaceFolder(L"", L"x"));
  EXPECT_TRUE(dialog.ReplaceFolder(rig.path("plans"), rig.path("archive/plans")));
  const auto moved = ReadDefinedObjects(rig.registry);
  ASSERT_EQ(moved.size(), 1u);
  EXPECT_EQ(moved[0].drawing, rig.path("archive/plans/site/plan.dxf"));
  EXPECT_EQ(moved[0].description, L"the plot");
}

TEST(AsdkDefinedObjectOptionDialog, OffersTheObjectsOfTheChosenDrawing) {
  Rig rig;
  ScratchFolder::write(rig.folder / "plans/site/survey.dxf", "0\nEOF\n");
  const std::wstring survey = rig.path("plans/site/survey.dxf");
  rig.registry.writeString(settings::kDefinedObject, survey + L"|1A0|Text", L"plot title");
  rig.registry.writeString(settings::kDefinedObject, rig.path("x.dxf") + L"|2|Text", L"elsewhere");
  AsdkDefinedObjectOptionDialog dialog(rig.sources, rig.registry);
  const auto refused = [&](const wchar_t* text) {
    EXPECT_FALSE(dialog.OnOK());
    EXPECT_EQ(rig.boxes().back(), std::wstring(L"Halvek Corvane: ") + text);
  };
  refused(L"The dwg file name is empty.");
  dialog.drawing = rig.path("none.dxf");
  refused(L"Invalid dwg file.");
  dialog.drawing = L"survey.dxf";  // beside the working drawing
  EXPECT_EQ(dialog.objectEntries(), std::vector<std::wstring>{L"1A0 - plot title"});
  refused(L"Invalid object.");
  dialog.object = 0;
  refused(L"Please select a property first.");
  dialog.property = AsdkDefinedObjectOptionDialog::kProperties[0];
  ASSERT_TRUE(dialog.OnOK());
  EXPECT_EQ(dialog.code(), L"%<\\AcDefinedObj " + survey + L"|1A0.Contents>%");
  dialog.OnPathTypeChanged(kRelativePathType);
  ASSERT_TRUE(dialog.OnOK());
  EXPECT_EQ(dialog.code(), L"%<\\AcDefinedObj ./survey.dxf|1A0.Contents>%");
}

TEST(DefinedObjectCommands, ListTheSessionsObjectsAndDefineOnTheCommandLine) {
  Rig rig(L"Corvane_List_DefObj_InSession\nCorvane_Define_Object\nAdd\nL\nthe plot\nList\n\n");
  rig.db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 2.5, L"Plot 14"));
  CCorvaneApp app(rig.host, rig.session);
  ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
  // What the session read: a time stamp in the user's format, one never set, one that is no date.
  auto& cache = app.linkedSources().definedObjects();
  cache.push_back({L"", L"1A0", L"C:\\a.dxf", L"Text", L"Plot 14", {CDefinedObjectTime::kValid, 46350.875}});
  cache.push_back({L"gate", L"2B", L"C:\\a.dxf", L"M Text", L"North gate", {}});
  cache.push_back(
      {L"", L"3C", L"C:\\b.dxf", L"Circle", L"Unsupported object and property.", {CDefinedObjectTime::kInvalid, 0.0}});
  rig.out.clear();
  EXPECT_EQ(rig.session.runScript(), 0);
  rig.session.unloadApplication(app);
  const std::wstring handle = rig.host.handle(rig.db.objectIds().back()).text();
  EXPECT_NE(rig.out.find(L"\nC:\\a.dxf, 11/24/2026 9:00:00 PM, 1A0, Text, Plot 14, ."
                         L"\nC:\\a.dxf, , 2B, M Text, North gate, gate."
                         L"\nC:\\b.dxf, Invalid DateTime, 3C, Circle, Unsupported object and property., ."),
            std::wstring::npos)
      << rig.out;
  EXPECT_NE(rig.out.find(L"\n1. " + rig.path("plans/site/plan.dxf") + L", " + handle + L", Text, the plot"),
            std::wstring::npos)
      << rig.out;
  EXPECT_EQ(ReadDefinedObjects(rig.registry).size(), 1u);
}

}  // namespace
}  // namespace corvane
