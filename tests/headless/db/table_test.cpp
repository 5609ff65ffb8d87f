#include "headless/db/table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "headless/db/fieldlist.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using corvane::testing::TestDrawing;
using host::AcDb::CellContentType;
using host::AcValue;
namespace Opt = host::AcValueOptions;

std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

TEST(Table, CellsTellTheirContentDataTypeAndText) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"Title", L"", L"12"}, {L"12.5", L"{\\fArial|b1;Bold}", L"%<\\AcVar LUPREC>%"}});
  auto& table = d.table(tableId);
  struct Case {
    int row, column;
    CellContentType content;
    AcValue::DataType type;
    std::wstring text;
  } const cases[] = {
      {0, 0, host::AcDb::kCellContentTypeValue, AcValue::kGeneral, L"Title"},
      {0, 1, host::AcDb::kCellContentTypeUnknown, AcValue::kGeneral, L""},
      {0, 2, host::AcDb::kCellContentTypeValue, AcValue::kLong, L"12"},
      {1, 0, host::AcDb::kCellContentTypeValue, AcValue::kDouble, L"12.500000"},
      {1, 1, host::AcDb::kCellContentTypeValue, AcValue::kGeneral, L"{\\fArial|b1;Bold}"},
      // Texts leave a cell of any type as it is; numbers give it their type. A field shows
      // its code until it is evaluated.
      {1, 2, host::AcDb::kCellContentTypeField, AcValue::kUnknown, L"%<\\AcVar LUPREC>%"},
      {2, 0, host::AcDb::kCellContentTypeUnknown, AcValue::kUnknown, L""},  // outside
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.row << "," << c.column);
    EXPECT_EQ(table.contentType(c.row, c.column), c.content);
    AcValue::DataType type = AcValue::kUnknown;
    Opt::UnitType unit = Opt::kArea;
    const auto es = table.getDataType(c.row, c.column, type, unit);
    if (table.isCell(c.row, c.column)) {
      EXPECT_EQ(es, host::Acad::eOk);
      EXPECT_EQ(type, c.type);
      EXPECT_EQ(unit, Opt::kUnitless);
    } else {
      EXPECT_EQ(es, host::Acad::eInvalidIndex);
    }
    EXPECT_EQ(table.textString(c.row, c.column), c.text);
  }
  EXPECT_EQ(table.numRows(), 2);
  EXPECT_EQ(table.numColumns(), 3);

  // Evaluation puts the field's text into the cell; the cell's value is the field's.
  d.evaluateAll();
  EXPECT_EQ(table.textString(1, 2), L"4");
  EXPECT_EQ(table.value(1, 2), AcValue(L"4"));
  EXPECT_EQ(table.getFormula(1, 2), L"%<\\AcVar LUPREC>%");
  EXPECT_EQ(table.getFormula(0, 0), L"");
  const auto field = table.fieldId(1, 2);
  EXPECT_EQ(d.field(field).ownerId(), tableId);
  EXPECT_EQ(d.field(field).evaluatorId(), L"_text");
  int row = -1, column = -1;
  ASSERT_TRUE(table.findField(field, row, column));
  EXPECT_EQ(row, 1);
  EXPECT_EQ(column, 2);
  EXPECT_FALSE(table.findField(d.field(field).getChild(0), row, column));
  EXPECT_FALSE(table.findField({}, row, column));
}

// The codes themselves are the multiline text's; a cell asked for its plain text goes through them.
TEST(Table, PlainTextDropsMultilineTextCodes) {
  TestDrawing d;
  const std::wstring stored[] = {L"{\\fArial|b1|i0|c0|p34;Title}", L"Line 1\\PLine 2 %%d"};
  const std::wstring plain[] = {L"Title", L"Line 1\nLine 2 \u00B0"};
  auto& table = d.table(d.addTable({{stored[0]}, {stored[1]}}));
  for (int row = 0; row < 2; ++row) {
    std::wstring text;
    ASSERT_EQ(table.textString(row, 0, Opt::kIgnoreMtextFormat, text), host::Acad::eOk);
    EXPECT_EQ(text, plain[row]);
    EXPECT_EQ(table.textString(row, 0), stored[row]);
  }
}

