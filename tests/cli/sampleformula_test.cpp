// A formula field put into a table cell of a sample drawing by our own code, evaluated by
// "corvane update", and read back by an independent reader with its new value.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/table.h"
#include "headless/hostapplication.h"
#include "support/clirun.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::RunFolder;

using corvane::testing::sampleDrawing;

// Puts the field code into a cell of the table and saves the drawing as `out`; "" when done.
std::string addFormula(const fs::path& drawing, std::uint64_t table, int row, int column,
                       const std::wstring& code, const fs::path& out) {
  corvane::headless::HostApplication host;
  auto loaded = corvane::dxf::DrawingFile::load(drawing, host);
  if (!loaded.drawing) return loaded.error;
  auto& db = loaded.drawing->database();
  corvane::host::AcDbObjectId id;
  if (db.getAcDbObjectId(id, corvane::host::AcDbHandle(table)) != corvane::host::Acad::eOk) {
    return "no such table";
  }
  auto* cells = db.get<corvane::headless::Table>(id);
  if (!cells) return "not a table";
  if (cells->putTextString(row, column, code) != corvane::host::Acad::eOk) return "the cell takes no text";
  const auto saved = loaded.drawing->saveAs(out);
  return saved ? std::string() : saved.message();
}

// The audit, then one cell of a table (handle, row, column): its text, the kind of record its
// field link points at, and whether the table's drawing shows the text.
constexpr const char* kCellScript =
    "import sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "print('audit errors', len(doc.audit().errors))\n"
    "t = doc.entitydb[sys.argv[2]]\n"
    "tags = t.xtags.get_subclass('AcDbTable')\n"
    "cells, links = [], []\n"
    "for tag in tags:\n"
    "    if tag.code == 171: cells.append(''); links.append(None)\n"
    "    elif cells and tag.code == 302: cells[-1] += str(tag.value)\n"
    "    elif cells and tag.code == 344: links[-1] = tag.value\n"
    "i = int(sys.argv[3]) * tags.get_first_value(92) + int(sys.argv[4])\n"
    "print('cell', cells[i])\n"
    "linked = doc.entitydb.get(links[i]) if links[i] else None\n"
    "print('link', linked.dxftype() if linked else 'none')\n"
    "drawn = [e.text for e in t.virtual_entities() if e.dxftype() == 'MTEXT']\n"
    "print('drawn', 'yes' if cells[i] in drawn else 'no')\n";

std::string auditLine(const std::string& readerOutput) {
  return readerOutput.substr(0, readerOutput.find('\n'));
}

TEST(SampleFormula, UpdateGivesTheCellItsValueForAnIndependentReader) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  struct Case {
    const char* file;
    const char* table;
    int row, column;  // 0-based
    const char* code;  // ASCII
    const char* value;
  } const cases[] = {
      // Cells A2:C2 hold 1, 2, 3 and B3 holds 5: (1 + 2 + 3) * 5; the cell held 6 before.
      {"ezdxf-acad_table_simple.dxf", "9C", 2, 2, "%<\\VxExpr (SUM(A2:C2)*B3)>%", "30"},
      // A4 shows "35.00%": its value is 35 with a "%" after it. B4 is $100 and E3 is 5:
      // 100 * 35 / 100 = 35, rounded to cents, times 5. The cell held a point before.
      {"acadsharp-sample_AC1032_ascii.dxf", "A35", 2, 2, "%<\\VxExpr (ROUND(B4*A4/100,2)*E3)>%", "175"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    const RunFolder folder;
    const auto withFormula = folder / "with-formula.dxf";
    const auto updated = folder / "updated.dxf";
    ASSERT_EQ(addFormula(sampleDrawing(c.file), std::stoull(c.table, nullptr, 16), c.row, c.column,
                         std::wstring(c.code, c.code + std::strlen(c.code)), withFormula),
              "");

    const CommandRun update =
        corvane::testing::runCorvane({"update", withFormula.string(), "-o", updated.string()}, folder);
    ASSERT_EQ(update.exitCode, 0) << update.err;
    EXPECT_EQ(update.out.rfind("Evaluated ", 0), 0u) << update.out;

    const auto read = [&](const fs::path& file) {
      return corvane::testing::runPython(
          kCellScript, {file.string(), c.table, std::to_string(c.row), std::to_string(c.column)}, folder);
    };
    const CommandRun original = read(sampleDrawing(c.file));
    const CommandRun before = read(withFormula);
    const CommandRun after = read(updated);
    ASSERT_EQ(original.exitCode, 0) << original.err;
    ASSERT_EQ(before.exitCode, 0) << before.err;
    ASSERT_EQ(after.exitCode, 0) << after.err;
    // Until it is evaluated the cell shows its code; afterwards the value, drawn as well, with
    // the cell linked to a field record. Neither save adds to what the reader's audit finds.
    EXPECT_NE(before.out.find(std::string("\ncell ") + c.code + "\n"), std::string::npos) << before.out;
    EXPECT_EQ(after.out, auditLine(original.out) + "\ncell " + c.value + "\nlink FIELD\ndrawn yes\n");
    EXPECT_EQ(auditLine(before.out), auditLine(original.out));
  }
}

// A cell the formula reads is edited in a scripted session: the table's formulas are evaluated
// as the edit ends, and an independent reader finds the new value in the saved file.
TEST(SampleFormula, AnEditedCellRecomputesTheTableForAnIndependentReader) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const RunFolder folder;
  const auto withFormula = folder / "with-formula.dxf";
  const auto edited = folder / "edited.dxf";
  const auto script = folder / "edit.scr";
  // A2 (row 2, column 1 counted from 1 at the prompts) goes from 1 to 11: (11 + 2 + 3) * 5.
  const CommandRun add = corvane::testing::runCorvane(
      {"field", "add", sampleDrawing("ezdxf-acad_table_simple.dxf").string(), "--into", "9C:2,2", "--code",
       "%<\\VxExpr (SUM(A2:C2)*B3)>%", "-o", withFormula.string()},
      folder);
  ASSERT_EQ(add.exitCode, 0) << add.err;
  {
    std::ofstream out(script);
    out << "TABLEDIT\n(handent \"9C\")\n2\n1\n11\n";
  }
  const CommandRun run = corvane::testing::runCorvane(
      {"run", withFormula.string(), "--script", script.string(), "-o", edited.string()}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err << run.out;
  const CommandRun original =
      corvane::testing::runPython(kCellScript, {sampleDrawing("ezdxf-acad_table_simple.dxf").string(), "9C", "2", "2"},
                                  folder);
  const CommandRun after = corvane::testing::runPython(kCellScript, {edited.string(), "9C", "2", "2"}, folder);
  ASSERT_EQ(after.exitCode, 0) << after.err;
  EXPECT_EQ(after.out, auditLine(original.out) + "\ncell 80\nlink FIELD\ndrawn yes\n");
  const CommandRun edit = corvane::testing::runPython(kCellScript, {edited.string(), "9C", "1", "0"}, folder);
  EXPECT_NE(edit.out.find("\ncell 11\n"), std::string::npos) << edit.out;
}

}  // namespace
