// Excel cell fields against the workbook backend, over workbooks written by openpyxl: what a
// cell shows, what a missing or broken workbook, sheet or cell shows, and the time stamp that
// spares an unchanged workbook from being opened again, saved with the drawing.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "linkeddrawing.h"
#include "plugin/linked/excelcellcode.h"
#include "plugin/linked/linkedtimestamp.h"
#include "support/openpyxl.h"
#include "support/scratchfolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using host::AcDbField;
using testing::LinkedDrawing;
using testing::ScratchFolder;
using testing::setModified;
using testing::Shown;

const std::wstring kNoBreakSpace(1, L'\u00A0');

// A price list: a price, a date and a supplier under the defined name "Supplier" on the sheet
// "Prices", and a second sheet with a blank in its name.
void writePrices(const fs::path& file, const std::string& price, const std::string& supplier = "Northbeam Steel") {
  fs::create_directories(file.parent_path());
  const std::string made = testing::runOpenpyxl(
      "import sys, datetime, openpyxl\n"
      "from openpyxl.workbook.defined_name import DefinedName\n"
      "wb = openpyxl.Workbook(); ws = wb.active; ws.title = 'Prices'\n"
      "ws['C3'] = float(sys.argv[2]); ws['C3'].number_format = '#,##0.00'\n"
      "ws['C5'] = datetime.datetime(2026, 3, 1); ws['C5'].number_format = 'yyyy-mm-dd'\n"
      "ws['C6'] = sys.argv[3]\n"
      "wb.create_sheet('Sheet 1')['C7'] = 'seven'\n"
      "wb.defined_names.append(DefinedName('Supplier', attr_text='Prices!$C$6'))\n"
      "wb.save(sys.argv[1])\n",
      {file.string(), price, supplier});
  ASSERT_EQ(made, "");
}

