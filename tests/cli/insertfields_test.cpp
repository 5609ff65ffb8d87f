// corvane insert-fields: rules from a file stamped into the attributes of real drawings, read
// back by our reader; a drawing that cannot be read does not stop the others; a bad rules
// file stops everything before any drawing is touched.
#include <gtest/gtest.h>

#include <algorithm>
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
using corvane::testing::RunFolder;

const fs::path kExample = fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf";

// The WIDTH attributes of a saved drawing as "text|code", the code empty for none.
std::vector<std::wstring> widths(const fs::path& file) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(file, host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  std::vector<std::wstring> found;
  if (!loaded.drawing) return found;
  headless::Database& db = loaded.drawing->database();
  for (const auto id : db.objectIds()) {
    const auto* attribute = db.get<headless::Attribute>(id);
    if (!attribute || attribute->tag() != L"WIDTH") continue;
    const auto field = headless::fieldOf(db, id);
    found.push_back(attribute->hostText() + L"|" +
                    (field.isNull() ? L"" : db.get<headless::Field>(field)->getFieldCode(host::AcDbField::kFieldCode)));
  }
  return found;
}

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

}  // namespace
}  // namespace corvane
