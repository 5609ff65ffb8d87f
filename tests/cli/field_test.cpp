// corvane field add and corvane field list-types, run as a user runs them, on the example
// drawing with its workbook, text file and other drawing beside it; what they save is read
// back by our reader and by ezdxf.
#include "headless/db/field.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/mtext.h"
#include "headless/db/table.h"
#include "headless/editor/fieldplacement.h"
#include "headless/hostapplication.h"
#include "host/acdbtext.h"
#include "support/clirun.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::runCorvane;
using corvane::testing::RunFolder;

// The example drawing and what its fields read, copied into the test's folder.
fs::path copyExample(const RunFolder& folder) {
  for (const char* name : {"quantities.dxf", "prices.xlsx", "site-notes.txt", "site-plan.dxf"})
    fs::copy_file(fs::path(CORVANE_SOURCE_DIR) / "examples" / name, folder / name);
  return folder / "quantities.dxf";
}

// The evaluator, own code and shown text of the field of that evaluator under the owner, then
// the owner's own text when it is a text, multiline text or attribute.
constexpr const char* kReadField =
    "import sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "owner, evaluator = sys.argv[2], sys.argv[3]\n"
    "def tag(e, code):\n"
    "    return next((v for c, v in e.xtags.subclasses[1] if c == code), None)\n"
    "for e in doc.objects:\n"
    "    if e.dxftype() != 'FIELD' or tag(e, 1) != evaluator: continue\n"
    "    h = e.dxf.owner\n"
    "    for _ in range(4):\n"
    "        if h == owner: print(tag(e, 2)); print(tag(e, 301)); break\n"
    "        h = doc.entitydb[h].dxf.owner if h in doc.entitydb else None\n"
    "o = doc.entitydb[owner]\n"
    "if o.dxftype() in ('TEXT', 'ATTRIB'): print(o.dxf.text)\n"
    "if o.dxftype() == 'MTEXT': print(o.text)\n";

TEST(FieldCommand, AddPutsAFieldIntoEachKindOfPlaceAndSavesIt) {
  struct Case {
    std::string into;
    std::string code;
    std::string kind;
    std::string evaluator;
    std::string value;
  } const cases[] = {
      {"149", "%<\\ExcelCell \"prices.xlsx:Prices:$C$3\">%", "text", "ExcelCell", "1,234.50"},
      {"14E", "%<\\TextField site-notes.txt>%", "multiline text", "TextField",
       "Site access from Nordstra\xC3\x9F"
       "e 12; deliveries 7\xE2\x80\x93"
       "16 h, Monday to Friday."},
      {"126", "%<\\VxExpr (6*7)>%", "attribute", "VxExpr", "42"},
      {"134:9,1", "%<\\AcDefinedObj site-plan.dxf|30.Contents>%", "table cell", "AcDefinedObj",
       "Plot 14, Harbour district"},
  };
  for (const auto& c : cases) {
    const RunFolder folder;
    const fs::path drawing = copyExample(folder);
    const fs::path saved = folder / "with-field.dxf";
    const CommandRun run = runCorvane(
        {"field", "add", drawing.string(), "--into", c.into, "--code", c.code, "-o", saved.string()}, folder);
    ASSERT_EQ(run.exitCode, 0) << c.into << ": " << run.err;
    EXPECT_EQ(run.out.substr(0, run.out.find('\t', c.into.size() + 1)), c.into + "\t" + c.kind) << run.out;
    EXPECT_NE(run.out.find("\t" + c.evaluator + "\t2\t" + c.value + "\nsaved " + saved.string() + "\n"),
              std::string::npos)
        << run.out;

    // Our reader: the place shows the value, and its field is the one added.
    corvane::headless::HostApplication host;
    auto loaded = corvane::dxf::DrawingFile::load(saved, host);
    ASSERT_TRUE(loaded.drawing) << loaded.error;
    corvane::headless::Database& db = loaded.drawing->database();
    const auto place = corvane::headless::findFieldPlace(db, corvane::core::fromUtf8(c.into));
    ASSERT_TRUE(place.place) << corvane::core::toUtf8(place.error);
    const auto* field = db.get<corvane::headless::Field>(corvane::headless::fieldAt(db, *place.place));
    ASSERT_NE(field, nullptr) << c.into;
    EXPECT_EQ(corvane::core::toUtf8(
                  field->getFieldCode(corvane::host::AcDbField::kFieldCode | corvane::host::AcDbField::kAddMarkers)),
              c.code);
    EXPECT_EQ(field->evaluationStatus(), corvane::host::AcDbField::kSuccess) << c.into;
    std::wstring shown;
    if (place.place->isCell) {
      shown = db.get<corvane::headless::Table>(place.place->owner)->textString(place.place->row, place.place->column);
    } else if (const auto* mtext = db.get<corvane::headless::MText>(place.place->owner)) {
      shown = mtext->contents();
    } else {
      shown = db.get<corvane::host::AcDbText>(place.place->owner)->textString();
    }
    EXPECT_EQ(corvane::core::toUtf8(shown), c.value) << c.into;

    // ezdxf: the field under its owner with its code and text, and the text in the entity.
    if (corvane::testing::pythonWithEzdxf().empty()) continue;
    const std::string owner = c.into.substr(0, c.into.find(':'));
    std::string expected = c.code.substr(2, c.code.size() - 4) + "\n" + c.value + "\n";
    if (!place.place->isCell) expected += c.value + "\n";
    EXPECT_EQ(corvane::testing::runEzdxfScript(kReadField, {saved.string(), owner, c.evaluator}), expected) << c.into;
  }
}

