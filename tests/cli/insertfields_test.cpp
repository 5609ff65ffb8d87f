// corvane insert-fields: rules from a file or from the saved settings stamped into the
// attributes of real drawings, read back by our reader and by ezdxf; a drawing that cannot be
// read or written does not stop the others and is never left half written; a bad rules file
// stops everything before any drawing is touched.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/attribute.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/texthost.h"
#include "headless/hostapplication.h"
#include "support/clirun.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::runCorvane;
using corvane::testing::runCorvaneWithOwnSettings;
using corvane::testing::RunFolder;

const fs::path kExample = fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf";

// The attributes with `tag` of a saved drawing as "text|code", the code empty for none.
std::vector<std::wstring> attributes(const fs::path& file, std::wstring_view tag) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(file, host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  std::vector<std::wstring> found;
  if (!loaded.drawing) return found;
  headless::Database& db = loaded.drawing->database();
  for (const auto id : db.objectIds()) {
    const auto* attribute = db.get<headless::Attribute>(id);
    if (!attribute || attribute->tag() != tag) continue;
    const auto field = headless::fieldOf(db, id);
    found.push_back(attribute->hostText() + L"|" +
                    (field.isNull() ? L"" : db.get<headless::Field>(field)->getFieldCode(host::AcDbField::kFieldCode)));
  }
  return found;
}

std::vector<std::wstring> widths(const fs::path& file) { return attributes(file, L"WIDTH"); }

// How many WIDTH attributes carry the file-name field that the rules below give them.
long stampedWidths(const fs::path& file) {
  const auto found = widths(file);
  return std::count(found.begin(), found.end(),
                    core::fromUtf8(file.filename().string()) + L"|%<\\AcVar Filename>%");
}

constexpr const char* kDoorRule = "Door\tWIDTH\t%<\\AcVar Filename>%\n";

TEST(InsertFieldsCommand, StampsEveryDrawingAndTellsTheOneItCouldNotRead) {
  for (const char* jobs : {"1", "2"}) {
    RunFolder folder;
    const fs::path first = folder / "east.dxf";
    const fs::path second = folder / "west.dxf";
    fs::copy_file(kExample, first);
    fs::copy_file(kExample, second);
    const auto before = widths(first);
    RunFolder::write(folder / "rules.tsv",
                     "Door\tWIDTH\t%<\\AcVar Filename>%\r\n\nWindow\tHEIGHT\t%<\\AcVar LUNITS>%\n");
    const CommandRun run = runCorvane({"insert-fields", "--rules", (folder / "rules.tsv").string(), first.string(),
                                       (folder / "missing.dxf").string(), second.string(), "--jobs", jobs},
                                      folder);
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_NE(run.err.find("missing.dxf"), std::string::npos) << run.err;
    for (const fs::path& file : {first, second}) {
      EXPECT_NE(run.out.find(file.string() + "\t3 attributes given a field, 3 evaluated, 0 errors"), std::string::npos)
          << run.out;
      const std::wstring stamped = core::fromUtf8(file.filename().string()) + L"|%<\\AcVar Filename>%";
      const auto after = widths(file);
      ASSERT_EQ(after.size(), before.size());
      // The three references of "Door" get the field; the anonymous block's keeps its text.
      EXPECT_EQ(std::count(after.begin(), after.end(), stamped), 3) << jobs;
      EXPECT_EQ(after.back(), before.back());
      EXPECT_EQ(RunFolder::read(fs::path(file).replace_extension(".bak")), RunFolder::read(kExample));
    }
  }
}

TEST(InsertFieldsCommand, ABadRulesFileNamesItsLineAndTouchesNoDrawing) {
  const struct {
    const char* rules;
    const char* error;  // after the file's name
  } cases[] = {
      {"Door\tWIDTH\n", ":1: expected block name, attribute tag and field code"},
      {"Door\tWIDTH\tx\n\n\tWIDTH\tx\n", ":3: expected"},
      {"Door\t\tx\n", ":1: expected"},
      {"Door\tWIDTH\t\n", ":1: expected"},
  };
  for (const auto& c : cases) {
    RunFolder folder;
    const fs::path drawing = folder / "plan.dxf";
    fs::copy_file(kExample, drawing);
    const fs::path rules = folder / "rules.tsv";
    RunFolder::write(rules, c.rules);
    const CommandRun run = runCorvane({"insert-fields", "--rules", rules.string(), drawing.string()}, folder);
    EXPECT_EQ(run.exitCode, 1) << c.rules;
    EXPECT_NE(run.err.find(rules.string() + c.error), std::string::npos) << run.err;
    EXPECT_EQ(RunFolder::read(drawing), RunFolder::read(kExample));
    EXPECT_FALSE(fs::exists(folder / "plan.bak"));
  }
}


