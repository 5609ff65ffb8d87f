// Workbooks written by independent writers, read and changed through the Excel port and read
// back by an independent reader: values, displayed texts, names, notes and deleted rows, with
// every part that was not changed kept byte for byte.
#include "xlsx/bookapplication.h"

#include <gtest/gtest.h>

#include <string>

#include "core/oledate.h"
#include "core/utf8.h"
#include "support/openpyxl.h"
#include "support/scratchfolder.h"
#include "xlsx/bookautomation.h"
#include "xlsx/package/package.h"

#ifdef CORVANE_HAVE_XLSXWRITER
#include <xlsxwriter.h>
#endif

namespace corvane::xlsx {
namespace {

using corvane::testing::ScratchFolder;
using host::ExcelValue;

std::string partOf(const std::filesystem::path& file, const std::string& part) {
  std::string error;
  auto package = Package::open(file, error);
  if (!package) return "ERROR: " + error;
  auto bytes = package->read(part, error);
  return bytes ? *bytes : "ERROR: " + error;
}

// Every cell that holds something and every note, one "Sheet!A1=repr(value)|note" per line.
constexpr const char* kDump =
    "import sys, openpyxl\n"
    "wb = openpyxl.load_workbook(sys.argv[1])\n"
    "for ws in wb.worksheets:\n"
    "  for row in ws.iter_rows():\n"
    "    for c in row:\n"
    "      if c.value is None and c.comment is None: continue\n"
    "      note = c.comment.text if c.comment else ''\n"
    "      print('%s!%s=%r|%s' % (ws.title, c.coordinate, c.value, note))\n";

struct Port {
  BookAutomation automation;
  std::shared_ptr<host::ExcelApplication> excel = *automation.createObject();

  std::shared_ptr<host::ExcelWorkbook> open(const std::filesystem::path& path, int readOnly = 0) {
    auto book = excel->openWorkbook(core::fromUtf8(path.string()), 0, readOnly);
    EXPECT_TRUE(book) << (book ? "" : core::toUtf8(book.error().text));
    return book ? *book : nullptr;
  }
};

std::shared_ptr<host::ExcelRange> at(host::ExcelWorksheet& sheet, const wchar_t* where) {
  auto range = sheet.range(where);
  EXPECT_TRUE(range) << core::toUtf8(where);
  return range ? *range : nullptr;
}

TEST(BookApplication, ChangesAWorkbookThatAnIndependentReaderReadsBack) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed";
  ScratchFolder folder;
  const auto file = folder / "costs.xlsx";
  const std::string made = corvane::testing::runOpenpyxl(
      "import sys, datetime, openpyxl\n"
      "from openpyxl.comments import Comment\n"
      "from openpyxl.workbook.defined_name import DefinedName\n"
      "wb = openpyxl.Workbook(); ws = wb.active; ws.title = 'Costs'\n"
      "ws['A1'] = 'Item'; ws['B1'] = 12; ws['C1'] = 450.5; ws['C1'].number_format = '#,##0.00 \"EUR\"'\n"
      "ws['D1'] = datetime.datetime(2026, 11, 24, 18, 0); ws['D1'].number_format = 'yyyy-mm-dd hh:mm'\n"
      "ws['E1'] = '=B1*2'; ws['A2'] = 'Doors'; ws['A2'].comment = Comment('Checked on site', 'Ana')\n"
      "ws['A3'] = 'Windows'; ws['F3'] = 0.256; ws['F3'].number_format = '0.0%'\n"
      "other = wb.create_sheet('Other'); other['A1'] = 'keep me'\n"
      "wb.defined_names.append(DefinedName('Rate', attr_text='Costs!$C$1'))\n"
      "wb.save(sys.argv[1])\n",
      {file.string()});
  ASSERT_EQ(made, "");
  const std::string original = ScratchFolder::read(file);
  const std::string otherSheet = partOf(file, "xl/worksheets/sheet2.xml");
  const std::string styles = partOf(file, "xl/styles.xml");

  Port port;
  auto book = port.open(file);
  ASSERT_TRUE(book);
  ASSERT_EQ(book->worksheetCount(), 2);
  EXPECT_FALSE(book->worksheet(L"Nope"));
  auto sheet = *book->worksheet(L"costs");  // sheet names compare without regard to case
  ASSERT_TRUE(sheet);

