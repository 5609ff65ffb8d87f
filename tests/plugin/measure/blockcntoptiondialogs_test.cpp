// The option page of the block count field with its block filter and window-points dialogs,
// worked as a user works them; the codes it builds are read back by the field itself.
#include <gtest/gtest.h>

#include "dialogrig.h"
#include "host/acdbfield.h"
#include "host/hostui.h"
#include "plugin/measure/asdkblockcntoptiondialog.h"

namespace corvane {
namespace {

using host::AcDbObjectId;
using host::AcGePoint3d;
using Condition = CBlockFilterDialog::Condition;

// Blocks Door, Window and Chair, an anonymous block, layers 0 and A-DOOR; two doors in model space; the block count
// page over them.
struct Drawing : testing::DialogRig {
  AsdkBlockCntOptionDialog page{dialogHost, registry};
  Drawing() {
    addLayer(L"A-DOOR");
    const AcDbObjectId door = addBlock(L"Door");
    addBlock(L"Window");
    addBlock(L"*U7", headless::BlockTableRecord::kAnonymous);
    addBlock(L"Chair");
    addBlockReference(door, {2, 3, 0});
    addBlockReference(door, {50, 50, 0});
  }
  std::wstring modelSpace() { return handleOf(db.currentSpaceId()); }
  void check(const std::vector<const wchar_t*>& names) {
    for (auto& item : page.blocks) item.checked = std::find(names.begin(), names.end(), item.name) != names.end();
  }
  void pickWindowSource() {
    page.source.selectItem(AsdkBlockCntOptionDialog::kWindow);
    page.onSourceChanged();
  }
};

struct Window {
  AcGePoint3d lo, hi;
};

TEST(AsdkBlockCntOptionDialog, BuildsTheCodeFromTheControls) {
  struct Case {
    const char* what;
    std::vector<const wchar_t*> blocks;
    CBlockFilterDialog::State filter;
    bool nested;
    std::optional<Window> picked;
    std::optional<CDefineWindowPointsDialog::Texts> typed;
    std::wstring prefix;
    std::wstring code;  // "SPACE" stands for the model space's handle
  } const cases[] = {
      // clang-format off
      {"no block", {}, {}, true, {}, {}, L"n=", L"%<\\AcBlockCount >%"},
      {"one block", {L"Door"}, {}, false, {}, {}, L"", L"%<\\AcBlockCount \"Door\">%"},
      {"everything", {L"Door", L"Chair"},
       {{L"A-DOOR", L"0"}, true, {Condition{L">=", L"WIDTH", L"900"}, Condition{L"!=", L"MAT", L"oak wood"}}},
       true, Window{{1, 2, 0}, {10.5, -20, 3}}, {}, L"n=",
       L"%<\\AcBlockCount \"Door;Chair\" \\layer \"A-DOOR;0\" \\op \">=\u00A6!=\" \\tag \"WIDTH\u00A6MAT\" \\value "
       L"\"900\u00A6oak wood\" \\nested \\Space(SPACE) \\Window(1,2,0:10.5,-20,3) \\f \"%ps[n=,]\">%"},
      {"a condition in the second row only", {L"Window"},
       {{}, true, {Condition{L"<", L"", L"3"}, Condition{L"=", L"TYPE", L""}}}, false, {}, {}, L"",
       L"%<\\AcBlockCount \"Window\" \\op \"=\" \\tag \"TYPE\" \\value \"\">%"},
      {"conditions without the attribute box", {L"Window"}, {{}, false, {Condition{L"<", L"W", L"3"}, Condition{}}},
       false, {}, {}, L"", L"%<\\AcBlockCount \"Window\">%"},
      {"a window typed", {L"Door"}, {}, false, Window{{7, 7, 7}, {8, 8, 8}},
       CDefineWindowPointsDialog::Texts{L"-1.5", L"0", L" 2 ", L"1e2", L"50", L"0"}, L"",
       L"%<\\AcBlockCount \"Door\" \\Space(SPACE) \\Window(-1.5,0,2:1e2,50,0)>%"},
      {"a window picked with many digits", {L"Door"}, {}, false, Window{{0.123456789, 0, 0}, {1234567.5, 1, 0}}, {},
       L"", L"%<\\AcBlockCount \"Door\" \\Space(SPACE) \\Window(0.123457,0,0:1.23457e+06,1,0)>%"},
      // clang-format on
  };
  for (const auto& c : cases) {
    Drawing d;
    AsdkBlockCntOptionDialog& page = d.page;
    page.onInitDialog();
    ASSERT_EQ(page.blocks, (CheckList{{L"Door", false}, {L"Window", false}, {L"Chair", false}}));
    d.check(c.blocks);
    page.filter = c.filter;
    page.includeNested = c.nested;
    page.additional.prefix = c.prefix;
    if (c.picked) {
      page.source.selectItem(AsdkBlockCntOptionDialog::kWindow);
      d.answer(core::format(L"%.10g,%.10g,%.10g\n%.10g,%.10g,%.10g\n", c.picked->lo.x, c.picked->lo.y, c.picked->lo.z,
                            c.picked->hi.x, c.picked->hi.y, c.picked->hi.z));
      ASSERT_EQ(page.onPickWindow(), host::RTNORM) << c.what;
    }
    if (c.typed) {
      ASSERT_TRUE(page.onDefineWindowPoints([&](CDefineWindowPointsDialog& f) {
        f.corners = *c.typed;
        return f.onOK();
      }));
    }
    EXPECT_EQ(page.fieldCode(), core::replaceAll(c.code, L"SPACE", d.modelSpace())) << c.what;
  }
}

TEST(AsdkBlockCntOptionDialog, OpensWithTheKeptSourceNestingAndCorners) {
  struct Case {
    std::optional<int> source;
    std::optional<int> nested;
    std::optional<std::wstring> first, second;
    int expectedSource;
    bool expectedNested;
    AcGePoint3d firstCorner, secondCorner;
    std::wstring status, firstText, secondText;
  } const cases[] = {
      {{}, {}, {}, {}, 0, false, {}, {}, L"", L"(0, 0)", L"(0, 0)"},
      {1, 1, L"1 2 3", L" 4.5  -5 6 ", 1, true, {1, 2, 3}, {4.5, -5, 6}, L"Select window.", L"(1, 2)", L"(4.5, -5)"},
      {7, 0, L"a b c", L"1 2", 0, false, {}, {}, L"", L"(0, 0)", L"(0, 0)"},
  };
  for (const auto& c : cases) {
    Drawing d;
    if (c.source) d.registry.writeInt(L"Corvane", L"BlockSource", *c.source);
    if (c.nested) d.registry.writeInt(L"Corvane", L"IncNestedBlock", *c.nested);
    if (c.first) d.registry.writeString(L"Corvane", L"BlockCountSelWnd1Pt", *c.first);
    if (c.second) d.registry.writeString(L"Corvane", L"BlockCountSelWnd2Pt", *c.second);
    AsdkBlockCntOptionDialog& page = d.page;
    page.onInitDialog();
    EXPECT_EQ(page.source.selectedItem(), c.expectedSource);
    EXPECT_EQ(page.includeNested, c.expectedNested);
    EXPECT_EQ(page.firstCorner().asArray(), c.firstCorner.asArray());
    EXPECT_EQ(page.secondCorner().asArray(), c.secondCorner.asArray());
    EXPECT_EQ(page.statusText(), c.status);
    EXPECT_EQ(page.firstPointText(), c.firstText);
    EXPECT_EQ(page.secondPointText(), c.secondText);
  }
}

TEST(AsdkBlockCntOptionDialog, PickingTheWindowAsksForTwoCornersAndKeepsThem) {
  Drawing d;
  AsdkBlockCntOptionDialog& page = d.page;
  page.onInitDialog();
  d.pickWindowSource();
  page.includeNested = true;
  page.onNestedChanged();
  d.answer(L"1.25,2\n@3,4,5\n");
  ASSERT_EQ(page.onPickWindow(), host::RTNORM);
  EXPECT_EQ(d.said, L"\nSpecify first corner point: 1.25,2\nSpecify other corner point: @3,4,5");
  EXPECT_EQ(page.statusText(), L"Select window.");
  EXPECT_EQ(page.firstPointText(), L"(1.25, 2)");
  EXPECT_EQ(page.secondPointText(), L"(4.25, 6)");
  EXPECT_EQ(d.registry.getString(L"Corvane", L"BlockCountSelWnd1Pt", L""), L"1.25 2 0");
  EXPECT_EQ(d.registry.getString(L"Corvane", L"BlockCountSelWnd2Pt", L""), L"4.25 6 5");
  EXPECT_EQ(d.registry.getInt(L"Corvane", L"BlockSource", -1), 1);
  EXPECT_EQ(d.registry.getInt(L"Corvane", L"IncNestedBlock", -1), 1);

  // Cancelled at the second corner: the window is as it was.
  d.answer(L"9,9\n^C\n");
  EXPECT_EQ(page.onPickWindow(), host::RTCAN);
  EXPECT_EQ(page.secondPointText(), L"(4.25, 6)");
  EXPECT_EQ(d.registry.getString(L"Corvane", L"BlockCountSelWnd1Pt", L""), L"1.25 2 0");
}

TEST(CDefineWindowPointsDialog, EveryTextMustBeANumber) {
  struct Case {
    std::size_t at;
    std::wstring text;
    std::wstring message;
  } const cases[] = {
      {2, L"", L"The Z coordinate of the first corner is not a number: \"\"."},
      {4, L"1,5", L"The Y coordinate of the opposite corner is not a number: \"1,5\"."},
      {3, L"inf", L"The X coordinate of the opposite corner is not a number: \"inf\"."},
  };
  for (const auto& c : cases) {
    Drawing d;
    AsdkBlockCntOptionDialog& page = d.page;
    page.onInitDialog();
    page.source.selectItem(AsdkBlockCntOptionDialog::kWindow);
    const std::wstring before = page.fieldCode();
    bool stayedOpen = false;
    EXPECT_FALSE(page.onDefineWindowPoints([&](CDefineWindowPointsDialog& f) {
      EXPECT_EQ(f.corners, (CDefineWindowPointsDialog::Texts{L"0", L"0", L"0", L"0", L"0", L"0"}));
      f.corners[c.at] = c.text;
      stayedOpen = !f.onOK();
      return false;  // then cancelled
    }));
    EXPECT_TRUE(stayedOpen);
    ASSERT_EQ(d.box(), c.message);
    EXPECT_EQ(d.ui.boxes()[0].caption, L"Halvek Corvane");
    EXPECT_EQ(page.fieldCode(), before);
    EXPECT_EQ(d.registry.getString(L"Corvane", L"FirstCornerX", L"none"), L"none");
  }
}

TEST(CDefineWindowPointsDialog, TypedOrTakenFromAnObjectAndKept) {
  Drawing d;
  const AcDbObjectId circle =
      d.db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{5, 5, 0}, 1.0));
  AsdkBlockCntOptionDialog& page = d.page;
  page.onInitDialog();
  page.source.selectItem(AsdkBlockCntOptionDialog::kWindow);
  d.answer(L"(handent \"" + d.handleOf(circle) + L"\")\n");
  ASSERT_TRUE(page.onDefineWindowPoints([&](CDefineWindowPointsDialog& f) {
    EXPECT_EQ(f.onSelectObject(), host::RTNORM);
    EXPECT_EQ(f.object, d.handleOf(circle));
    EXPECT_EQ(f.corners, (CDefineWindowPointsDialog::Texts{L"4", L"4", L"0", L"6", L"6", L"0"}));
    f.corners[5] = L" 0.5 ";
    return f.onOK();
  }));
  EXPECT_EQ(page.statusText(), L"Define window points.");
  EXPECT_EQ(page.firstPointText(), L"(4, 4)");
  EXPECT_EQ(page.secondPointText(), L"(6, 6)");
  EXPECT_EQ(d.registry.getString(L"Corvane", L"OppositeCornerZ", L""), L"0.5");
  EXPECT_EQ(d.registry.getString(L"Corvane", L"FirstCornerX", L""), L"4");

