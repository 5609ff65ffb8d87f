// The AutoFill formulas command in the editor: the first cell's formula goes to the rest of the
// picked range with its references moved, and every filled cell shows its own result.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "headless/db/database.h"
#include "headless/db/line.h"
#include "headless/db/table.h"
#include "headless/fields/fieldengine.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

constexpr std::int32_t kSnaps = 7;

// Cells counted from 1, as the command's answers count them.
struct Cell {
  int row;
  int column;
  const wchar_t* text;
};

// A table of 5 rows and 4 columns: 1 2 3 4 / 10 20 30 40 / 100 200 300 400, two empty rows,
// and the given cells written over it. "@" in the script picks the table, "@L" a line.
struct FillRig : testing::EditorSession {
  host::AcDbObjectId table;
  host::AcDbObjectId line;

  FillRig(const std::vector<Cell>& cells, std::wstring script) {
    table = db.appendEntity(std::make_unique<headless::Table>(5, 4));
    line = db.appendEntity(
        std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{1, 0, 0}));
    auto& t = *db.get<headless::Table>(table);
    const double scale[] = {1.0, 10.0, 100.0};
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 4; ++column) t.putValue(row, column, host::AcValue((column + 1) * scale[row]));
    }
    for (const auto& c : cells) t.putTextString(c.row - 1, c.column - 1, c.text);
    db.setSysVar(L"OSMODE", {host::RTSHORT, kSnaps});
    replace(script, L"@L", line);
    replace(script, L"@", table);
    session.script() = headless::Script(L"Corvane_AutoFill_Formulas\n" + script);
  }
  // The plug-in loaded, every field shows its value.
  void load(CCorvaneApp& app) {
    ASSERT_EQ(session.loadApplication(app), host::AcRx::kRetOK);
    host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand);
  }
  void replace(std::wstring& script, std::wstring_view mark, host::AcDbObjectId id) {
    const std::wstring pick = L"(handent \"" + host.handle(id).text() + L"\")";
    for (auto at = script.find(mark); at != std::wstring::npos; at = script.find(mark, at + pick.size()))
      script.replace(at, mark.size(), pick);
  }
  std::wstring code(int row, int column) { return db.get<headless::Table>(table)->getFormula(row - 1, column - 1); }
  std::wstring text(int row, int column) { return db.get<headless::Table>(table)->textString(row - 1, column - 1); }
  // Every cell's code and text.
  std::vector<std::wstring> snapshot() {
    std::vector<std::wstring> all;
    for (int row = 1; row <= 5; ++row) {
      for (int column = 1; column <= 4; ++column) all.push_back(code(row, column) + L" | " + text(row, column));
    }
    return all;
  }
  std::int32_t osmode() {
    host::ResBuf value;
    db.getSysVar(L"OSMODE", value);
    return std::get<std::int32_t>(value.value);
  }
};