// The settings file of a test, in the form the settings store writes.
std::string settingsWith(const std::vector<std::string>& rules, const std::vector<fs::path>& drawings) {
  std::string text = "Windows Registry Editor Version 5.00\n";
  if (!rules.empty()) {
    text += "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\BlockAttFields]\n";
    for (const std::string& rule : rules) text += rule + "\n";
  }
  if (!drawings.empty()) {
    text += "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\InsertFieldsDrawings]\n";
    for (const fs::path& drawing : drawings) text += "\"" + drawing.string() + "\"=\"\"\n";
  }
  return text;
}

TEST(InsertFieldsCommand, WithoutRulesTheSavedRulesAndDrawingsAreUsed) {
  const std::string doorRule = R"("Door*WIDTH"="%<\\AcVar Filename>%")";
  const struct {
    const char* what;
    std::vector<std::string> rules;  // saved rules
    bool savedDrawings;              // east and west saved as the drawing list
    bool givenDrawing;               // north given on the command line
    bool rulesFile;                  // --rules given
    int exitCode;
    const char* error;
    std::vector<const char*> stamped;  // the drawings that get the field
  } cases[] = {
      {"saved rules and drawings", {doorRule}, true, false, false, 0, "", {"east.dxf", "west.dxf"}},
      {"a drawing given replaces the saved list", {doorRule}, true, true, false, 0, "", {"north.dxf"}},
      {"a rules file with the saved drawings", {}, true, false, true, 0, "", {"east.dxf", "west.dxf"}},
      {"no rules saved", {}, true, true, false, 2, "hold no rules", {}},
      {"a rule of another block only", {R"("Window*HEIGHT"="x")"}, true, false, false, 0, "", {}},
      {"no drawings saved nor given", {doorRule}, false, false, false, 2, "list no drawings", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    RunFolder folder;
    for (const char* name : {"east.dxf", "west.dxf", "north.dxf"}) fs::copy_file(kExample, folder / name);
    const std::string settings =
        settingsWith(c.rules, c.savedDrawings ? std::vector<fs::path>{folder / "east.dxf", folder / "west.dxf"}
                                              : std::vector<fs::path>{});
    RunFolder::write(folder / "registry.reg", settings);
    RunFolder::write(folder / "rules.tsv", kDoorRule);
    std::vector<std::string> args = {"insert-fields"};
    if (c.rulesFile) args.insert(args.end(), {"--rules", (folder / "rules.tsv").string()});
    if (c.givenDrawing) args.push_back((folder / "north.dxf").string());
    const CommandRun run = runCorvaneWithOwnSettings(folder.path(), args);
    EXPECT_EQ(run.exitCode, c.exitCode) << run.err;
    EXPECT_NE(run.err.find(c.error), std::string::npos) << run.err;
    for (const char* name : {"east.dxf", "west.dxf", "north.dxf"}) {
      const bool stamped = std::any_of(c.stamped.begin(), c.stamped.end(),
                                       [&](const char* s) { return std::string(s) == name; });
      const bool worked = c.exitCode == 0 && (c.givenDrawing ? std::string(name) == "north.dxf"
                                                             : std::string(name) != "north.dxf");
      EXPECT_EQ(stampedWidths(folder / name), stamped ? 3 : 0) << name;
      // A drawing outside the run is left byte for byte; one inside it is saved with a backup.
      EXPECT_EQ(fs::exists(fs::path(folder / name).replace_extension(".bak")), worked) << name;
      if (!worked) {
        EXPECT_EQ(RunFolder::read(folder / name), RunFolder::read(kExample)) << name;
      }
    }
    // The settings are read, never written.
    EXPECT_EQ(RunFolder::read(folder / "registry.reg"), settings);
  }
}

TEST(InsertFieldsCommand, WithoutRulesOrSettingsNothingIsWritten) {
  RunFolder folder;
  fs::copy_file(kExample, folder / "plan.dxf");
  const CommandRun run = runCorvaneWithOwnSettings(folder.path(), {"insert-fields", (folder / "plan.dxf").string()});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_NE(run.err.find("no --rules given"), std::string::npos) << run.err;
  EXPECT_FALSE(fs::exists(folder / "registry.reg"));
  EXPECT_EQ(RunFolder::read(folder / "plan.dxf"), RunFolder::read(kExample));
}

TEST(InsertFieldsCommand, ADrawingThatCannotBeReadOrWrittenIsToldWhileTheOthersAreSaved) {
  const struct {
    const char* what;
    void (*spoil)(const fs::path&);
    const char* error;
  } cases[] = {
      {"not a drawing", [](const fs::path& file) { RunFolder::write(file, "this is no drawing\n"); }, "drawing.dxf"},
      {"read-only",
       [](const fs::path& file) { fs::permissions(file, fs::perms::owner_write | fs::perms::group_write |
                                                           fs::perms::others_write, fs::perm_options::remove); },
       "is read-only"},
      {"a folder", [](const fs::path& file) { fs::remove(file); fs::create_directory(file); }, "drawing.dxf"},
  };
  for (const auto& c : cases) {
    for (const char* jobs : {"1", "3"}) {
      SCOPED_TRACE(std::string(c.what) + ", jobs " + jobs);
      RunFolder folder;
      const fs::path first = folder / "first.dxf", spoilt = folder / "drawing.dxf", last = folder / "last.dxf";
      for (const fs::path& file : {first, spoilt, last}) fs::copy_file(kExample, file);
      c.spoil(spoilt);
      const std::string before = fs::is_regular_file(spoilt) ? RunFolder::read(spoilt) : "";
      RunFolder::write(folder / "rules.tsv", kDoorRule);
      const CommandRun run = runCorvane({"insert-fields", "--rules", (folder / "rules.tsv").string(), "--jobs", jobs,
                                         first.string(), spoilt.string(), last.string()},
                                        folder);
      EXPECT_EQ(run.exitCode, 1);
      EXPECT_NE(run.err.find("corvane insert-fields: " + spoilt.string() + ": "), std::string::npos) << run.err;
      EXPECT_NE(run.err.find(c.error), std::string::npos) << run.err;
      EXPECT_NE(run.err.find("the drawing is left as it was"), std::string::npos) << run.err;
      EXPECT_EQ(stampedWidths(first), 3);
      EXPECT_EQ(stampedWidths(last), 3);
      if (fs::is_regular_file(spoilt)) {
        EXPECT_EQ(RunFolder::read(spoilt), before);
      }
      EXPECT_FALSE(fs::exists(folder / "drawing.bak"));
      EXPECT_EQ(run.out.find(spoilt.string()), std::string::npos) << run.out;
    }
  }
}

// The program run with its error output on a pipe that the test reads as it comes; with
// `terminal`, the error output is a terminal of its own instead and the output goes to a file.
class LiveRun {
 public:
  explicit LiveRun(const std::vector<std::string>& args, const fs::path& out, bool terminal = false) {
    std::vector<std::string> all = {CORVANE_CLI};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& arg : all) argv.push_back(arg.data());
    argv.push_back(nullptr);
    int fds[2] = {-1, -1};
    if (terminal) {
      pid_ = ::forkpty(&fd_, nullptr, nullptr, nullptr);
    } else {
      if (::pipe(fds) != 0) return;
      pid_ = ::fork();
    }
    if (pid_ == 0) {
      const int sink = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      ::dup2(sink, STDOUT_FILENO);
      if (!terminal) ::dup2(fds[1], STDERR_FILENO);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    if (!terminal) {
      ::close(fds[1]);
      fd_ = fds[0];
    }
  }
  ~LiveRun() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      wait();
    }
    if (fd_ >= 0) ::close(fd_);
  }

  // The next line of the error output; empty at its end.
  std::string line() {
    std::string text;
    char c = 0;
    while (::read(fd_, &c, 1) == 1) {
      text += c;
      if (c == '\n') break;
    }
    return text;
  }
  // All the error output still to come.
  std::string rest() {
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::read(fd_, buffer, sizeof buffer)) > 0;) text.append(buffer, static_cast<std::size_t>(n));
    return text;
  }
  void signal(int number) { ::kill(pid_, number); }
  // The exit status, or -1 when a signal ended the program.
  int wait() {
    int status = 0;
    if (pid_ <= 0 || ::waitpid(pid_, &status, 0) != pid_) return -1;
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid_ = -1;
  int fd_ = -1;
};

