// A table cell edited in the editor: the plug-in's reactors find the table the command changed
// and recompute its formulas; a command that stops half-way leaves nothing behind.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "headless/db/database.h"
#include "headless/db/table.h"
#include "headless/fields/fieldengine.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

struct TableRig : testing::EditorSession {
  host::AcDbObjectId table;

  explicit TableRig(const std::wstring& script) {
    // Quantity, price and their product; a total of the products below.
    auto made = std::make_unique<headless::Table>(3, 3);
    table = db.appendEntity(std::move(made));
    auto& cells = *db.get<headless::Table>(table);
    cells.putValue(0, 0, host::AcValue(2.0));
    cells.putValue(0, 1, host::AcValue(10.0));
    cells.putTextString(0, 2, L"%<\\VxExpr (A1*B1)>%");
    cells.putValue(1, 0, host::AcValue(3.0));
    cells.putValue(1, 1, host::AcValue(5.0));
    cells.putTextString(1, 2, L"%<\\VxExpr (A2*B2)>%");
    cells.putTextString(2, 2, L"%<\\VxExpr (SUM(C1:C2))>%");
    std::wstring answers = script;
    const std::wstring pick = L"(handent \"" + host.handle(table).text() + L"\")";
    for (auto at = answers.find(L'@'); at != std::wstring::npos; at = answers.find(L'@', at + pick.size()))
      answers.replace(at, 1, pick);
    session.script() = headless::Script(answers);
  }
  void evaluateAll() { host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand); }
  std::wstring cell(int row, int column) {
    std::wstring text;
    db.get<headless::Table>(table)->textString(row, column, 0, text);
    return text;
  }
};

TEST(TableEdit, AnEditedCellRecomputesTheTablesFormulas) {
  for (const wchar_t* command : {L"TABLEDIT", L"EDITTABLECELL"}) {
    SCOPED_TRACE(std::wstring_view(command).size());
    TableRig rig(std::wstring(command) + L"\n@\n1\n1\n4\n");
    CCorvaneApp app(rig.host, rig.session);
    ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
    rig.evaluateAll();
    EXPECT_EQ(rig.cell(2, 2), L"35");  // 2 * 10 + 3 * 5
    EXPECT_EQ(rig.session.runScript(), 0) << rig.out;
    EXPECT_EQ(rig.cell(0, 0), L"4");
    EXPECT_EQ(rig.cell(0, 2), L"40");
    EXPECT_EQ(rig.cell(2, 2), L"55");
    EXPECT_TRUE(app.reactorState().editedTableId.isNull());
    EXPECT_FALSE(app.reactorState().tableEditInProgress);
    rig.session.unloadApplication(app);
  }
}

TEST(TableEdit, ACommandThatStopsLeavesNoTableBehind) {
  // Cancelled at the text, then a cell the table does not have: neither changes anything.
  TableRig rig(L"TABLEDIT\n@\n1\n1\n^C\nTABLEDIT\n@\n9\n1\n");
  CCorvaneApp app(rig.host, rig.session);
  ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
  rig.evaluateAll();
  rig.session.runScript();
  EXPECT_NE(rig.out.find(L"The table has no cell in row 9, column 1."), std::wstring::npos) << rig.out;
  EXPECT_EQ(rig.cell(0, 0), L"2.000000");
  EXPECT_EQ(rig.cell(2, 2), L"35");
  EXPECT_TRUE(app.reactorState().editedTableId.isNull());
  EXPECT_FALSE(app.reactorState().tableEditInProgress);
  rig.session.unloadApplication(app);
}

}  // namespace
}  // namespace corvane
