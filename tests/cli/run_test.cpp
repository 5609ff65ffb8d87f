// Runs the built corvane program's run command and checks what it prints and how it exits.
#include <gtest/gtest.h>

#include "support/clirun.h"

#include <filesystem>
#include <string>
#include <vector>

#include "support/scratchfolder.h"

namespace {

using corvane::testing::CommandRun;
using corvane::testing::ScratchFolder;

// The settings go to a file of the test's own, never the user's.
CommandRun run(const ScratchFolder& folder, const std::vector<std::string>& args) {
  return corvane::testing::runCorvaneWithOwnSettings(folder.path(), args);
}

// There is no menu file beside the built program, so the full host's menu loading says so.
const std::string kNoMenu =
    "\nCommand: Corvane_LoadMenu\nFailed to load the menu and toolbar of Corvane. Please load Corvane.cuix from the "
    "installation folder of Corvane manually.";

TEST(RunCommand, RunsCommandsInANewDrawing) {
  ScratchFolder folder;
  ScratchFolder::write(folder / "answers.scr", "[OK]\n");
  ScratchFolder::write(folder / "session.scr", "Corvane_Test\r\nCorvane_About\r\n\r\nCorvane_Multi_Cell_Fields\r\n");
  const std::string box =
      "\n** Halvek Corvane (Information) **\nCorvane 0.1.0\nLive fields for drawings: formulas, table cells, areas, "
      "lengths, block counts, Excel cells, text files and objects of other drawings.\n\nhttps://halvek.example/"
      "corvane/\n";
  struct Case {
    std::vector<std::string> args;
    std::string out;
    int exitCode;
  } const cases[] = {
      {{"run", "new", "Corvane_Test"}, kNoMenu + "\nCommand: Corvane_Test\n6.687500\n", 0},
      {{"run", "new", "--", "corvane_test", "_Corvane_Test"},
       kNoMenu + "\nCommand: corvane_test\n6.687500\nCommand: _Corvane_Test\n6.687500\n", 0},
      // The light edition loads its menu by timer, and only when the menu file is there.
      {{"run", "--lt", "new", "Corvane_Test"}, "\nCommand: Corvane_Test\n6.687500\n", 0},
      {{"run", "new", "--script", (folder / "answers.scr").string(), "--", "Corvane_About"},
       kNoMenu + "\nCommand: Corvane_About" + box + "[OK] -> OK\n", 0},
      // Without commands the script holds them, answers after each.
      {{"run", "new", "--script", (folder / "session.scr").string()},
       kNoMenu + "\nCommand: Corvane_Test\n6.687500\nCommand: Corvane_About" + box +
           "[OK] -> OK (default)\nCommand: Corvane_Multi_Cell_Fields\n** Halvek Corvane (Information) **\nPlease "
           "start Excel and open a workbook first.\n[OK] -> OK (default)\n",
       0},
      {{"run", "--lt", "new", "Corvane_Test", "Nothing"},
       "\nCommand: Corvane_Test\n6.687500\nCommand: Nothing\nUnknown command \"NOTHING\".\n", 1},
  };
  for (const auto& c : cases) {
    const CommandRun result = run(folder, c.args);
    EXPECT_EQ(result.out, c.out) << c.args.back();
    EXPECT_EQ(result.exitCode, c.exitCode) << c.args.back() << "\n" << result.err;
  }
}

TEST(RunCommand, RefusesWhatItCannotDo) {
  ScratchFolder folder;
  ScratchFolder::write(folder / "garbage.dxf", "this is not a drawing\n");
  ScratchFolder::write(folder / "garbage.xlsx", "this is not a workbook\n");
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string message;  // part of what stderr says
  } const cases[] = {
      {{"run", (folder / "missing.dxf").string(), "Corvane_Test"}, 1, "corvane run: "},
      {{"run", (folder / "garbage.dxf").string(), "Corvane_Test"}, 1, "corvane run: "},
      {{"run", "new", "-o", (folder / "out.dxf").string(), "Corvane_Test"}, 1, "a new drawing cannot be saved"},
      {{"run", "new", "--save", "Corvane_Test"}, 1, "a new drawing cannot be saved"},
      {{"run", "new", "--script", (folder / "missing.scr").string(), "Corvane_Test"}, 1, "cannot open the script"},
      {{"run", "new", "--save", "-o", "x.dxf"}, 2, "excludes"},
      {{"run"}, 2, "DRAWING"},
      {{"run", "new", "--workbook", (folder / "garbage.xlsx").string(), "--", "Corvane_Test"}, 1, "is not a workbook"},
      {{"run", "new", "--workbook", (folder / "none.xlsx").string(), "--", "Corvane_Test"}, 2, "none.xlsx"},
  };
  for (const auto& c : cases) {
    const CommandRun result = run(folder, c.args);
    EXPECT_EQ(result.exitCode, c.exitCode) << c.args.back();
    EXPECT_EQ(result.out, "") << c.args.back();
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
  EXPECT_EQ(ScratchFolder::read(folder / "garbage.dxf"), "this is not a drawing\n");
  EXPECT_FALSE(std::filesystem::exists(folder / "out.dxf"));
  EXPECT_FALSE(std::filesystem::exists(folder / "registry.reg"));
}

TEST(RunCommand, RunsCommandsOnADrawingAndSavesIt) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const auto sample = corvane::testing::sampleDrawing("ezdxf-multi_insert_with_attribs.dxf");
  ScratchFolder folder;
  const std::string original = ScratchFolder::read(sample);
  ScratchFolder::write(folder / "drawing.dxf", original);

  // Commands that change nothing: the drawing saved elsewhere comes out as it went in, and the
  // drawing itself is left alone.
  CommandRun result =
      run(folder, {"run", "--lt", (folder / "drawing.dxf").string(), "-o", (folder / "copy.dxf").string(),
                   "Corvane_Test"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "\nCommand: Corvane_Test\n6.687500\n");
  EXPECT_EQ(ScratchFolder::read(folder / "copy.dxf"), original);
  EXPECT_FALSE(std::filesystem::exists(folder / "drawing.bak"));

  // Saved in place, the old file is kept as the backup.
  result = run(folder, {"run", "--lt", (folder / "drawing.dxf").string(), "--save", "Corvane_Test"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(ScratchFolder::read(folder / "drawing.dxf"), original);
  EXPECT_EQ(ScratchFolder::read(folder / "drawing.bak"), original);
}

}  // namespace