TEST(Table, SettingTextsValuesAndFieldsNeedsAWriteOpen) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"", L""}, {L"", L""}});
  {
    host::AcDbObjectPointer<host::AcDbTable> read(d.host, tableId, host::AcDb::kForRead);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->setValue(0, 0, AcValue(1)), host::Acad::eNotOpenForWrite);
    EXPECT_EQ(read->setTextString(0, 0, L"x"), host::Acad::eNotOpenForWrite);
    EXPECT_EQ(read->setSubSelection(0, 0, 0, 0), host::Acad::eNotOpenForWrite);
    EXPECT_EQ(read->insertRows(0, 5.0), host::Acad::eNotOpenForWrite);
  }
  host::AcDbObjectPointer<host::AcDbTable> table(d.host, tableId, host::AcDb::kForWrite);
  ASSERT_TRUE(table);
  struct Case {
    std::wstring text;
    int option;
    CellContentType content;
    AcValue expected;  // for value cells
  } const cases[] = {
      {L"42", Opt::kConvertTextToValue, host::AcDb::kCellContentTypeValue, AcValue(42)},
      {L" -7 ", Opt::kConvertTextToValue, host::AcDb::kCellContentTypeValue, AcValue(-7)},
      {L"42", Opt::kParseOptionNone, host::AcDb::kCellContentTypeValue, AcValue(L"42")},
      {L"2.5", Opt::kConvertTextToValue, host::AcDb::kCellContentTypeValue, AcValue(2.5)},
      {L"1e3", Opt::kConvertTextToValue, host::AcDb::kCellContentTypeValue, AcValue(1000.0)},
      {L"3000000000", Opt::kConvertTextToValue, host::AcDb::kCellContentTypeValue, AcValue(3e9)},
      {L"12 apples", Opt::kConvertTextToValue, host::AcDb::kCellContentTypeValue, AcValue(L"12 apples")},
      {L"%<\\AcVar LUNITS>%", Opt::kParseOptionNone, host::AcDb::kCellContentTypeValue,
       AcValue(L"%<\\AcVar LUNITS>%")},
      {L"u=%<\\AcVar LUNITS>%", Opt::kParseTextForFieldCode, host::AcDb::kCellContentTypeField, AcValue()},
  };
  // Each case in a fresh cell of the second column.
  ASSERT_EQ(table->insertRows(2, 5.0, static_cast<int>(std::size(cases))), host::Acad::eOk);
  int row = 2;
  for (const auto& c : cases) {
    SCOPED_TRACE(narrow(c.text));
    ASSERT_EQ(table->setValue(row, 1, c.text, c.option), host::Acad::eOk);
    EXPECT_EQ(table->contentType(row, 1), c.content);
    if (c.content == host::AcDb::kCellContentTypeValue) {
      EXPECT_EQ(table->value(row, 1), c.expected);
    }
    ++row;
  }
  // A cell typed for texts keeps numbers as texts.
  ASSERT_EQ(table->setValue(0, 1, L"x", Opt::kParseOptionNone), host::Acad::eOk);
  d.table(tableId).editCell(0, 1).format.dataType = AcValue::kString;
  ASSERT_EQ(table->setValue(0, 1, L"42", Opt::kConvertTextToValue), host::Acad::eOk);
  EXPECT_EQ(table->value(0, 1), AcValue(L"42"));
  ASSERT_EQ(table->setValue(0, 1, L"u=%<\\AcVar LUNITS>%", Opt::kParseTextForFieldCode), host::Acad::eOk);
  EXPECT_EQ(table->setValue(2 + static_cast<int>(std::size(cases)), 0, AcValue(1)), host::Acad::eInvalidIndex);
  EXPECT_EQ(table->setValue(0, -1, AcValue(1)), host::Acad::eInvalidIndex);

  // Replacing a field by a value erases the field and takes it off the field list.
  const auto field = table->fieldId(0, 1);
  ASSERT_FALSE(field.isNull());
  ASSERT_EQ(table->setValue(0, 1, AcValue(5)), host::Acad::eOk);
  EXPECT_TRUE(table->fieldId(0, 1).isNull());
  EXPECT_TRUE(d.field(field).isErased());
  const auto& listed = d.db.get<FieldList>(d.db.fieldListId())->ids();
  EXPECT_EQ(std::count(listed.begin(), listed.end(), field), 0);
  EXPECT_EQ(table->textString(0, 1), L"5");

  // A field made elsewhere can be put into a cell; taking it out keeps its last text.
  const auto loose = d.addField(L"%<\\AcVar LUPREC>%");
  d.host.engine().evaluateFields(&d.db, {loose}, host::AcDbField::kDemand);
  ASSERT_EQ(table->setFieldId(1, 0, loose), host::Acad::eOk);
  EXPECT_EQ(d.field(loose).ownerId(), tableId);
  EXPECT_EQ(table->textString(1, 0), L"4");
  EXPECT_EQ(table->value(1, 0), AcValue(4));
  ASSERT_EQ(table->setFieldId(1, 0, {}), host::Acad::eOk);
  EXPECT_EQ(table->contentType(1, 0), host::AcDb::kCellContentTypeValue);
  EXPECT_EQ(table->value(1, 0), AcValue(L"4"));
  EXPECT_EQ(table->setFieldId(1, 1, tableId), host::Acad::eWrongObjectType);
}

