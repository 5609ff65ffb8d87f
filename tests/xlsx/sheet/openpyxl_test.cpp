// Workbooks from another writer, and the new workbook's parts read by another reader. Both
// need /usr/bin/python3 with openpyxl and the unzip tool; without them the tests are skipped.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/scratchfolder.h"
#include "xlsx/sheet/comments.h"
#include "xlsx/sheet/coreproperties.h"
#include "xlsx/sheet/newworkbook.h"
#include "xlsx/sheet/sharedstrings.h"
#include "xlsx/sheet/styles.h"
#include "xlsx/sheet/workbookpart.h"
#include "xlsx/sheet/worksheet.h"

namespace corvane::xlsx {
namespace {

bool haveOpenpyxl() {
  return std::system("/usr/bin/python3 -c 'import openpyxl' >/dev/null 2>&1") == 0 &&
         std::system("unzip -v >/dev/null 2>&1") == 0;
}

std::string run(const std::string& command) {
  std::string out;
  if (FILE* pipe = ::popen(command.c_str(), "r")) {
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    ::pclose(pipe);
  }
  return out;
}

std::string part(const std::filesystem::path& book, const std::string& name) {
  return run("unzip -p '" + book.string() + "' '" + name + "' 2>/dev/null");
}

TEST(Openpyxl, ItsWorkbooksReadBack) {
  if (!haveOpenpyxl()) GTEST_SKIP() << "no openpyxl for /usr/bin/python3, or no unzip";
  const testing::ScratchFolder folder;
  const auto book = folder / "book.xlsx";
  const std::string script =
      "import openpyxl, datetime\n"
      "from openpyxl.comments import Comment\n"
      "from openpyxl.workbook.defined_name import DefinedName\n"
      "wb = openpyxl.Workbook()\n"
      "ws = wb.active\n"
      "ws.title = 'Data'\n"
      "ws['A1'] = 12.5\n"
      "ws['B1'] = 'text\\r\\nwith _x0041_'\n"
      "ws['C1'] = True\n"
      "ws['A2'] = '=A1*2'\n"
      "ws['B2'] = datetime.datetime(2024, 2, 29)\n"
      "ws['A3'] = 'again'\n"
      "ws['A4'] = 'again'\n"
      "ws['B2'].comment = Comment('a note', 'Ann')\n"
      "ws.merge_cells('A6:C7')\n"
      "wb.create_sheet('Other')\n"
      "wb.defined_names.append(DefinedName('Rate', attr_text='Data!$A$1'))\n"
      "wb.defined_names.append(DefinedName('Local', localSheetId=1, attr_text='Other!$B$2'))\n"
      "wb.save(r'''" +
      book.string() + "''')\n";
  testing::ScratchFolder::write(folder / "make.py", script);
  ASSERT_EQ(std::system(("/usr/bin/python3 '" + (folder / "make.py").string() + "'").c_str()), 0);

  std::string error;
  const auto workbook = WorkbookPart::parse(part(book, "xl/workbook.xml"), error);
  ASSERT_TRUE(workbook) << error;
  ASSERT_EQ(workbook->sheets().size(), 2u);
  EXPECT_EQ(workbook->sheets()[1].name, "Other");
  ASSERT_EQ(workbook->names().size(), 2u);
  EXPECT_EQ(workbook->names()[0].formula, "Data!$A$1");
  EXPECT_FALSE(workbook->names()[0].localSheet);
  EXPECT_EQ(workbook->names()[1].localSheet, 1);
  EXPECT_FALSE(workbook->date1904());

  const std::string sheetXml = part(book, "xl/worksheets/sheet1.xml");
  // This writer puts texts in the cells; other versions use a table.
  const std::string table = part(book, "xl/sharedStrings.xml");
  const auto strings = SharedStrings::parse(chunksOf(table.empty() ? "<sst/>" : table), error);
  ASSERT_TRUE(strings) << error;
  const auto styles = Styles::parse(part(book, "xl/styles.xml"), error);
  ASSERT_TRUE(styles) << error;
  const auto sheet = Worksheet::parse(chunksOf(sheetXml, 1000), error);
  ASSERT_TRUE(sheet) << error;
  const auto valueAt = [&](const char* ref) {
    return sheet->value(sheet->find(*parseCellRef(ref))->position, *strings);
  };
  EXPECT_EQ(valueAt("A1"), CellValue(12.5));
  // This writer does not protect an escape look-alike, so it reads back as the escape.
  EXPECT_EQ(valueAt("B1"), CellValue("text\r\nwith A"));
  EXPECT_EQ(valueAt("C1"), CellValue(true));
  EXPECT_EQ(valueAt("A3"), valueAt("A4"));
  EXPECT_EQ(sheet->formula(sheet->find({2, 1})->position), "A1*2");
  EXPECT_EQ(valueAt("B2"), CellValue(45351.0));
  EXPECT_NE(styles->formatCode(sheet->find({2, 2})->style).find("yy"), std::string_view::npos);
  EXPECT_EQ(sheet->mergedCells(), (std::vector<CellRange>{{{6, 1}, {7, 3}}}));
  EXPECT_EQ(Worksheet(*sheet).serialize(sheetXml), sheetXml);

  const auto notes =
      Comments::parse(part(book, "xl/comments/comment1.xml"), part(book, "xl/drawings/commentsDrawing1.vml"), error);
  ASSERT_TRUE(notes) << error;
  ASSERT_EQ(notes->notes().size(), 1u);
  EXPECT_EQ(notes->notes()[0].ref, (CellRef{2, 2}));
  EXPECT_EQ(notes->notes()[0].author, "Ann");
  EXPECT_EQ(notes->notes()[0].text, "a note");

  const auto core = CoreProperties::parse(part(book, "docProps/core.xml"), error);
  ASSERT_TRUE(core) << error;
  EXPECT_GT(core->modifiedUnixSeconds().value_or(0), 1600000000);
}

TEST(Openpyxl, ANewWorkbookOpensWithValuesAndNotesWritten) {
  if (!haveOpenpyxl()) GTEST_SKIP() << "no openpyxl for /usr/bin/python3, or no unzip";
  const testing::ScratchFolder folder;
  auto parts = newWorkbookParts(1795234841);
  std::string error;
  for (auto& [name, bytes] : parts) {
    if (name != "xl/worksheets/sheet1.xml") continue;
    auto sheet = Worksheet::parse(chunksOf(bytes), error);
    ASSERT_TRUE(sheet) << error;
    sheet->setValue({1, 1}, 3.5);
    sheet->setValue({2, 2}, "two");
    bytes = sheet->serialize(bytes);
  }
  std::string zipScript = "import zipfile\nz = zipfile.ZipFile(r'''" + (folder / "new.xlsx").string() + "''', 'w')\n";
  for (const auto& [name, bytes] : parts) {
    testing::ScratchFolder::write(folder / "parts" / name, bytes);
    zipScript += "z.write(r'''" + (folder / "parts" / name).string() + "''', '" + name + "')\n";
  }
  zipScript += "z.close()\nimport openpyxl\nwb = openpyxl.load_workbook(r'''" + (folder / "new.xlsx").string() +
               "''')\nws = wb.active\nprint(wb.sheetnames, ws['A1'].value, ws['B2'].value, "
               "wb.properties.modified.isoformat())\n";
  testing::ScratchFolder::write(folder / "check.py", zipScript);
  EXPECT_EQ(run("/usr/bin/python3 '" + (folder / "check.py").string() + "' 2>&1"),
            "['Sheet1'] 3.5 two 2026-11-21T04:20:41\n");
}

TEST(NewWorkbook, PartsReadBackWithTheseClasses) {
  const auto parts = newWorkbookParts(0);
  ASSERT_EQ(parts.front().first, "[Content_Types].xml");
  std::string error;
  for (const auto& [name, bytes] : parts) {
    if (name == "xl/workbook.xml") {
      const auto workbook = WorkbookPart::parse(bytes, error);
      ASSERT_TRUE(workbook) << error;
      ASSERT_EQ(workbook->sheets().size(), 1u);
      EXPECT_EQ(workbook->sheets()[0].name, "Sheet1");
    } else if (name == "xl/styles.xml") {
      const auto styles = Styles::parse(bytes, error);
      ASSERT_TRUE(styles) << error;
      EXPECT_EQ(styles->styleCount(), 1u);
    } else if (name == "docProps/core.xml") {
      const auto core = CoreProperties::parse(bytes, error);
      ASSERT_TRUE(core) << error;
      EXPECT_EQ(core->modifiedUnixSeconds(), 0);
    } else if (name == "xl/worksheets/sheet1.xml") {
      const auto sheet = Worksheet::parse(chunksOf(bytes), error);
      ASSERT_TRUE(sheet) << error;
      EXPECT_EQ(sheet->cellCount(), 0u);
    }
  }
}

}  // namespace
}  // namespace corvane::xlsx
