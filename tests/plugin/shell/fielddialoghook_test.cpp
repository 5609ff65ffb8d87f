// The dialog hook inside the host's field dialog: its pages while the dialog is open, the field
// it makes on OK and the page it fills from a field being edited. The dialog is the headless
// host's, over the plug-in loaded into an editor session.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <set>
#include <string>
#include <vector>

#include "core/textutil.h"
#include "core/utf8.h"
#include "headless/editor/fielddialog.h"
#include "headless/editor/fieldplacement.h"
#include "headless/editor/session.h"
#include "headless/settings/registryfile.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/scratchfolder.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using host::AcDbField;
using Hook = AsdkCustomOptionDialogHook;

struct Rig {
  testing::ScratchFolder folder;
  testing::TestDrawing d;
  headless::RegistryFile registry{folder / "registry.reg", [](std::wstring_view) {}};
  headless::Session session;
  CCorvaneApp app;
  headless::FieldDialog dialog;
  host::AcDbObjectId text;

  Rig()
      : session(d.host, headless::Script(), options()),
        app(d.host, session),
        dialog(d.host, session.fieldDialogs(), session.editorPrompts(), [](std::wstring_view) {}) {
    session.openDocument(&d.db);
    session.loadApplication(app);
    text = d.addText(L"placeholder");
  }
  ~Rig() { session.unloadApplication(app); }
  headless::Session::Options options() {
    headless::Session::Options o;
    o.registry = &registry;
    o.progress = nullptr;
    o.notice = [](std::wstring_view) {};
    return o;
  }
  Hook& hook() { return *app.dialogHook(); }
  void open() { dialog.open(*headless::findFieldPlace(d.db, d.db.get<headless::Text>(text)->handle().text()).place); }
  host::CAcFdUiFieldOptionDialog* page(unsigned id) {
    host::CAcFdUiFieldOptionDialog* page = nullptr;
    hook().GetOptionDialog(id, page);
    return page;
  }
  std::vector<std::wstring> boxTexts() {
    std::vector<std::wstring> texts;
    for (const auto& box : session.terminalUi().boxes()) texts.push_back(box.text);
    return texts;
  }
};

constexpr unsigned kAllIds[] = {Hook::kLengthId,    Hook::kAreaId,      Hook::kBlockCountId, Hook::kTextFileId,
                                Hook::kExcelCellId, Hook::kTableCellId, Hook::kFormulaId,    Hook::kDefinedObjectId};

TEST(FieldDialogHook, EachPageLivesFromBeginToEnd) {
  Rig rig;
  for (const unsigned id : kAllIds) EXPECT_EQ(rig.page(id), nullptr) << id << " before the dialog opens";

  rig.open();
  ASSERT_EQ(rig.hook().GetFieldDialog(), &rig.dialog);
  EXPECT_EQ(rig.hook().GetDatabase(), &rig.d.db);
  std::set<host::CAcFdUiFieldOptionDialog*> pages;
  for (const unsigned id : kAllIds) {
    EXPECT_NE(rig.page(id), nullptr) << id;
    pages.insert(rig.page(id));
  }
  EXPECT_EQ(pages.size(), 8u) << "one page of its own for each field";
  // Another id leaves what the dialog had.
  host::CAcFdUiFieldOptionDialog* other = rig.page(Hook::kLengthId);
  EXPECT_TRUE(rig.hook().GetOptionDialog(Hook::kCategoryId, other));
  EXPECT_EQ(other, rig.page(Hook::kLengthId));

  rig.app.reactorState().editedTableId = rig.text;
  rig.dialog.close(host::IDOK);
  for (const unsigned id : kAllIds) EXPECT_EQ(rig.page(id), nullptr) << id << " after the dialog closed";
  EXPECT_TRUE(rig.app.reactorState().editedTableId.isNull());
  EXPECT_EQ(rig.hook().GetFieldDialog(), nullptr);
}