TEST(Table, FieldCellsFollowEvaluationAndMarkTheTableChanged) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"%<\\AcVar LUNITS>%", L"plain"}});
  auto& table = d.table(tableId);
  table.record().modified = false;
  d.evaluateAll();
  EXPECT_EQ(table.textString(0, 0), L"2");
  EXPECT_TRUE(table.record().modified);

  table.record().modified = false;
  d.evaluateAll();  // nothing changed
  EXPECT_FALSE(table.record().modified);

  host::ResBuf lunits{host::RTSHORT, std::int32_t{4}};
  ASSERT_EQ(d.db.setSysVar(L"LUNITS", lunits), host::Acad::eOk);
  d.evaluateAll();
  EXPECT_EQ(table.textString(0, 0), L"4");
  EXPECT_TRUE(table.record().modified);
  EXPECT_EQ(table.textString(0, 1), L"plain");
}

// Table frame used below: insertion point (10, 20), rows 10 and 20 high, columns 30 and 40
// wide, rotated by 30 degrees.
struct Frame {
  host::AcGePoint3d origin{10.0, 20.0, 0.0};
  double angle = 3.14159265358979323846 / 6.0;
  host::AcGePoint3d world(double x, double y, double z = 0.0) const {
    // x along the rows, y up the page, as the table's own axes.
    return {origin.x + x * std::cos(angle) - y * std::sin(angle), origin.y + x * std::sin(angle) + y * std::cos(angle),
            z};
  }
};

