// The drawing commands of the corvane program: fields, update and save, with their output,
// their exit codes and what they leave on disk.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/hostapplication.h"
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
  EXPECT_EQ(elsewhere.out, "Evaluated 16 of 16 fields, 0 ended in an error; saved " + out.string() + "\n");
  EXPECT_EQ(corvane::testing::readWhole(copy), original);
  // The file name fields now show the name of the file they were evaluated in.
  const CommandRun listed = run({"fields", out.string()}, errors);
  EXPECT_NE(listed.out.find("\tAcVar\t2\t%<\\AcVar Filename \\f \"%fn6\">%\ttexts.dxf\n"), std::string::npos)
      << listed.out;
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

// The commands that save, on a copy of the example in a folder prepared as the row says: what
// they exit with and say, and what they leave of the drawing, its backup and the folder. What
// the save itself makes of the file system is the library's to show (Save/SaveMeets); these
// rows are what each command adds: its checks before the work, its exit codes and messages.
TEST(DrawingCommands, SavesMeetTheFileSystemAndLoseNothing) {
  const fs::path example = fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf";
  const std::string original = corvane::testing::readWhole(example);
  const Folder settings;
  const Folder reference;
  ASSERT_EQ(run({"update", example.string(), "-o", (reference / "updated.dxf").string()}, reference / "err").exitCode, 0);
  const std::string updated = corvane::testing::readWhole(reference / "updated.dxf");
  ASSERT_NE(updated, original);
  const std::string unrelated = "someone else's\n";

  enum Bytes { kNone, kOriginal, kUpdated, kUnrelated };
  using Prepare = std::function<void(const fs::path&)>;
  const auto put = [&](const fs::path& file, Bytes bytes, unsigned mode = 0644) {
    corvane::testing::ScratchFolder::write(file, bytes == kUnrelated ? unrelated : original);
    ::chmod(file.c_str(), mode);
  };
  // The files the example's linked fields read go beside a copy, written when the originals
  // were: the fields stamp the drawing with those times.
  const char* const sources[] = {"prices.xlsx", "site-notes.txt", "site-plan.dxf"};
  const auto withSources = [&](const fs::path& f) {
    for (const char* source : sources) {
      fs::copy_file(example.parent_path() / source, f / source);
      fs::last_write_time(f / source, fs::last_write_time(example.parent_path() / source));
    }
  };
  const auto beside = [&](std::vector<std::string> tree) {
    tree.insert(tree.end(), std::begin(sources), std::end(sources));
    std::sort(tree.begin(), tree.end());
    return tree;
  };
  const Prepare drawing = [&](const fs::path& f) {
    put(f / "q.dxf", kOriginal);
    withSources(f);
  };
  const Prepare readOnly = [&](const fs::path& f) {
    put(f / "q.dxf", kOriginal, 0444);
    withSources(f);
  };
  struct Case {
    const char* what;
    Prepare prepare;
    std::vector<std::string> args;  // "@" stands for the folder
    int exitCode;
    std::string message;  // part of stderr; empty when nothing is said
    std::string drawing;  // where the drawing's bytes are checked
    Bytes drawingBytes;
    std::string backup;
    Bytes backupBytes;
    std::vector<std::string> tree;
  } const cases[] = {
      {"an output that is a folder is refused before anything is touched",
       [&](auto f) {
         fs::create_directory(f / "out");
         put(f / "out.bak", kUnrelated);
       },
       {"update", example.string(), "-o", "@/out"}, 2, "/out' is a folder", "out.bak", kUnrelated, "", kNone,
       {"out.bak", "out/"}},
      {"an empty output name is no update in place", drawing, {"update", "@/q.dxf", "-o", ""}, 2,
       "the output file name is empty", "q.dxf", kOriginal, "", kNone, beside({"q.dxf"})},
      {"a read-only drawing", readOnly, {"update", "@/q.dxf"}, 1, "q.dxf' is read-only; add --force to replace it",
       "q.dxf", kOriginal, "", kNone, beside({"q.dxf"})},
      {"a read-only drawing, forced", readOnly, {"update", "--force", "@/q.dxf"}, 0, "", "q.dxf", kUpdated, "q.bak",
       kOriginal, beside({"q.bak", "q.dxf"})},
      {"a read-only output of save", [&](auto f) { put(f / "o.dxf", kUnrelated, 0444); },
       {"save", example.string(), "-o", "@/o.dxf"}, 1, "is read-only", "o.dxf", kUnrelated, "", kNone, {"o.dxf"}},
      {"run refuses a read-only drawing before its commands", readOnly,
       {"run", "--lt", "@/q.dxf", "--save", "Corvane_Test"}, 1, "is read-only; add --force", "q.dxf", kOriginal, "",
       kNone, beside({"q.dxf"})},
      {"run saves a read-only drawing when forced", readOnly,
       {"run", "--lt", "@/q.dxf", "--save", "--force", "Corvane_Test"}, 0, "", "q.dxf", kOriginal, "q.bak", kOriginal,
       beside({"q.bak", "q.dxf"})},
      {"run with an empty output name", drawing, {"run", "@/q.dxf", "-o", "", "Corvane_Test"}, 2,
       "the output file name is empty", "q.dxf", kOriginal, "", kNone, beside({"q.dxf"})},
      {"demo refuses a read-only output", [&](auto f) { put(f / "o.dxf", kUnrelated, 0444); },
       {"demo", example.string(), "-o", "@/o.dxf"}, 1, "is read-only; add --force", "o.dxf", kUnrelated, "", kNone,
       {"o.dxf"}},
      {"demo replaces a read-only output when forced", [&](auto f) { put(f / "o.dxf", kUnrelated, 0444); },
       {"demo", example.string(), "-o", "@/o.dxf", "--force"}, 0, "", "o.dxf", kUpdated, "o.bak", kUnrelated,
       {"o.bak", "o.dxf"}},
      {"demo with an output that is a folder", [&](auto f) { fs::create_directory(f / "out"); },
       {"demo", example.string(), "-o", "@/out"}, 2, "/out' is a folder", "out.dxf", kNone, "", kNone, {"out/"}},
      {"demo names the left-over of a killed save",
       [&](auto f) { put(f / ".o.dxf.saving-Zz9Zz9", kUnrelated); },
       {"demo", example.string(), "-o", "@/o.dxf"}, 0, "removed '@/.o.dxf.saving-Zz9Zz9', left by a save", "o.dxf",
       kUpdated, "", kNone, {"o.dxf"}},
      {"the left-over of a killed save is removed and named",
       [&](auto f) {
         drawing(f);
         put(f / ".q.dxf.saving-AbC123", kUnrelated);
         put(f / ".q.dxf.saving-AbC12", kUnrelated);
       },
       {"update", "@/q.dxf"}, 0, "removed '@/.q.dxf.saving-AbC123', left by a save that did not finish", "q.dxf",
       kUpdated, "q.bak", kOriginal, beside({".q.dxf.saving-AbC12", "q.bak", "q.dxf"})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const Folder folder;
    const auto inFolder = [&](std::string text) {
      for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + 1)) {
        text.replace(at, 1, folder.path().string());
      }
      return text;
    };
    c.prepare(folder.path());
    std::vector<std::string> args;
    for (const auto& arg : c.args) args.push_back(inFolder(arg));
    // The settings go to a file of the test's own, never the user's.
    const CommandRun result = corvane::testing::runCommandLine(
        "CORVANE_REGISTRY=" + corvane::testing::shellQuoted((settings / "registry.reg").string()) + " " +
            corvane::testing::corvaneCommandLine(args) + " </dev/null",
        settings / "stderr");
    EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
    if (c.message.empty()) {
      EXPECT_EQ(result.err, "");
    } else {
      EXPECT_NE(result.err.find(inFolder(c.message)), std::string::npos) << result.err;
    }
    if (c.exitCode != 0) {
      EXPECT_EQ(result.out, "");
    }
    const auto expected = [&](Bytes bytes) {
      return bytes == kOriginal ? original : bytes == kUpdated ? updated : bytes == kUnrelated ? unrelated : "";
    };
    EXPECT_TRUE(corvane::testing::readWhole(folder / c.drawing) == expected(c.drawingBytes)) << "the drawing";
    if (!c.backup.empty()) {
      EXPECT_TRUE(corvane::testing::readWhole(folder / c.backup) == expected(c.backupBytes)) << "the backup";
    }
    EXPECT_EQ(folder.tree(), c.tree);
  }
}