TEST(InsertFieldsCommand, ProgressIsALineADrawingOrABarOnATerminalAndNeverInTheReport) {
  for (const bool terminal : {false, true}) {
    for (const bool json : {false, true}) {
      SCOPED_TRACE(std::string(terminal ? "terminal" : "pipe") + (json ? ", json" : ""));
      RunFolder folder;
      std::vector<std::string> args = {"insert-fields", "--rules", (folder / "rules.tsv").string()};
      if (json) args.push_back("--json");
      for (const char* name : {"a.dxf", "b.dxf", "c.dxf"}) {
        fs::copy_file(kExample, folder / name);
        args.push_back((folder / name).string());
      }
      RunFolder::write(folder / "rules.tsv", kDoorRule);
      LiveRun run(args, folder / "out.txt", terminal);
      const std::string err = run.rest();
      EXPECT_EQ(run.wait(), 0) << err;
      const std::string out = RunFolder::read(folder / "out.txt");
      if (terminal) {
        // Redrawn in place, from none done to all done, and wiped at the end.
        EXPECT_NE(err.find("\r[" + std::string(30, '.') + "] 0/3 drawings, time left unknown"), std::string::npos)
            << err;
        EXPECT_NE(err.find("] 1/3 drawings, about 0:"), std::string::npos) << err;
        EXPECT_NE(err.find("\r[" + std::string(30, '#') + "] 3/3 drawings, done"), std::string::npos) << err;
        EXPECT_EQ(err.find('\n'), std::string::npos) << err;
        EXPECT_EQ(err.back(), '\r');
      } else {
        for (const char* name : {"a.dxf", "b.dxf", "c.dxf"}) {
          EXPECT_NE(err.find(" " + (folder / name).string() +
                             ": 3 attributes given a field, 3 evaluated, 0 errors; "),
                    std::string::npos)
              << err;
        }
        EXPECT_NE(err.find("corvane insert-fields: [1/3] "), std::string::npos) << err;
        EXPECT_NE(err.find("left\n"), std::string::npos) << err;
        EXPECT_NE(err.find("corvane insert-fields: [3/3] "), std::string::npos) << err;
        EXPECT_NE(err.find("; done\n"), std::string::npos) << err;
      }
      EXPECT_EQ(out.find("drawings,"), std::string::npos) << out;
      EXPECT_EQ(out.find("[1/3]"), std::string::npos) << out;
      if (json) {
        EXPECT_EQ(out.rfind("{\"drawings\": [{\"drawing\": ", 0), 0u) << out;
        EXPECT_NE(out.find("\"stamped\": 3, \"evaluated\": 3, \"errors\": 0"), std::string::npos) << out;
      } else {
        EXPECT_NE(out.find((folder / "c.dxf").string() + "\t3 attributes given a field, 3 evaluated, 0 errors\n"),
                  std::string::npos)
            << out;
      }
    }
  }
}