TEST(Table, HitTestOnARotatedTable) {
  TestDrawing d;
  const Frame frame;
  auto& table = d.table(d.addTable({{L"a", L"b"}, {L"c", L"d"}}, frame.origin));
  table.setDirection({std::cos(frame.angle), std::sin(frame.angle), 0.0});
  table.setRowHeight(0, 10.0);
  table.setRowHeight(1, 20.0);
  table.setColumnWidth(0, 30.0);
  table.setColumnWidth(1, 40.0);
  const host::AcGeVector3d down{0.0, 0.0, -1.0};
  struct Case {
    const char* name;
    host::AcGePoint3d point;
    host::AcGeVector3d view;
    double aperture;
    bool hit;
    int row, column;
  } const cases[] = {
      {"first cell", frame.world(5, -5), down, 0, true, 0, 0},
      {"second column", frame.world(35, -5), down, 0, true, 0, 1},
      {"second row", frame.world(5, -15), down, 0, true, 1, 0},
      {"last cell", frame.world(69, -29), down, 0, true, 1, 1},
      {"on the border of the columns", frame.world(30, -5), down, 0, true, 0, 1},
      {"right of the table", frame.world(71, -5), down, 0, false, -1, -1},
      {"above the table", frame.world(5, 1), down, 0, false, -1, -1},
      {"below the table", frame.world(5, -31), down, 0, false, -1, -1},
      {"above, within the aperture", frame.world(5, 1), down, 2, true, 0, 0},
      {"right, within the aperture", frame.world(71, -29), down, 2, true, 1, 1},
      // Unrotated this point would be inside the first cell.
      {"inside the unrotated outline only", {75.0, -5.0, 0.0}, down, 0, false, -1, -1},
      // Seen from above, a point over the table hits the cell below it; seen at a slant the
      // same point lands elsewhere on the plane.
      {"point above the plane", frame.world(5, -5, 50), down, 0, true, 0, 0},
      {"slanted view", frame.world(5, -5, 30), {std::cos(frame.angle), std::sin(frame.angle), -1.0}, 0, true, 0, 1},
      {"view along the plane", frame.world(5, -5, 10), {1.0, 0.0, 0.0}, 0, false, -1, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    int row = -1;
    int column = -1;
    EXPECT_EQ(table.hitTest(c.point, c.view, c.aperture, c.aperture, row, column), c.hit);
    EXPECT_EQ(row, c.row);
    EXPECT_EQ(column, c.column);
  }
}

TEST(Table, HitTestFollowsFlowDirectionAndMergedCells) {
  TestDrawing d;
  // A quarter turn: the rows run along +Y and go down the page towards +X.
  auto& table = d.table(d.addTable({{L"a", L"b", L"c"}, {L"d", L"e", L"f"}}, {0, 0, 0}, 10.0, 30.0));
  table.setDirection({0.0, 2.0, 0.0});
  enum Change { kNone, kUpward, kMerged };
  struct Step {
    Change change;  // made before the hit test
    host::AcGePoint3d point;
    int row, column;  // -1: no hit
  } const steps[] = {
      {kNone, {5.0, 35.0, 0.0}, 0, 1},
      {kNone, {15.0, 65.0, 0.0}, 1, 2},
      {kNone, {-5.0, 35.0, 0.0}, -1, -1},
      // Growing upward, the first row lies on the other side of the insertion point.
      {kUpward, {-5.0, 35.0, 0.0}, 0, 1},
      {kNone, {-15.0, 35.0, 0.0}, 1, 1},
      {kNone, {5.0, 35.0, 0.0}, -1, -1},
      // A merged range answers with its top-left cell.
      {kMerged, {-15.0, 65.0, 0.0}, 0, 1},
  };
  for (const auto& step : steps) {
    if (step.change == kUpward) table.setFlowDirection(host::AcDb::kBtoT);
    if (step.change == kMerged) table.mergeCells({0, 1, 1, 2});
    int row = -1, column = -1;
    const bool hit = table.hitTest(step.point, {0.0, 0.0, -1.0}, row, column);
    EXPECT_EQ(hit, step.row >= 0) << step.point.x << "," << step.point.y;
    if (step.row >= 0) {
      EXPECT_EQ(std::vector<int>({row, column}), std::vector<int>({step.row, step.column}));
    }
  }
  int minRow = -1, maxRow = -1, minColumn = -1, maxColumn = -1;
  EXPECT_TRUE(table.isMergedCell(1, 2, &minRow, &maxRow, &minColumn, &maxColumn));
  EXPECT_EQ(std::vector<int>({minRow, maxRow, minColumn, maxColumn}), std::vector<int>({0, 1, 1, 2}));
  EXPECT_FALSE(table.isMergedCell(1, 0));
}

TEST(Table, InsertedRowsAndColumnsInheritTheFormat) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"Item", L"Area"}, {L"Room", L"12.25"}}, {}, 8.0, 50.0);
  auto& table = d.table(tableId);
  table.setRowHeight(1, 6.5);
  table.setColumnWidth(1, 35.0);
  table.editCell(1, 1).format = {AcValue::kDouble, Opt::kArea, L"%lu2%pr1", 2.5, 5};
  table.mergeCells({0, 0, 0, 1});

  host::AcDbObjectPointer<host::AcDbTable> open(d.host, tableId, host::AcDb::kForWrite);
  ASSERT_TRUE(open);
  ASSERT_EQ(open->setSubSelection(1, 1, 0, 1), host::Acad::eOk);
  ASSERT_EQ(open->insertRowsAndInherit(2, 1, 2), host::Acad::eOk);
  ASSERT_EQ(open->numRows(), 4);
  for (int r = 2; r < 4; ++r) {
    SCOPED_TRACE(r);
    EXPECT_EQ(open->rowHeight(r), 6.5);
    EXPECT_EQ(table.rowOrigin(r), 1);
    EXPECT_EQ(table.cell(r, 1).format, table.cell(1, 1).format);
    EXPECT_EQ(open->contentType(r, 0), host::AcDb::kCellContentTypeUnknown);
  }
  // The inherited number format shows in a value set into the new row.
  ASSERT_EQ(open->setValue(3, 1, AcValue(7.25)), host::Acad::eOk);
  EXPECT_EQ(open->textString(3, 1), L"7.3");
  AcValue::DataType type = AcValue::kUnknown;
  Opt::UnitType unit = Opt::kUnitless;
  ASSERT_EQ(open->getDataType(3, 1, type, unit), host::Acad::eOk);
  EXPECT_EQ(type, AcValue::kDouble);
  EXPECT_EQ(unit, Opt::kArea);

  // Columns likewise, inserted in the middle: the cells right of it move along.
  ASSERT_EQ(open->insertColumnsAndInherit(1, 1, 1), host::Acad::eOk);
  ASSERT_EQ(open->numColumns(), 3);
  EXPECT_EQ(open->columnWidth(1), 35.0);
  EXPECT_EQ(table.columnOrigin(1), 1);
  EXPECT_EQ(table.columnOrigin(2), 1);
  EXPECT_EQ(table.columnOrigin(0), 0);
  EXPECT_EQ(table.cell(1, 1).format.format, L"%lu2%pr1");
  EXPECT_EQ(open->textString(1, 1), L"");
  AcValue moved(12.25);
  moved.setFormat(L"%lu2%pr1");  // a value carries the format its cell shows it with
  EXPECT_EQ(open->value(1, 2), moved);
  EXPECT_EQ(open->textString(3, 2), L"7.3");
  // The merged title grows over the new column; the sub-selection moves with its cells.
  int minRow = 0, maxRow = 0, minColumn = 0, maxColumn = 0;
  ASSERT_TRUE(open->isMergedCell(0, 2, &minRow, &maxRow, &minColumn, &maxColumn));
  EXPECT_EQ(maxColumn, 2);
  ASSERT_TRUE(open->getSubSelection(minRow, maxRow, minColumn, maxColumn));
  EXPECT_EQ(std::vector<int>({minRow, maxRow, minColumn, maxColumn}), std::vector<int>({1, 1, 0, 2}));

  // Plain insertion takes the given size and no format; bad arguments change nothing.
  ASSERT_EQ(open->insertRows(0, 4.0), host::Acad::eOk);
  EXPECT_EQ(open->rowHeight(0), 4.0);
  EXPECT_EQ(table.rowOrigin(0), -1);
  EXPECT_EQ(table.cell(0, 2).format, CellFormat{});
  EXPECT_EQ(open->textString(1, 0), L"Item");
  struct Bad {
    const char* name;
    host::Acad::ErrorStatus status;
    host::Acad::ErrorStatus expected;
  } const bad[] = {
      {"index past the end", open->insertRowsAndInherit(6, 1, 1), host::Acad::eInvalidIndex},
      {"model row outside", open->insertRowsAndInherit(5, 5, 1), host::Acad::eInvalidIndex},
      {"no rows", open->insertRows(1, 3.0, 0), host::Acad::eInvalidIndex},
      {"zero height", open->insertRows(1, 0.0), host::Acad::eInvalidInput},
      {"negative column", open->insertColumnsAndInherit(-1, 0, 1), host::Acad::eInvalidIndex},
  };
  for (const auto& b : bad) EXPECT_EQ(b.status, b.expected) << b.name;
  EXPECT_EQ(open->numRows(), 5);
  EXPECT_EQ(open->numColumns(), 3);
}

