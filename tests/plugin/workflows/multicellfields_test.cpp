// The multi cell fields command run from a script against a running Excel over a workbook
// written by openpyxl: the table target, growing the table, cell names, the MID option, the
// text target with its two modes and its refusal of constant attributes, and Excel lost
// halfway through reading the selection.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "headless/db/attribute.h"
#include "headless/db/texthost.h"
#include "plugin/workflows/multicellfields.h"
#include "workflowrig.h"

namespace corvane {
namespace {

using testing::WorkflowRig;

// The user's Excel as it is until the connection breaks: after `cells` cells of the selection's
// sheet were reached, every further one fails with `error`, as a dying Excel answers.
class LosingExcel : public host::ExcelAutomation {
 public:
  LosingExcel(host::ExcelAutomation& excel, int cells, host::ExcelError error)
      : excel_(excel), left_(std::make_shared<Budget>(Budget{cells, std::move(error)})) {}

  host::ExcelResult<std::shared_ptr<host::ExcelApplication>> activeObject() override {
    auto app = excel_.activeObject();
    if (!app) return app;
    return std::shared_ptr<host::ExcelApplication>(std::make_shared<Application>(*app, left_));
  }
  host::ExcelResult<std::shared_ptr<host::ExcelApplication>> createObject() override { return excel_.createObject(); }
  std::intptr_t findWindow(std::wstring_view className, std::wstring_view title) override {
    return excel_.findWindow(className, title);
  }
  std::wstring errorText(std::int32_t code) override { return excel_.errorText(code); }

 private:
  struct Budget {
    int cells;
    host::ExcelError error;
  };
  using BudgetPtr = std::shared_ptr<Budget>;

  struct Sheet : host::ExcelWorksheet {
    Sheet(std::shared_ptr<host::ExcelWorksheet> inner, BudgetPtr budget) : sheet(std::move(inner)), left(std::move(budget)) {}
    std::wstring name() const override { return sheet->name(); }
    std::shared_ptr<host::ExcelWorkbook> workbook() const override { return sheet->workbook(); }
    std::shared_ptr<host::ExcelApplication> application() const override { return sheet->application(); }
    host::ExcelResult<std::shared_ptr<host::ExcelRange>> range(std::wstring_view cell1,
                                                               std::wstring_view cell2) override {
      if (left->cells-- <= 0) return left->error;
      return sheet->range(cell1, cell2);
    }
    host::ExcelResult<std::vector<host::ExcelNote>> comments() const override { return sheet->comments(); }
    std::shared_ptr<host::ExcelWorksheet> sheet;
    BudgetPtr left;
  };

  // The selection, whose sheet is the one that breaks.
  struct Selection : host::ExcelRange {
    Selection(std::shared_ptr<host::ExcelRange> inner, BudgetPtr budget) : range(std::move(inner)), left(std::move(budget)) {}
    std::int32_t row() const override { return range->row(); }
    std::int32_t column() const override { return range->column(); }
    std::int32_t rowCount() const override { return range->rowCount(); }
    std::int32_t columnCount() const override { return range->columnCount(); }
    std::wstring address() const override { return range->address(); }
    std::vector<std::shared_ptr<host::ExcelRange>> areas() const override { return range->areas(); }
    std::shared_ptr<host::ExcelWorksheet> worksheet() const override {
      return std::make_shared<Sheet>(range->worksheet(), left);
    }
    host::ExcelResult<std::wstring> text() const override { return range->text(); }
    host::ExcelResult<host::ExcelValue> value() const override { return range->value(); }
    host::ExcelResult<std::wstring> formula() const override { return range->formula(); }
    host::ExcelStatus setValues(const std::vector<std::vector<host::ExcelValue>>& rows) override {
      return range->setValues(rows);
    }
    host::ExcelResult<std::shared_ptr<host::ExcelRange>> resize(std::int32_t rows, std::int32_t columns) const override {
      return range->resize(rows, columns);
    }
    host::ExcelResult<std::shared_ptr<host::ExcelRange>> offset(std::int32_t rows, std::int32_t columns) const override {
      return range->offset(rows, columns);
    }
    host::ExcelResult<std::shared_ptr<host::ExcelRange>> item(std::int32_t row) const override {
      return range->item(row);
    }
    std::shared_ptr<host::ExcelRange> entireRow() const override { return range->entireRow(); }
    host::ExcelStatus remove() override { return range->remove(); }
    host::ExcelStatus select() override { return range->select(); }
    host::ExcelStatus autoFitColumns() override { return range->autoFitColumns(); }
    host::ExcelResult<std::wstring> name() const override { return range->name(); }
    host::ExcelResult<std::optional<std::wstring>> comment() const override { return range->comment(); }
    host::ExcelStatus addComment(std::wstring_view text) override { return range->addComment(text); }
    host::ExcelStatus deleteComment() override { return range->deleteComment(); }
    std::shared_ptr<host::ExcelRange> range;
    BudgetPtr left;
  };