TEST(InsertFieldsCommand, ADrawingThatGoesAwayDuringTheRunIsToldAndTheOthersAreSaved) {
  RunFolder folder;
  std::vector<std::string> args = {"insert-fields", "--rules", (folder / "rules.tsv").string()};
  std::vector<fs::path> drawings;
  for (int i = 0; i < 8; ++i) {
    drawings.push_back(folder / ("plan" + std::to_string(i) + ".dxf"));
    fs::copy_file(kExample, drawings.back());
    args.push_back(drawings.back().string());
  }
  RunFolder::write(folder / "rules.tsv", kDoorRule);
  LiveRun run(args, folder / "out.txt");
  // The program is held while the last drawing goes: it has done one and is on the second.
  const std::string first = run.line();
  run.signal(SIGSTOP);
  ASSERT_NE(first.find("[1/8]"), std::string::npos) << first;
  fs::remove(drawings.back());
  run.signal(SIGCONT);
  const std::string err = first + run.rest();
  EXPECT_EQ(run.wait(), 1) << err;
  EXPECT_NE(err.find("corvane insert-fields: " + drawings.back().string() + ": "), std::string::npos) << err;
  for (std::size_t i = 0; i + 1 < drawings.size(); ++i) EXPECT_EQ(stampedWidths(drawings[i]), 3) << i;
  EXPECT_FALSE(fs::exists(drawings.back()));
  EXPECT_FALSE(fs::exists(fs::path(drawings.back()).replace_extension(".bak")));
}