TEST(Table, AMergedRangeGrowsOverLinesAppendedFromItsOwn) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"Title", L""}, {L"a", L"b"}});
  d.table(tableId).mergeCells({0, 0, 0, 1});
  host::AcDbObjectPointer<host::AcDbTable> table(d.host, tableId, host::AcDb::kForWrite);
  struct Step {
    const char* name;
    bool columns;
    int index, inheritFrom;  // inheritFrom -1: a plain insertion
    int maxColumn;           // of the title's range afterwards
  } const steps[] = {
      {"column appended from the range's last", true, 2, 1, 2},
      {"column appended from the range's first", true, 3, 0, 3},
      {"row appended from a row outside the range", false, 2, 1, 3},
      {"plain column appended", true, 4, -1, 3},
      {"column appended from a column outside the range", true, 5, 4, 3},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(step.name);
    const auto es = step.columns ? (step.inheritFrom < 0 ? table->insertColumns(step.index, 10.0)
                                                         : table->insertColumnsAndInherit(step.index, step.inheritFrom, 1))
                                 : table->insertRowsAndInherit(step.index, step.inheritFrom, 1);
    ASSERT_EQ(es, host::Acad::eOk);
    int minRow = -1, maxRow = -1, minColumn = -1, maxColumn = -1;
    ASSERT_TRUE(table->isMergedCell(0, 0, &minRow, &maxRow, &minColumn, &maxColumn));
    EXPECT_EQ(std::vector<int>({minRow, maxRow, minColumn, maxColumn}), std::vector<int>({0, 0, 0, step.maxColumn}));
  }
  EXPECT_EQ(table->textString(0, 0), L"Title");
}

