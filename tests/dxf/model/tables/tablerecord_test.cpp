#include "dxf/model/tables/tablerecord.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "dxf/model/tables/newtable.h"
#include "dxf/model/tables/tablecontent.h"
#include "dxf/tags/recordview.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/dictionary.h"
#include "headless/db/table.h"
#include "support/dxftext.h"
#include "support/ezdxf.h"
#include "support/testdrawing.h"

namespace corvane::dxf {
namespace {

using corvane::testing::TestDrawing;
using host::AcValue;

std::filesystem::path sample(const char* name) { return std::filesystem::path(CORVANE_SHARED_DIR) / "samples/dxf" / name; }

std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

// A drawing file read into a document, and its tables into a headless database under
// their own handles.
struct Loaded {
  std::unique_ptr<Document> doc;
  TestDrawing drawing;

  explicit Loaded(const std::filesystem::path& path) {
    auto read = Document::readFile(path);
    if (!read.document) throw std::runtime_error(read.error);
    doc = std::move(read.document);
  }
  explicit Loaded(std::string bytes) {
    auto read = Document::read(std::move(bytes));
    if (!read.document) throw std::runtime_error(read.error);
    doc = std::move(read.document);
  }
  RecordId record(std::uint64_t handle) const { return *doc->findHandle(handle); }
  // Reads the table of the record into the database; null when the record is refused.
  headless::Table* table(std::uint64_t handle, TableLinks* links = nullptr, std::string* error = nullptr) {
    auto made = std::make_unique<headless::Table>();
    TableLinks found;
    const Status status = readTable(*doc, record(handle), drawing.db, *made, found);
    if (!status) {
      if (error) *error = status.message();
      return nullptr;
    }
    headless::Table* raw = made.get();
    drawing.db.addObject(std::move(made), drawing.db.modelSpaceId(), host::AcDbHandle(handle));
    // The blocks of block cells, as reading the whole drawing would have made them.
    for (const auto& block : found.blocks) {
      host::AcDbObjectId known;
      if (drawing.db.getAcDbObjectId(known, host::AcDbHandle(block.handle)) == host::Acad::eOk) continue;
      drawing.db.addObject(std::make_unique<headless::BlockTableRecord>(L"block"), {}, host::AcDbHandle(block.handle));
    }
    resolveTableLinks(drawing.db, *raw, found);
    if (links) *links = found;
    return raw;
  }
  // New objects of the database take handles the file does not use.
  void reserveHandles() {
    drawing.db.addObject(std::make_unique<headless::Dictionary>(), {}, host::AcDbHandle(doc->maxHandle() + 0x100));
  }
  std::string bytes() const {
    StringSink sink;
    const Status status = doc->write(sink);
    if (!status) throw std::runtime_error(status.message());
    return sink.data;
  }
};

// ---- python with ezdxf, as a reader that shares no code with ours ----------------------------

using corvane::testing::pythonWithEzdxf;

std::string runScript(const std::string& script, const std::filesystem::path& file, const std::string& argument) {
  return corvane::testing::runEzdxfScript(script, {file.string(), argument});
}

// Audits the drawing, then prints the table's grid, each cell's shown text and field handle,
// and the texts its graphics block draws.
constexpr const char* kTableScript =
    "import sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "print(\"audit errors\", len(doc.audit().errors))\n"
    "t = doc.entitydb[sys.argv[2]]\n"
    "tags = t.xtags.get_subclass(\"AcDbTable\")\n"
    "print(\"grid\", tags.get_first_value(91), tags.get_first_value(92))\n"
    "cells = []\n"
    "for tag in tags:\n"
    "    if tag.code == 171: cells.append([])\n"
    "    elif cells and tag.code in (302, 344): cells[-1].append(str(tag.value))\n"
    "print(\"cells\", \"|\".join(\",\".join(c) for c in cells))\n"
    "print(\"drawn\", \"|\".join(sorted(e.text for e in t.virtual_entities() if e.dxftype() == \"MTEXT\")))\n";

// ---- reading ------------------------------------------------------------------------------------

TEST(TableRecord, ReadsTheSamplesCellsTypesAndGrid) {
  if (!std::filesystem::exists(sample("ezdxf-acad_table_simple.dxf"))) GTEST_SKIP() << "no sample drawings";
  struct Cell {
    const char* file;
    std::uint64_t handle;
    int row, column;
    host::AcDb::CellContentType content;
    AcValue::DataType type;
    std::wstring text;
  } const cases[] = {
      {"ezdxf-acad_table_simple.dxf", 0x9C, 0, 0, host::AcDb::kCellContentTypeValue, AcValue::kString, L"Title"},
      {"ezdxf-acad_table_simple.dxf", 0x9C, 0, 1, host::AcDb::kCellContentTypeUnknown, AcValue::kGeneral, L""},
      {"ezdxf-acad_table_simple.dxf", 0x9C, 1, 0, host::AcDb::kCellContentTypeValue, AcValue::kGeneral, L"1"},
      {"ezdxf-acad_table_simple.dxf", 0x9C, 2, 2, host::AcDb::kCellContentTypeValue, AcValue::kGeneral, L"6"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 0, 0, host::AcDb::kCellContentTypeValue, AcValue::kString,
       L"Hello this is a title"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 1, 2, host::AcDb::kCellContentTypeValue, AcValue::kString,
       L"CELL FORMAT 1"},
      // A block cell's empty value still names the type of a text.
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 1, 3, host::AcDb::kCellContentTypeBlock, AcValue::kString, L""},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 2, 0, host::AcDb::kCellContentTypeValue, AcValue::kDouble,
       L"0.500000"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 2, 1, host::AcDb::kCellContentTypeValue, AcValue::kDouble, L"60"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 2, 2, host::AcDb::kCellContentTypeValue, AcValue::k3dPoint,
       L"0.000000, 0.000000, 0.000000"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 2, 3, host::AcDb::kCellContentTypeValue, AcValue::kDate,
       L"11/15/2024"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 2, 4, host::AcDb::kCellContentTypeValue, AcValue::kLong, L"5"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 3, 0, host::AcDb::kCellContentTypeValue, AcValue::kDouble,
       L"35.00%"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0xA35, 3, 2, host::AcDb::kCellContentTypeUnknown, AcValue::k3dPoint, L""},
      {"acadsharp-sample_AC1032_ascii.dxf", 0x528, 0, 0, host::AcDb::kCellContentTypeValue, AcValue::kString,
       L"Table sample"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0x528, 4, 0, host::AcDb::kCellContentTypeValue, AcValue::kString,
       L"This table will be imported as an           Insert entity"},
      {"acadsharp-sample_AC1032_ascii.dxf", 0x528, 6, 2, host::AcDb::kCellContentTypeValue, AcValue::kString,
       L"cell text"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.file << " " << std::hex << c.handle << std::dec << " " << c.row << ","
                                      << c.column);
    Loaded loaded(sample(c.file));
    std::string error;
    headless::Table* table = loaded.table(c.handle, nullptr, &error);
    ASSERT_NE(table, nullptr) << error;
    EXPECT_EQ(table->contentType(c.row, c.column), c.content);
    AcValue::DataType type = AcValue::kUnknown;
    host::AcValueOptions::UnitType unit = host::AcValueOptions::kUnitless;
    ASSERT_EQ(table->getDataType(c.row, c.column, type, unit), host::Acad::eOk);
    EXPECT_EQ(type, c.type);
    EXPECT_EQ(table->textString(c.row, c.column), c.text);
    EXPECT_FALSE(table->record().modified);
  }