// The example with fields that go wrong added: a malformed code, a property of an object
// erased before the save, an evaluator no one serves, and a formula whose value is its own
// error message, which is no field error. Returns the handles of the fields that fail.
std::vector<std::string> writeDrawingWithBrokenFields(const fs::path& path) {
  namespace headless = corvane::headless;
  headless::HostApplication host;
  auto loaded = corvane::dxf::DrawingFile::load(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  if (!loaded.drawing) return {};
  auto& db = loaded.drawing->database();
  // The field a text's code makes, within the text's own field.
  const auto inText = [&](const std::wstring& code) {
    const auto text = db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, -120, 0}, 2.5, L""));
    const auto* wrapper = db.get<headless::Field>(headless::attachField(db, text, code));
    return corvane::core::toUtf8(db.lookup(wrapper->getChild(0))->handle().text());
  };
  const auto circle = db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{0, 0, 0}, 1.0));
  std::vector<std::string> failing = {
      inText(L"%<\\AcObjProp Object().Radius>%"),
      inText(L"Gone: %<\\AcObjProp Object(%<\\_ObjId " + std::to_wstring(circle.asOldId()) + L">%).Radius>%"),
      inText(L"%<\\NoSuchEvaluator 1>%"),
  };
  inText(L"%<\\VxExpr (1/0)>%");
  {
    corvane::host::AcDbObjectPointer<corvane::host::AcDbObject> erased(host, circle, corvane::host::AcDb::kForWrite);
    EXPECT_EQ(erased->erase(), corvane::host::Acad::eOk);
  }
  const auto saved = loaded.drawing->saveAs(path);
  EXPECT_TRUE(saved.ok()) << saved.message();
  return failing;
}

