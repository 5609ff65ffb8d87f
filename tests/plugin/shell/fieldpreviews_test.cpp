// What the field dialog previews. A formula in a table cell previews against its own table, as
// it evaluates in place.
#include <gtest/gtest.h>

#include <string>

#include "core/utf8.h"
#include "host/acdbfield.h"
#include "plugin/formula/asdkformulaoptiondialog.h"
#include "plugin/formula/portformulapagehost.h"
#include "plugin/measure/dialogrig.h"

namespace corvane {
namespace {

using host::AcDbField;
using host::AcDbObjectId;

// A table of quantities and prices whose last column multiplies them, as a drawing's table
// computes amounts.
struct PricedTable : testing::DialogRig {
  PortFormulaPageHost pageHost{host, prompts, ui};
  AcDbObjectId priced = addTable(
      {{L"Item", L"Qty", L"Price", L"Amount"}, {L"Sand", L"2.5", L"40", L""}, {L"Gravel", L"4", L"35.5", L""}});
  // The formula field a cell holds: the cell's own text field holds it as its child.
  AcDbObjectId formulaIn(int row, int column, const std::wstring& code) {
    EXPECT_EQ(table(priced).putTextString(row, column, code), host::Acad::eOk);
    const AcDbObjectId text = table(priced).fieldId(row, column);
    return field(text).children().at(0);
  }
};

TEST(FormulaPreview, AFormulaInATableCellPreviewsAgainstItsTable) {
  struct Case {
    const char* what;
    std::wstring code;
    std::wstring value;  // worked out from the cells
  } const cases[] = {
      {"two cells of its row", L"%<\\VxExpr (B2*C2) \\f \"%lu2%pr2\">%", L"100.00"},
      {"a range of the table", L"%<\\VxExpr (SUM(B2:C3))>%", L"82"},
      {"a text cell", L"%<\\VxExpr (UCASE(A3))>%", L"GRAVEL"},
  };
  for (const auto& c : cases) {
    PricedTable d;
    const AcDbObjectId field = d.formulaIn(1, 3, c.code);
    d.evaluateAll();
    ASSERT_EQ(d.field(field).evaluationStatus(), AcDbField::kSuccess) << c.what;
    const std::wstring inPlace = d.field(field).getDisplayText();
    EXPECT_EQ(inPlace, c.value) << c.what;

    // The walk up from the cell's field, and from the field nested in it, finds the table.
    EXPECT_EQ(d.host.owningTable(d.field(field).ownerId()), d.priced) << c.what;
    EXPECT_EQ(d.host.owningTable(field), d.priced) << c.what;

    // The page hands its choice to the application, as the field dialog's pages do.
    AsdkFormulaOptionDialog page(d.pageHost, {}, [&d](AcDbObjectId table) { d.app.setDialogOwnerTable(table); });
    ASSERT_EQ(page.setFieldToEdit(d.field(field)), AcDbField::kSuccess) << c.what;
    EXPECT_EQ(d.app.dialogOwnerTable(), d.priced) << c.what << ": the field's table becomes the owner table";
    EXPECT_EQ(page.ownerTableText(), d.handleOf(d.priced)) << c.what;
    ASSERT_TRUE(page.onPreview()) << c.what;
    EXPECT_EQ(page.previewText(), inPlace) << c.what;
    EXPECT_TRUE(d.ui.boxes().empty()) << c.what << ": nobody is asked for a table";
  }
}

TEST(FormulaPreview, AFormulaOutsideTablesChoosesNoTable) {
  PricedTable d;
  const AcDbObjectId field = d.field(d.addFieldText(L"%<\\VxExpr (6*7)>%")).children().at(0);
  d.evaluateAll();
  EXPECT_TRUE(d.host.owningTable(d.field(field).ownerId()).isNull());
  EXPECT_TRUE(d.host.owningTable({}).isNull());
  bool chose = false;
  AsdkFormulaOptionDialog page(d.pageHost, {}, [&chose](AcDbObjectId) { chose = true; });
  ASSERT_EQ(page.setFieldToEdit(d.field(field)), AcDbField::kSuccess);
  EXPECT_FALSE(chose);
  EXPECT_EQ(page.ownerTableText(), L"");
}

}  // namespace
}  // namespace corvane
