// Corvane_Export_Fields_to_Excel through the field dialog under `corvane run`: fields set up on
// their pages and exported one after another into the workbook, read back by an independent
// reader; and a drawing never saved refused with its message.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/clirun.h"
#include "support/openpyxl.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::runCorvaneWithOwnSettings;
using corvane::testing::RunFolder;

// The script of the command: the field dialog, a formula and the length of one line exported.
constexpr const char* kScript =
    "Dialog\n"
    "NAME VX Formula\nEXPRESSION 6*7\nEXPORT\n"
    "NAME VX Objects Length\nADD\n(handent \"123\")\n\nEXPORT\n"
    "CANCEL\n";

// "address\tvalue\tnote" of each noted cell of column E, then the length of the line 123 as the
// drawing's own reader measures it.
constexpr const char* kReadBack =
    "import sys, math, openpyxl, ezdxf\n"
    "ws = openpyxl.load_workbook(sys.argv[1])['Prices']\n"
    "for row in ws.iter_rows(min_col=5, max_col=5):\n"
    "    for c in row:\n"
    "        if c.comment: print(c.coordinate + '\\t' + str(c.value) + '\\t' + c.comment.text)\n"
    "line = ezdxf.readfile(sys.argv[2]).entitydb['123']\n"
    "print(math.dist(line.dxf.start, line.dxf.end))\n";

void copyExamples(const RunFolder& folder) {
  for (const char* name : {"quantities.dxf", "prices.xlsx"})
    fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / name, folder / name);
}

TEST(ExportDialogRun, ExportsEachFieldOfTheDialogIntoTheNextCell) {
  if (!corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "no openpyxl";
  RunFolder folder;
  copyExamples(folder);
  RunFolder::write(folder / "export.scr", kScript);
  const std::string drawing = (folder / "quantities.dxf").string();
  const std::string book = (folder / "prices.xlsx").string();
  const CommandRun run =
      runCorvaneWithOwnSettings(folder.path(), {"run", drawing, "--workbook", book, "--select", "Prices!E2", "--script",
                                                (folder / "export.scr").string(), "-o", (folder / "out.dxf").string(),
                                                "--", "Corvane_Export_Fields_to_Excel"});
  ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
  EXPECT_NE(run.out.find("Successfully export %<\\VxExpr (6*7)>% to prices.xlsx[Prices]:$E$2."), std::string::npos)
      << run.out;

  const std::string read = corvane::testing::runOpenpyxl(kReadBack, {book, drawing});
  ASSERT_EQ(read.rfind("ERROR", 0), std::string::npos) << read;
  EXPECT_EQ(read.substr(0, read.find('\n') + 1), "E2\t42\t" + drawing + "|%<\\VxExpr (6*7)>%\n") << read;
  const std::size_t second = read.find("E3\t");
  ASSERT_NE(second, std::string::npos) << read;
  const std::string lengthLine = read.substr(second, read.find('\n', second) - second);
  EXPECT_NE(lengthLine.find("\t" + drawing + "|%<\\AcLength "), std::string::npos) << lengthLine;
  EXPECT_NE(lengthLine.find("Object(<123>)"), std::string::npos) << lengthLine;
  const double exported = std::strtod(lengthLine.substr(3).c_str(), nullptr);
  const double measured = std::strtod(read.substr(read.rfind('\n', read.size() - 2) + 1).c_str(), nullptr);
  EXPECT_GT(measured, 0.0) << read;
  EXPECT_NEAR(exported, measured, 0.01) << read;
}

TEST(ExportDialogRun, ADrawingNeverSavedIsRefused) {
  RunFolder folder;
  copyExamples(folder);
  RunFolder::write(folder / "export.scr", kScript);
  const std::string book = (folder / "prices.xlsx").string();
  const CommandRun run = runCorvaneWithOwnSettings(
      folder.path(), {"run", "new", "--workbook", book, "--select", "Prices!E2", "--script",
                      (folder / "export.scr").string(), "--", "Corvane_Export_Fields_to_Excel"});
  EXPECT_NE((run.out + run.err).find("You must save the drawing before exporting the field."), std::string::npos)
      << run.out << run.err;
  EXPECT_EQ((run.out + run.err).find("Successfully export"), std::string::npos) << run.out;
}

}  // namespace