  struct Application : host::ExcelApplication {
    Application(std::shared_ptr<host::ExcelApplication> inner, BudgetPtr budget) : app(std::move(inner)), left(std::move(budget)) {}
    bool visible() const override { return app->visible(); }
    host::ExcelStatus setVisible(bool visible) override { return app->setVisible(visible); }
    std::wstring version() const override { return app->version(); }
    std::wstring caption() const override { return app->caption(); }
    host::ExcelStatus setCaption(std::wstring_view caption) override { return app->setCaption(caption); }
    std::int32_t workbookCount() const override { return app->workbookCount(); }
    host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> workbook(std::int32_t index) override {
      return app->workbook(index);
    }
    host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> workbook(std::wstring_view name) override {
      return app->workbook(name);
    }
    host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> addWorkbook() override { return app->addWorkbook(); }
    host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> openWorkbook(std::wstring_view path,
                                                                         std::int32_t updateLinks,
                                                                         std::int32_t readOnly) override {
      return app->openWorkbook(path, updateLinks, readOnly);
    }
    std::shared_ptr<host::ExcelWorkbook> activeWorkbook() override { return app->activeWorkbook(); }
    std::shared_ptr<host::ExcelWorksheet> activeSheet() override { return app->activeSheet(); }
    std::shared_ptr<host::ExcelRange> activeCell() override { return app->activeCell(); }
    std::shared_ptr<host::ExcelRange> selection() override {
      auto range = app->selection();
      return range ? std::make_shared<Selection>(std::move(range), left) : nullptr;
    }
    std::shared_ptr<host::ExcelApplication> app;
    BudgetPtr left;
  };

  host::ExcelAutomation& excel_;
  BudgetPtr left_;
};

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

TEST(MultiCellFields, AConstantAttributeIsRefusedAndTheRunGoesOn) {
  REQUIRE_OPENPYXL();
  WorkflowRig d(L"");
  const auto reference = d.addBlockReference(d.addBlock(L"TAG"));
  const auto constant = d.addAttribute(reference, L"UNIT", L"pcs", headless::Attribute::kConstant);
  const auto text = d.addText(L"old");
  const auto pick = [&](host::AcDbObjectId id) { return L"(handent \"" + d.host.handle(id).text() + L"\")\n"; };
  d.session.script().append(L"Target\nTexts\n\n" + pick(constant) + pick(text));
  testing::writePriceList(d.folder / "prices.xlsx");
  d.openAndSelect("prices.xlsx", {L"B2:B3"});
  d.run(L"Corvane_Multi_Cell_Fields");
  EXPECT_TRUE(headless::fieldOf(d.db, constant).isNull());
  EXPECT_EQ(d.db.get<headless::Attribute>(constant)->textString(), L"pcs");
  const auto linked = headless::fieldOf(d.db, text);
  ASSERT_FALSE(linked.isNull()) << core::toUtf8(d.printed);
  EXPECT_NE(d.code(linked).find(L":Prices:$B$3\""), std::wstring::npos);
  EXPECT_EQ(d.db.get<headless::Text>(text)->textString(), L"t");
  const auto refused = d.printed.find(L"\nCan't change the value of a constant attribute.");
  ASSERT_NE(refused, std::wstring::npos) << core::toUtf8(d.printed);
  EXPECT_NE(d.printed.find(L"Link $B$3 to a Text", refused), std::wstring::npos);
  EXPECT_EQ(d.printed.find(L"Link $B$2 to a Text", refused), std::wstring::npos);
}

TEST(MultiCellFields, ExcelLostWhileReadingTheSelectionLeavesTheDrawingAsItWas) {
  REQUIRE_OPENPYXL();
  const struct {
    const char* what;
    std::wstring error;
    std::wstring message;
  } cases[] = {
      {"with Excel's reason", L"The RPC server is unavailable",
       L"Cannot get an active instance of Excel: The RPC server is unavailable."},
      {"without one", L"", L"Cannot get an active instance of Excel: unknown error."},
  };
  for (const auto& c : cases) {
    // Cells by name: $B$2, $C$2 and $B$3 are read and agreed to be addressed as they are,
    // then Excel is gone.
    WorkflowRig d(L"Names\nYes\n\n" + cellPoint(0, 0) + L"\n[Yes]\n[Yes]\n[Yes]\n");
    testing::writePriceList(d.folder / "prices.xlsx");
    d.openAndSelect("prices.xlsx", {L"B2:C4"});
    const std::wstring earlier = L"%<\\ExcelCell \"" + d.path("prices.xlsx") + L":Prices:$C$6\">%";
    const auto made = d.addFieldText(earlier);  // the field of a text linked before
    const auto id = addGrid(d, 2);
    LosingExcel losing(d.excel, 3, {host::kExcelFailed, c.error});
    d.session.setExcel(&losing);
    d.run(L"Corvane_Multi_Cell_Fields");
    EXPECT_NE(d.printed.find(c.message), std::wstring::npos) << c.what << "\n" << core::toUtf8(d.printed);
    EXPECT_NE(d.printed.find(L"$B$3 doesn't have a name"), std::wstring::npos) << c.what;
    EXPECT_EQ(d.printed.find(L"$C$3 doesn't have a name"), std::wstring::npos) << c.what;
    // Nothing of the run was written: the table neither grew nor took a field.
    auto& table = d.table(id);
    EXPECT_EQ(table.numRows(), 2) << c.what;
    for (int row = 0; row < table.numRows(); ++row) {
      for (int column = 0; column < table.numColumns(); ++column) {
        EXPECT_EQ(table.getFormula(row, column), L"") << c.what << " " << row << "," << column;
      }
    }
    EXPECT_EQ(d.code(made), earlier) << c.what;
    // The connection was let go: the next run attaches afresh and works.
    d.session.setExcel(&d.excel);
    d.session.script().append(L"\n" + cellPoint(0, 0) + L"\n");
    d.run(L"Corvane_Multi_Cell_Fields");
    EXPECT_EQ(table.getFormula(0, 0), L"%<\\ExcelCell \"" + d.path("prices.xlsx") + L":Prices:$B$2\">%") << c.what;
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