TEST(FieldDialogHook, CreateFieldEvaluatesThePagesCodeOrSaysWhyNot) {
  const std::string notes = "Level 2 slab, pour on Friday";
  struct Case {
    const char* what;
    unsigned id;
    std::vector<std::pair<std::wstring, std::wstring>> controls;
    bool made;
    std::vector<std::wstring> boxes;
  } const cases[] = {
      {"a text file", Hook::kTextFileId, {{L"FILE", L"@notes"}}, true, {}},
      {"a circle's area", Hook::kAreaId, {}, true, {}},
      {"an evaluator nobody serves",
       Hook::kTextFileId,
       {{L"CODE", L"%<\\NoSuch 1>%"}},
       false,
       {Hook::kEvaluatorNotFound}},
      {"an empty code", Hook::kTextFileId, {{L"CODE", L""}}, false, {Hook::kInvalidFieldCode}},
      {"an area code that does not read",
       Hook::kAreaId,
       {{L"CODE", L"%<\\AcArea Object(<*MSPObjects*>) \\bogus>%"}},
       false,
       {Hook::kInvalidFieldCode}},
      {"an Excel page without a sheet: the page says why",
       Hook::kExcelCellId,
       {{L"WORKBOOK", L"book.xlsx"}},
       false,
       {L"The worksheet can't be empty."}},
      {"a formula", Hook::kFormulaId, {{L"EXPRESSION", L"=2*21"}}, true, {}},
      {"a table cell page with no cell picked", Hook::kTableCellId, {}, false, {Hook::kInvalidFieldCode}},
      {"an id of no field", 1, {}, false, {}},
  };
  for (const auto& c : cases) {
    Rig rig;
    testing::ScratchFolder::write(rig.folder / "notes.txt", notes);
    rig.d.addCircle(2.0);
    rig.open();
    if (auto* page = rig.page(c.id)) {
      for (const auto& [keyword, text] : c.controls) {
        std::wstring error;
        const std::wstring value = text == L"@notes" ? (rig.folder / "notes.txt").wstring() : text;
        ASSERT_TRUE(page->SetControl(keyword, value, error)) << c.what << ": " << core::toUtf8(error);
      }
    }
    Hook::FieldHolder made;
    EXPECT_EQ(rig.hook().CreateField(c.id, made), c.made) << c.what;
    EXPECT_EQ(made != nullptr, c.made) << c.what;
    EXPECT_EQ(rig.boxTexts(), c.boxes) << c.what;
    // After a refused evaluation the user is back in the field-code box.
    EXPECT_EQ(rig.dialog.codeBoxFocused(), !c.boxes.empty() && c.id != Hook::kExcelCellId) << c.what;
    if (!made) continue;
    EXPECT_EQ(made->evaluationOption(), AcDbField::kAutomatic) << c.what;
    EXPECT_EQ(made->evaluationStatus(), AcDbField::kSuccess) << c.what;
    host::AcValue value;
    ASSERT_EQ(made->getValue(value), host::Acad::eOk);
    if (c.id == Hook::kTextFileId) {
      EXPECT_EQ(made->getDisplayText(), core::fromUtf8(notes)) << c.what;
    } else if (c.id == Hook::kFormulaId) {
      EXPECT_EQ(made->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers), L"%<\\VxExpr (2*21)>%");
      EXPECT_EQ(made->getDisplayText(), L"42") << c.what;
    } else {
      double area = 0;
      ASSERT_TRUE(value.get(area)) << c.what;
      EXPECT_NEAR(area, 4 * std::numbers::pi, 1e-9) << c.what;
    }
  }
}

TEST(FieldDialogHook, EditingAFieldChoosesItsPageAndFillsIt) {
  struct Case {
    std::wstring code;
    unsigned id;  // 0: none of the hook's
    bool rebuildsItsCode;
  } const cases[] = {
      {L"%<\\AcLength Object(<*MSPObjects*>)>%", Hook::kLengthId, true},
      {L"%<\\acarea Object(<*MSPObjects*>)>%", Hook::kAreaId, false},  // the id in any case
      {L"%<\\AcArea Object(<*MSPObjects*>)>%", Hook::kAreaId, true},
      {L"%<\\AcBlockCount \"Door\">%", Hook::kBlockCountId, true},
      {L"%<\\TextField notes.txt>%", Hook::kTextFileId, true},
      {L"%<\\ExcelCell \"book.xlsx:Costs:$B$2\">%", Hook::kExcelCellId, true},
      {L"%<\\TableCell Table(<1F>).$A$1>%", Hook::kTableCellId, false},
      {L"%<\\VxExpr (1+2)>%", Hook::kFormulaId, false},
      {L"%<\\AcDefinedObj site.dxf|30.Contents>%", Hook::kDefinedObjectId, true},
      {L"%<\\AcVar LUNITS>%", 0, false},
  };
  for (const auto& c : cases) {
    Rig rig;
    const host::AcDbObjectId id = rig.d.addField(c.code);
    rig.d.host.engine().evaluateFields(&rig.d.db, {id}, AcDbField::kDemand);
    rig.open();
    EXPECT_EQ(rig.hook().SetFieldToEdit(&rig.d.field(id)), c.id != 0) << core::toUtf8(c.code);
    EXPECT_EQ(rig.dialog.GetCurrentFieldId(), c.id) << core::toUtf8(c.code);
    EXPECT_EQ(rig.dialog.GetCurrentOptionDialog(), c.id ? rig.page(c.id) : nullptr);
    if (!c.rebuildsItsCode) continue;
    auto* page = rig.dialog.GetCurrentOptionDialog();
    ASSERT_NE(page, nullptr);
    ASSERT_TRUE(page->HasUsableSelection()) << core::toUtf8(c.code);
    EXPECT_EQ(page->GetFieldCode(), c.code) << "the page read back makes the same field";
  }
}

}  // namespace
}  // namespace corvane
