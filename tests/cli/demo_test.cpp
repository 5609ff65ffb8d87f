// corvane demo: the embedded example is what the program makes, its fields come out with the
// values worked out by hand from its numbers, and the drawing it writes reads back elsewhere.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "support/clirun.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::readWhole;
using corvane::testing::RunFolder;
using corvane::testing::runCorvane;

fs::path example() { return fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf"; }

// The files beside the example that its linked fields read.
constexpr const char* kSources[] = {"prices.xlsx", "site-notes.txt", "site-plan.dxf"};

// The example with its sources, copied into a folder of the test's own.
fs::path copyExample(const fs::path& folder) {
  const auto drawing = folder / "quantities.dxf";
  fs::copy_file(example(), drawing);
  for (const char* source : kSources) fs::copy_file(example().parent_path() / source, folder / source);
  return drawing;
}

// The demo's listing as place -> value: a block starts with "<place> (field H)", its value
// line is "  value: ...". Table cells are named by their cell ("D2"), texts by their kind, the
// second and later of a kind with their number ("text 2").
std::map<std::string, std::string> valuesByPlace(const std::string& listing) {
  std::map<std::string, std::string> values;
  std::istringstream in(listing);
  std::string line, place;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == ' ') {
      if (!place.empty() && line.rfind("  value: ", 0) == 0) {
        std::string key = place;
        for (int n = 2; values.count(key) != 0; ++n) key = place + " " + std::to_string(n);
        values[key] = line.substr(9);
      }
      continue;
    }
    const auto field = line.find(" (field ");
    if (field == std::string::npos) continue;
    place = line.substr(0, field);
    if (const auto cell = place.find(", cell "); cell != std::string::npos) place = place.substr(cell + 7);
    else if (const auto blank = place.rfind(' '); blank != std::string::npos) place = place.substr(0, blank);
  }
  return values;
}

