// export-fields and update-excel: the fields of a drawing put into a workbook with their notes,
// the drawing changed, the cells refreshed, and the workbook read back by an independent
// reader; and every refusal leaving the workbook as it was, byte for byte.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/hostapplication.h"
#include "host/acdbtable.h"
#include "support/clirun.h"
#include "support/openpyxl.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::runCorvane;
using corvane::testing::RunFolder;

// Every noted cell of the sheet: "address\tvalue\tnote", one a line.
constexpr const char* kReadNotes =
    "import sys, openpyxl\n"
    "ws = openpyxl.load_workbook(sys.argv[1])[sys.argv[2]]\n"
    "for row in ws.iter_rows():\n"
    "    for c in row:\n"
    "        if c.comment: print(c.coordinate + '\\t' + str(c.value) + '\\t' + c.comment.text)\n";

// A drawing with a room name and a label whose field reads it; the handle of the room name.
std::string writePlan(const fs::path& file, const std::wstring& room) {
  corvane::headless::HostApplication host;
  auto loaded = corvane::dxf::DrawingFile::load(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  if (!loaded.drawing) return {};
  corvane::headless::Database& db = loaded.drawing->database();
  const auto name =
      db.appendEntity(std::make_unique<corvane::headless::Text>(corvane::headless::Text::Point{0, 0, 0}, 0.2, room));
  const auto label =
      db.appendEntity(std::make_unique<corvane::headless::Text>(corvane::headless::Text::Point{0, 1, 0}, 0.2, L""));
  corvane::headless::attachField(
      db, label,
      corvane::core::format(L"Room: %%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).TextString>%%", name.asOldId()));
  EXPECT_TRUE(loaded.drawing->saveAs(file));
  return corvane::core::toUtf8(host.handle(name).text());
}

std::string roomLine(const std::string& notes, const std::string& handle) {
  const std::string key = "_ObjHandle " + handle + ">%).TextString>%";
  std::size_t at = notes.find(key);
  if (at == std::string::npos) return {};
  const std::size_t start = notes.rfind('\n', at);
  return notes.substr(start == std::string::npos ? 0 : start + 1,
                      notes.find('\n', at) - (start == std::string::npos ? 0 : start + 1));
}

TEST(ExcelFieldsCommands, ExportThenUpdateAfterTheDrawingChanged) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed";
  RunFolder folder;
  const fs::path plan = folder / "plan.dxf", book = folder / "book.xlsx";
  fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / "prices.xlsx", book);
  const std::string handle = writePlan(plan, L"Hall 1");
  ASSERT_FALSE(handle.empty());

  CommandRun run = runCorvane({"export-fields", plan.string(), book.string(), "--cell", "H2", "--relative"}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out.rfind("Exported ", 0), 0u) << run.out;
  EXPECT_TRUE(fs::exists(folder / "book.xlsx.bak"));
  std::string notes = corvane::testing::runOpenpyxl(kReadNotes, {book.string(), "Prices"});
  std::string line = roomLine(notes, handle);
  EXPECT_EQ(line.substr(line.find('\t')),
            "\tHall 1\t./plan.dxf|%<\\AcObjProp Object(%<\\_ObjHandle " + handle + ">%).TextString>%")
      << notes;
  const std::string cell = line.substr(0, line.find('\t'));

  // The room is renamed in the drawing's file; the update reads it from there.
  std::string dxf = corvane::testing::readWhole(plan);
  const std::size_t at = dxf.find("\nHall 1\n");
  ASSERT_NE(at, std::string::npos);
  dxf.replace(at, 8, "\nHall 2\n");
  RunFolder::write(plan, dxf);
  run = runCorvane({"update-excel", book.string(), "--json"}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("\"unreadableDrawings\": []"), std::string::npos) << run.out;
  notes = corvane::testing::runOpenpyxl(kReadNotes, {book.string(), "Prices"});
  EXPECT_EQ(roomLine(notes, handle),
            cell + "\tHall 2\t./plan.dxf|%<\\AcObjProp Object(%<\\_ObjHandle " + handle + ">%).TextString>%");

  // Without its drawing every cell says so, and the summary names the drawing.
  fs::rename(plan, folder / "moved.dxf");
  run = runCorvane({"update-excel", book.string()}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(
      run.out.find("Drawing missing or broken, its cells show ####: " + plan.string() + ": there is no such file"),
      std::string::npos)
      << run.out;
  notes = corvane::testing::runOpenpyxl(kReadNotes, {book.string(), "Prices"});
  EXPECT_EQ(roomLine(notes, handle).substr(cell.size()),
            "\t####\t./plan.dxf|%<\\AcObjProp Object(%<\\_ObjHandle " + handle + ">%).TextString>%");
}

// The line of the notes whose note holds `what`.
std::string noteLine(const std::string& notes, const std::string& what) {
  const std::size_t at = notes.find(what);
  if (at == std::string::npos) return {};
  const std::size_t start = notes.rfind('\n', at);
  const std::size_t from = start == std::string::npos ? 0 : start + 1;
  return notes.substr(from, notes.find('\n', at) - from);
}