  // The next time the dialog opens with the kept texts.
  AsdkBlockCntOptionDialog again(d.dialogHost, d.registry);
  again.onInitDialog();
  again.onDefineWindowPoints([](CDefineWindowPointsDialog& f) {
    EXPECT_EQ(f.corners, (CDefineWindowPointsDialog::Texts{L"4", L"4", L"0", L"6", L"6", L"0.5"}));
    return false;
  });
}

TEST(CBlockFilterDialog, LayersAndConditionsWithTheirChecks) {
  Drawing d;
  CBlockFilterDialog dialog(d.dialogHost);
  dialog.onInitDialog({{L"A-DOOR"}, false, {Condition{L"<=", L"H", L"2"}, Condition{L"?", L"", L""}}});
  EXPECT_EQ(dialog.layers, (CheckList{{L"0", false}, {L"A-DOOR", true}}));
  EXPECT_EQ(dialog.rows[0].op.entries().size(), 6u);
  EXPECT_EQ(dialog.rows[0].op.selectedItem(), 5);  // "<="
  EXPECT_EQ(dialog.rows[1].op.selectedItem(), 0);  // an unknown operator shows "="
  EXPECT_FALSE(dialog.rowsEnabled());
  dialog.onCheckAll();
  EXPECT_EQ(checkedNames(dialog.layers), (std::vector<std::wstring>{L"0", L"A-DOOR"}));
  dialog.onUncheckAll();
  EXPECT_TRUE(checkedNames(dialog.layers).empty());

  struct Case {
    std::wstring tag0, value0, tag1, value1;
    const wchar_t* message;  // null: accepted
  } const cases[] = {
      {L"", L"2", L"", L"", CBlockFilterDialog::kNoTag},
      {L"SIZE \"A\"", L"2", L"", L"", CBlockFilterDialog::kReservedCharacter},
      {L"SIZE", L"2\u00A63", L"", L"", CBlockFilterDialog::kReservedCharacter},
      {L"", L"", L"TYPE", L"x\"", CBlockFilterDialog::kReservedCharacter},
      {L"", L"", L"TYPE", L"oak", nullptr},
  };
  for (const auto& c : cases) {
    Drawing e;
    CBlockFilterDialog filter(e.dialogHost);
    filter.onInitDialog({});
    filter.attribute = true;
    filter.rows[0].tag = c.tag0;
    filter.rows[0].value = c.value0;
    filter.rows[1].tag = c.tag1;
    filter.rows[1].value = c.value1;
    filter.rows[1].op.select(3);
    EXPECT_EQ(filter.onOK(), c.message == nullptr);
    if (c.message) {
      EXPECT_EQ(e.box(), c.message);
      EXPECT_EQ(filter.result(), CBlockFilterDialog::State{});
    } else {
      EXPECT_EQ(filter.result().conditions[1], (Condition{L">=", L"TYPE", L"oak"}));
    }
  }
}

