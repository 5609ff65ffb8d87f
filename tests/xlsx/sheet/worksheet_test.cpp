#include "xlsx/sheet/worksheet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "xlsx/sheet/sharedstrings.h"
#include "xlsx/sheet/xmltext.h"

namespace corvane::xlsx {
namespace {

const std::string kOpen =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
    "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">";

std::string sheetXml(const std::string& rows, const std::string& before = "<dimension ref=\"A1\"/>",
                     const std::string& after = "<pageMargins left=\"0.7\"/>") {
  return kOpen + before + "<sheetData>" + rows + "</sheetData>" + after + "</worksheet>";
}

// Small chunks, so that elements and texts fall across chunk boundaries.
Worksheet parsed(const std::string& xml) {
  std::string error;
  auto sheet = Worksheet::parse(chunksOf(xml, 7), error);
  EXPECT_TRUE(sheet) << error;
  return sheet ? std::move(*sheet) : *Worksheet::parse(chunksOf(sheetXml("")), error);
}

SharedStrings strings() {
  std::string error;
  const std::string xml =
      "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><si><t>zero</t></si>"
      "<si><r><t>ri</t></r><r><rPr><b/></rPr><t>ch</t></r><rPh><t>PHONETIC</t></rPh></si>"
      "<si><t>a_x000D_b _x005F_x0041_</t></si></sst>";
  return *SharedStrings::parse(chunksOf(xml, 5), error);
}

TEST(Worksheet, ReadsCellsOfEveryKind) {
  const struct {
    const char* cell;
    CellKind kind;
    CellValue value;
    const char* formula;
  } cases[] = {
      {"<c r=\"A1\"><v>1234.5</v></c>", CellKind::kNumber, 1234.5, ""},
      {"<c r=\"A1\" t=\"n\"><v>1E-3</v></c>", CellKind::kNumber, 0.001, ""},
      {"<c r=\"A1\" t=\"s\"><v>1</v></c>", CellKind::kSharedString, "rich", ""},
      {"<c r=\"A1\" t=\"s\"><v>2</v></c>", CellKind::kSharedString, "a\rb _x0041_", ""},
      {"<c r=\"A1\" t=\"s\"><v>9</v></c>", CellKind::kSharedString, "", ""},
      {"<c r=\"A1\" t=\"inlineStr\"><is><t>plain &amp; simple</t></is></c>", CellKind::kInlineString, "plain & simple",
       ""},
      {"<c r=\"A1\" t=\"inlineStr\"><is><r><t>a</t></r><r><rPr><i/></rPr><t xml:space=\"preserve\"> b</t></r>"
       "<rPh sb=\"0\" eb=\"1\"><t>x</t></rPh></is></c>",
       CellKind::kInlineString, "a b", ""},
      {"<c r=\"A1\" t=\"inlineStr\"><is><t>line_x000D_end</t></is></c>", CellKind::kInlineString, "line\rend", ""},
      {"<c r=\"A1\" t=\"b\"><v>1</v></c>", CellKind::kBoolean, true, ""},
      {"<c r=\"A1\" t=\"b\"><v>0</v></c>", CellKind::kBoolean, false, ""},
      {"<c r=\"A1\" t=\"e\"><v>#DIV/0!</v></c>", CellKind::kError, ErrorText{"#DIV/0!"}, ""},
      {"<c r=\"A1\"><f>SUM(B1:B3)</f><v>6</v></c>", CellKind::kNumber, 6.0, "SUM(B1:B3)"},
      {"<c r=\"A1\" t=\"str\"><f>B1&amp;\"x\"</f><v>yx</v></c>", CellKind::kFormulaString, "yx", "B1&\"x\""},
      {"<c r=\"A1\" t=\"e\"><f>1/0</f><v>#DIV/0!</v></c>", CellKind::kError, ErrorText{"#DIV/0!"}, "1/0"},
      {"<c r=\"A1\"><f>NOW()</f></c>", CellKind::kBlank, CellValue(), "NOW()"},
      {"<c r=\"A1\"><f>NOW()</f><v></v></c>", CellKind::kBlank, CellValue(), "NOW()"},
      {"<c r=\"A1\" t=\"str\"><f>\"\"</f><v></v></c>", CellKind::kFormulaString, "", "\"\""},
      {"<c r=\"A1\" t=\"d\"><v>2024-02-29T10:00:00</v></c>", CellKind::kIsoDate, "2024-02-29T10:00:00", ""},
      {"<c r=\"A1\" s=\"4\"/>", CellKind::kBlank, CellValue(), ""},
  };
  const SharedStrings table = strings();
  for (const auto& [xml, kind, value, formula] : cases) {
    const Worksheet sheet = parsed(sheetXml(std::string("<row r=\"1\">") + xml + "</row>"));
    ASSERT_EQ(sheet.cellCount(), 1u) << xml;
    const auto cell = sheet.find({1, 1});
    ASSERT_TRUE(cell) << xml;
    EXPECT_EQ(cell->kind, kind) << xml;
    EXPECT_EQ(sheet.value(cell->position, table), value) << xml;
    EXPECT_EQ(sheet.formula(cell->position), formula) << xml;
    EXPECT_EQ(cell->hasFormula, *formula != '\0') << xml;
  }
}

TEST(Worksheet, PlacesCellsWithoutReferencesAfterTheirNeighbours) {
  const Worksheet sheet =
      parsed(sheetXml("<row r=\"2\"><c><v>1</v></c><c s=\"3\"><v>2</v></c><c r=\"E2\"><v>3</v></c><c><v>4</v></c></row>"
                      "<row><c><v>5</v></c></row>"));
  std::vector<std::string> seen;
  sheet.visit([&](const CellView& cell) {
    seen.push_back(cellRefText({cell.row, cell.column}) + "=" +
                   std::to_string(static_cast<int>(sheet.number(cell.position))) + "/" + std::to_string(cell.style));
  });
  EXPECT_EQ(seen, (std::vector<std::string>{"A2=1/0", "B2=2/3", "E2=3/0", "F2=4/0", "A3=5/0"}));
  EXPECT_FALSE(sheet.find({2, 3}));
  EXPECT_EQ(sheet.usedRange(), (CellRange{{2, 1}, {3, 6}}));
}

TEST(Worksheet, RejectsWhatCannotBeASheet) {
  const struct {
    const char* name;
    std::string xml;
    const char* message;
  } cases[] = {
      {"truncated", sheetXml("<row r=\"1\"><c r=\"A1\"><v>1</v></c></row>").substr(0, 200), "line"},
      {"empty", "", "line"},
      {"wrong root", "<workbook><sheetData/></workbook>", "not a worksheet"},
      {"no sheet data", kOpen + "</worksheet>", "no <sheetData>"},
      {"cell reference garbage", sheetXml("<row r=\"1\"><c r=\"1A\"><v>1</v></c></row>"), "\"1A\""},
      {"cell in another row", sheetXml("<row r=\"1\"><c r=\"A2\"><v>1</v></c></row>"), "in row 1"},
      {"huge row number", sheetXml("<row r=\"99999999999\"/>"), "row number"},
      {"row past the last", sheetXml("<row r=\"1048577\"/>"), "row number"},
      {"column past the last", sheetXml("<row r=\"1\"><c r=\"XFD1\"/><c/></row>"), "than a row"},
      {"number that is not", sheetXml("<row r=\"1\"><c r=\"A1\"><v>12abc</v></c></row>"), "not a number"},
      {"infinite number", sheetXml("<row r=\"1\"><c r=\"A1\"><v>inf</v></c></row>"), "not a number"},
      {"unknown type", sheetXml("<row r=\"1\"><c r=\"A1\" t=\"zz\"><v>1</v></c></row>"), "unknown type"},
      {"bad boolean", sheetXml("<row r=\"1\"><c r=\"A1\" t=\"b\"><v>2</v></c></row>"), "boolean"},
      {"bad string index", sheetXml("<row r=\"1\"><c r=\"A1\" t=\"s\"><v>-1</v></c></row>"), "index"},
      {"repeated cell", sheetXml("<row r=\"1\"><c r=\"B1\"/><c r=\"B1\"/></row>"), "twice"},
      {"repeated row", sheetXml("<row r=\"1\"/><row r=\"1\"/>"), "twice"},
      {"cell outside a row", sheetXml("<c r=\"A1\"/>"), "not a row"},
      {"entity declaration", "<!DOCTYPE x [<!ENTITY a \"b\">]><worksheet><sheetData/></worksheet>", "document type"},
  };
  for (const auto& [name, xml, message] : cases) {
    std::string error;
    EXPECT_FALSE(Worksheet::parse(chunksOf(xml, 3), error)) << name;
    EXPECT_NE(error.find(message), std::string::npos) << name << ": " << error;
  }
}

TEST(Worksheet, AStreamThatBreaksOffIsAnError) {
  const std::string xml = sheetXml("<row r=\"1\"><c r=\"A1\"><v>1</v></c></row>");
  std::string error;
  const ChunkSource broken = [&](const ChunkSink& sink) {
    sink(std::string_view(xml).substr(0, 40));
    return false;
  };
  EXPECT_FALSE(Worksheet::parse(broken, error));
  EXPECT_NE(error.find("could not be read"), std::string::npos) << error;
}

TEST(Worksheet, AnUnchangedSheetIsWrittenBackByteForByte) {
  const std::string xml = sheetXml("<row r=\"1\" spans=\"1:2\"><c r=\"A1\"><v>1.50</v></c></row>");
  const Worksheet sheet = parsed(xml);
  EXPECT_FALSE(sheet.changed());
  EXPECT_EQ(sheet.serialize(xml), xml);
  EXPECT_EQ(sheet.serialize(xml + " "), "");  // not the part it was read from
}

TEST(Worksheet, ValuesSetAreReadBackFromTheWrittenPart) {
  const std::string xml = sheetXml(
      "<row r=\"1\" ht=\"20\" customHeight=\"1\"><c r=\"A1\" s=\"2\" cm=\"1\"><f t=\"array\" ref=\"A1\">X()</f>"
      "<v>1</v></c><c r=\"C1\" ph=\"1\"><v>7</v></c></row>");
  const struct {
    CellValue value;
    CellKind kind;
  } cases[] = {
      {42.25, CellKind::kNumber},
      {-1e-300, CellKind::kNumber},
      {std::string("text with  <&> and \"quotes\""), CellKind::kInlineString},
      {std::string(" padded\r\nline _x0041_ "), CellKind::kInlineString},
      {true, CellKind::kBoolean},
      {ErrorText{"#N/A"}, CellKind::kError},
      {CellValue(), CellKind::kBlank},
  };
  const SharedStrings none = strings();
  for (const auto& [value, kind] : cases) {
    for (const CellRef at : {CellRef{1, 1}, CellRef{1, 2}, CellRef{5, 1}}) {
      Worksheet sheet = parsed(xml);
      ASSERT_TRUE(sheet.setValue(at, value));
      const bool onStyledCell = at == CellRef{1, 1};
      EXPECT_EQ(sheet.changed(), !value.empty() || onStyledCell);  // no cell to empty otherwise
      const std::string written = sheet.serialize(xml);
      const Worksheet again = parsed(written);
      const auto cell = again.find(at);
      const bool kept = !value.empty() || at == CellRef{1, 1};  // the styled cell stays, blank
      ASSERT_EQ(cell.has_value(), kept) << written;
      if (!kept) continue;
      EXPECT_EQ(cell->kind, kind) << written;
      EXPECT_EQ(again.value(cell->position, none), value) << written;
      EXPECT_EQ(again.formula(cell->position), "") << written;
      EXPECT_EQ(cell->style, (at == CellRef{1, 1}) ? 2u : 0u);
      EXPECT_EQ(again.number(again.find({1, 3})->position), 7);
      EXPECT_NE(written.find("<row r=\"1\" ht=\"20\" customHeight=\"1\">"), std::string::npos) << written;
      EXPECT_NE(written.find("<c r=\"C1\" ph=\"1\">"), std::string::npos) << written;
      EXPECT_EQ(written.find("cm=\"1\"") == std::string::npos, (at == CellRef{1, 1})) << written;
      EXPECT_NE(written.find("<pageMargins left=\"0.7\"/>"), std::string::npos);
    }
  }
  Worksheet sheet = parsed(xml);
  EXPECT_FALSE(sheet.setValue({0, 1}, 1.0));
  EXPECT_FALSE(sheet.setValue({1, kMaxColumn + 1}, 1.0));
  EXPECT_FALSE(sheet.changed());
}

TEST(Worksheet, SharedFormulasAndExtensionsSurviveOtherChanges) {
  const std::string xml = sheetXml(
      "<row r=\"1\"><c r=\"A1\"><f t=\"shared\" ref=\"A1:A3\" si=\"0\">B1*2</f><v>2</v></c></row>"
      "<row r=\"2\"><c r=\"A2\"><f t=\"shared\" si=\"0\"/><v>4</v></c></row>"
      "<row r=\"3\"><c r=\"A3\"><f t=\"shared\" si=\"0\"/><v>6</v>"
      "<extLst><ext uri=\"{X}\"><y a=\"1\">t</y></ext></extLst></c></row>");
  Worksheet sheet = parsed(xml);
  sheet.setValue({4, 1}, 1.0);
  const std::string written = sheet.serialize(xml);
  EXPECT_NE(written.find("<c r=\"A1\"><f t=\"shared\" ref=\"A1:A3\" si=\"0\">B1*2</f><v>2</v></c>"), std::string::npos)
      << written;
  EXPECT_NE(written.find("<c r=\"A2\"><f t=\"shared\" si=\"0\"/><v>4</v></c>"), std::string::npos) << written;
  EXPECT_NE(written.find("<v>6</v><extLst><ext uri=\"{X}\"><y a=\"1\">t</y></ext></extLst></c>"), std::string::npos)
      << written;

  // Without the cell that holds the text, the others keep their values as constants.
  sheet.setValue({1, 1}, 9.0);
  const Worksheet again = parsed(sheet.serialize(xml));
  for (std::uint32_t row = 1; row <= 3; ++row) EXPECT_FALSE(again.find({row, 1})->hasFormula) << row;
  EXPECT_EQ(again.number(again.find({3, 1})->position), 6);
}

TEST(Worksheet, DeletingARowMovesWhatIsBelow) {
  const std::string xml = sheetXml(
      "<row r=\"1\"><c r=\"A1\"><v>1</v></c></row>"
      "<row r=\"2\" ht=\"30\" customHeight=\"1\"><c r=\"A2\"><v>2</v></c><c r=\"C2\"><v>3</v></c></row>"
      "<row r=\"3\" hidden=\"1\"><c r=\"B3\"><f t=\"array\" ref=\"B3:B4\">Y()</f><v>4</v></c></row>"
      "<row r=\"5\"><c r=\"D5\"><v>5</v></c></row>",
      "<dimension ref=\"A1:D5\"/>",
      "<mergeCells count=\"4\"><mergeCell ref=\"A2:C2\"/><mergeCell ref=\"A1:A3\"/><mergeCell ref=\"B4:C5\"/>"
      "<mergeCell ref=\"A2:B3\"/></mergeCells><pageMargins left=\"0.7\"/>");
  Worksheet sheet = parsed(xml);
  ASSERT_TRUE(sheet.deleteRow(2));
  EXPECT_FALSE(sheet.deleteRow(0));
  const std::string written = sheet.serialize(xml);
  const Worksheet again = parsed(written);
  std::vector<std::string> cells;
  again.visit([&](const CellView& cell) { cells.push_back(cellRefText({cell.row, cell.column})); });
  EXPECT_EQ(cells, (std::vector<std::string>{"A1", "B2", "D4"}));
  EXPECT_EQ(again.number(again.find({4, 4})->position), 5);
  EXPECT_NE(written.find("<dimension ref=\"A1:D4\"/>"), std::string::npos) << written;
  EXPECT_NE(written.find("<row r=\"2\" hidden=\"1\">"), std::string::npos) << written;
  EXPECT_EQ(written.find("ht=\"30\""), std::string::npos) << written;
  EXPECT_NE(written.find("<f t=\"array\" ref=\"B2:B3\">Y()</f>"), std::string::npos) << written;
  // A2:C2 lay on the row alone; A2:B3 keeps its lower half.
  EXPECT_EQ(again.mergedCells(), (std::vector<CellRange>{{{1, 1}, {2, 1}}, {{3, 2}, {4, 3}}, {{2, 1}, {2, 2}}}));
  EXPECT_NE(written.find("<mergeCells count=\"3\">"), std::string::npos) << written;
}

TEST(Worksheet, ALegacyDrawingGoesWhereTheElementOrderWantsIt) {
  const struct {
    const char* after;
    const char* expected;
  } cases[] = {
      {"<pageMargins left=\"1\"/>", "<pageMargins left=\"1\"/><legacyDrawing r:id=\"rId9\"/></worksheet>"},
      {"<drawing r:id=\"rId1\"/><tableParts count=\"0\"/>",
       "<drawing r:id=\"rId1\"/><legacyDrawing r:id=\"rId9\"/><tableParts count=\"0\"/>"},
      {"<legacyDrawingHF r:id=\"rId2\"/><extLst/>", "<legacyDrawing r:id=\"rId9\"/><legacyDrawingHF r:id=\"rId2\"/>"},
      {"<legacyDrawing r:id=\"rId3\"/>", "<legacyDrawing r:id=\"rId3\"/></worksheet>"},
  };
  for (const auto& [after, expected] : cases) {
    const std::string xml = sheetXml("<row r=\"1\"><c r=\"A1\"><v>1</v></c></row>", "", after);
    const Worksheet sheet = parsed(xml);
    const std::string written = sheet.serialize(xml, "rId9");
    EXPECT_NE(written.find(expected), std::string::npos) << written;
    EXPECT_TRUE(parsed(written).hasLegacyDrawing());
  }
  // A sheet whose root does not declare the relationship prefix gets it on the element.
  const std::string bare =
      "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><sheetData/></worksheet>";
  EXPECT_NE(parsed(bare)
                .serialize(bare, "rId1")
                .find("xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\" "
                      "r:id=\"rId1\"/></worksheet>"),
            std::string::npos);
}

TEST(Worksheet, PrefixedSheetsAreWrittenWithTheirPrefix) {
  const std::string xml =
      "<x:worksheet xmlns:x=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><x:sheetData>"
      "<x:row r=\"1\"><x:c r=\"A1\" "
      "t=\"inlineStr\"><x:is><x:t>a</x:t></x:is></x:c></x:row></x:sheetData></x:worksheet>";
  Worksheet sheet = parsed(xml);
  EXPECT_EQ(sheet.value(0, strings()), CellValue("a"));
  sheet.setValue({1, 2}, "b");
  const std::string written = sheet.serialize(xml);
  EXPECT_NE(written.find("<x:c r=\"B1\" t=\"inlineStr\"><x:is><x:t>b</x:t></x:is></x:c></x:row></x:sheetData>"),
            std::string::npos)
      << written;
}

// Sheets large enough to be read in batches of rows, with something in row `odd` that the
// batches leave to the streaming parser. Every row reads the same either way.
TEST(Worksheet, LargeSheetsReadTheSameWhateverTheirRowsHold) {
  const struct {
    const char* name;
    std::string odd;  // the second cell of row 3000, which holds 7
  } cases[] = {
      {"plain", "<c r=\"B3000\"><v>7</v></c>"},
      {"comment", "<c r=\"B3000\"><v>7</v><!-- note --></c>"},
      {"CDATA", "<c r=\"B3000\" t=\"str\"><f>1</f><v><![CDATA[7]]></v></c>"},
      {"character reference", "<c r=\"B3000\"><v>&#55;</v></c>"},
      {"processing instruction", "<c r=\"B3000\"><?x y?><v>7</v></c>"},
      {"non-ASCII text", "<c r=\"B3000\" t=\"inlineStr\"><is><t>7</t></is><extLst a=\"\xC3\xA9\"/></c>"},
  };
  const SharedStrings none = strings();
  for (const auto& [name, odd] : cases) {
    std::string rows;
    for (int r = 1; r <= 6000; ++r) {
      const std::string n = std::to_string(r);
      rows += "<row r=\"" + n + "\" spans=\"1:3\"><c r=\"A" + n + "\" s=\"1\"><v>" + n + "</v></c>";
      rows += r == 3000 ? odd : "<c r=\"B" + n + "\" t=\"inlineStr\"><is><t>a &amp; " + n + "</t></is></c>";
      rows += "<c r=\"C" + n + "\"><f>A" + n + "*2</f><v>" + std::to_string(2 * r) + "</v></c></row>\n";
    }
    const std::string xml = sheetXml(rows);
    Worksheet sheet = parsed(xml);
    ASSERT_EQ(sheet.cellCount(), 18000u) << name;
    for (std::uint32_t r = 1; r <= 6000; r += 997) {
      const std::string n = std::to_string(r);
      EXPECT_EQ(sheet.value(sheet.find({r, 1})->position, none), CellValue(double(r))) << name << r;
      EXPECT_EQ(sheet.find({r, 1})->style, 1u) << name << r;
      EXPECT_EQ(sheet.value(sheet.find({r, 2})->position, none), CellValue("a & " + n)) << name << r;
      EXPECT_EQ(sheet.formula(sheet.find({r, 3})->position), "A" + n + "*2") << name << r;
    }
    const CellValue seven = sheet.value(sheet.find({3000, 2})->position, none);
    EXPECT_TRUE(seven == CellValue(7.0) || seven == CellValue("7")) << name;
    sheet.setValue({6000, 1}, "x");
    const std::string written = sheet.serialize(xml);
    EXPECT_NE(written.find("<row r=\"5999\" spans=\"1:3\"><c r=\"A5999\" s=\"1\"><v>5999</v></c>"), std::string::npos)
        << name;
    EXPECT_EQ(parsed(written).cellCount(), 18000u) << name;
  }
}

TEST(Worksheet, ErrorsDeepInALargeSheetSayWhere) {
  const struct {
    const char* odd;
    const char* message;
  } cases[] = {
      {"<c r=\"Q2\"/>", "cell Q2 is in row 3000 (line 3001, column 53)"},
      {"<c r=\"B3000\" t=\"b\"><v>7</v></c>", "\"7\" is not a boolean"},
      {"<c r=\"B3000\" r=\"B3000\"/>", "duplicate attribute (line 3001, column "},
      {"<c r=\"B3000\" a=\"<\"/>", "not well-formed"},
      {"<c r=\"B3000\"><v>&x;</v></c>", "undefined entity"},
      {"<c r=\"B3000\"><v>\x01</v></c>", "not well-formed"},
      {"<c r=\"B3000\"><v>\xFF</v></c>", "not well-formed"},
      {"<c r=\"B3000\"><v>]]></v></c>", "not well-formed"},
  };
  for (const auto& [odd, message] : cases) {
    std::string rows;
    for (int r = 1; r <= 6000; ++r) {
      const std::string n = std::to_string(r);
      rows += "<row r=\"" + n + "\"><c r=\"A" + n + "\"><v>" + n + "</v></c>" + (r == 3000 ? odd : "") + "</row>\n";
    }
    std::string error;
    EXPECT_FALSE(Worksheet::parse(chunksOf(sheetXml(rows), 4096), error)) << odd;
    EXPECT_NE(error.find(message), std::string::npos) << odd << ": " << error;
  }
}

// What a sheet holds, cell by cell, and its rows as they are written back.
std::string described(Worksheet& sheet, const std::string& xml, const SharedStrings& table) {
  std::string text;
  sheet.visit([&](const CellView& cell) {
    text += cellRefText({cell.row, cell.column}) + " k" + std::to_string(static_cast<int>(cell.kind)) + " s" +
            std::to_string(cell.style) + " =" + std::string(sheet.formula(cell.position)) + " [" +
            std::string(sheet.text(cell.position, table)) + "] " + std::to_string(sheet.number(cell.position)) + "\n";
  });
  sheet.setValue({kMaxRow - 1, 1}, 1.0);  // so that every row is written from what was read
  const std::string written = sheet.serialize(xml);
  const auto begin = written.find("<sheetData"), end = written.find("</sheetData>");
  return text + written.substr(begin, end - begin);
}

// The rows of a small sheet make one batch, read from its bytes where they can be and else from
// the DOM parser's tree. The same rows read through events (a row further on that neither of
// those takes) and by the streaming parser (a comment ahead of them) must give the same cells,
// rows and errors.
TEST(Worksheet, RowsReadFromBytesOrTreeMatchTheEventsAndTheStreamingParser) {
  const char* const cases[] = {
      "<row r=\"1\"><c r=\"A1\"><v>1</v></c><c r=\"B1\" t=\"b\"><v>true</v></c><c t=\"s\"><v> 1 </v></c></row>",
      "<row r=\"1\" spans=\"1:3\" ht=\"20\" customHeight=\"1\" x14ac:dyDescent=\"0.25\">"
      "<c r=\"A1\" s=\"2\"/><c r=\"C1\" s=\"0\"><v>-1.5E-3</v></c></row><row><c><v>2</v></c></row>",
      "<row r=\"2\">\n  <c r=\"A2\" t=\"str\"><f>A1&amp;\"&lt;\"</f><v>a\r\nb_x000D_</v></c>\n"
      "  <c r=\"B2\" t=\"e\"><v>#N/A</v></c><c r=\"C2\" t=\"d\"><v> 2024-01-02 </v></c>\n</row>",
      "<row r=\"1\"><c r=\"A1\"><f t=\"shared\" ref=\"A1:A2\" si=\"0\">B1*2</f><v>2</v></c></row>"
      "<row r=\"2\"><c r=\"A2\" cm=\"1\" vm=\"&amp;\"><f t=\"shared\" si=\"0\"/><v>4</v></c></row>",
      "<row r=\"1\"><c r=\"A1\"><f>NOW()</f><v/></c><c r=\"B1\" t=\"str\"><f>\"\"</f><v></v></c></row>",
      "<row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is> <t xml:space=\"preserve\"> a </t><t>&amp;b_x0041_</t> </is></c>"
      "<c r=\"B1\" t=\"inlineStr\"><is><t/></is></c><c r=\"C1\" t=\"inlineStr\"/></row>",
      "<row r=\"1\"><c r=\"A1\"><v>1</v><v>2</v></c>text<c r=\"B1\">between<v>3</v> after</c></row>",
      "<x:row r=\"1\"><x:c r=\"A1\"><x:v>5</x:v></x:c></x:row>",
      "<row r=\"3\"><c r=\"B3\"><v>1</v></c><c r=\"A3\"><v>2</v></c></row><row r=\"1\"><c r=\"A1\"><v>3</v></c></row>",
      "<row r='1' a = \"&gt;&apos;\" b='&quot;\"'><c r=\"A1\" /><c r=\"B1\"\n s=\"1\"\t><v >2</v ></c></row >"
      "<row r=\"2\"/><row r=\"3\"><c r=\"A3\" t=\"inlineStr\"><is/></c></row>",
      // Left to the tree by the bytes reader.
      "<row r=\"1\" x=\"a\tb\r\nc\"><c r=\"A1\" t=\"str\"><v>1\r\n2\r3</v></c></row>",
      "<y:row r=\"1\"><c r=\"A1\"><y:v>1</y:v></c></y:row>",
      // Left to the events by both.
      "<row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is><r><t>a</t></r><r><rPr><b/></rPr><t>b</t></r></is></c></row>",
      "<row r=\"1\"><c r=\"A1\"><v>1</v><extLst><ext uri=\"u\"/></extLst></c></row>",
      "<row r=\"1\"><c r=\"A1\"><f>a<g/>b</f><v>1</v></c></row>",
      "<row r=\"1\"><c r=\"A1\"><v>1</v></c><extLst/></row>",
      // Errors, found by each reader and placed by the streaming parser.
      "<row r=\"1\"><c r=\"A1\"><v>1x</v></c></row>",
      "<row r=\"1\"><c r=\"A2\"><v>1</v></c></row>",
      "<row r=\"0\"/>",
      "<row r=\"1\"><c r=\"A1\" t=\"b\"><v>2</v></c></row>",
      "<row r=\"1\"><c r=\"A1\"><v a=\"1\" a=\"2\">1</v></c></row>",
      "<row r=\"1\"><c r=\"A1\"><f a=\"<\">1</f></c></row>",
      "<row r=\"1\"><c r=\"A1\"/><c r=\"A1\"/></row>",
      "<cell/>",
  };
  const SharedStrings table = strings();
  // A row the tree reader leaves to the events; it holds no cell.
  const std::string eventsRow = "<row r=\"1048576\"><extLst/></row>";
  for (const char* rows : cases) {
    const auto read = [&](const std::string& xml) {
      std::string error;
      auto sheet = Worksheet::parse(chunksOf(xml, 5), error);
      if (!sheet) return "error: " + error.substr(0, error.find(" (line"));
      std::string text = described(*sheet, xml, table);
      if (const auto at = text.find("<row r=\"1048576\""); at != std::string::npos) {
        text.erase(at, text.find("</row>", at) + 6 - at);  // the row for the events, written back
      }
      return text;
    };
    const std::string fromTree = read(sheetXml(rows));
    EXPECT_EQ(read(sheetXml(rows + eventsRow)), fromTree) << rows;
    EXPECT_EQ(read(sheetXml("<!-- x -->" + std::string(rows) + eventsRow)), fromTree) << rows;
  }
}

TEST(Xstring, EscapesDecodeAndEncode) {
  const struct {
    const char* xml;
    const char* text;
  } cases[] = {
      {"a_x000D_b", "a\rb"},
      {"_x005F_x000D_", "_x000D_"},
      {"_x0009__x000a_", "\t\n"},
      {"_xD83D__xDE00_", "\xF0\x9F\x98\x80"},
      {"_xD83D_", "\xEF\xBF\xBD"},
      {"_x00e9_", "\xC3\xA9"},
      {"_x12_ _xZZZZ_ x000D_ _x000D", "_x12_ _xZZZZ_ x000D_ _x000D"},
  };
  for (const auto& [xml, text] : cases) EXPECT_EQ(decodeXstring(xml), text) << xml;
  for (const char* text : {"a\rb", "_x000D_", "\x01\x1F", "plain_x_", "\xC3\xA9", "_x005F_"}) {
    EXPECT_EQ(decodeXstring(encodeXstring(text)), text) << text;
  }
  EXPECT_EQ(encodeXstring("a\rb_x0041_"), "a_x000D_b_x005F_x0041_");
}

}  // namespace
}  // namespace corvane::xlsx
