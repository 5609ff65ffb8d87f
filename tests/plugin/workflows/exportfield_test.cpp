// The export of a field's value into the active cell of the user's Excel, with the note that
// names where it came from, through the dialogs of the export command.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "core/printf.h"
#include "core/utf8.h"
#include "host/acdbtable.h"
#include "plugin/linked/linkeddrawing.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/workflows/cexportfieldbuttondialog.h"
#include "plugin/workflows/cexportfiledtoexceldialog.h"
#include "plugin/workflows/exportfieldowners.h"
#include "plugin/workflows/updatefieldsinexcel.h"
#include "support/editorsession.h"
#include "xlsx/bookapplication.h"

namespace corvane {
namespace {

using testing::LinkedDrawing;

// The working drawing with a text to read, and the user's Excel with a workbook saved beside it.
struct ExportDrawing : LinkedDrawing {
  host::AcDbObjectId text = addText(L"North wing");
  std::shared_ptr<host::ExcelWorkbook> book;

  explicit ExportDrawing(bool excelRunning = true, const std::string& bookName = "book.xlsx") {
    if (!excelRunning) return;
    book = *excel.start().addWorkbook();
    if (!bookName.empty()) {
      std::filesystem::create_directories((folder / bookName).parent_path());
      EXPECT_TRUE(book->saveAs(path(bookName)));
    }
  }
  std::wstring idCode() const {
    return core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).TextString>%%", text.asOldId());
  }
  std::wstring handleCode() const {
    return L"%<\\AcObjProp Object(%<\\_ObjHandle " + host.handle(text).text() + L">%).TextString>%";
  }
  host::ExcelWorksheet& sheet() { return *book->activeSheet(); }
  std::shared_ptr<host::ExcelRange> cell(const wchar_t* address) { return *sheet().range(address); }
  void select(const wchar_t* address) { cell(address)->select(); }
  std::wstring activeCell() { return excel.start().activeCell()->address(); }
  std::wstring valueAt(const wchar_t* address) { return *cell(address)->text(); }
  std::optional<std::wstring> noteAt(const wchar_t* address) { return *cell(address)->comment(); }
};

TEST(ExportFieldButton, PutsTheValueAndTheNoteIntoTheActiveCellThenMoves) {
  struct Case {
    int direction;
    const wchar_t* from;
    const wchar_t* next;
    bool oldNote;  // the cell had a note of its own, which the export replaces
  } const cases[] = {
      {kMoveDown, L"A1", L"$A$2", false},
      {kMoveRight, L"B3", L"$C$3", true},
      {kMoveDown, L"$AB$12", L"$AB$13", false},
  };
  for (const auto& c : cases) {
    ExportDrawing d;
    d.select(c.from);
    if (c.oldNote) {
      ASSERT_TRUE(d.cell(c.from)->addComment(L"checked by hand"));
    }
    CExportFieldButtonDialog button(d.sources(), d.app.registry());
    ASSERT_TRUE(button.Export(d.idCode(), kFullPathType, c.direction)) << d.printed;
    EXPECT_EQ(d.activeCell(), c.next);
    EXPECT_EQ(d.valueAt(c.from), L"North wing");
    EXPECT_EQ(d.noteAt(c.from), d.path("site.dxf") + L"|" + d.handleCode());
    const std::wstring target = L"book.xlsx[Sheet1]:" + d.cell(c.from)->address();
    EXPECT_EQ(button.target(), target);
    EXPECT_NE(d.printed.find(L"\nSuccessfully export " + d.idCode() + L" to " + target + L".\n"), std::wstring::npos);
  }
}

TEST(ExportFieldButton, RefusesWithItsMessageAndLeavesExcelAsItWas) {
  struct Case {
    const char* name;
    bool drawingSaved;
    bool excelRunning;
    bool badCode;
    int pathType;
    std::string bookName;  // empty: a workbook never saved
    std::wstring message;
  } const cases[] = {
      {"unsaved drawing", false, true, false, kFullPathType, "book.xlsx",
       L"You must save the drawing before exporting the field."},
      // Said before Excel is looked for: without Excel the message is the same.
      {"unsaved drawing, no Excel", false, false, false, kFullPathType, "book.xlsx",
       L"You must save the drawing before exporting the field."},
      {"no Excel", true, false, false, kFullPathType, "book.xlsx", L"Please start Excel and open a workbook first."},
      {"field that fails", true, true, true, kFullPathType, "book.xlsx", L"Cannot evaluate the current field.\n"},
      {"relative path from a workbook never saved", true, true, false, kRelativePathType, "",
       L"Failed to create a relative path from Book1 to "},
  };
  for (const auto& c : cases) {
    ExportDrawing d(c.excelRunning, c.bookName);
    if (!c.drawingSaved) d.db.setFilename(L"");
    if (d.book) d.select(L"C4");
    const bool dirtyBefore = d.book && d.book->dirty();
    const std::wstring code = c.badCode ? L"%<\\AcObjProp Object(%<\\_ObjId 987654321>%).TextString>%" : d.idCode();
    CExportFieldButtonDialog button(d.sources(), d.app.registry());
    EXPECT_FALSE(button.Export(code, c.pathType, kMoveDown)) << c.name;
    EXPECT_NE(d.printed.find(c.message), std::wstring::npos) << c.name << "\n" << core::toUtf8(d.printed);
    EXPECT_EQ(d.printed.find(L"Successfully export"), std::wstring::npos) << c.name;
    if (d.book) {
      EXPECT_EQ(d.book->dirty(), dirtyBefore) << c.name;
      EXPECT_EQ(d.activeCell(), L"$C$4") << c.name;
      EXPECT_EQ(d.noteAt(L"C4"), std::nullopt) << c.name;
    }
  }
}

TEST(ExportFieldButton, WritesARelativePathFromTheWorkbooksFolder) {
  ExportDrawing d(true, "tables/book.xlsx");
  d.select(L"A1");
  CExportFieldButtonDialog button(d.sources(), d.app.registry());
  ASSERT_TRUE(button.Export(d.idCode(), kRelativePathType, kMoveDown)) << d.printed;
  EXPECT_EQ(d.noteAt(L"A1"), L"../site.dxf|" + d.handleCode());
}

TEST(TableFieldCode, SplitsOnlyACodeBehindATableReference) {
  struct Case {
    std::wstring code;
    bool split;
    std::wstring table, own;
  } const cases[] = {
      {L"Table(<2F>).%<\\VxExpr (A1+B1)>%", true, L"2F", L"%<\\VxExpr (A1+B1)>%"},
      {L"TABLE(2f).%<\\VxExpr (SUM(A1:B2))>%", true, L"2f", L"%<\\VxExpr (SUM(A1:B2))>%"},
      {L"table(<<A0>>).%<\\VxExpr (A1) \\f \"%lu2\">%", true, L"A0", L"%<\\VxExpr (A1) \\f \"%lu2\">%"},
      {L"Table(<2F>).$B$3", false, L"", L""},  // a table cell field's reference, no code behind it
      {L"Table(<>).%<\\VxExpr (A1)>%", false, L"", L""},
      {L" Table(<2F>).%<\\VxExpr (A1)>%", false, L"", L""},
      {L"%<\\VxExpr (A1+B1)>%", false, L"", L""},
      {L"%<\\TableCell Table(<2F>).$B$3>%", false, L"", L""},
  };
  for (const auto& c : cases) {
    const auto parts = SplitTableFieldCode(c.code);
    ASSERT_EQ(parts.has_value(), c.split) << core::toUtf8(c.code);
    if (!parts) continue;
    EXPECT_EQ(parts->table, c.table);
    EXPECT_EQ(parts->code, c.own);
    EXPECT_EQ(SplitTableFieldCode(TableFieldCode(parts->table, parts->code))->code, c.own);
  }
}

// A formula in a table cell goes out with the value its cell shows, and comes back from the
// same table after a cell it reads has changed.
TEST(ExportFieldsToExcelDialog, FormulaOfATableCellKeepsItsTable) {
  ExportDrawing d;
  const auto table = d.addTable({{L"1", L"2", L"%<\\VxExpr (A1+B1)>%"}, {L"10", L"", L"%<\\AcVar LUPREC>%"}});
  d.evaluateAll();
  const std::size_t objects = d.db.objectIds().size();
  const std::wstring handle = d.host.handle(table).text();
  const std::vector<ExportableField> fields = FieldsOfObject(d.host, table);
  ASSERT_EQ(fields.size(), 2u);
  EXPECT_EQ(fields[0].code, L"Table(<" + handle + L">).%<\\VxExpr (A1+B1)>%");
  EXPECT_EQ(fields[1].code, L"%<\\AcVar LUPREC>%");  // no formula: no table needed

  d.select(L"B2");
  CExportFiledToExcelDialog dialog(d.sources(), d.app.registry());
  ASSERT_TRUE(dialog.SetOwner(table));
  ASSERT_EQ(dialog.OnOK(), 2) << core::toUtf8(d.printed);
  EXPECT_EQ(d.valueAt(L"B2"), L"3");
  EXPECT_EQ(d.valueAt(L"B3"), L"4");
  EXPECT_EQ(d.noteAt(L"B2"), d.path("site.dxf") + L"|" + fields[0].code);
  // A note whose table is gone cannot be evaluated.
  ASSERT_TRUE(d.cell(L"C2")->addComment(d.path("site.dxf") + L"|Table(<FFFFF>).%<\\VxExpr (A1+B1)>%"));

  {
    host::AcDbObjectPointer<host::AcDbTable> open(d.host, table, host::AcDb::kForWrite);
    ASSERT_EQ(open->setValue(0, 0, L"5", host::AcValueOptions::kConvertTextToValue), host::Acad::eOk);
  }
  UpdateFieldsInExcel update(
      d.sources(), nullptr, nullptr,
      {UpdateFieldsInExcel::OtherDrawings::kAll, UpdateFieldsInExcel::UnreadableDrawing::kLeaveCells});
  ASSERT_TRUE(update.Update(*d.book, d.sheet()));
  EXPECT_EQ(d.valueAt(L"B2"), L"7");
  EXPECT_EQ(d.valueAt(L"B3"), L"4");
  EXPECT_EQ(d.valueAt(L"C2"), L"####");
  EXPECT_EQ(update.summary().fieldsFailed, 1);
  EXPECT_EQ(d.db.objectIds().size(), objects);  // the temporary fields are gone
}

// The command on the command line: the two choices by keyword, kept in the settings, then the
// object picked by its handle.
TEST(ExportFieldsToExcelCommand, TakesTheChoicesThenThePickedObject) {
  testing::EditorSession s;
  s.db.setFilename(core::fromUtf8((s.folder / "site.dxf").string()));
  const auto text = s.db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 0.2, L""));
  headless::attachField(s.db, text, L"%<\\AcVar Filename>%");
  const std::wstring handle = s.host.handle(text).text();
  s.session.script().append(L"Direction\nRight\nPath\nRelative\n(handent \"" + handle + L"\")\n");
  xlsx::BookAutomation excel;
  s.session.setExcel(&excel);
  auto book = *excel.start().addWorkbook();
  ASSERT_TRUE(book->saveAs(core::fromUtf8((s.folder / "book.xlsx").string())));
  (*book->activeSheet()->range(L"B2"))->select();
  CCorvaneApp app(s.host, s.session);
  ASSERT_EQ(s.session.loadApplication(app), host::AcRx::kRetOK);
  s.session.runCommand(L"Corvane_Export_Fields_to_Excel");
  EXPECT_EQ(app.registry().get(settings::kExportFieldMoveDirection), kMoveRight);
  EXPECT_EQ(app.registry().get(settings::kExportFieldPathType), kRelativePathType);
  s.session.unloadApplication(app);
  EXPECT_EQ(excel.start().activeCell()->address(), L"$C$2") << core::toUtf8(s.out);
  EXPECT_EQ(*(*book->activeSheet()->range(L"B2"))->comment(), L"./site.dxf|%<\\AcVar Filename>%");
  EXPECT_EQ(*(*book->activeSheet()->range(L"B2"))->text(), L"site.dxf");
}

