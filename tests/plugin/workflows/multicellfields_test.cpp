// The multi cell fields command run from a script against a running Excel over a workbook
// written by openpyxl: the table target, growing the table, cell names, the MID option, and the
// text target with its two modes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/db/texthost.h"
#include "plugin/workflows/multicellfields.h"
#include "workflowrig.h"

namespace corvane {
namespace {

using testing::WorkflowRig;

TEST(MultiCellFields, AreasThatNameNoCellsAreSkipped) {
  const struct {
    SelectionArea area;
    bool usable;
  } cases[] = {
      {{1, 1, 1, 1}, true},   {{2, 3, 4, 5}, true},  {{0, 1, 3, 1}, false},
      {{1, 0, 1, 3}, false},  {{3, 1, 2, 1}, false}, {{1, 3, 1, 2}, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsUsableArea(c.area), c.usable) << c.area.firstRow << "," << c.area.firstColumn << " to "
                                              << c.area.lastRow << "," << c.area.lastColumn;
  }
}

// A table of `rows` rows and three columns of 10 x 1 at the origin; the point of a cell's middle.
std::wstring cellPoint(int row, int column) {
  return std::to_wstring(column * 10 + 5) + L"," + std::to_wstring(-row - 0.5).substr(0, 4);
}

host::AcDbObjectId addGrid(WorkflowRig& d, int rows) {
  std::vector<std::vector<std::wstring>> cells(static_cast<std::size_t>(rows), {L"", L"", L""});
  cells[static_cast<std::size_t>(rows - 1)][0] = L"last";
  return d.addTable(cells, {}, 1.0, 10.0);
}

TEST(MultiCellFields, TableGrowsByWhatTheSelectionNeedsAndShowsTheCells) {
  REQUIRE_OPENPYXL();
  // Start in row 2 of 4: two rows are left for three selected rows.
  WorkflowRig d(L"\n" + cellPoint(2, 0) + L"\n");
  testing::writePriceList(d.folder / "prices.xlsx");
  d.openAndSelect("prices.xlsx", {L"B2:C4"});
  const auto id = addGrid(d, 4);
  d.run(L"Corvane_Multi_Cell_Fields");
  auto& table = d.table(id);
  ASSERT_EQ(table.numRows(), 5);
  EXPECT_EQ(table.numColumns(), 3);
  EXPECT_EQ(table.rowHeight(4), table.rowHeight(3));
  const struct {
    int row, column;
    std::wstring shown, cell;
  } cells[] = {{2, 0, L"m3", L"$B$2"}, {2, 1, L"84", L"$C$2"},     {3, 0, L"t", L"$B$3"},
               {3, 1, L"1234.5", L"$C$3"}, {4, 0, L"m2", L"$B$4"}, {4, 1, L"23.5", L"$C$4"}};
  for (const auto& c : cells) {
    EXPECT_EQ(table.textString(c.row, c.column), c.shown) << c.row << "," << c.column;
    EXPECT_EQ(table.getFormula(c.row, c.column),
              L"%<\\ExcelCell \"" + d.path("prices.xlsx") + L":Prices:" + c.cell + L"\">%");
  }
  EXPECT_EQ(table.textString(3, 0), L"t");
  EXPECT_EQ(table.textString(1, 0), L"");
}

TEST(MultiCellFields, NamesAndTheMidOptionShapeTheCodes) {
  REQUIRE_OPENPYXL();
  const struct {
    const char* what;
    std::wstring answers;  // before the start cell is picked
    std::wstring boxes;    // the answers of the name questions
    std::vector<std::wstring> codes;  // of cells (0,0), (0,1) and (1,0); "" for none
  } cases[] = {
      {"MID 0 and 0 write no option", L"Mid\n0\n0\n", L"", {L":$B$2\"", L":$C$2\"", L":$C$6\""}},
      {"MID 2 and 3", L"Mid\n2\n3\n", L"", {L":$B$2\" \\MID(2,3)", L":$C$2\" \\MID(2,3)", L":$C$6\" \\MID(2,3)"}},
      {"names: No skips a cell, Yes keeps its address", L"Names\nYes\n", L"[No]\n[Yes]\n",
       {L"", L":$C$2\"", L":Supplier\""}},
  };
  for (const auto& c : cases) {
    WorkflowRig d(c.answers + L"\n" + cellPoint(0, 0) + L"\n" + c.boxes);
    testing::writePriceList(d.folder / "prices.xlsx");
    d.openAndSelect("prices.xlsx", {L"B2:C2", L"C6"});
    const auto id = addGrid(d, 2);
    d.run(L"Corvane_Multi_Cell_Fields");
    const int places[][2] = {{0, 0}, {0, 1}, {1, 0}};
    for (std::size_t i = 0; i < 3; ++i) {
      const std::wstring code = d.table(id).getFormula(places[i][0], places[i][1]);
      if (c.codes[i].empty()) {
        EXPECT_EQ(code, L"") << c.what;
      } else {
        EXPECT_EQ(code, L"%<\\ExcelCell \"" + d.path("prices.xlsx") + L":Prices" + c.codes[i] + L">%") << c.what;
      }
    }
  }
}

TEST(MultiCellFields, TextTargetLinksInsertsSwitchesAndSkips) {
  REQUIRE_OPENPYXL();
  WorkflowRig d(L"");
  const auto text = d.addText(L"old");
  const std::wstring pick = L"(handent \"" + d.host.handle(text).text() + L"\")";
  // $B$2 into the text; $B$3: to insert mode, a new text at 30,40; $B$4: back to link mode, then skipped.
  d.session.script().append(L"Target\nTexts\n\n" + pick + L"\nC\n30,40\nL\nS\n");
  testing::writePriceList(d.folder / "prices.xlsx");
  d.openAndSelect("prices.xlsx", {L"B2:B4"});
  d.run(L"Corvane_Multi_Cell_Fields");
  const auto linked = headless::fieldOf(d.db, text);
  ASSERT_FALSE(linked.isNull());
  EXPECT_EQ(d.db.get<headless::Text>(text)->textString(), L"m3");
  std::vector<std::wstring> mtexts;
  for (const auto id : d.db.objectIds()) {
    if (const auto* mtext = d.db.get<headless::MText>(id)) {
      mtexts.push_back(mtext->contents());
      EXPECT_EQ(mtext->location().x, 30.0);
      const auto field = headless::fieldOf(d.db, id);
      ASSERT_FALSE(field.isNull());
      EXPECT_NE(d.code(field).find(L":Prices:$B$3\""), std::wstring::npos);
    }
  }
  EXPECT_EQ(mtexts, std::vector<std::wstring>{L"t"});
  // Each cell's prompts in the order the answers switched the modes.
  std::size_t at = 0;
  for (const wchar_t* prompt : {L"Link $B$2 to a Text", L"Link $B$3 to a Text",
                                L"Specify insertion point to create a new field from $B$3",
                                L"Specify insertion point to create a new field from $B$4", L"Link $B$4 to a Text"}) {
    at = d.printed.find(prompt, at);
    EXPECT_NE(at, std::wstring::npos) << core::toUtf8(prompt);
  }
}

TEST(MultiCellFields, RefusesWithoutASavedWorkbook) {
  const struct {
    const char* what;
    bool open;
    std::wstring message;
  } cases[] = {
      {"no workbook", false, L"Please start Excel and open a workbook first."},
      {"a new workbook", true, L"Please save your workbook before inserting the field."},
  };
  for (const auto& c : cases) {
    WorkflowRig d(L"");
    if (c.open) {
      ASSERT_TRUE(d.excel.start().addWorkbook().ok());
    }
    d.run(L"Corvane_Multi_Cell_Fields");
    EXPECT_NE(d.printed.find(c.message), std::wstring::npos) << c.what;
    EXPECT_EQ(d.printed.find(L"Multi cell fields ["), std::wstring::npos) << c.what;
  }
}

}  // namespace
}  // namespace corvane