TEST(InsertFieldsCommand, ARunKilledHalfWayLeavesEveryDrawingOldOrNew) {
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "no python3 with ezdxf";
  for (const char* jobs : {"1", "2"}) {
    SCOPED_TRACE(jobs);
    RunFolder folder;
    std::vector<std::string> args = {"insert-fields", "--jobs", jobs, "--rules", (folder / "rules.tsv").string()};
    std::vector<fs::path> drawings;
    for (int i = 0; i < 40; ++i) {
      drawings.push_back(folder / ("plan" + std::to_string(i) + ".dxf"));
      fs::copy_file(kExample, drawings.back());
      args.push_back(drawings.back().string());
    }
    RunFolder::write(folder / "rules.tsv", kDoorRule);
    {
      LiveRun run(args, folder / "out.txt");
      ASSERT_NE(run.line().find("[1/40]"), std::string::npos);
      run.signal(SIGKILL);
      EXPECT_EQ(run.wait(), -1);
    }
    const std::string original = RunFolder::read(kExample);
    std::size_t old = 0, updated = 0;
    std::vector<std::string> files;
    for (const fs::path& drawing : drawings) {
      if (RunFolder::read(drawing) == original) {
        ++old;
        continue;
      }
      EXPECT_EQ(stampedWidths(drawing), 3) << drawing;
      EXPECT_EQ(RunFolder::read(fs::path(drawing).replace_extension(".bak")), original) << drawing;
      files.push_back(drawing.string());
      ++updated;
    }
    EXPECT_GE(updated, 1u);
    EXPECT_GE(old, 1u) << "the run was not stopped half-way";
    // The independent reader takes every new file whole: three WIDTH attributes given the field.
    const std::string checked = corvane::testing::runEzdxfScript(R"(
import sys, ezdxf
for name in sys.argv[1:]:
    doc = ezdxf.readfile(name)
    widths = [a for i in doc.modelspace().query("INSERT") if i.dxf.name == "Door" for a in i.attribs
              if a.dxf.tag == "WIDTH"]
    print(len(widths), end=" ")
)",
                                                           files);
    std::string expected;
    for (std::size_t i = 0; i < files.size(); ++i) expected += "3 ";
    EXPECT_EQ(checked, expected);
    // A second run finishes the batch over whatever the killed one left behind.
    const CommandRun again = runCorvane(args, folder);
    EXPECT_EQ(again.exitCode, 0) << again.err;
    for (const fs::path& drawing : drawings) EXPECT_EQ(stampedWidths(drawing), 3) << drawing;
  }
}

TEST(InsertFieldsCommand, ADynamicBlocksVariantsTakeItsRulesOnlyWhenAsked) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "no python3 with ezdxf";
  const std::string linear = "acadsharp-dynamic-BLOCKLINEARPARAMETER.dxf";  // LINEAR_PARAM and a variant *U2
  const std::string shown = "acadsharp-dynamic-BLOCKVISIBILITYPARAMETER.dxf";  // four variants only
  const struct {
    std::string sample;
    const char* rules;
    bool variants;                     // --dynamic-variants
    std::vector<std::wstring> marks;   // the MARK attributes afterwards, "text|code", sorted
  } cases[] = {
      {linear, "LINEAR_PARAM\tMARK\tA\n", false, {L"A|A", L"old|"}},
      {linear, "LINEAR_PARAM\tMARK\tA\n", true, {L"A|A", L"A|A"}},
      // A rule naming the variant itself wins over the dynamic block's.
      {linear, "LINEAR_PARAM\tMARK\tA\n*U2\tMARK\tB\n", true, {L"A|A", L"B|B"}},
      {linear, "*U2\tMARK\tB\n", false, {L"B|B", L"old|"}},
      {shown, "block_visibility_parameter\tMARK\tA\n", false, {L"old|", L"old|", L"old|", L"old|"}},
      {shown, "block_visibility_parameter\tMARK\tA\n", true, {L"A|A", L"A|A", L"A|A", L"A|A"}},
      // The run matches names exactly, case and all.
      {shown, "BLOCK_VISIBILITY_PARAMETER\tMARK\tA\n", true, {L"old|", L"old|", L"old|", L"old|"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sample + " " + c.rules + (c.variants ? " with variants" : ""));
    RunFolder folder;
    const fs::path drawing = folder / "dynamic.dxf";
    // Every reference of the sample is given a MARK attribute.
    ASSERT_EQ(corvane::testing::runEzdxfScript(R"(
import sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
for insert in doc.modelspace().query("INSERT"):
    insert.add_attrib("MARK", "old", (0, 0))
doc.saveas(sys.argv[2])
)",
                                               {corvane::testing::sampleDrawing(c.sample).string(), drawing.string()}),
              "");
    RunFolder::write(folder / "rules.tsv", c.rules);
    std::vector<std::string> args = {"insert-fields", "--rules", (folder / "rules.tsv").string(), drawing.string()};
    if (c.variants) args.push_back("--dynamic-variants");
    const CommandRun run = runCorvane(args, folder);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    auto marks = attributes(drawing, L"MARK");
    std::sort(marks.begin(), marks.end());
    EXPECT_EQ(marks, c.marks);
    const long stamped =
        std::count_if(marks.begin(), marks.end(), [](const std::wstring& m) { return m.back() != L'|'; });
    EXPECT_NE(run.out.find("\t" + std::to_string(stamped) + " attributes given a field"), std::string::npos) << run.out;
  }
}

}  // namespace
}  // namespace corvane