TEST(ExportFieldOwners, FindsTheFieldsOfTextsAttributesAndTableCells) {
  LinkedDrawing d;
  const auto circle = d.addCircle(1);
  const std::wstring area = core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).Area>%%", circle.asOldId());
  const auto plain = d.addText(L"no field");
  const auto text = d.addText();
  headless::attachField(d.db, text, L"Area: " + area + L" m2");
  const auto table = d.addTable({{L"a", L"b"}, {L"c", L"d"}});
  {
    host::AcDbObjectPointer<host::AcDbTable> open(d.host, table, host::AcDb::kForWrite);
    ASSERT_TRUE(open);
    ASSERT_EQ(open->setFieldId(1, 0, d.addField(area)), host::Acad::eOk);
  }
  EXPECT_TRUE(FieldsOfObject(d.host, plain).empty());
  const auto ofText = FieldsOfObject(d.host, text);
  ASSERT_EQ(ofText.size(), 1u);
  EXPECT_EQ(ofText[0].code, area);  // the field inside the words, not the words
  const auto ofTable = FieldsOfObject(d.host, table);
  ASSERT_EQ(ofTable.size(), 1u);
  EXPECT_EQ(ofTable[0].code, area);
  const auto all = FieldsOfDrawing(d.host, d.db);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].owner, text);
  EXPECT_EQ(all[1].owner, table);
}

