// The drawing commands of the corvane program: fields, update and save, with their output,
// their exit codes and what they leave on disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/clirun.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using Folder = corvane::testing::RunFolder;

CommandRun run(const std::vector<std::string>& args, const fs::path& errors) {
  return corvane::testing::runCorvane(args, errors);
}

fs::path sample(const char* name) { return corvane::testing::sampleDrawing(name); }

TEST(DrawingCommands, ListFieldsAsLinesOrJson) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  const std::string drawing = sample("ezdxf-uncommon.dxf").string();
  // The field list's order; the date fields' children hold the date the drawing was saved with.
  const CommandRun lines = run({"fields", drawing}, errors);
  EXPECT_EQ(lines.exitCode, 0) << lines.err;
  EXPECT_EQ(lines.out,
            "600\t5FF\tAcVar\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t21/04/2020\n"
            "5F8\t5F7\t_text\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t\n"
            "5F9\t5F8\tAcVar\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t21/04/2020\n"
            "5FF\t5FE\t_text\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t\n");
  const CommandRun json = run({"fields", "--json", drawing}, errors);
  EXPECT_EQ(json.exitCode, 0) << json.err;
  EXPECT_EQ(json.out.substr(0, 2), "[\n");
  EXPECT_NE(json.out.find("{\"handle\": \"5F9\", \"owner\": \"5F8\", \"evaluator\": \"AcVar\", \"code\": "
                          "\"%<\\\\AcVar Date \\\\f \\\"dd/MM/yyyy\\\">%\", \"status\": 2, \"value\": \"21/04/2020\"}"),
            std::string::npos)
      << json.out;
  EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '{'), 4);
  // A drawing without fields lists nothing.
  const CommandRun none = run({"fields", "--json", sample("ezdxf-hatches_1.dxf").string()}, errors);
  EXPECT_EQ(none.exitCode, 0);
  EXPECT_EQ(none.out, "[]\n");
}

// Fields the drawing's field list does not name are still fields of the drawing.
TEST(DrawingCommands, ListFieldsTheFieldListMisses) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  std::string bytes = corvane::testing::readWhole(sample("ezdxf-uncommon.dxf"));
  const std::string eol = bytes.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  // The list names four fields; 5F9 goes from it.
  const std::string full = "AcDbIdSet" + eol + " 90" + eol + "        4" + eol + "330" + eol + "600" + eol + "330" +
                           eol + "5F8" + eol + "330" + eol + "5F9" + eol;
  const std::size_t at = bytes.find(full);
  ASSERT_NE(at, std::string::npos);
  bytes.replace(at, full.size(),
                "AcDbIdSet" + eol + " 90" + eol + "        3" + eol + "330" + eol + "600" + eol + "330" + eol + "5F8" + eol);
  const auto drawing = folder.path() / "short-list.dxf";
  std::ofstream(drawing, std::ios::binary) << bytes;

  const CommandRun lines = run({"fields", drawing.string()}, errors);
  EXPECT_EQ(lines.exitCode, 0) << lines.err;
  EXPECT_EQ(lines.out,
            "600\t5FF\tAcVar\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t21/04/2020\n"
            "5F8\t5F7\t_text\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t\n"
            "5FF\t5FE\t_text\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t\n"
            "5F9\t5F8\tAcVar\t2\t%<\\AcVar Date \\f \"dd/MM/yyyy\">%\t21/04/2020\n");
}

TEST(DrawingCommands, SaveWritesTheDrawingAsItCameIn) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const Folder folder;
  const auto out = folder.path() / "copy.dxf";
  const CommandRun saved = run({"save", sample("ezdxf-mtext_complex_inline_codes.dxf").string(), "-o", out.string()},
                               folder.path() / "stderr");
  EXPECT_EQ(saved.exitCode, 0) << saved.err;
  EXPECT_EQ(saved.out, "");
  EXPECT_TRUE(corvane::testing::readWhole(out) == corvane::testing::readWhole(sample("ezdxf-mtext_complex_inline_codes.dxf")));
}

TEST(DrawingCommands, UpdateEvaluatesEveryFieldAndSaves) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  const auto original = corvane::testing::readWhole(sample("ezdxf-mtext_complex_inline_codes.dxf"));
  const auto copy = folder.path() / "texts.dxf";
  std::ofstream(copy, std::ios::binary) << original;

  // To another file: the drawing stays as it was.
  const auto out = folder.path() / "updated.dxf";
  const CommandRun elsewhere = run({"update", copy.string(), "-o", out.string()}, errors);
  EXPECT_EQ(elsewhere.exitCode, 0) << elsewhere.err;
  EXPECT_EQ(elsewhere.out, "Evaluated 16 of 16 fields; saved " + out.string() + "\n");
  EXPECT_EQ(corvane::testing::readWhole(copy), original);
  // The file name fields now show the name of the file they were evaluated in.
  const CommandRun listed = run({"fields", out.string()}, errors);
  EXPECT_NE(listed.out.find("\tAcVar\t2\t%<\\AcVar Filename \\f \"%fn6\">%\ttexts.dxf\n"), std::string::npos)
      << listed.out;

  // In place: the drawing changes and the old one is kept as the backup.
  const CommandRun inPlace = run({"update", copy.string()}, errors);
  EXPECT_EQ(inPlace.exitCode, 0) << inPlace.err;
  EXPECT_EQ(corvane::testing::readWhole(copy), corvane::testing::readWhole(out));
  EXPECT_EQ(corvane::testing::readWhole(folder.path() / "texts.bak"), original);
}

TEST(DrawingCommands, ReportErrorsWithoutWritingAnything) {
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  const auto broken = folder.path() / "broken.dxf";
  std::ofstream(broken, std::ios::binary) << "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n 10\nnot a number\n";
  const auto out = folder.path() / "out.dxf";
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string message;
  };
  const Case cases[] = {
      {{"fields", (folder.path() / "missing.dxf").string()}, 1, "corvane fields: cannot open"},
      {{"update", (folder.path() / "missing.dxf").string(), "-o", out.string()}, 1, "corvane update: cannot open"},
      {{"save", broken.string(), "-o", out.string()}, 1, "corvane save: broken.dxf"},
      {{"update", broken.string()}, 1, "corvane update: broken.dxf"},
      {{"fields"}, 2, "DRAWING is required"},
      {{"save", broken.string()}, 2, "--output is required"},
      {{"fields", "a.dxf", "b.dxf"}, 2, ""},
  };
  for (const auto& c : cases) {
    std::string line;
    for (const auto& arg : c.args) line += arg + " ";
    SCOPED_TRACE(line);
    const CommandRun result = run(c.args, errors);
    EXPECT_EQ(result.exitCode, c.exitCode);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
  EXPECT_EQ(folder.names(), std::vector<std::string>{"broken.dxf"});
}

}  // namespace