TEST(FieldCommand, AddRefusesWhatItCannotPlaceAndLeavesTheFileAsItWas) {
  struct Case {
    std::string into;
    std::string code;
    std::string message;
  } const cases[] = {
      {"149", "%<\\AcVar LUNITS", "is no field code"},
      {"149", "LUNITS", "is no field code"},
      {"149", "Units: %<\\AcVar LUNITS>%", "is more than a field code"},
      {"149", "%<\\NoSuchEvaluator 1>%", "Evaluator is not found to evaluate the field: NoSuchEvaluator"},
      {"999", "%<\\AcVar LUNITS>%", "the drawing has no object 999"},
      {"Z9", "%<\\AcVar LUNITS>%", "'Z9' is no handle"},
      {"123", "%<\\AcVar LUNITS>%", "object 123 (LINE) cannot hold a field"},
      {"125", "%<\\AcVar LUNITS>%", "object 125 (INSERT) cannot hold a field"},
      {"134", "%<\\AcVar LUNITS>%", "object 134 is a table: name one of its cells as 134:ROW,COLUMN"},
      {"134:10,0", "%<\\AcVar LUNITS>%", "the table 134 has no cell 10,0: it has 10 rows and 4 columns"},
      {"134:0,4", "%<\\AcVar LUNITS>%", "the table 134 has no cell 0,4"},
      {"134:1", "%<\\AcVar LUNITS>%", "'1' is no cell: give ROW,COLUMN"},
      {"149:0,0", "%<\\AcVar LUNITS>%", "object 149 (text) is no table: only a table cell has a row and column"},
  };
  const RunFolder folder;
  const fs::path drawing = copyExample(folder);
  const std::string before = corvane::testing::readWhole(drawing);
  for (const auto& c : cases) {
    const CommandRun run = runCorvane({"field", "add", drawing.string(), "--into", c.into, "--code", c.code}, folder);
    EXPECT_EQ(run.exitCode, 1) << c.into << " " << c.code;
    EXPECT_EQ(run.err.rfind("corvane field add: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "") << c.into;
    EXPECT_TRUE(corvane::testing::readWhole(drawing) == before) << c.into << " " << c.code << " changed the drawing";
    EXPECT_FALSE(fs::exists(folder / "quantities.bak")) << c.into;
  }
  const CommandRun missing = runCorvane(
      {"field", "add", (folder / "none.dxf").string(), "--into", "149", "--code", "%<\\AcVar LUNITS>%"}, folder);
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.err.find("none.dxf"), std::string::npos) << missing.err;
  EXPECT_FALSE(fs::exists(folder / "none.dxf"));
}

TEST(FieldCommand, AddInPlaceKeepsTheDrawingBeforeAsBackup) {
  const RunFolder folder;
  const fs::path drawing = copyExample(folder);
  const std::string before = corvane::testing::readWhole(drawing);
  const CommandRun run =
      runCorvane({"field", "add", drawing.string(), "--into", "149", "--code", "%<\\VxExpr (1+1)>%"}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_TRUE(corvane::testing::readWhole(folder / "quantities.bak") == before);
  EXPECT_FALSE(corvane::testing::readWhole(drawing) == before);
}

TEST(FieldCommand, ListTypesAsJsonNamesTheEightFields) {
  const RunFolder folder;
  const CommandRun run = runCorvane({"field", "list-types", "--json"}, folder);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 is not installed";
  const CommandRun parsed = corvane::testing::runPython(
      "import sys, json\n"
      "for t in json.loads(sys.argv[1]): print(t['id'], t['evaluator'], t['name'])\n",
      {run.out}, folder);
  ASSERT_EQ(parsed.exitCode, 0) << parsed.err;
  EXPECT_EQ(parsed.out,
            "72344 AcLength VX Objects Length\n"
            "72343 AcArea VX Objects Area\n"
            "72342 AcBlockCount VX Block Count\n"
            "72341 TextField VX Text File\n"
            "72340 ExcelCell VX Excel Cell\n"
            "72339 TableCell VX Table Cell\n"
            "72346 VxExpr VX Formula\n"
            "72347 AcDefinedObj VX Defined Object\n");
}

}  // namespace