  Loaded simple(sample("ezdxf-acad_table_simple.dxf"));
  TableLinks links;
  headless::Table* table = simple.table(0x9C, &links);
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->numRows(), 3);
  EXPECT_EQ(table->numColumns(), 3);
  EXPECT_EQ(table->rowHeight(0), 11.0);
  EXPECT_EQ(table->rowHeight(2), 9.0);
  EXPECT_EQ(table->width(), 456.0);
  EXPECT_EQ(table->position(), (host::AcGePoint3d{105.0, 145.0, 0.0}));
  EXPECT_EQ(links.tableStyle, 0x6Bu);
  EXPECT_EQ(links.graphics, 0x9Du);
  EXPECT_EQ(links.content, 0xAFu);
  int maxColumn = 0;
  EXPECT_TRUE(table->isMergedCell(0, 2, nullptr, nullptr, nullptr, &maxColumn));
  EXPECT_EQ(maxColumn, 2);
  EXPECT_FALSE(table->isMergedCell(1, 0));

  // The second sample: values with their own formats and units, block cells, merges.
  Loaded rich(sample("acadsharp-sample_AC1032_ascii.dxf"));
  headless::Table* a35 = rich.table(0xA35, &links);
  ASSERT_NE(a35, nullptr);
  EXPECT_EQ(a35->value(2, 1).getFormat(), L"%au0");
  EXPECT_EQ(a35->value(2, 4), AcValue(5));
  EXPECT_EQ(a35->cell(3, 1).format.unitType, host::AcValueOptions::kCurrency);
  EXPECT_EQ(a35->cell(2, 1).format.unitType, host::AcValueOptions::kAngle);
  std::wstring plain;
  ASSERT_EQ(a35->textString(1, 2, host::AcValueOptions::kIgnoreMtextFormat, plain), host::Acad::eOk);
  EXPECT_EQ(plain, L"CELL FORMAT 1");
  EXPECT_EQ(links.blocks, (std::vector<TableLinks::Cell>{{1, 3, 0xA0B}, {1, 4, 0x12D1}}));
  headless::Table* t528 = rich.table(0x528);
  ASSERT_NE(t528, nullptr);
  int minRow = 0, maxRow = 0, minColumn = 0;
  ASSERT_TRUE(t528->isMergedCell(5, 2, &minRow, &maxRow, &minColumn, &maxColumn));
  EXPECT_EQ(std::vector<int>({minRow, maxRow, minColumn, maxColumn}), std::vector<int>({4, 5, 0, 2}));
}