TEST(Demo, TheExampleIsWhatTheProgramMakesToday) {
  const RunFolder folder;
  const auto made = folder / "quantities.dxf";
  const CommandRun run = runCorvane({"demo", "--make-example", made.string()}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  ASSERT_TRUE(fs::exists(example())) << example();
  // When the program's drawings change on purpose, write the example anew with
  // "corvane demo --make-example examples/quantities.dxf" and commit it.
  EXPECT_TRUE(readWhole(made) == readWhole(example())) << "examples/quantities.dxf is stale";
  for (const char* source : {"site-notes.txt", "site-plan.dxf"}) {
    EXPECT_TRUE(readWhole(folder / source) == readWhole(example().parent_path() / source)) << source << " is stale";
  }
  // A zip stores when each part was written: the workbook is compared cell by cell.
  const auto cells = [&folder](const fs::path& workbook) {
    return runCorvane({"cells", workbook.string(), "Prices", "--json"}, folder).out;
  };
  EXPECT_EQ(cells(folder / "prices.xlsx"), cells(example().parent_path() / "prices.xlsx")) << "prices.xlsx is stale";
}

TEST(Demo, PrintsEveryFieldWithTheValueOfItsFormula) {
  const RunFolder folder;
  const auto drawing = copyExample(folder.path());
  const std::string before = readWhole(drawing);
  const CommandRun run = runCorvane({"demo", drawing.string()}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");

  // The example's numbers: quantities 12.5, 3.2, 46 and the pit's area; unit prices 84, 910,
  // 23.5 and 15; a budget of 6000; the pit a circle of radius 3; the drawing in metres.
  // Amounts and quantities are shown with two decimals.
  struct Case {
    const char* place;
    const char* value;
  } const cases[] = {
      {"D2", "1050.00"},             // 12.5 * 84
      {"D3", "2912.00"},             // 3.2 * 910
      {"D4", "1081.00"},             // 46 * 23.5
      {"B5", "28.27"},               // pi * 3^2 = 28.2743..., rounded to two decimals
      {"D5", "424.05"},              // 28.27 * 15
      {"D6", "5467.05"},             // 1050 + 2912 + 1081 + 424.05
      {"D7", "1366.80"},             // 5467.05 / 4 = 1366.7625, kept to six digits (1366.76), rounded to 1366.8
      {"D8", "2912.00"},             // the largest of the four amounts
      {"D9", "within budget"},       // 5467.05 <= 6000
      {"D10", "TOTAL 5467.05 EUR"},  // the label upper-cased, the total read as the number it is
      {"text", "Drawing units: metres"},
      {"multiline text", "Carried to the cover sheet: 5467.05 EUR"},  // cell D6 of the table
      // Rooms 6 x 4, 5 x 4 with a half circle of radius 2 added, 8 x 5 less a 2 x 2 well.
      {"text 2", "Floor area: 86.28 m2"},  // 24 + 20 + 2 pi + 36 = 86.2832
      // Walls 30 straight, and 10 + a half circle of radius 2 + 16.
      {"text 3", "Wall length: 62.28 m"},   // 56 + 2 pi = 62.2832
      {"text 4", "Doors 900 or wider: 3"},  // 900, 900 and the variant's 1000, not the 800
      // From the price list: 1234.5 under "#,##0.00"; the name "Supplier" cut to its first 14
      // characters; serial 46082 (1 March 2026) under "d mmmm yyyy".
      {"text 5", "Rebar price: 1,234.50 EUR/t"},
      {"text 6", "Supplier: Nordbeton GmbH"},
      {"text 7", "Prices hold from 1 March 2026"},
      {"text 8", "Plot: Plot 14, Harbour district"},  // the title text of the site plan
      {"multiline text 2",
       "Site access from Nordstra\xC3\x9F"
       "e 12; deliveries 7\xE2\x80\x93"
       "16 h, Monday to Friday."},
  };
  const auto values = valuesByPlace(run.out);
  EXPECT_EQ(values.size(), std::size(cases)) << run.out;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.place);
    const auto found = values.find(c.place);
    ASSERT_NE(found, values.end()) << run.out;
    EXPECT_EQ(found->second, c.value);
  }

  // Each of the 20 texts and cells holds its own text field around one field of ours: 40 in all.
  // The workbook is opened once and read three times; the lines that say so come first.
  const std::string count =
      "Evaluated 40 of 40 fields of " + drawing.string() + " in one batch, 0 ended in an error.\n";
  const std::string workbook = (folder / "prices.xlsx").string();
  const std::string opened = "\nOpening " + workbook + "\nUpdate " + workbook + " successfully.";
  std::string chatter;
  for (int i = 0; i < 3; ++i) chatter += opened;
  EXPECT_EQ(run.out.rfind(chatter + "\n" + count, 0), 0u) << run.out;
  std::istringstream lines(run.out);
  int parts = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.find(" field ") == std::string::npos || line.find(": status ") == std::string::npos) continue;
    ++parts;
    EXPECT_NE(line.find(": status 2, "), std::string::npos) << line;
  }
  EXPECT_EQ(parts, 20);

  const auto updated = folder / "quantities-updated.dxf";
  EXPECT_NE(run.out.find("\nSaved " + updated.string() + "\n"), std::string::npos) << run.out;
  EXPECT_TRUE(fs::exists(updated));
  EXPECT_TRUE(readWhole(drawing) == before) << "the example itself must stay as it was";
}

TEST(Demo, ReportsWhatItCannotDo) {
  const RunFolder folder;
  const auto drawing = folder / "quantities.dxf";
  fs::copy_file(example(), drawing);
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string message;
    fs::path notWritten;
  } const cases[] = {
      {{"demo", (folder / "missing.dxf").string()}, 1, "corvane demo: cannot open",
       folder / "missing-updated.dxf"},
      {{"demo", drawing.string(), "-o", (folder / "no" / "such" / "out.dxf").string()}, 1,
       "corvane demo: cannot create", folder / "no" / "such" / "out.dxf"},
      {{"demo", "--make-example", (folder / "no" / "such" / "example.dxf").string()}, 1,
       "corvane demo: cannot create",
       folder / "no" / "such" / "example.dxf"},
      {{"demo", "--no-such-option"}, 2, "--no-such-option", folder / "quantities-updated.dxf"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args.back());
    const CommandRun run = runCorvane(c.args, folder);
    EXPECT_EQ(run.exitCode, c.exitCode) << run.out;
    EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(c.notWritten));
  }
}

