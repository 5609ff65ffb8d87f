#include "xlsx/book.h"

#include <gtest/gtest.h>

#include <string>

#include "support/scratchfolder.h"
#include "xlsx/package/package.h"

namespace corvane::xlsx {
namespace {

using corvane::testing::ScratchFolder;

// A workbook of one sheet with the given cells and, when not empty, the given styles part.
std::filesystem::path workbookWith(const ScratchFolder& folder, const std::string& cells, const std::string& styles) {
  Package package;
  const std::string types =
      "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
      "<Default Extension=\"xml\" ContentType=\"application/xml\"/></Types>";
  const std::string rel = "<Relationship Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
  package.write("[Content_Types].xml", types);
  package.write("_rels/.rels",
                "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" + rel +
                    "officeDocument\" Id=\"rId1\" Target=\"xl/workbook.xml\"/></Relationships>");
  package.write("xl/workbook.xml",
                "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
                "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
                "<sheets><sheet name=\"S\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>");
  package.write("xl/_rels/workbook.xml.rels",
                "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" + rel +
                    "worksheet\" Id=\"rId1\" Target=\"worksheets/sheet1.xml\"/>" +
                    (styles.empty() ? "" : rel + "styles\" Id=\"rId2\" Target=\"styles.xml\"/>") + "</Relationships>");
  package.write("xl/worksheets/sheet1.xml",
                "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><sheetData><row r=\"1\">" +
                    cells + "</row></sheetData></worksheet>");
  if (!styles.empty()) package.write("xl/styles.xml", styles);
  const auto path = folder / "book.xlsx";
  std::string error;
  EXPECT_TRUE(package.saveAs(path, {}, error)) << error;
  return path;
}

// Each style shows numbers through its own format; a style index past the list of cell formats
// takes the format of id 0, which the workbook may have redefined.
TEST(Book, ShowsEachCellThroughItsStyleFormat) {
  const std::string cells =
      "<c r=\"A1\"><v>2.5</v></c><c r=\"B1\" s=\"1\"><v>45000</v></c><c r=\"C1\" s=\"2\"><v>0.25</v></c>"
      "<c r=\"D1\" s=\"9\"><v>2.5</v></c><c r=\"E1\" s=\"1\"><v>45001</v></c>";
  const struct {
    const char* name;
    std::string styles;
    const char* shown;  // A1 to E1, one per line
  } cases[] = {
      {"built-in formats",
       "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><cellXfs>"
       "<xf numFmtId=\"0\"/><xf numFmtId=\"14\"/><xf numFmtId=\"10\"/></cellXfs></styleSheet>",
       "2.5\n3/15/2023\n25.00%\n2.5\n3/16/2023\n"},
      {"id 0 redefined",
       "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><numFmts>"
       "<numFmt numFmtId=\"0\" formatCode=\"0.000\"/></numFmts><cellXfs>"
       "<xf numFmtId=\"0\"/><xf numFmtId=\"14\"/><xf numFmtId=\"10\"/></cellXfs></styleSheet>",
       "2.500\n3/15/2023\n25.00%\n2.500\n3/16/2023\n"},
      {"no styles part", "", "2.5\n45000\n0.25\n2.5\n45001\n"},
  };
  for (const auto& [name, styles, shown] : cases) {
    ScratchFolder folder;
    std::string error;
    const auto book = Book::open(workbookWith(folder, cells, styles), error);
    ASSERT_TRUE(book) << name << ": " << error;
    Worksheet* sheet = book->sheet(0, error);
    ASSERT_TRUE(sheet) << name << ": " << error;
    std::string texts;
    sheet->visit([&](const CellView& cell) { texts += book->displayText(*sheet, cell) + "\n"; });
    EXPECT_EQ(texts, shown) << name;
  }
}

}  // namespace
}  // namespace corvane::xlsx