  // What each cell shows and holds.
  const struct {
    const wchar_t* cell;
    const wchar_t* text;
  } shown[] = {{L"A1", L"Item"}, {L"B1", L"12"}, {L"C1", L"450.50 EUR"}, {L"D1", L"2026-11-24 18:00"},
               {L"F3", L"25.6%"}, {L"Z99", L""}, {L"Rate", L"450.50 EUR"}};
  for (const auto& s : shown) EXPECT_EQ(*at(*sheet, s.cell)->text(), s.text) << core::toUtf8(s.cell);
  EXPECT_EQ(*at(*sheet, L"D1")->value(), ExcelValue(host::ExcelDate{*core::toOleDate({2026, 11, 24, 18, 0, 0})}));
  EXPECT_EQ(*at(*sheet, L"B1")->value(), ExcelValue(12.0));
  EXPECT_EQ(*at(*sheet, L"E1")->formula(), L"=B1*2");
  EXPECT_EQ(*at(*sheet, L"$C$1")->name(), L"Rate");
  EXPECT_FALSE(at(*sheet, L"C2")->name());
  EXPECT_FALSE(sheet->range(L"NoSuchName"));
  EXPECT_EQ(at(*sheet, L"A2")->comment()->value_or(L"none"), L"Checked on site");
  EXPECT_EQ(at(*sheet, L"B2")->comment()->value_or(L"none"), L"none");

  // Values put as Excel takes them, a note added, row 2 (with its note) deleted.
  ASSERT_TRUE(at(*sheet, L"A5")->setValues({{std::wstring(L"Total"), std::wstring(L"86.5")},
                                            {true, std::wstring(L"3 m2")}}));
  ASSERT_TRUE(at(*sheet, L"B1")->addComment(L"From Corvane"));
  EXPECT_FALSE(at(*sheet, L"B1")->addComment(L"twice"));  // a cell has one note
  ASSERT_TRUE(at(*sheet, L"2:2")->remove());
  EXPECT_FALSE(at(*sheet, L"B1:C2")->remove());  // only whole rows go
  EXPECT_TRUE(book->dirty());
  ASSERT_TRUE(book->save());
  EXPECT_FALSE(book->dirty());

  EXPECT_EQ(corvane::testing::runOpenpyxl(kDump, {file.string()}),
            "Costs!A1='Item'|\n"
            "Costs!B1=12|From Corvane\n"
            "Costs!C1=450.5|\n"
            "Costs!D1=datetime.datetime(2026, 11, 24, 18, 0)|\n"
            "Costs!E1='=B1*2'|\n"
            "Costs!A2='Windows'|\n"
            "Costs!F2=0.256|\n"
            "Costs!A4='Total'|\n"
            "Costs!B4=86.5|\n"
            "Costs!A5=True|\n"
            "Costs!B5='3 m2'|\n"
            "Other!A1='keep me'|\n");
  EXPECT_EQ(partOf(file, "xl/worksheets/sheet2.xml"), otherSheet);
  EXPECT_EQ(partOf(file, "xl/styles.xml"), styles);
  EXPECT_EQ(ScratchFolder::read(folder / "costs.xlsx.bak"), original);

