// Linked fields from the command line: a drawing updated from a workbook that an independent
// writer made, read back by an independent reader; a second update that finds nothing changed;
// and a workbook changed on disk.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/hostapplication.h"
#include "support/clirun.h"
#include "support/openpyxl.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::runCorvane;
using corvane::testing::RunFolder;

// A sheet "Costs" with a price shown with thousands separators, a date shown long, a greeting
// under a defined name, and the price given as the script's first argument.
constexpr const char* kWriteBook =
    "import sys, datetime, openpyxl\n"
    "from openpyxl.workbook.defined_name import DefinedName\n"
    "wb = openpyxl.Workbook()\n"
    "ws = wb.active\n"
    "ws.title = 'Costs'\n"
    "ws['A1'] = 'Item'\n"
    "ws['B2'] = float(sys.argv[2])\n"
    "ws['B2'].number_format = '#,##0.00'\n"
    "ws['B3'] = datetime.datetime(2026, 3, 1)\n"
    "ws['B3'].number_format = 'd mmmm yyyy'\n"
    "ws['B4'] = 'Hello, world'\n"
    "name = DefinedName('Greeting', attr_text='Costs!$B$4')\n"
    "try:\n"
    "    wb.defined_names['Greeting'] = name\n"
    "except (TypeError, AttributeError):\n"
    "    wb.defined_names.append(name)\n"
    "wb.save(sys.argv[1])\n"
    "print('ok')\n";

constexpr const char* kReadTexts =
    "import sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "for e in doc.modelspace():\n"
    "    if e.dxftype() == 'TEXT' and e.dxf.text != 'Plot 14, Harbour district': print(e.dxf.text)\n";

// The example's site plan with texts that hold the codes added, saved where the test says.
void writeDrawing(const fs::path& path, const std::vector<std::wstring>& codes) {
  corvane::headless::HostApplication host;
  const std::string bytes = corvane::testing::readWhole(fs::path(CORVANE_SOURCE_DIR) / "examples" / "site-plan.dxf");
  auto made = corvane::dxf::DrawingFile::read(bytes, host, path);
  ASSERT_TRUE(made.drawing) << made.error;
  corvane::headless::Database& db = made.drawing->database();
  double y = 0;
  for (const auto& code : codes) {
    const auto text = db.appendEntity(
        std::make_unique<corvane::headless::Text>(corvane::headless::Text::Point{0.0, y -= 5.0, 0.0}, 2.5, L""));
    corvane::headless::attachField(db, text, code);
  }
  const auto saved = made.drawing->save({});
  ASSERT_TRUE(saved) << saved.message();
}

TEST(LinkedFields, AWorkbookOfAnotherWriterUpdatesTheDrawingAndOnlyWhenItChanges) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3 with openpyxl is not installed";
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const RunFolder folder;
  const fs::path book = folder / "book.xlsx";
  ASSERT_EQ(corvane::testing::runOpenpyxl(kWriteBook, {book.string(), "1234.5"}), "ok\n");
  corvane::testing::ScratchFolder::write(folder / "notes.txt", "\xEF\xBB\xBFLevel 2 slab, pour on Friday");
  const fs::path drawing = folder / "linked.dxf";
  writeDrawing(drawing,
               {L"%<\\ExcelCell \"book.xlsx:Costs:$B$2\">%", L"%<\\ExcelCell \"book.xlsx:Costs:Greeting\" \\MID(1,5)>%",
                L"%<\\ExcelCell \"book.xlsx:Costs:$B$3\">%", L"%<\\ExcelCell \"book.xlsx:Nope:$A$1\">%",
                L"%<\\TextField notes.txt>%"});

  const std::string missingSheet = book.string() + ":Nope is not found.\n";
  const auto texts = [&] { return corvane::testing::runEzdxfScript(kReadTexts, {drawing.string()}); };
  const CommandRun first = runCorvane({"update", "--verbose", drawing.string()}, folder);
  ASSERT_EQ(first.exitCode, 0) << first.err;
  EXPECT_EQ(texts(), "1,234.50\nHello\n1 March 2026\n" + missingSheet + "Level 2 slab, pour on Friday\n");
  // Nothing changed: the time stamps saved with the drawing say so and the values stay.
  const CommandRun second = runCorvane({"update", "--verbose", drawing.string()}, folder);
  ASSERT_EQ(second.exitCode, 0) << second.err;
  EXPECT_NE(second.err.find(book.string() + " is up to date."), std::string::npos) << second.err;
  EXPECT_EQ(texts(), "1,234.50\nHello\n1 March 2026\n" + missingSheet + "Level 2 slab, pour on Friday\n");

  // The workbook written anew, a second later: the price is read again.
  const auto before = fs::last_write_time(book);
  ASSERT_EQ(corvane::testing::runOpenpyxl(kWriteBook, {book.string(), "99"}), "ok\n");
  fs::last_write_time(book, before + std::chrono::seconds(2));
  ASSERT_EQ(runCorvane({"update", drawing.string()}, folder).exitCode, 0);
  EXPECT_EQ(texts(), "99.00\nHello\n1 March 2026\n" + missingSheet + "Level 2 slab, pour on Friday\n");
}

}  // namespace