// Prints what an independent reader sees: the audit, the table's cell texts row by row (field
// cells marked "*"), and the texts and multiline texts of model space.
constexpr const char* kReadScript =
    "import sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "print('audit errors', len(doc.audit().errors))\n"
    "for e in doc.modelspace():\n"
    "    if e.dxftype() == 'ACAD_TABLE':\n"
    "        tags = e.xtags.get_subclass('AcDbTable')\n"
    "        cells = []\n"
    "        for tag in tags:\n"
    "            if tag.code == 171: cells.append('')\n"
    "            elif cells and tag.code == 344: cells[-1] += '*'\n"
    "            elif cells and tag.code == 302: cells[-1] += str(tag.value)\n"
    "        columns = tags.get_first_value(92)\n"
    "        for r in range(0, len(cells), columns): print('row', '|'.join(cells[r:r + columns]))\n"
    "    elif e.dxftype() == 'TEXT': print('text', e.dxf.text)\n"
    "    elif e.dxftype() == 'MTEXT': print('mtext', e.text)\n";

TEST(Demo, TheUpdatedDrawingReadsBackWithItsNewTexts) {
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const RunFolder folder;
  const auto drawing = copyExample(folder.path());
  const CommandRun demo = runCorvane({"demo", drawing.string()}, folder);
  ASSERT_EQ(demo.exitCode, 0) << demo.err;

  // The same values as the listing, as the cells and texts now show them; numbers typed into
  // the cells show two decimals too.
  const std::string updated =
      "audit errors 0\n"
      "row Item|Quantity|Unit price|Amount\n"
      "row Concrete C30, m3|12.50|84.00|*1050.00\n"
      "row Rebar B500, t|3.20|910.00|*2912.00\n"
      "row Formwork, m2|46.00|23.50|*1081.00\n"
      "row Pit lining, m2|*28.27|15.00|*424.05\n"
      "row Total|||*5467.05\n"
      "row Average per item|||*1366.80\n"
      "row Largest amount|||*2912.00\n"
      "row Budget|6000.00||*within budget\n"
      "row Summary|||*TOTAL 5467.05 EUR\n"
      "text Drawing units: metres\n"
      "mtext Carried to the cover sheet: 5467.05 EUR\n"
      "text Floor area: 86.28 m2\n"
      "text Wall length: 62.28 m\n"
      "text Doors 900 or wider: 3\n"
      "text Rebar price: 1,234.50 EUR/t\n"
      "text Supplier: Nordbeton GmbH\n"
      "text Prices hold from 1 March 2026\n"
      "text Plot: Plot 14, Harbour district\n"
      "mtext Site access from Nordstra\xC3\x9F"
      "e 12; deliveries 7\xE2\x80\x93"
      "16 h, Monday to Friday.\n";
  const CommandRun after =
      corvane::testing::runPython(kReadScript, {(folder / "quantities-updated.dxf").string()}, folder);
  EXPECT_EQ(after.exitCode, 0) << after.err;
  EXPECT_EQ(after.out, updated);

  // The example itself still shows the codes: the values above are the update's.
  const CommandRun before = corvane::testing::runPython(kReadScript, {drawing.string()}, folder);
  EXPECT_EQ(before.exitCode, 0) << before.err;
  EXPECT_NE(before.out.find("row Total|||*%<\\VxExpr (SUM(D2:D5)) \\f \"%lu2%pr2\">%\n"), std::string::npos)
      << before.out;
  EXPECT_EQ(before.out.find("5467.05"), std::string::npos) << before.out;
}

}  // namespace