TEST(AsdkBlockCntOptionDialog, CheckAllAndUncheckAllFollowTheWildcard) {
  struct Match {
    const wchar_t* pattern;
    const wchar_t* name;
    bool matches;
  } const matches[] = {
      {L"do*", L"Door", true},    {L"D?or", L"door", true},   {L"*2", L"DOOR2", true}, {L"*", L"", true},
      {L"a*b*c", L"aXbYc", true}, {L"a*b*c", L"aXbY", false}, {L"?", L"", false},      {L"Door", L"Door2", false},
      {L"*o*o*", L"Door", true},  {L"W*", L"Door", false},
  };
  for (const auto& m : matches) {
    EXPECT_EQ(AsdkBlockCntOptionDialog::wildcardMatches(m.pattern, m.name), m.matches) << m.name;
  }
  Drawing d;
  d.addBlock(L"DOOR2");
  AsdkBlockCntOptionDialog& page = d.page;
  page.onInitDialog();
  page.wildcard = L"do*";
  page.onCheckAll();
  EXPECT_EQ(checkedNames(page.blocks), (std::vector<std::wstring>{L"Door", L"DOOR2"}));
  page.wildcard = L"*2";
  page.onUncheckAll();
  EXPECT_EQ(checkedNames(page.blocks), (std::vector<std::wstring>{L"Door"}));
  page.wildcard.clear();
  page.onCheckAll();
  EXPECT_EQ(checkedNames(page.blocks).size(), 4u);
}

TEST(AsdkBlockCntOptionDialog, FilterAndAdditionalFormatThroughTheirDialogs) {
  Drawing d;
  AsdkBlockCntOptionDialog& page = d.page;
  page.onInitDialog();
  d.check({L"Door"});
  ASSERT_TRUE(page.onFilter([](CBlockFilterDialog& f) {
    f.layers[0].checked = true;
    return f.onOK();
  }));
  EXPECT_EQ(page.filter.selectedLayers, std::vector<std::wstring>{L"0"});
  EXPECT_FALSE(page.onFilter([](CBlockFilterDialog& f) {
    f.onUncheckAll();
    return false;
  }));
  EXPECT_EQ(page.filter.selectedLayers, std::vector<std::wstring>{L"0"});

  ASSERT_TRUE(page.onAdditionalFormat([](CAdditionalFormatDialog& f) {
    EXPECT_EQ(f.preview(), L"2");  // the count as it stands
    f.suffix = L" doors";
    return f.onOK();
  }));
  EXPECT_EQ(page.fieldCode(), L"%<\\AcBlockCount \"Door\" \\layer \"0\" \\f \"%ps[, doors]\">%");
}

}  // namespace
}  // namespace corvane