TEST(Table, SubSelectionIsARangeInsideTheTable) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"1", L"2", L"3"}, {L"4", L"5", L"6"}, {L"7", L"8", L"9"}});
  host::AcDbObjectPointer<host::AcDbTable> table(d.host, tableId, host::AcDb::kForWrite);
  EXPECT_FALSE(table->hasSubSelection());
  struct Case {
    int minRow, maxRow, minColumn, maxColumn;
    host::Acad::ErrorStatus expected;
  } const cases[] = {
      {0, 0, 0, 0, host::Acad::eOk},        {0, 2, 0, 2, host::Acad::eOk},
      {1, 2, 2, 2, host::Acad::eOk},        {2, 1, 0, 0, host::Acad::eInvalidIndex},
      {0, 0, 2, 1, host::Acad::eInvalidIndex}, {0, 3, 0, 0, host::Acad::eInvalidIndex},
      {-1, 0, 0, 0, host::Acad::eInvalidIndex}, {0, 0, 0, 3, host::Acad::eInvalidIndex},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.minRow << ".." << c.maxRow << " x " << c.minColumn << ".." << c.maxColumn);
    ASSERT_EQ(table->clearSubSelection(), host::Acad::eOk);
    EXPECT_EQ(table->setSubSelection(c.minRow, c.maxRow, c.minColumn, c.maxColumn), c.expected);
    int r0 = -9, r1 = -9, c0 = -9, c1 = -9;
    EXPECT_EQ(table->getSubSelection(r0, r1, c0, c1), c.expected == host::Acad::eOk);
    EXPECT_EQ(table->hasSubSelection(), c.expected == host::Acad::eOk);
    if (c.expected == host::Acad::eOk) {
      EXPECT_EQ(std::vector<int>({r0, r1, c0, c1}), std::vector<int>({c.minRow, c.maxRow, c.minColumn, c.maxColumn}));
    }
  }
}

TEST(Table, PropertiesForObjectPropertyFields) {
  TestDrawing d;
  const auto tableId = d.addTable({{L"a", L"b", L"c"}, {L"d", L"e", L"f"}}, {1, 2, 0}, 5.0, 20.0);
  d.table(tableId).setDirection({0.0, -1.0, 0.0});
  struct Case {
    std::wstring property;
    std::wstring shown;
  } const cases[] = {
      {L"Rows", L"2"},       {L"columns", L"3"},           {L"Width", L"60.000000"},
      {L"Height", L"10.000000"}, {L"Layer", L"0"},
      {L"Rotation", L"4.712389"},  // three quarters of a turn
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(narrow(c.property));
    const auto field =
        d.addField(L"%<\\AcObjProp Object(" + TestDrawing::idReference(tableId) + L")." + c.property + L">%");
    d.host.engine().evaluateFields(&d.db, {field}, host::AcDbField::kDemand);
    EXPECT_EQ(d.field(field).getDisplayText(), c.shown);
  }
  host::AcDbExtents box;
  ASSERT_EQ(d.table(tableId).getGeomExtents(box), host::Acad::eOk);
  // Rows along -Y from (1, 2); down the page is -X.
  EXPECT_EQ(box.minPoint(), (host::AcGePoint3d{-9.0, -58.0, 0.0}));
  EXPECT_EQ(box.maxPoint(), (host::AcGePoint3d{1.0, 2.0, 0.0}));
}

}  // namespace
}  // namespace corvane::headless
