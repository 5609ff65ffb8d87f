// The workbooks manager over fields evaluated against workbooks written by openpyxl: what is
// listed, each kind of replacement with its refusals, the shift with its edge rule, and the
// fields showing the new workbook's cells afterwards.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/linked/linkedtimestamp.h"
#include "plugin/workflows/excelcellfieldsworkbookdialog.h"
#include "workflowrig.h"

namespace corvane {
namespace {

using testing::WorkflowRig;

TEST(WorkbooksManager, ShiftedAddresses) {
  const struct {
    std::wstring cell;
    int rows, columns;
    std::optional<std::wstring> moved;
  } cases[] = {
      {L"$B$3", 1, 0, L"$B$4"},   {L"$B$3", 0, -1, L"$A$3"},     {L"C7", -1, 0, L"$C$6"},
      {L"$Z$2", 0, 1, L"$AA$2"},  {L"$A$5", 0, -1, std::nullopt}, {L"$D$1", -1, 0, std::nullopt},
      {L"$XFD$1", 0, 1, std::nullopt}, {L"$B$1048576", 1, 0, std::nullopt}, {L"Supplier", 1, 0, std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(ShiftedCellAddress(c.cell, c.rows, c.columns), c.moved) << core::toUtf8(c.cell);
}

struct ManagerRig : WorkflowRig {
  std::vector<host::AcDbObjectId> fields;
  explicit ManagerRig(std::wstring_view boxes) : WorkflowRig(boxes) {
    testing::writePriceList(folder / "prices.xlsx", 84);
    testing::writePriceList(folder / "prices2.xlsx", 99);
    run(L"Corvane_Test");  // loads the plug-in
    const std::wstring book = path("prices.xlsx");
    for (const std::wstring& reference : {book + L":Prices:$C$2", book + L":Prices:$B$3", std::wstring(L"prices.xlsx:$C$2")}) {
      fields.push_back(addField(L"%<\\ExcelCell \"" + reference + L"\">%"));
    }
    evaluateAll();
  }
  CExcelCellFieldsWorkbookDialog dialog() {
    CExcelCellFieldsWorkbookDialog made(app->linkedSources(), app->registry());
    made.Load();
    made.selected = {0, 1};
    return made;
  }
  std::wstring shown(std::size_t i) { return field(fields[i]).getDisplayText(); }
};

TEST(WorkbooksManager, ListsFieldsThatNameAWorkbookAWorksheetAndACell) {
  REQUIRE_OPENPYXL();
  ManagerRig d(L"");
  const auto rows = d.dialog().rows();
  const std::wstring book = d.path("prices.xlsx");
  EXPECT_EQ(rows, (std::vector<ExcelCellFieldRow>{{d.fields[0], book, L"Prices", L"$C$2", L"84"},
                                                 {d.fields[1], book, L"Prices", L"$B$3", L"t"}}));
}

TEST(WorkbooksManager, ReplacesAndShiftsTheSelectedFields) {
  REQUIRE_OPENPYXL();
  using Dialog = CExcelCellFieldsWorkbookDialog;
  const struct {
    const char* what;
    std::wstring boxes;
    int (*act)(Dialog&, const std::wstring& other);
    int rewritten;
    std::vector<std::wstring> codes;  // a part of each field's code afterwards
    std::vector<std::wstring> shown;  // what each field shows afterwards; "" for not checked
    std::wstring message;
  } cases[] = {
      {"workbook", L"[Yes]\n", [](Dialog& m, const std::wstring& other) { return m.ReplaceWorkbook(other); }, 2,
       {L"prices2.xlsx:Prices:$C$2\"", L"prices2.xlsx:Prices:$B$3\""}, {L"99", L"t"},
       L"Are you sure you want to replace the selected workbook(s) with "},
      {"workbook and worksheet", L"[Yes]\n",
       [](Dialog& m, const std::wstring& other) { return m.ReplaceWorkbook(other, L"Nope"); }, 2,
       {L"prices2.xlsx:Nope:$C$2\"", L"prices2.xlsx:Nope:$B$3\""}, {L"", L""}, L"prices2.xlsx[Nope]."},
      {"a .csv workbook is refused", L"",
       [](Dialog& m, const std::wstring&) { return m.ReplaceWorkbook(L"prices.csv"); }, 0,
       {L"prices.xlsx:Prices:$C$2\"", L"prices.xlsx:Prices:$B$3\""}, {L"84", L"t"}, L"Invalid new workbook."},
      {"worksheet", L"[Yes]\n", [](Dialog& m, const std::wstring&) { return m.ReplaceWorksheet(L"Other"); }, 2,
       {L":Other:$C$2\"", L":Other:$B$3\""}, {L"", L""},
       L"Are you sure you want to replace the selected worksheet(s) with Other."},
      {"cell", L"[Yes]\n", [](Dialog& m, const std::wstring&) { return m.ReplaceCell(L"$C$4"); }, 2,
       {L":Prices:$C$4\"", L":Prices:$C$4\""}, {L"23.5", L"23.5"},
       L"Are you sure you want to replace the selected cell(s) with $C$4."},
      {"answered No", L"[No]\n", [](Dialog& m, const std::wstring&) { return m.ReplaceCell(L"$C$4"); }, 0,
       {L":Prices:$C$2\"", L":Prices:$B$3\""}, {L"84", L"t"}, L"[Yes] [No] -> No"},
      {"shift down", L"[Yes]\n", [](Dialog& m, const std::wstring&) { return m.ShiftCells(Dialog::kShiftDown); }, 2,
       {L":Prices:$C$3\"", L":Prices:$B$4\""}, {L"1234.5", L"m2"},
       L"Are you sure you want to shift all the cells down?"},
      {"shift left", L"[Yes]\n", [](Dialog& m, const std::wstring&) { return m.ShiftCells(Dialog::kShiftLeft); }, 2,
       {L":Prices:$B$2\"", L":Prices:$A$3\""}, {L"m3", L""}, L"Are you sure you want to shift all the cells left?"},
      {"shift up", L"[Yes]\n", [](Dialog& m, const std::wstring&) { return m.ShiftCells(Dialog::kShiftUp); }, 2,
       {L":Prices:$C$1\"", L":Prices:$B$2\""}, {L"", L"m3"}, L"Are you sure you want to shift all the cells up?"},
      {"shift right", L"[Yes]\n", [](Dialog& m, const std::wstring&) { return m.ShiftCells(Dialog::kShiftRight); }, 2,
       {L":Prices:$D$2\"", L":Prices:$C$3\""}, {L"", L"1234.5"},
       L"Are you sure you want to shift all the cells right?"},
  };
  for (const auto& c : cases) {
    ManagerRig d(c.boxes);
    Dialog manager = d.dialog();
    EXPECT_EQ(c.act(manager, d.path("prices2.xlsx")), c.rewritten) << c.what;
    d.evaluateAll();
    for (std::size_t i = 0; i < 2; ++i) {
      EXPECT_NE(d.code(d.fields[i]).find(c.codes[i]), std::wstring::npos) << c.what << ": " << core::toUtf8(d.code(d.fields[i]));
      if (!c.shown[i].empty()) {
        EXPECT_EQ(d.shown(i), c.shown[i]) << c.what << " field " << i;
      }
    }
    EXPECT_NE(d.printed.find(c.message), std::wstring::npos) << c.what;
    EXPECT_EQ(manager.selected.empty(), c.rewritten > 0) << c.what;
  }
}

TEST(WorkbooksManager, AFieldChangedSinceTheListWasReadIsLeftAsItIs) {
  REQUIRE_OPENPYXL();
  ManagerRig d(L"[Yes]\n");
  CExcelCellFieldsWorkbookDialog manager = d.dialog();
  const std::wstring moved = L"%<\\ExcelCell \"" + d.path("prices.xlsx") + L":Sheet2:$C$2\">%";
  {
    host::AcDbObjectPointer<host::AcDbField> field(d.host, d.fields[0], host::AcDb::kForWrite);
    ASSERT_EQ(field->setFieldCode(moved), host::Acad::eOk);
  }
  EXPECT_EQ(manager.ReplaceWorksheet(L"Other"), 1);
  EXPECT_EQ(d.code(d.fields[0]), moved);
  EXPECT_NE(d.printed.find(L"Failed to find :Prices: in the field code " + moved + L"."), std::wstring::npos);
  EXPECT_NE(d.code(d.fields[1]).find(L":Other:$B$3\""), std::wstring::npos);
}

TEST(WorkbooksManager, TheTimeStampNamesTheNewWorkbooksTime) {
  REQUIRE_OPENPYXL();
  const struct {
    const char* what;
    std::string workbook;
    bool valid;
  } cases[] = {{"a workbook that is there", "prices2.xlsx", true}, {"one that is not", "gone.xlsx", false}};
  for (const auto& c : cases) {
    ManagerRig d(L"[Yes]\n");
    CExcelCellFieldsWorkbookDialog manager = d.dialog();
    manager.selected = {0};
    ASSERT_EQ(manager.ReplaceWorkbook(d.path(c.workbook)), 1) << c.what;
    const host::ResBufList stamp = d.field(d.fields[0]).xData(kTimeStampApp);
    ASSERT_GE(stamp.size(), 2u) << c.what;
    const std::wstring text = std::get<std::wstring>(stamp[1].value);
    EXPECT_EQ(text == L"Invalid DateTime", !c.valid) << c.what << ": " << core::toUtf8(text);
    EXPECT_EQ(ReadTimeStamp(d.field(d.fields[0])).has_value(), c.valid) << c.what;
  }
}

}  // namespace
}  // namespace corvane