TEST(TableRecord, RefusesRecordsThatAreNoTablesOrDoNotFillTheirGrid) {
  const auto table = [](const std::string& rows, const std::string& columns) {
    return testing::asciiDxf(testing::drawing(
        "AC1032", {{0, "ACAD_TABLE"}, {5, "40"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbBlockReference"},
                   {2, "*T1"}, {10, "0.0"}, {20, "0.0"}, {30, "0.0"}, {100, "AcDbTable"}, {11, "1.0"},
                   {21, "0.0"}, {31, "0.0"}, {91, rows}, {92, columns}, {141, "5.0"}, {142, "20.0"},
                   {171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {301, "CELL_VALUE"}, {93, "2"}, {90, "4"},
                   {1, "one"}, {94, "0"}, {300, ""}, {302, "one"}, {304, "ACVALUE_END"},
                   {0, "LINE"}, {5, "41"}, {8, "0"}, {10, "0.0"}, {20, "0.0"}, {11, "1.0"}, {21, "1.0"}}));
  };
  struct Case {
    const char* name;
    std::string file;
    std::uint64_t handle;
    std::string error;  // empty: read
  } const cases[] = {
      {"one cell", table("1", "1"), 0x40, ""},
      {"not a table", table("1", "1"), 0x41, "the record is not a table"},
      {"too few cells", table("1", "2"), 0x40, "the table record's cells do not fill its 1 by 2 grid"},
      {"sizes missing", table("2", "1"), 0x40, "the table record's cells do not fill its 2 by 1 grid"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Loaded loaded(c.file);
    std::string error;
    headless::Table* read = loaded.table(c.handle, nullptr, &error);
    EXPECT_EQ(error, c.error);
    EXPECT_EQ(read != nullptr, c.error.empty());
    if (read) {
      EXPECT_EQ(read->textString(0, 0), L"one");
    }
  }
}

// ---- writing cells back -------------------------------------------------------------------------

TEST(TableRecord, AnUnchangedTableWritesBackByteForByte) {
  if (!std::filesystem::exists(sample("acadsharp-sample_AC1032_ascii.dxf"))) GTEST_SKIP() << "no sample drawings";
  for (const auto& [file, handle] : {std::pair{"ezdxf-acad_table_simple.dxf", 0x9Cu},
                                     std::pair{"acadsharp-sample_AC1032_ascii.dxf", 0xA35u},
                                     std::pair{"acadsharp-sample_AC1032_ascii.dxf", 0x528u}}) {
    SCOPED_TRACE(file);
    Loaded loaded(sample(file));
    const std::string before = loaded.bytes();
    headless::Table* table = loaded.table(handle);
    ASSERT_NE(table, nullptr);
    const Status status = writeTable(*loaded.doc, loaded.record(handle), *table);
    ASSERT_TRUE(status) << status.message();
    EXPECT_TRUE(loaded.bytes() == before);
  }
}

// The tags of a record as text, for comparing what a write changed.
std::vector<std::string> tagTexts(const Document& doc, RecordId id) {
  std::vector<std::string> out;
  for (const Tag& tag : doc.tags(id)) out.push_back(std::to_string(tag.code) + " " + doc.valueText(tag));
  return out;
}

TEST(TableRecord, ACellUpdateReachesBothCopiesAndTheGraphics) {
  if (!std::filesystem::exists(sample("ezdxf-acad_table_simple.dxf"))) GTEST_SKIP() << "no sample drawings";
  Loaded loaded(sample("ezdxf-acad_table_simple.dxf"));
  headless::Table* table = loaded.table(0x9C);
  ASSERT_NE(table, nullptr);
  const RecordId content = loaded.record(0xAF);
  const auto contentBefore = tagTexts(*loaded.doc, content);
  const auto recordBefore = tagTexts(*loaded.doc, loaded.record(0x9C));

  ASSERT_EQ(table->putValue(1, 1, AcValue(2.75)), host::Acad::eOk);
  table->editCell(1, 1).format.format = L"%lu2%pr1";
  ASSERT_EQ(table->putValue(1, 1, AcValue(2.75)), host::Acad::eOk);
  ASSERT_EQ(table->textString(1, 1), L"2.8");
  ASSERT_EQ(table->putTextString(2, 0, L"Gr\u00FC\u00DFe"), host::Acad::eOk);
  const Status status = writeTable(*loaded.doc, loaded.record(0x9C), *table);
  ASSERT_TRUE(status) << status.message();

  // Only the two cells' groups changed in the table record.
  const auto recordAfter = tagTexts(*loaded.doc, loaded.record(0x9C));
  std::size_t same = 0;
  while (same < recordBefore.size() && same < recordAfter.size() && recordBefore[same] == recordAfter[same]) ++same;
  EXPECT_GT(same, recordBefore.size() / 2);  // everything before the second row stayed
  EXPECT_NE(std::find(recordAfter.begin(), recordAfter.end(), "302 2.8"), recordAfter.end());
  EXPECT_NE(std::find(recordAfter.begin(), recordAfter.end(), "140 2.75"), recordAfter.end());
  EXPECT_NE(std::find(recordAfter.begin(), recordAfter.end(), "300 %lu2%pr1"), recordAfter.end());
  const auto contentAfter = tagTexts(*loaded.doc, content);
  EXPECT_NE(std::find(contentAfter.begin(), contentAfter.end(), "302 2.8"), contentAfter.end());
  EXPECT_EQ(std::find(contentAfter.begin(), contentAfter.end(), "302 2"), contentAfter.end());
  EXPECT_EQ(contentAfter.size() - contentBefore.size(), recordAfter.size() - recordBefore.size());

  // Read again from the saved bytes, by us and by ezdxf.
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "updated.dxf";
  ASSERT_TRUE(loaded.doc->save(path));
  Loaded again(path);
  headless::Table* reread = again.table(0x9C);
  ASSERT_NE(reread, nullptr);
  EXPECT_EQ(reread->value(1, 1).dataType(), AcValue::kDouble);
  EXPECT_EQ(reread->textString(1, 1), L"2.8");
  EXPECT_EQ(reread->value(1, 1).getFormat(), L"%lu2%pr1");
  EXPECT_EQ(reread->textString(2, 0), L"Gr\u00FC\u00DFe");
  EXPECT_EQ(reread->textString(1, 0), L"1");
  std::string ignored;
  const auto second = scanTableContent(*again.doc, again.record(0xAF), again.drawing.db, ignored);
  ASSERT_TRUE(second);
  ASSERT_EQ(second->cell(1, 1)->items.size(), 1u);
  EXPECT_EQ(second->cell(1, 1)->items[0].value->value, reread->value(1, 1));
  EXPECT_EQ(second->cell(2, 0)->items[0].value->formatted, L"Gr\u00FC\u00DFe");

  if (pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  EXPECT_EQ(runScript(kTableScript, path, "9C"),
            "audit errors 0\ngrid 3 3\ncells Title|||1|2.8|3|Gr\u00FC\u00DFe|5|6\n"
            "drawn 1|2.8|3|5|6|Gr\u00FC\u00DFe|Title\n");
}

// A cell that showed nothing gets a text in the table's drawing once it holds one; readers that
// draw the table from its block show it.
TEST(TableRecord, AnEmptyCellThatGainsTextIsDrawn) {
  if (!std::filesystem::exists(sample("acadsharp-sample_AC1032_ascii.dxf"))) GTEST_SKIP() << "no sample drawings";
  Loaded loaded(sample("acadsharp-sample_AC1032_ascii.dxf"));
  loaded.reserveHandles();
  headless::Table* table = loaded.table(0xA35);
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->textString(3, 4), L"");
  ASSERT_FALSE(table->isMergedCell(3, 4));
  const auto drawnTexts = [&] {
    std::size_t n = 0;
    const auto blocks = loaded.doc->findSection("BLOCKS");
    for (const RecordId record : loaded.doc->sections()[*blocks].records) {
      if (loaded.doc->recordType(record) != "MTEXT") continue;
      const auto tags = tagTexts(*loaded.doc, record);
      n += static_cast<std::size_t>(std::count(tags.begin(), tags.end(), "1 Newly filled"));
    }
    return n;
  };
  ASSERT_EQ(table->putTextString(3, 4, L"Newly filled"), host::Acad::eOk);
  const Status status = writeTable(*loaded.doc, loaded.record(0xA35), *table);
  ASSERT_TRUE(status) << status.message();
  EXPECT_EQ(drawnTexts(), 1u);

  const testing::ScratchFolder folder;
  const auto path = folder.path() / "filled.dxf";
  ASSERT_TRUE(loaded.doc->save(path));
  Loaded again(path);
  EXPECT_EQ(again.table(0xA35)->textString(3, 4), L"Newly filled");
  if (pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const std::string read = runScript(kTableScript, path, "A35");
  const std::size_t drawn = read.find("drawn ");
  ASSERT_NE(drawn, std::string::npos) << read;
  EXPECT_NE(read.find("Newly filled", drawn), std::string::npos) << read;
}

TEST(TableRecord, FieldCellsWriteTheirFieldInBothCopies) {
  if (!std::filesystem::exists(sample("ezdxf-acad_table_simple.dxf"))) GTEST_SKIP() << "no sample drawings";
  Loaded loaded(sample("ezdxf-acad_table_simple.dxf"));
  loaded.reserveHandles();
  headless::Table* table = loaded.table(0x9C);
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->putTextString(2, 1, L"%<\\AcVar LUPREC>%"), host::Acad::eOk);
  loaded.drawing.evaluateAll();
  ASSERT_EQ(table->textString(2, 1), L"4");
  const std::uint64_t field = loaded.drawing.db.lookup(table->fieldId(2, 1))->handle().value();
  ASSERT_GT(field, loaded.doc->maxHandle());
  ASSERT_TRUE(writeTable(*loaded.doc, loaded.record(0x9C), *table));

  TableLinks links;
  Loaded again(loaded.bytes());
  headless::Table* reread = again.table(0x9C, &links);
  ASSERT_NE(reread, nullptr);
  EXPECT_EQ(links.fields, (std::vector<TableLinks::Cell>{{2, 1, field}}));
  EXPECT_EQ(reread->textString(2, 1), L"4");
  std::string error;
  const auto second = scanTableContent(*again.doc, again.record(0xAF), again.drawing.db, error);
  ASSERT_TRUE(second) << error;
  ASSERT_EQ(second->cell(2, 1)->items.size(), 1u);
  EXPECT_EQ(second->cell(2, 1)->items[0].type, 2);
  EXPECT_EQ(second->cell(2, 1)->items[0].handle, field);

  // Taking the field out writes a plain value again, in both copies.
  ASSERT_EQ(table->putValue(2, 1, AcValue(7)), host::Acad::eOk);
  ASSERT_TRUE(writeTable(*loaded.doc, loaded.record(0x9C), *table));
  Loaded third(loaded.bytes());
  headless::Table* plain = third.table(0x9C, &links);
  ASSERT_NE(plain, nullptr);
  EXPECT_TRUE(links.fields.empty());
  EXPECT_EQ(plain->value(2, 1), AcValue(7));
  const auto content = scanTableContent(*third.doc, third.record(0xAF), third.drawing.db, error);
  ASSERT_TRUE(content) << error;
  EXPECT_EQ(content->cell(2, 1)->items[0].type, 1);
}

TEST(TableRecord, InsertedRowsAndColumnsAreWrittenLikeTheirModels) {
  if (!std::filesystem::exists(sample("ezdxf-acad_table_simple.dxf"))) GTEST_SKIP() << "no sample drawings";
  Loaded loaded(sample("ezdxf-acad_table_simple.dxf"));
  headless::Table* table = loaded.table(0x9C);
  ASSERT_NE(table, nullptr);
  {
    host::AcDbObjectPointer<host::AcDbTable> open(loaded.drawing.host, table->objectId(), host::AcDb::kForWrite);
    ASSERT_TRUE(open);
    ASSERT_EQ(open->insertRowsAndInherit(3, 2, 2), host::Acad::eOk);
    ASSERT_EQ(open->insertColumnsAndInherit(3, 2, 1), host::Acad::eOk);
    ASSERT_EQ(open->setValue(3, 0, AcValue(L"7")), host::Acad::eOk);
    ASSERT_EQ(open->setValue(4, 3, AcValue(L"last")), host::Acad::eOk);
  }
  const Status status = writeTable(*loaded.doc, loaded.record(0x9C), *table);
  ASSERT_TRUE(status) << status.message();

  const testing::ScratchFolder folder;
  const auto path = folder.path() / "rows.dxf";
  ASSERT_TRUE(loaded.doc->save(path));
  Loaded again(path);
  headless::Table* reread = again.table(0x9C);
  ASSERT_NE(reread, nullptr);
  ASSERT_EQ(reread->numRows(), 5);
  ASSERT_EQ(reread->numColumns(), 4);
  EXPECT_EQ(reread->rowHeight(4), 9.0);
  EXPECT_EQ(reread->columnWidth(3), 152.0);
  EXPECT_EQ(reread->textString(3, 0), L"7");
  EXPECT_EQ(reread->textString(4, 3), L"last");
  EXPECT_EQ(reread->textString(2, 2), L"6");
  EXPECT_EQ(reread->textString(3, 1), L"");
  // The title's merge grew over the new column.
  int maxColumn = 0;
  ASSERT_TRUE(reread->isMergedCell(0, 0, nullptr, nullptr, nullptr, &maxColumn));
  EXPECT_EQ(maxColumn, 3);
  std::string error;
  const auto content = scanTableContent(*again.doc, again.record(0xAF), again.drawing.db, error);
  ASSERT_TRUE(content) << error;
  ASSERT_EQ(content->rows.size(), 5u);
  ASSERT_EQ(content->columns.size(), 4u);
  EXPECT_EQ(content->rows[4].height, 9.0);
  EXPECT_EQ(content->cell(4, 3)->items[0].value->formatted, L"last");
  EXPECT_TRUE(content->cell(3, 1)->items.empty());
  ASSERT_EQ(content->merges.size(), 1u);
  EXPECT_EQ(content->merges[0], (headless::CellRange{0, 0, 0, 3}));
  const auto geometry = tagTexts(*again.doc, again.record(0xB0));
  EXPECT_NE(std::find(geometry.begin(), geometry.end(), "92 20"), geometry.end());

  if (pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const std::string out = runScript(kTableScript, path, "9C");
  EXPECT_EQ(out, "audit errors 0\ngrid 5 4\ncells Title||||1|2|3||4|5|6||7|||||||last\n"
                 "drawn 1|2|3|4|5|6|7|Title|last\n");
}

// A changed cell reads back as written wherever the record's other tags stand: after the last
// cell of a record that keeps value blocks before R2007 (the last cell ends with its block), or
// in an insertion point whose subclass follows the cells.
TEST(TableRecord, ChangedCellsReadBackWhereverTheRecordsOtherTagsStand) {
  using testing::TagText;
  const auto join = [](std::initializer_list<std::vector<TagText>> parts) {
    std::vector<TagText> out;
    for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
  };
  const std::vector<TagText> entity = {{0, "ACAD_TABLE"}, {5, "40"}, {100, "AcDbEntity"}, {8, "0"}};
  const std::vector<TagText> reference = {{100, "AcDbBlockReference"}, {2, "*T1"}, {10, "1.0"}, {20, "2.0"},
                                          {30, "0.0"}};
  const std::vector<TagText> grid = {{100, "AcDbTable"}, {91, "1"}, {92, "1"}, {141, "5.0"}, {142, "20.0"}};
  const std::vector<TagText> cell = {{171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {301, "CELL_VALUE"},
                                     {93, "2"},  {90, "4"},  {1, "old"}, {94, "0"},  {300, ""},
                                     {302, "old"}, {304, "ACVALUE_END"}};
  // A cell with its text in 1 grows by a value block when written from R2007 on.
  const std::vector<TagText> plainCell = {{171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {1, "old"}};
  const TagText after = {1, "after the cells"};
  using OpenTable = host::AcDbObjectPointer<host::AcDbTable>;
  const auto putText = [](OpenTable& t) { return t->setTextString(0, 0, L"new"); };
  const auto addRow = [](OpenTable& t) {
    const auto es = t->insertRowsAndInherit(1, 0, 1);
    return es == host::Acad::eOk ? t->setTextString(1, 0, L"new") : es;
  };
  struct Case {
    const char* name;
    const char* version;
    std::vector<TagText> record;
    std::function<host::Acad::ErrorStatus(OpenTable&)> edit;
    int row;  // of the changed cell
  } const cases[] = {
      {"value blocks before R2007, a tag after them", "AC1018", join({entity, reference, grid, cell, {after}}), putText,
       0},
      {"value blocks before R2007, a row added last", "AC1018", join({entity, reference, grid, cell, {after}}), addRow,
       1},
      {"insertion point after cells that grow", "AC1032", join({entity, grid, plainCell, reference}), putText, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Loaded loaded(testing::asciiDxf(testing::drawing(c.version, c.record)));
    headless::Table* table = loaded.table(0x40);
    ASSERT_NE(table, nullptr);
    {
      OpenTable open(loaded.drawing.host, table->objectId(), host::AcDb::kForWrite);
      ASSERT_TRUE(open);
      ASSERT_EQ(c.edit(open), host::Acad::eOk);
    }
    const Status status = writeTable(*loaded.doc, loaded.record(0x40), *table);
    ASSERT_TRUE(status) << status.message();
    const auto written = tagTexts(*loaded.doc, loaded.record(0x40));
    EXPECT_EQ(std::count(written.begin(), written.end(), "1 after the cells"),
              std::count(c.record.begin(), c.record.end(), after));

    Loaded again(loaded.bytes());
    std::string error;
    headless::Table* reread = again.table(0x40, nullptr, &error);
    ASSERT_NE(reread, nullptr) << error;
    EXPECT_EQ(reread->textString(c.row, 0), L"new");
    EXPECT_EQ(reread->textString(0, 0), c.row == 0 ? L"new" : L"old");
    EXPECT_EQ(reread->position(), (host::AcGePoint3d{1.0, 2.0, 0.0}));
  }
}

// ---- new tables ---------------------------------------------------------------------------------

// The smallest R2018 drawing with the structure a table needs and no table style.
std::string skeleton() {
  using testing::TagText;
  std::vector<TagText> tags = {
      {0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1032"}, {9, "$HANDSEED"}, {5, "30"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "TABLES"},
      {0, "TABLE"}, {2, "BLOCK_RECORD"}, {5, "1"}, {330, "0"}, {100, "AcDbSymbolTable"}, {70, "2"},
      {0, "BLOCK_RECORD"}, {5, "1F"}, {330, "1"}, {100, "AcDbSymbolTableRecord"}, {100, "AcDbBlockTableRecord"},
      {2, "*Model_Space"}, {340, "0"},
      {0, "BLOCK_RECORD"}, {5, "1B"}, {330, "1"}, {100, "AcDbSymbolTableRecord"}, {100, "AcDbBlockTableRecord"},
      {2, "*Paper_Space"}, {340, "0"},
      {0, "ENDTAB"},
      {0, "ENDSEC"},
      {0, "SECTION"}, {2, "BLOCKS"},
      {0, "BLOCK"}, {5, "20"}, {330, "1F"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbBlockBegin"},
      {2, "*Model_Space"}, {70, "0"}, {10, "0.0"}, {20, "0.0"}, {30, "0.0"}, {3, "*Model_Space"}, {1, ""},
      {0, "ENDBLK"}, {5, "21"}, {330, "1F"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbBlockEnd"},
      {0, "BLOCK"}, {5, "1C"}, {330, "1B"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbBlockBegin"},
      {2, "*Paper_Space"}, {70, "0"}, {10, "0.0"}, {20, "0.0"}, {30, "0.0"}, {3, "*Paper_Space"}, {1, ""},
      {0, "ENDBLK"}, {5, "1D"}, {330, "1B"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbBlockEnd"},
      {0, "ENDSEC"},
      {0, "SECTION"}, {2, "ENTITIES"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "OBJECTS"},
      {0, "DICTIONARY"}, {5, "C"}, {330, "0"}, {100, "AcDbDictionary"}, {281, "1"},
      {0, "ENDSEC"},
      {0, "EOF"}};
  return testing::asciiDxf(tags);
}

TEST(TableRecord, NewTablesReopenWithTheirCells) {
  struct Case {
    const char* name;
    std::string file;       // empty: the sample
    std::uint64_t owner;    // BLOCK_RECORD of model space
    bool madeStyle;
  };
  std::vector<Case> cases = {{"drawing without a table style", skeleton(), 0x1F, true}};
  if (std::filesystem::exists(sample("ezdxf-acad_table_simple.dxf"))) {
    cases.push_back({"drawing with a table style", "", 0x1F, false});
  }
  const testing::ScratchFolder folder;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto loaded = c.file.empty() ? std::make_unique<Loaded>(sample("ezdxf-acad_table_simple.dxf"))
                                 : std::make_unique<Loaded>(c.file);
    loaded->reserveHandles();
    const auto tableId = loaded->drawing.addTable({{L"Room", L"Area"}, {L"Hall", L"12.5"}, {L"Kitchen", L"{\\fArial;8}"}},
                                                  {10.0, 20.0, 0.0}, 8.0, 40.0);
    headless::Table& table = loaded->drawing.table(tableId);
    table.setDirection({0.0, 1.0, 0.0});
    table.mergeCells({0, 0, 0, 1});
    NewTable created;
    const Status status = createTable(*loaded->doc, loaded->record(c.owner), table, created);
    ASSERT_TRUE(status) << status.message();
    EXPECT_EQ(RecordView(*loaded->doc, created.table).handle(), table.handle().value());
    EXPECT_EQ(loaded->doc->recordType(created.graphics), "BLOCK_RECORD");
    if (!c.madeStyle) {
      EXPECT_EQ(created.tableStyle, 0x6Bu);
    }
    EXPECT_GT(loaded->doc->allocateHandle(), loaded->drawing.db.handseed().value() - 1);

    const auto path = folder.path() / "new.dxf";
    ASSERT_TRUE(loaded->doc->save(path));
    Loaded again(path);
    headless::Table* reread = again.table(table.handle().value());
    ASSERT_NE(reread, nullptr);
    EXPECT_EQ(reread->numRows(), 3);
    EXPECT_EQ(reread->textString(1, 1), L"12.500000");
    EXPECT_EQ(reread->value(1, 1), AcValue(12.5));
    EXPECT_EQ(reread->textString(2, 0), L"Kitchen");
    EXPECT_EQ(reread->direction(), (host::AcGeVector3d{0.0, 1.0, 0.0}));
    EXPECT_TRUE(reread->isMergedCell(0, 1));
    int row = -1, column = -1;
    // Rows run along +Y and go down the page towards +X: (15, 70) is in the second column of
    // the first row, inside the merged title.
    EXPECT_TRUE(reread->hitTest({15.0, 70.0, 0.0}, {0.0, 0.0, -1.0}, row, column));
    EXPECT_EQ(row, 0);
    EXPECT_EQ(column, 0);

    if (pythonWithEzdxf().empty()) continue;
    std::string handle = narrow(table.handle().text());
    EXPECT_EQ(runScript(kTableScript, path, handle),
              "audit errors 0\ngrid 3 2\ncells Room||Hall|12.500000|Kitchen|{\\fArial;8}\n"
              "drawn 12.500000|Hall|Kitchen|Room|{\\fArial;8}\n");
  }
}

TEST(TableRecord, NewTablesNeedADrawingThatCanHoldThem) {
  const auto old = testing::asciiDxf(testing::drawing("AC1015", {}));
  Loaded loaded(old);
  const auto id = loaded.drawing.addTable({{L"x"}});
  NewTable created;
  const std::string before = loaded.bytes();
  EXPECT_EQ(createTable(*loaded.doc, 0, loaded.drawing.table(id), created).message(),
            "drawings older than R2004 cannot hold tables");
  EXPECT_TRUE(loaded.bytes() == before);
  Loaded bare(skeleton());
  const auto entity = bare.drawing.addTable({{L"x"}});
  const std::string bareBefore = bare.bytes();
  const Status notABlock = createTable(*bare.doc, bare.record(0x20), bare.drawing.table(entity), created);
  EXPECT_EQ(notABlock.message(), "a table goes into a block table record");
  headless::Table loose(1, 1);
  EXPECT_EQ(createTable(*bare.doc, bare.record(0x1F), loose, created).message(), "the table is not in a drawing");
  EXPECT_EQ(writeTable(*bare.doc, bare.record(0x1F), loose).message(), "the table is not in a drawing");
  EXPECT_TRUE(bare.bytes() == bareBefore);
}

TEST(TableRecord, RefusesTablesADrawingCannotHoldAndLeavesItAsItWas) {
  if (!std::filesystem::exists(sample("ezdxf-acad_table_simple.dxf"))) GTEST_SKIP() << "no sample drawings";
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  struct Case {
    const char* name;
    std::function<void(headless::Table&)> spoil;
    std::string error;
  } const cases[] = {
      {"row height", [&](headless::Table& t) { t.setRowHeight(1, nan); }, "a row height of the table is not a number"},
      {"column width", [&](headless::Table& t) { t.setColumnWidth(0, inf); },
       "a column width of the table is not a number"},
      {"position", [&](headless::Table& t) { t.setPosition({0.0, nan, 0.0}); },
       "the table's position or direction is not a number"},
      {"cell value", [&](headless::Table& t) { t.putValue(2, 2, AcValue(inf)); },
       "cell 2,2 of the table holds a number or a format a drawing cannot"},
      {"point value", [&](headless::Table& t) { t.putValue(0, 0, AcValue(AcValue::Point3d{1.0, nan, 0.0})); },
       "cell 0,0 of the table holds a number or a format a drawing cannot"},
      {"format", [&](headless::Table& t) { t.editCell(1, 0).format.format = L"%lu2\n"; },
       "cell 1,0 of the table holds a number or a format a drawing cannot"},
      {"layer", [&](headless::Table& t) { t.setLayer(L"a\nb"); }, "the table's layer name holds a line break"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Loaded loaded(sample("ezdxf-acad_table_simple.dxf"));
    headless::Table* table = loaded.table(0x9C);
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->putValue(1, 1, AcValue(L"changed")), host::Acad::eOk);
    c.spoil(*table);
    const std::string before = loaded.bytes();
    EXPECT_EQ(writeTable(*loaded.doc, loaded.record(0x9C), *table).message(), c.error);
    NewTable created;
    EXPECT_EQ(createTable(*loaded.doc, loaded.record(0x1F), *table, created).message(), c.error);
    EXPECT_TRUE(loaded.bytes() == before);
  }
}

}  // namespace
}  // namespace corvane::dxf