// Sets cells of the table with the given handle and saves the drawing; gives what the cells
// held before, as numbers (0 for a cell without one).
std::vector<double> changeTable(const fs::path& file, const std::string& handle,
                                const std::vector<std::pair<std::pair<int, int>, std::wstring>>& cells) {
  using namespace corvane;
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(file, host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  if (!loaded.drawing) return {};
  host::AcDbObjectId id;
  EXPECT_EQ(loaded.drawing->database().getAcDbObjectId(id, *host::AcDbHandle::fromText(core::fromUtf8(handle))),
            host::Acad::eOk);
  std::vector<double> before;
  {
    host::AcDbObjectPointer<host::AcDbTable> table(host, id, host::AcDb::kForWrite);
    EXPECT_TRUE(table);
    if (!table) return {};
    for (const auto& [cell, text] : cells) {
      double number = 0;
      table->value(cell.first, cell.second).get(number);
      before.push_back(number);
      EXPECT_EQ(table->setValue(cell.first, cell.second, text, host::AcValueOptions::kConvertTextToValue),
                host::Acad::eOk);
    }
  }
  EXPECT_TRUE(loaded.drawing->saveAs(file));
  return before;
}

// A formula of a table cell goes out with the value its cell shows and a note naming its table,
// and the update reads the table's changed cells from the drawing's file.
TEST(ExcelFieldsCommands, TableFormulaExportedThenUpdatedFromItsTable) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed";
  RunFolder folder;
  const fs::path plan = folder / "plan.dxf", book = folder / "book.xlsx";
  fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / "prices.xlsx", book);
  fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", plan);

  CommandRun run = runCorvane({"export-fields", plan.string(), book.string(), "--cell", "H2"}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("; 0 could not be evaluated; saved"), std::string::npos) << run.out;
  std::string notes = corvane::testing::runOpenpyxl(kReadNotes, {book.string(), "Prices"});
  std::string line = noteLine(notes, ".%<\\VxExpr (B2*C2)");
  ASSERT_FALSE(line.empty()) << notes;
  const std::string cell = line.substr(0, line.find('\t'));
  const std::size_t table = line.find("|Table(<");
  ASSERT_NE(table, std::string::npos) << line;
  const std::string handle = line.substr(table + 8, line.find('>', table) - table - 8);
  const std::string exported = line.substr(cell.size() + 1, line.find('\t', cell.size() + 1) - cell.size() - 1);

  // The quantity and the price of the formula's row change in the drawing's file.
  const std::vector<double> was = changeTable(plan, handle, {{{1, 1}, L"3"}, {{1, 2}, L"2.5"}});
  ASSERT_EQ(was.size(), 2u);
  EXPECT_GT(was[0] * was[1], 0);
  EXPECT_DOUBLE_EQ(std::strtod(exported.c_str(), nullptr), was[0] * was[1]) << exported;  // the workbook keeps a number
  run = runCorvane({"update-excel", book.string(), "--json"}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("\"failed\": 0"), std::string::npos) << run.out << run.err;
  notes = corvane::testing::runOpenpyxl(kReadNotes, {book.string(), "Prices"});
  EXPECT_EQ(noteLine(notes, ".%<\\VxExpr (B2*C2)"), cell + "\t7.5" + line.substr(line.find('\t', cell.size() + 1)));
}

TEST(ExcelFieldsCommands, RefusalsLeaveTheWorkbookAsItWas) {
  RunFolder folder;
  const fs::path plan = folder / "plan.dxf", book = folder / "book.xlsx";
  fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / "prices.xlsx", book);
  ASSERT_FALSE(writePlan(plan, L"Hall 1").empty());
  RunFolder::write(folder / "garbage.dxf", "this is not a drawing\n");
  RunFolder::write(folder / "garbage.xlsx", "this is not a workbook\n");
  const std::string before = corvane::testing::readWhole(book);
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string message;  // part of what stderr says
  } const cases[] = {
      {{"update-excel", (folder / "none.xlsx").string()}, 2, "none.xlsx"},
      {{"update-excel", (folder / "garbage.xlsx").string()}, 1, "corvane update-excel: "},
      {{"update-excel", book.string(), "--sheet", "Nope"}, 1, "has no worksheet Nope"},
      {{"export-fields", plan.string(), book.string(), "--cell", "ZZZ"}, 1, "--cell ZZZ names no single cell"},
      {{"export-fields", plan.string(), book.string(), "--cell", "A1:B2"}, 1, "names no single cell"},
      {{"export-fields", (folder / "garbage.dxf").string(), book.string()}, 1, "corvane export-fields: "},
      {{"export-fields", plan.string(), book.string(), "--sheet", "Nope"}, 1, "has no worksheet Nope"},
      {{"export-fields", plan.string()}, 2, "WORKBOOK"},
      // No notes: nothing to write, nothing saved.
      {{"update-excel", book.string()}, 0, ""},
  };
  for (const auto& c : cases) {
    const CommandRun run = runCorvane(c.args, folder);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.args.back() << "\n" << run.err;
    EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
    EXPECT_EQ(corvane::testing::readWhole(book), before) << c.args.back();
    EXPECT_FALSE(fs::exists(folder / "book.xlsx.bak")) << c.args.back();
  }
}

}  // namespace