// The count, each field that ended in an error with its status and message (or value, for an
// error without one), the same as JSON, and the exit status --strict gives.
TEST(DrawingCommands, UpdateReportsTheFieldsThatEndedInAnError) {
  const Folder folder;
  const auto broken = folder / "broken.dxf";
  const auto handles = writeDrawingWithBrokenFields(broken);
  ASSERT_EQ(handles.size(), 3u);
  const std::string before = corvane::testing::readWhole(broken);
  const auto clean = fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf";
  const std::string out = (folder / "out.dxf").string();
  const std::string text = "Evaluated 45 of 48 fields, 3 ended in an error; saved " + out + "\n" + handles[0] +
                           "\tAcObjProp\t16\tNo object reference\n" + handles[1] +
                           "\tAcObjProp\t64\tThe object does not exist\n" + handles[2] +
                           "\tNoSuchEvaluator\t4\t####\n";
  const auto error = [](const std::string& handle, const char* evaluator, int status, const char* message) {
    return "{\"handle\": \"" + handle + "\", \"evaluator\": \"" + evaluator + "\", \"status\": " +
           std::to_string(status) + ", \"message\": \"" + message + "\", \"value\": \"####\"}";
  };
  const std::string json = "{\"found\": 48, \"evaluated\": 45, \"failed\": 3, \"errors\": [" +
                           error(handles[0], "AcObjProp", 16, "No object reference") + ", " +
                           error(handles[1], "AcObjProp", 64, "The object does not exist") + ", " +
                           error(handles[2], "NoSuchEvaluator", 4, "") + "], \"saved\": \"" + out + "\"}\n";
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string out;
  } const cases[] = {
      {{"update", broken.string(), "-o", out}, 0, text},
      {{"update", "--json", broken.string(), "-o", out}, 0, json},
      {{"update", "--strict", broken.string(), "-o", out}, 3, text},
      {{"update", "--json", "--strict", broken.string(), "-o", out}, 3, json},
      {{"update", "--strict", clean.string(), "-o", out}, 0,
       "Evaluated 40 of 40 fields, 0 ended in an error; saved " + out + "\n"},
      {{"update", "--json", clean.string(), "-o", out}, 0,
       "{\"found\": 40, \"evaluated\": 40, \"failed\": 0, \"errors\": [], \"saved\": \"" + out + "\"}\n"},
  };
  for (const auto& c : cases) {
    std::string line;
    for (const auto& arg : c.args) line += arg + " ";
    SCOPED_TRACE(line);
    fs::remove(out);
    const CommandRun result = run(c.args, folder / "stderr");
    EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
    EXPECT_EQ(result.out, c.out);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(fs::exists(out)) << "saved whatever the fields came to";
    EXPECT_TRUE(corvane::testing::readWhole(broken) == before);
  }
}

}  // namespace
