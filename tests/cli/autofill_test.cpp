// AutoFill in a scripted session: a new formula typed into the first amount of the example's
// table is filled down the column, and the saved drawing holds the moved formulas and their
// values, for our reader and for an independent one.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "dxf/model/drawingfile.h"
#include "headless/db/table.h"
#include "headless/hostapplication.h"
#include "support/clirun.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::ScratchFolder;

// The amounts of the example's table, doubled and shown with two decimals.
constexpr const char* kScript =
    "TABLEDIT\n(handent \"134\")\n2\n4\n%<\\VxExpr (B2*C2*2) \\f \"%lu2%pr2\">%\n"
    "Corvane_AutoFill_Formulas\n(handent \"134\")\n2,4\n5,4\n";

// The fourth column of the table, a cell a line, field cells marked "*".
constexpr const char* kReadColumn =
    "import sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "table = doc.entitydb[sys.argv[2]]\n"
    "tags = table.xtags.get_subclass('AcDbTable')\n"
    "cells = []\n"
    "for tag in tags:\n"
    "    if tag.code == 171: cells.append('')\n"
    "    elif cells and tag.code == 344: cells[-1] += '*'\n"
    "    elif cells and tag.code == 302: cells[-1] += str(tag.value)\n"
    "print('\\n'.join(cells[3::tags.get_first_value(92)]))\n";

CommandRun run(const ScratchFolder& folder, const std::vector<std::string>& args) {
  return corvane::testing::runCorvaneWithOwnSettings(folder.path(), args);
}

TEST(AutoFillRun, FillsAColumnAndTheSavedDrawingHoldsIt) {
  ScratchFolder folder;
  const fs::path drawing = folder / "quantities.dxf";
  fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", drawing);
  const std::string original = ScratchFolder::read(drawing);
  ScratchFolder::write(folder / "fill.scr", kScript);
  const fs::path filled = folder / "filled.dxf";

  const CommandRun result =
      run(folder, {"run", drawing.string(), "--script", (folder / "fill.scr").string(), "-o", filled.string()});
  ASSERT_EQ(result.exitCode, 0) << result.err << result.out;
  EXPECT_EQ(result.out.find("Cannot"), std::string::npos) << result.out;
  EXPECT_EQ(ScratchFolder::read(drawing), original);

  // The moved codes, as our reader finds them in the saved file.
  corvane::headless::HostApplication host;
  auto loaded = corvane::dxf::DrawingFile::load(filled, host);
  ASSERT_TRUE(loaded.drawing) << loaded.error;
  auto& db = loaded.drawing->database();
  corvane::host::AcDbObjectId id;
  ASSERT_EQ(db.getAcDbObjectId(id, *corvane::host::AcDbHandle::fromText(L"134")), corvane::host::Acad::eOk);
  const auto* table = db.get<corvane::headless::Table>(id);
  ASSERT_NE(table, nullptr);
  for (int row = 1; row <= 4; ++row) {
    const std::wstring r = std::to_wstring(row + 1);
    EXPECT_EQ(table->getFormula(row, 3), L"%<\\VxExpr (B" + r + L"*C" + r + L"*2) \\f \"%lu2%pr2\">%") << row;
  }

  // Twice each amount (12.50 * 84.00, 3.20 * 910.00, 46.00 * 23.50 and the pit's 28.27 m2 *
  // 15.00), and the total below them brought up to date.
  const CommandRun listed = corvane::testing::runCorvane({"table", filled.string(), "134"}, folder / "stderr.txt");
  ASSERT_EQ(listed.exitCode, 0) << listed.err;
  for (const char* line : {"1\t3\t2\t4\t2100.00\n", "2\t3\t2\t4\t5824.00\n", "3\t3\t2\t4\t2162.00\n",
                           "4\t3\t2\t4\t848.10\n", "5\t3\t2\t4\t10934.10\n"}) {
    EXPECT_NE(listed.out.find(line), std::string::npos) << line << listed.out;
  }

  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const std::string column = corvane::testing::runEzdxfScript(kReadColumn, {filled.string(), "134"});
  // Below the total: its average, the largest amount, now over the budget of 6000, the summary.
  EXPECT_EQ(column,
            "Amount\n*2100.00\n*5824.00\n*2162.00\n*848.10\n*10934.10\n*2733.50\n*5824.00\n*over budget\n"
            "*TOTAL 10934.10 EUR\n");
}

}  // namespace