  // The workbook as saved reads back through the port as it was left.
  Port again;
  auto reread = again.open(file);
  ASSERT_TRUE(reread);
  auto costs = *reread->worksheet(1);
  EXPECT_EQ(*at(*costs, L"B1")->comment(), std::optional<std::wstring>(L"From Corvane"));
  EXPECT_EQ(*at(*costs, L"F2")->text(), L"25.6%");
  EXPECT_EQ(*at(*costs, L"Rate")->text(), L"450.50 EUR");
  auto notes = costs->comments();
  ASSERT_TRUE(notes);
  ASSERT_EQ(notes->size(), 1u);
  EXPECT_EQ((*notes)[0].address, L"$B$1");
}

TEST(BookApplication, ANewWorkbookIsSavedWhereToldAndOpensElsewhere) {
  ScratchFolder folder;
  Port port;
  auto made = port.excel->addWorkbook();
  ASSERT_TRUE(made);
  EXPECT_EQ((*made)->name(), L"Book1");
  EXPECT_EQ((*made)->path(), L"");
  EXPECT_FALSE((*made)->save());  // no file name yet
  auto sheet = *(*made)->worksheet(1);
  ASSERT_TRUE(at(*sheet, L"B2")->setValues({{12.5, std::wstring(L"x")}}));
  ASSERT_TRUE(at(*sheet, L"B2")->addComment(L"first note"));
  const auto file = folder / "new.xlsx";
  ASSERT_TRUE((*made)->saveAs(core::fromUtf8(file.string())));
  EXPECT_EQ((*made)->name(), L"new.xlsx");
  EXPECT_TRUE((*made)->builtinDocumentProperty(L"Last Save Time"));

  if (corvane::testing::hasOpenpyxl()) {
    EXPECT_EQ(corvane::testing::runOpenpyxl(kDump, {file.string()}), "Sheet1!B2=12.5|first note\nSheet1!C2='x'|\n");
  }
  // Read-only: the user's file is not written.
  Port other;
  auto readOnly = other.open(file, 1);
  ASSERT_TRUE(readOnly);
  EXPECT_FALSE(readOnly->save());
  EXPECT_EQ(*at(**readOnly->worksheet(1), L"B2")->comment(), std::optional<std::wstring>(L"first note"));
}

TEST(BookApplication, RefusesWhatIsNoWorkbookNamingTheFile) {
  ScratchFolder folder;
  const struct {
    const char* name;
    std::string bytes;
    const char* says;
  } cases[] = {
      {"text.xlsx", "just text", "not a workbook"},
      {"old.xlsx", std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(504, '\0'), "password-protected"},
      {"empty.xlsx", "", "empty"},
  };
  Port port;
  for (const auto& c : cases) {
    ScratchFolder::write(folder / c.name, c.bytes);
    auto opened = port.excel->openWorkbook(core::fromUtf8((folder / c.name).string()), 0, 0);
    ASSERT_FALSE(opened) << c.name;
    const std::string text = core::toUtf8(opened.error().text);
    EXPECT_NE(text.find(c.name), std::string::npos) << text;
    EXPECT_NE(text.find(c.says), std::string::npos) << text;
  }
  EXPECT_EQ(port.excel->workbookCount(), 0);
  EXPECT_FALSE(port.excel->openWorkbook(core::fromUtf8((folder / "missing.xlsx").string()), 0, 0));
}

#ifdef CORVANE_HAVE_XLSXWRITER
TEST(BookApplication, KeepsWhatASecondWriterWroteAndChangesOneCell) {
  ScratchFolder folder;
  const auto file = folder / "written.xlsx";
  lxw_workbook* workbook = workbook_new(file.string().c_str());
  lxw_worksheet* sheet = workbook_add_worksheet(workbook, "Plan");
  lxw_format* money = workbook_add_format(workbook);
  format_set_num_format(money, "#,##0.00;[Red](#,##0.00)");
  lxw_format* date = workbook_add_format(workbook);
  format_set_num_format_index(date, 14);
  worksheet_write_string(sheet, 0, 0, "Area", nullptr);
  worksheet_write_number(sheet, 0, 1, -1234.567, money);
  worksheet_write_number(sheet, 1, 1, 45000, date);
  worksheet_write_formula_num(sheet, 2, 1, "=B1*2", nullptr, -2469.134);
  worksheet_write_boolean(sheet, 3, 1, 1, nullptr);
  worksheet_write_comment(sheet, 0, 0, "measured");
  workbook_define_name(workbook, "Total", "=Plan!$B$1");
  ASSERT_EQ(workbook_close(workbook), LXW_NO_ERROR);
  const std::string untouched[] = {"xl/styles.xml", "xl/sharedStrings.xml", "xl/workbook.xml", "docProps/app.xml",
                                   "xl/theme/theme1.xml"};
  std::vector<std::string> before;
  for (const auto& part : untouched) before.push_back(partOf(file, part));

  Port port;
  auto book = port.open(file);
  ASSERT_TRUE(book);
  auto plan = *book->worksheet(L"Plan");
  EXPECT_EQ(*at(*plan, L"Total")->text(), L"(1,234.57)");
  EXPECT_EQ(*at(*plan, L"B2")->text(), L"3/15/2023");
  EXPECT_EQ(*at(*plan, L"B3")->text(), L"-2469.134");  // the formula's cached result
  EXPECT_EQ(*at(*plan, L"B4")->text(), L"TRUE");
  EXPECT_EQ(*at(*plan, L"A1")->comment(), std::optional<std::wstring>(L"measured"));

  ASSERT_TRUE(at(*plan, L"B1")->setValues({{2500.0}}));
  ASSERT_TRUE(book->save());
  for (std::size_t i = 0; i < std::size(untouched); ++i) EXPECT_EQ(partOf(file, untouched[i]), before[i]) << untouched[i];
  Port again;
  EXPECT_EQ(*at(**again.open(file)->worksheet(1), L"B1")->text(), L"2,500.00");
  if (corvane::testing::hasOpenpyxl()) {
    EXPECT_EQ(corvane::testing::runOpenpyxl(kDump, {file.string()}),
              "Plan!A1='Area'|measured\nPlan!B1=2500|\nPlan!B2=datetime.datetime(2023, 3, 15, 0, 0)|\n"
              "Plan!B3='=B1*2'|\nPlan!B4=True|\n");
  }
}
#endif

}  // namespace
}  // namespace corvane::xlsx