TEST(ExportFiledToExcelDialog, KeepsItsChoicesAndExportsEveryFieldOfTheObject) {
  ExportDrawing d;
  const auto circle = d.addCircle(2);
  const std::wstring area =
      core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).Area \\f \"%%lu2%%pr1\">%%", circle.asOldId());
  const auto holder = d.addText(L"");
  headless::attachField(d.db, holder, L"r " + area + L" and " + d.idCode());
  d.select(L"D1");
  {
    CExportFiledToExcelDialog dialog(d.sources(), d.app.registry());
    EXPECT_EQ(dialog.pathType, kFullPathType);
    EXPECT_EQ(dialog.moveDirection, kMoveDown);
    EXPECT_FALSE(dialog.SetOwner(d.addCircle(3)));
    ASSERT_TRUE(dialog.SetOwner(holder));
    ASSERT_EQ(dialog.fields().size(), 2u);
    dialog.moveDirection = kMoveRight;
    EXPECT_EQ(dialog.OnOK(), 2) << core::toUtf8(d.printed);
  }
  EXPECT_EQ(d.valueAt(L"D1"), L"12.6");
  EXPECT_EQ(d.valueAt(L"E1"), L"North wing");
  EXPECT_EQ(d.activeCell(), L"$F$1");
}

}  // namespace
}  // namespace corvane
