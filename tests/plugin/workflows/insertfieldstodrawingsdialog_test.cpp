// The insert fields dialog without a window: the checks of a new rule, the sorted rows, the
// replace prompt that keeps the shown code, the drawing list, and what the settings keep.
#include "plugin/workflows/insertfieldstodrawingsdialog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/support/corvanesettings.h"
#include "plugin/support/cregistry.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

constexpr const wchar_t* kRules = L"Corvane\\BlockAttFields";
constexpr const wchar_t* kDrawings = L"Corvane\\InsertFieldsDrawings";

struct Rig : testing::EditorSession {
  CRegistry registry{&session.registry()};
  CInsertFieldsToDrawingsDialog dialog{registry, session.ui()};

  explicit Rig(std::wstring_view script = L"") : EditorSession(script) {
    registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
  }
  void open() { dialog.OnInitDialog({L"Door", L"Window"}); }
  bool add(std::wstring block, std::wstring tag, std::wstring code) {
    dialog.blockName = std::move(block);
    dialog.tag = std::move(tag);
    dialog.fieldCode = std::move(code);
    return dialog.OnAddRule();
  }
  std::vector<std::wstring> boxes() {
    std::vector<std::wstring> shown;
    for (const auto& box : session.terminalUi().boxes()) shown.push_back(box.caption + L": " + box.text);
    return shown;
  }
  std::vector<std::wstring> rows() const {
    std::vector<std::wstring> shown;
    for (const auto& rule : dialog.rules()) shown.push_back(rule.blockName + L"." + rule.tag + L"=" + rule.code);
    return shown;
  }
};

TEST(CInsertFieldsToDrawingsDialog, ChecksARuleInTheDialogsOrder) {
  const struct {
    const wchar_t* block;
    const wchar_t* tag;
    const wchar_t* code;
    const wchar_t* box;  // nullptr: the rule is added
  } cases[] = {
      {L"", L"", L"", L"Invalid block name."},
      {L"Stair", L"NO", L"%<\\AcVar Filename>%", L"Invalid block name."},
      {L"Door", L"", L"", L"Invalid attribute tag."},
      {L"Door", L"NO", L"", L"Invalid field code."},
      {L"wINDOW", L"NO", L"%<\\AcVar Filename>%", nullptr},  // block names are found whatever their case
  };
  for (const auto& c : cases) {
    Rig rig;
    rig.open();
    EXPECT_EQ(rig.add(c.block, c.tag, c.code), c.box == nullptr) << c.block << "." << c.tag;
    EXPECT_EQ(rig.boxes(), c.box ? std::vector<std::wstring>{std::wstring(L"Halvek Corvane: ") + c.box}
                                 : std::vector<std::wstring>{});
    EXPECT_EQ(rig.registry.valueNames(kRules).size(), c.box ? 0u : 1u);
  }
}

TEST(CInsertFieldsToDrawingsDialog, RowsSortByBlockThenTagAndComeBackFromTheSettings) {
  Rig rig;
  rig.open();
  ASSERT_TRUE(rig.add(L"Window", L"W", L"1"));
  ASSERT_TRUE(rig.add(L"door", L"b", L"2"));
  ASSERT_TRUE(rig.add(L"DOOR", L"c", L"3"));
  ASSERT_TRUE(rig.add(L"Door", L"A", L"4"));
  const std::vector<std::wstring> sorted{L"Door.A=4", L"door.b=2", L"DOOR.c=3", L"Window.W=1"};
  EXPECT_EQ(rig.rows(), sorted);
  EXPECT_EQ(rig.registry.getString(kRules, L"door*b", L""), L"2");

  CInsertFieldsToDrawingsDialog reopened(rig.registry, rig.session.ui());
  reopened.OnInitDialog({});
  ASSERT_EQ(reopened.rules().size(), sorted.size());
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const auto& rule = reopened.rules()[i];
    EXPECT_EQ(rule.blockName + L"." + rule.tag + L"=" + rule.code, sorted[i]);
  }

  rig.dialog.OnOK();
  EXPECT_EQ(rig.dialog.run().codes, (std::map<std::wstring, std::wstring>{
                                        {L"Door*A", L"4"}, {L"door*b", L"2"}, {L"DOOR*c", L"3"}, {L"Window*W", L"1"}}));
}