TEST(AutoFillFormulas, FillsTheRangeWithMovedReferences) {
  struct Expected {
    int row;
    int column;
    const wchar_t* code;
    const wchar_t* text;
  };
  struct Case {
    const wchar_t* name;
    std::vector<Cell> cells;
    const wchar_t* answers;
    std::vector<Expected> expected;
  } const cases[] = {
      {L"down a column, a total below it brought up to date",
       {{1, 4, L"%<\\VxExpr (A1+B1)>%"}, {5, 4, L"%<\\VxExpr (SUM(D1:D3))>%"}},
       L"@\n1,4\n3,4\n",
       {{1, 4, L"%<\\VxExpr (A1+B1)>%", L"3"},
        {2, 4, L"%<\\VxExpr (A2+B2)>%", L"30"},
        {3, 4, L"%<\\VxExpr (A3+B3)>%", L"300"},
        {5, 4, L"%<\\VxExpr (SUM(D1:D3))>%", L"333"}}},
      {L"along a row",
       {{4, 1, L"%<\\VxExpr (A1+A2+A3)>%"}},
       L"@\n4,1\n4,4\n",
       {{4, 2, L"%<\\VxExpr (B1+B2+B3)>%", L"222"},
        {4, 3, L"%<\\VxExpr (C1+C2+C3)>%", L"333"},
        {4, 4, L"%<\\VxExpr (D1+D2+D3)>%", L"444"}}},
      {L"a block, with pinned columns and rows",
       {{4, 1, L"%<\\VxExpr (A1*$A$1+$A2+A$3)>%"}},
       L"@\n4,1\n5,2\n",
       {{4, 1, L"%<\\VxExpr (A1*$A$1+$A2+A$3)>%", L"111"},
        {4, 2, L"%<\\VxExpr (B1*$A$1+$A2+B$3)>%", L"212"},
        {5, 1, L"%<\\VxExpr (A2*$A$1+$A3+A$3)>%", L"210"},
        {5, 2, L"%<\\VxExpr (B2*$A$1+$A3+B$3)>%", L"320"}}},
      {L"a running count reads the cell filled just before",
       {{2, 4, L"%<\\VxExpr (D1+1)>%"}},
       L"@\n2,4\n4,4\n",
       {{2, 4, L"%<\\VxExpr (D1+1)>%", L"5"},
        {3, 4, L"%<\\VxExpr (D2+1)>%", L"6"},
        {4, 4, L"%<\\VxExpr (D3+1)>%", L"7"}}},
      {L"the format switch is copied as it is",
       {{1, 4, L"%<\\VxExpr (A1*B1) \\f \"%lu2%pr2\">%"}},
       L"@\n1,4\n2,4\n",
       {{2, 4, L"%<\\VxExpr (A2*B2) \\f \"%lu2%pr2\">%", L"200.00"}}},
      {L"text around the formula is kept",
       {{1, 4, L"Sum %<\\VxExpr (A1+B1)>% m"}},
       L"@\n1,4\n2,4\n",
       {{2, 4, L"Sum %<\\VxExpr (A2+B2)>% m", L"Sum 30 m"}}},
      {L"lower-case references are written in upper case",
       {{1, 4, L"%<\\VxExpr (b1+c1)>%"}},
       L"@\n1,4\n2,4\n",
       {{2, 4, L"%<\\VxExpr (B2+C2)>%", L"50"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(std::wstring(c.name)));
    FillRig rig(c.cells, c.answers);
    CCorvaneApp app(rig.host, rig.session);
    rig.load(app);
    EXPECT_EQ(rig.session.runScript(), 0) << ::testing::PrintToString(rig.out);
    for (const auto& e : c.expected) {
      EXPECT_EQ(rig.code(e.row, e.column), e.code) << e.row << "," << e.column;
      EXPECT_EQ(rig.text(e.row, e.column), e.text) << e.row << "," << e.column;
    }
    EXPECT_EQ(rig.osmode(), kSnaps);
    rig.session.unloadApplication(app);
  }
}

TEST(AutoFillFormulas, RefusesAndChangesNothing) {
  struct Case {
    const wchar_t* name;
    std::vector<Cell> cells;
    const wchar_t* answers;
    const wchar_t* said;  // on the command line after the last answer; null: nothing
  } const cases[] = {
      {L"cancelled at the table", {{1, 4, L"%<\\VxExpr (A1+B1)>%"}}, L"^C\n", nullptr},
      {L"cancelled at the last cell", {{1, 4, L"%<\\VxExpr (A1+B1)>%"}}, L"@\n1,4\n^C\n", nullptr},
      {L"a line is not a table", {{1, 4, L"%<\\VxExpr (A1+B1)>%"}}, L"@L\n^C\n", nullptr},
      {L"a one-cell range", {{1, 4, L"%<\\VxExpr (A1+B1)>%"}}, L"@\n1,4\n\n", nullptr},
      {L"a number in the first cell", {}, L"@\n1,1\n3,1\n", L"\nCannot find an VX Formula field in the first cell."},
      {L"another field in the first cell",
       {{1, 1, L"%<\\AcVar LUPREC>%"}},
       L"@\n1,1\n3,1\n",
       L"\nCannot find an VX Formula field in the first cell: %<\\AcVar LUPREC>%"},
      {L"a formula elsewhere in the cell's range",
       {{2, 1, L"%<\\VxExpr (B1)>%"}},
       L"@\n1,1\n3,1\n",
       L"\nCannot find an VX Formula field in the first cell."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(std::wstring(c.name)));
    FillRig rig(c.cells, c.answers);
    CCorvaneApp app(rig.host, rig.session);
    rig.load(app);
    const auto before = rig.snapshot();
    const std::size_t start = rig.out.size();
    EXPECT_EQ(rig.session.runScript(), 0);
    EXPECT_EQ(rig.snapshot(), before);
    EXPECT_EQ(rig.osmode(), kSnaps);
    const std::wstring said = rig.out.substr(start);
    if (c.said) {
      EXPECT_TRUE(said.ends_with(c.said)) << ::testing::PrintToString(said);
    } else {
      EXPECT_EQ(said.find(L"Cannot"), std::wstring::npos) << ::testing::PrintToString(said);
    }
    rig.session.unloadApplication(app);
  }
}

}  // namespace
}  // namespace corvane
