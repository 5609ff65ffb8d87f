// The multi cell fields command (its table and its link of one text to the active cell) and the
// workbooks manager run by the corvane program on the example drawing and workbook, the saved
// drawing read back by ezdxf.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/clirun.h"
#include "support/openpyxl.h"
#include "support/scratchfolder.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::ScratchFolder;

CommandRun run(const ScratchFolder& folder, const std::vector<std::string>& args) {
  return corvane::testing::runCorvaneWithOwnSettings(folder.path(), args);
}

// The example drawing and workbook, copied where the run may change them.
void copyExamples(const ScratchFolder& folder) {
  for (const char* name : {"quantities.dxf", "prices.xlsx"}) {
    fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / name, folder / name);
  }
}

// The Excel cell codes ezdxf finds in the saved drawing's field objects, one per line.
std::string excelCodes(const ScratchFolder& folder, const fs::path& drawing) {
  return corvane::testing::runPython(
             "import sys, ezdxf\n"
             "doc = ezdxf.readfile(sys.argv[1])\n"
             "codes = []\n"
             "for f in doc.objects.query('FIELD'):\n"
             "    for tag in f.xtags.subclasses[1]:\n"
             "        if tag.code == 2 and 'ExcelCell' in str(tag.value): codes.append(str(tag.value))\n"
             "print('\\n'.join(sorted(codes)))\n",
             {drawing.string()}, folder)
      .out;
}

TEST(ExcelWorkflows, MultiCellFieldsFillTheTableAndTheSavedDrawingKeepsThem) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed";
  ScratchFolder folder;
  copyExamples(folder);
  // OK in the dialog, then the cell of row 9, column B of the bill (rows of 8 from the top).
  ScratchFolder::write(folder / "cells.scr", "\n50,-68\n");
  const fs::path saved = folder / "out.dxf";
  const CommandRun result =
      run(folder, {"run", (folder / "quantities.dxf").string(), "--workbook", (folder / "prices.xlsx").string(),
                   "--select", "Prices!B2:C4", "--script", (folder / "cells.scr").string(), "-o", saved.string(), "--",
                   "Corvane_Multi_Cell_Fields"});
  ASSERT_EQ(result.exitCode, 0) << result.err << result.out;
  EXPECT_NE(result.out.find("Select the start cell: 50,-68"), std::string::npos) << result.out;
  const CommandRun table = run(folder, {"table", saved.string(), "134"});
  for (const char* cell : {"\n8\t1\t2\t4\tm3\n", "\n9\t2\t2\t4\t1,234.50\n", "\n10\t2\t2\t4\t23.50\n"}) {
    EXPECT_NE(table.out.find(cell), std::string::npos) << cell << table.out;
  }
  const std::string codes = excelCodes(folder, saved);
  for (const char* cell : {"Prices:$B$2\"", "Prices:$C$3\"", "Prices:$C$4\""}) {
    EXPECT_NE(codes.find((folder / "prices.xlsx").string() + ":" + cell), std::string::npos) << codes;
  }
}

TEST(ExcelWorkflows, OneTextLinkedToTheActiveCellShowsItInTheSavedDrawing) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed";
  ScratchFolder folder;
  copyExamples(folder);
  // The cell target, OK, the drawing-units text, then Enter for the active cell.
  ScratchFolder::write(folder / "link.scr", "Target\nCell\n\n(handent \"149\")\n\n");
  const fs::path saved = folder / "out.dxf";
  const CommandRun result =
      run(folder, {"run", (folder / "quantities.dxf").string(), "--workbook", (folder / "prices.xlsx").string(),
                   "--select", "Prices!C2", "--script", (folder / "link.scr").string(), "-o", saved.string(), "--",
                   "Corvane_Multi_Cell_Fields"});
  ASSERT_EQ(result.exitCode, 0) << result.err << result.out;
  EXPECT_NE(result.out.find("Enter the cell address <$C$2>: "), std::string::npos) << result.out;
  const std::string code = "\\ExcelCell \"" + (folder / "prices.xlsx").string() + ":Prices:$C$2\"";
  EXPECT_NE(excelCodes(folder, saved).find(code), std::string::npos);
  // The text holds the field in place of its own and shows the cell through its number format.
  const std::string text = corvane::testing::runPython(
                               "import sys, ezdxf\n"
                               "doc = ezdxf.readfile(sys.argv[1])\n"
                               "print(doc.entitydb['149'].dxf.text)\n",
                               {saved.string()}, folder)
                               .out;
  EXPECT_EQ(text, "84.00\n");
  const CommandRun fields = run(folder, {"fields", saved.string()});
  EXPECT_NE(fields.out.find("ExcelCell\t2\t%<" + code + ">%\t84.00\n"), std::string::npos) << fields.out;
  EXPECT_EQ(fields.out.find("Drawing units"), std::string::npos) << fields.out;
}

TEST(ExcelWorkflows, WorkbooksManagerMovesTheCellsOfTheSavedDrawing) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed";
  ScratchFolder folder;
  copyExamples(folder);
  ScratchFolder::write(folder / "cells.scr", "\n50,-68\n");
  const fs::path first = folder / "first.dxf";
  ASSERT_EQ(run(folder, {"run", (folder / "quantities.dxf").string(), "--workbook", (folder / "prices.xlsx").string(),
                         "--select", "Prices!C2:C3", "--script", (folder / "cells.scr").string(), "-o",
                         first.string(), "--", "Corvane_Multi_Cell_Fields"})
                .exitCode,
            0);
  // The two new fields are those whose workbook is named by its full path.
  ScratchFolder::write(folder / "manager.scr", "Select\n" + folder.path().string() + "\nShift\nDown\n[Yes]\neXit\n");
  const fs::path saved = folder / "out.dxf";
  const CommandRun result = run(folder, {"run", first.string(), "--script", (folder / "manager.scr").string(), "-o",
                                         saved.string(), "--", "Corvane_Workbooks_Manager"});
  ASSERT_EQ(result.exitCode, 0) << result.err << result.out;
  EXPECT_NE(result.out.find("2 field(s) rewritten."), std::string::npos) << result.out;
  const std::string codes = excelCodes(folder, saved);
  for (const char* cell : {"Prices:$C$3\"", "Prices:$C$4\""}) {
    EXPECT_NE(codes.find((folder / "prices.xlsx").string() + ":" + cell), std::string::npos) << codes;
  }
  EXPECT_EQ(codes.find((folder / "prices.xlsx").string() + ":Prices:$C$2\""), std::string::npos) << codes;
  const CommandRun table = run(folder, {"table", saved.string(), "134"});
  EXPECT_NE(table.out.find("\n8\t1\t2\t4\t1,234.50\n"), std::string::npos) << table.out;
}

}  // namespace