TEST(CInsertFieldsToDrawingsDialog, StoredKeysSplitAtTheStarAfterTheBlockName) {
  const struct {
    const wchar_t* key;
    const wchar_t* row;  // nullptr: no row
  } cases[] = {
      {L"Door*WIDTH", L"Door.WIDTH=x"},
      {L"*U2*WIDTH", L"*U2.WIDTH=x"},  // an anonymous block's name begins with the star
      {L"Door*", L"Door.=x"},
      {L"DoorWIDTH", nullptr},
  };
  for (const auto& c : cases) {
    Rig rig;
    rig.registry.writeString(kRules, c.key, L"x");
    rig.open();
    EXPECT_EQ(rig.rows(), c.row ? std::vector<std::wstring>{c.row} : std::vector<std::wstring>{}) << c.key;
  }
}

TEST(CInsertFieldsToDrawingsDialog, ReplacingKeepsTheShownCodeForThisRunAndStoresTheNewOne) {
  Rig rig(L"[OK]\n");
  rig.open();
  ASSERT_TRUE(rig.add(L"Door", L"WIDTH", L"old"));
  ASSERT_TRUE(rig.add(L"door", L"width", L"new"));
  EXPECT_EQ(rig.boxes(), std::vector<std::wstring>{
                             L"Halvek Corvane: door.width already has a field. Are you sure you want to replace it?"});
  EXPECT_EQ(rig.rows(), std::vector<std::wstring>{L"Door.WIDTH=old"});
  EXPECT_EQ(rig.dialog.rules()[0].replacement, L"new");
  rig.dialog.OnOK();
  EXPECT_EQ(rig.dialog.run().codes, (std::map<std::wstring, std::wstring>{{L"Door*WIDTH", L"old"}}));

  CInsertFieldsToDrawingsDialog reopened(rig.registry, rig.session.ui());
  reopened.OnInitDialog({});
  ASSERT_EQ(reopened.rules().size(), 1u);
  EXPECT_EQ(reopened.rules()[0].code, L"new");
}

TEST(CInsertFieldsToDrawingsDialog, DrawingsJoinByExtensionAndLeaveWhenTheUserAgrees) {
  Rig rig(L"[No]\n[Yes]\n[No]\n[Yes]\n");
  rig.open();
  rig.dialog.OnAddDrawings({L"C:\\plans\\a.dxf", L"C:\\plans\\b.DWG", L"C:\\plans\\notes.txt", L"C:\\plans.d\\c",
                            L"c:\\PLANS\\A.DXF", L"C:\\plans\\e.Dxf"});
  const std::vector<std::wstring> added{L"C:\\plans\\a.dxf", L"C:\\plans\\b.DWG", L"C:\\plans\\e.Dxf"};
  EXPECT_EQ(rig.dialog.drawings(), added);
  EXPECT_EQ(rig.registry.valueNames(kDrawings), added);

  EXPECT_FALSE(rig.dialog.OnRemoveDrawings({7}));  // no such row: nothing asked
  EXPECT_FALSE(rig.dialog.OnRemoveDrawings({2, 0}));
  EXPECT_EQ(rig.dialog.drawings(), added);
  EXPECT_TRUE(rig.dialog.OnRemoveDrawings({2, 0}));
  EXPECT_EQ(rig.dialog.drawings(), std::vector<std::wstring>{L"C:\\plans\\b.DWG"});
  EXPECT_EQ(rig.registry.valueNames(kDrawings), std::vector<std::wstring>{L"C:\\plans\\b.DWG"});

  ASSERT_TRUE(rig.add(L"Door", L"WIDTH", L"w"));
  EXPECT_FALSE(rig.dialog.OnRemoveRule(0));
  EXPECT_TRUE(rig.dialog.OnRemoveRule(0));
  EXPECT_TRUE(rig.dialog.rules().empty());
  EXPECT_TRUE(rig.registry.valueNames(kRules).empty());
  EXPECT_EQ(rig.boxes(),
            (std::vector<std::wstring>{L"Halvek Corvane: Are you sure you want to remove the selected item(s)?",
                                       L"Halvek Corvane: Are you sure you want to remove the selected item(s)?",
                                       L"Halvek Corvane: Are you sure you want to remove this item?",
                                       L"Halvek Corvane: Are you sure you want to remove this item?"}));

  rig.dialog.OnOK();
  EXPECT_EQ(rig.dialog.run().drawings, std::vector<std::wstring>{L"C:\\plans\\b.DWG"});
}

}  // namespace
}  // namespace corvane