#define REQUIRE_OPENPYXL() \
  if (!testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed"

std::int32_t workbooksOpened(LinkedDrawing& d) { return d.watch.workbooks; }

TEST(ExcelCellField, ShowsCellsAndWhatIsNotThere) {
  REQUIRE_OPENPYXL();
  LinkedDrawing d;
  writePrices(d.folder / "prices.xlsx", "1250.5");
  const std::wstring book = d.path("prices.xlsx");
  const struct {
    std::wstring code;
    Shown shown;
  } cases[] = {
      {ExcelCellCodeByAddress(book, L"Prices", L"C", 3), {AcDbField::kSuccess, L"1,250.50", L""}},
      {ExcelCellCodeByName(book, L"Prices", L"Supplier", 1, 9), {AcDbField::kSuccess, L"Northbeam", L""}},
      {ExcelCellCodeByName(book, L"Prices", L"Supplier", 11), {AcDbField::kSuccess, L"Steel", L""}},
      {ExcelCellCodeByAddress(book, L"Prices", L"C", 5), {AcDbField::kSuccess, L"2026-03-01", L""}},
      {ExcelCellCodeByAddress(book, L"Sheet 1", L"C", 7), {AcDbField::kSuccess, L"seven", L""}},
      {ExcelCellCodeByAddress(book, L"Prices", L"Z", 99), {AcDbField::kSuccess, kNoBreakSpace, L""}},
      {ExcelCellCodeByAddress(L"prices.xlsx", L"Prices", L"C", 3), {AcDbField::kSuccess, L"1,250.50", L""}},
      {ExcelCellCodeByAddress(book, L"Nope", L"C", 3), {AcDbField::kSuccess, book + L":Nope is not found.", L""}},
      {ExcelCellCodeByName(book, L"Prices", L"NoSuchName"),
       {AcDbField::kSuccess, book + L":Prices:NoSuchName is not found.", L""}},
      {EmptyExcelCellCode(), {AcDbField::kInvalidCode, L"", L"The workbook is empty."}},
  };
  std::vector<host::AcDbObjectId> ids;
  for (const auto& c : cases) ids.push_back(d.addField(c.code));
  d.evaluateAll();
  for (std::size_t i = 0; i < ids.size(); ++i)
    EXPECT_EQ(d.shown(ids[i]), cases[i].shown) << core::toUtf8(cases[i].code);
  // Every field named the one workbook, by its full path or beside the drawing: it was opened once.
  EXPECT_EQ(workbooksOpened(d), 1);
}

TEST(ExcelCellField, AMissingOrBrokenWorkbookFailsOnlyItsField) {
  REQUIRE_OPENPYXL();
  LinkedDrawing d;
  writePrices(d.folder / "prices.xlsx", "1250.5");
  ScratchFolder::write(d.folder / "broken.xlsx", "not a workbook at all");
  const std::wstring missing = d.path("gone.xlsx");
  const std::wstring broken = d.path("broken.xlsx");
  const auto missingId = d.addField(ExcelCellCodeByAddress(missing, L"Prices", L"C", 3));
  const auto brokenId = d.addField(ExcelCellCodeByAddress(broken, L"Prices", L"C", 3));
  const auto goodId = d.addField(ExcelCellCodeByAddress(d.path("prices.xlsx"), L"Prices", L"C", 3));
  d.evaluateAll();

  for (const auto& [id, path] : {std::pair{missingId, missing}, std::pair{brokenId, broken}}) {
    const Shown shown = d.shown(id);
    const std::wstring prefix = path + L" is not found: ";
    EXPECT_EQ(shown.value.substr(0, prefix.size()), prefix) << core::toUtf8(shown.value);
    EXPECT_GT(shown.value.size(), prefix.size() + 1) << "the reason is given";
    EXPECT_EQ(shown.value.back(), L'.');
    EXPECT_EQ(ReadTimeStamp(d.field(id)), std::nullopt) << "a failed read is tried again next time";
  }
  EXPECT_EQ(d.shown(goodId).value, L"1,250.50");
  EXPECT_EQ(workbooksOpened(d), 1);
}

TEST(ExcelCellField, WorkbooksOfOneNameInTwoFoldersAreNotConfused) {
  REQUIRE_OPENPYXL();
  LinkedDrawing d;
  writePrices(d.folder / "a" / "prices.xlsx", "1");
  writePrices(d.folder / "b" / "prices.xlsx", "2");
  const auto a = d.addField(ExcelCellCodeByAddress(d.path("a/prices.xlsx"), L"Prices", L"C", 3));
  const auto b = d.addField(ExcelCellCodeByAddress(d.path("b/prices.xlsx"), L"Prices", L"C", 3));
  d.evaluateAll();
  EXPECT_EQ(d.shown(a).value, L"1.00");
  EXPECT_EQ(d.shown(b).value, L"2.00");
}

// A drawing as the command-line update handles it: read from its file, updated, saved. Made
// from the bytes when they are given, else loaded from the file.
struct SavedDrawing {
  headless::HostApplication host;
  std::unique_ptr<dxf::DrawingFile> drawing;
  headless::OsServices system{L"corvane.so", [](std::wstring_view) {}};
  xlsx::BookAutomation excel;
  std::unique_ptr<CCorvaneApp> app;
  std::wstring printed;

  explicit SavedDrawing(const fs::path& file, const std::string& bytes = {}) {
    auto loaded = bytes.empty() ? dxf::DrawingFile::load(file, host) : dxf::DrawingFile::read(bytes, host, file);
    drawing = std::move(loaded.drawing);
    if (!drawing) throw std::runtime_error(loaded.error);
    host.setWorkingDatabase(&drawing->database());
    host.setOutput([this](std::wstring_view text) { printed += text; });
    app = std::make_unique<CCorvaneApp>(host, system, &excel);
    app->onInitialize();
  }
  ~SavedDrawing() { app->onUnload(); }
  headless::Database& db() { return drawing->database(); }
  headless::Field& field(host::AcDbHandle handle) {
    host::AcDbObjectId id;
    EXPECT_EQ(db().getAcDbObjectId(id, handle), host::Acad::eOk);
    return *db().get<headless::Field>(id);
  }
  // Updates every field; the text of the one with the handle.
  std::wstring update(host::AcDbHandle handle) {
    printed.clear();
    host.engine().evaluateFields(&db(), {}, AcDbField::kDemand);
    host::AcValue value;
    field(handle).getValue(value);
    std::wstring text;
    value.get(text);
    return text;
  }
  // Whether the last update opened the workbook in the evaluations' Excel.
  bool opened(const std::wstring& book) const { return printed.find(L"Opening " + book) != std::wstring::npos; }
};

// An empty drawing with the tables a save needs to register an application.
constexpr char kEmptyDrawing[] =
    "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1032\n9\n$HANDSEED\n5\n30\n0\nENDSEC\n0\nSECTION\n2\nTABLES\n"
    "0\nTABLE\n2\nAPPID\n5\n9\n330\n0\n100\nAcDbSymbolTable\n70\n1\n0\nAPPID\n5\n12\n330\n9\n"
    "100\nAcDbSymbolTableRecord\n100\nAcDbRegAppTableRecord\n2\nACAD\n70\n0\n0\nENDTAB\n"
    "0\nTABLE\n2\nBLOCK_RECORD\n5\n1\n330\n0\n100\nAcDbSymbolTable\n70\n1\n0\nBLOCK_RECORD\n5\n1F\n330\n1\n"
    "100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRecord\n2\n*Model_Space\n0\nENDTAB\n0\nENDSEC\n"
    "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n5\n20\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockBegin\n"
    "2\n*Model_Space\n70\n0\n10\n0.0\n20\n0.0\n30\n0.0\n3\n*Model_Space\n0\nENDBLK\n5\n21\n330\n1F\n"
    "100\nAcDbEntity\n8\n0\n100\nAcDbBlockEnd\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nENDSEC\n"
    "0\nSECTION\n2\nOBJECTS\n0\nDICTIONARY\n5\nC\n330\n0\n100\nAcDbDictionary\n0\nENDSEC\n0\nEOF\n";

TEST(ExcelCellField, TheTimeStampIsSavedAndSparesAnUnchangedWorkbook) {
  REQUIRE_OPENPYXL();
  ScratchFolder folder;
  const fs::path prices = folder / "prices.xlsx";
  const std::wstring book = core::fromUtf8(prices.string());
  const fs::path site = folder / "site.dxf";
  writePrices(prices, "1250.5");
  setModified(prices, 0);

  host::AcDbHandle handle;
  {
    SavedDrawing first(site, kEmptyDrawing);
    const auto text =
        first.db().appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 0.2, std::wstring()));
    // The text's field holds the Excel cell field as its child.
    const auto outer =
        headless::attachField(first.db(), text, ExcelCellCodeByAddress(L"prices.xlsx", L"Prices", L"C", 3));
    ASSERT_EQ(first.db().get<headless::Field>(outer)->childCount(), 1);
    handle = first.host.handle(first.db().get<headless::Field>(outer)->getChild(0));
    EXPECT_EQ(first.update(handle), L"1,250.50");
    EXPECT_NE(first.printed.find(L"Update " + book + L" successfully."), std::wstring::npos);
    const auto stamp = ReadTimeStamp(first.field(handle));
    EXPECT_EQ(stamp, first.system.fileStatus(book).modified);
    const dxf::Status saved = first.drawing->save();
    ASSERT_TRUE(saved) << saved.message();
  }

  // Read again in a new session: the stamp came back with the drawing, and the workbook is not
  // opened while it keeps its time.
  SavedDrawing second(site);
  EXPECT_EQ(ReadTimeStamp(second.field(handle)), second.system.fileStatus(book).modified);
  EXPECT_EQ(second.update(handle), L"1,250.50");
  EXPECT_NE(second.printed.find(book + L" is up to date."), std::wstring::npos) << core::toUtf8(second.printed);
  EXPECT_FALSE(second.opened(book));

  // A workbook written since is read again, and its new time stamped.
  writePrices(prices, "1300");
  setModified(prices, 10'000);
  EXPECT_EQ(second.update(handle), L"1,300.00");
  EXPECT_TRUE(second.opened(book));
  EXPECT_EQ(ReadTimeStamp(second.field(handle)), second.system.fileStatus(book).modified);
  // And again in the same session: the workbook read before is not what the field shows.
  writePrices(prices, "1400");
  setModified(prices, 20'000);
  EXPECT_EQ(second.update(handle), L"1,400.00");
}

}  // namespace
}  // namespace corvane
