// What the field dialog previews. A formula in a table cell previews against its own table, as
// it evaluates in place. Then the eight field types on the example drawing, run under the
// corvane program: each page set as a user sets it, and the preview worked out from the drawing
// and the files beside it (measured values by ezdxf, the workbook's cell by openpyxl), never
// from the code that makes the preview.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "host/acdbfield.h"
#include "plugin/formula/asdkformulaoptiondialog.h"
#include "plugin/formula/portformulapagehost.h"
#include "plugin/measure/dialogrig.h"
#include "support/clirun.h"
#include "support/openpyxl.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using host::AcDbField;
using host::AcDbObjectId;

// A table of quantities and prices whose last column multiplies them, as a drawing's table
// computes amounts.
struct PricedTable : testing::DialogRig {
  PortFormulaPageHost pageHost{host, prompts, ui};
  AcDbObjectId priced = addTable(
      {{L"Item", L"Qty", L"Price", L"Amount"}, {L"Sand", L"2.5", L"40", L""}, {L"Gravel", L"4", L"35.5", L""}});
  // The formula field a cell holds: the cell's own text field holds it as its child.
  AcDbObjectId formulaIn(int row, int column, const std::wstring& code) {
    EXPECT_EQ(table(priced).putTextString(row, column, code), host::Acad::eOk);
    const AcDbObjectId text = table(priced).fieldId(row, column);
    return field(text).children().at(0);
  }
};

TEST(FormulaPreview, AFormulaInATableCellPreviewsAgainstItsTable) {
  struct Case {
    const char* what;
    std::wstring code;
    std::wstring value;  // worked out from the cells
  } const cases[] = {
      {"two cells of its row", L"%<\\VxExpr (B2*C2) \\f \"%lu2%pr2\">%", L"100.00"},
      {"a range of the table", L"%<\\VxExpr (SUM(B2:C3))>%", L"82"},
      {"a text cell", L"%<\\VxExpr (UCASE(A3))>%", L"GRAVEL"},
  };
  for (const auto& c : cases) {
    PricedTable d;
    const AcDbObjectId field = d.formulaIn(1, 3, c.code);
    d.evaluateAll();
    ASSERT_EQ(d.field(field).evaluationStatus(), AcDbField::kSuccess) << c.what;
    const std::wstring inPlace = d.field(field).getDisplayText();
    EXPECT_EQ(inPlace, c.value) << c.what;

    // The walk up from the cell's field, and from the field nested in it, finds the table.
    EXPECT_EQ(d.host.owningTable(d.field(field).ownerId()), d.priced) << c.what;
    EXPECT_EQ(d.host.owningTable(field), d.priced) << c.what;

    // The page hands its choice to the application, as the field dialog's pages do.
    AsdkFormulaOptionDialog page(d.pageHost, {}, [&d](AcDbObjectId table) { d.app.setDialogOwnerTable(table); });
    ASSERT_EQ(page.setFieldToEdit(d.field(field)), AcDbField::kSuccess) << c.what;
    EXPECT_EQ(d.app.dialogOwnerTable(), d.priced) << c.what << ": the field's table becomes the owner table";
    EXPECT_EQ(page.ownerTableText(), d.handleOf(d.priced)) << c.what;
    ASSERT_TRUE(page.onPreview()) << c.what;
    EXPECT_EQ(page.previewText(), inPlace) << c.what;
    EXPECT_TRUE(d.ui.boxes().empty()) << c.what << ": nobody is asked for a table";
  }
}

TEST(FormulaPreview, AFormulaOutsideTablesChoosesNoTable) {
  PricedTable d;
  const AcDbObjectId field = d.field(d.addFieldText(L"%<\\VxExpr (6*7)>%")).children().at(0);
  d.evaluateAll();
  EXPECT_TRUE(d.host.owningTable(d.field(field).ownerId()).isNull());
  EXPECT_TRUE(d.host.owningTable({}).isNull());
  bool chose = false;
  AsdkFormulaOptionDialog page(d.pageHost, {}, [&chose](AcDbObjectId) { chose = true; });
  ASSERT_EQ(page.setFieldToEdit(d.field(field)), AcDbField::kSuccess);
  EXPECT_FALSE(chose);
  EXPECT_EQ(page.ownerTableText(), L"");
}

// The example drawing and the files it reads, copied so that the runs change nothing of ours.
const fs::path kExamples = fs::path(CORVANE_SOURCE_DIR) / "examples";

// Measured with ezdxf: the length of the curves of layer Walls and the area of the closed
// shapes of layer Rooms (polylines with their bulges, the hatch less its hole), in model space.
constexpr const char* kMeasure = R"(
import math, sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
def arc(p, q, b):
    c = math.dist(p, q); t = 4 * math.atan(abs(b)); r = c / (2 * math.sin(t / 2))
    return r * t, math.copysign(r * r / 2 * (t - math.sin(t)), b)
def ring(points, closed):
    pairs = list(zip(points, points[1:] + (points[:1] if closed else [])))
    length = area = 0.0
    for (x1, y1, b), (x2, y2, _) in pairs:
        area += (x1 * y2 - x2 * y1) / 2
        if b: l, a = arc((x1, y1), (x2, y2), b); length += l; area += a
        else: length += math.dist((x1, y1), (x2, y2))
    return length, abs(area)
length = area = 0.0
for e in doc.modelspace():
    layer = e.dxf.get('layer', '') if e.dxftype() != 'ACAD_TABLE' else ''
    if layer == 'Walls' and e.dxftype() == 'LINE': length += e.dxf.start.distance(e.dxf.end)
    if layer == 'Walls' and e.dxftype() == 'LWPOLYLINE': length += ring(list(e.get_points('xyb')), e.closed)[0]
    if layer == 'Rooms' and e.dxftype() == 'LWPOLYLINE': area += ring(list(e.get_points('xyb')), True)[1]
    if layer == 'Rooms' and e.dxftype() == 'HATCH':
        rings = [ring([(v[0], v[1], 0) for v in p.vertices], True)[1] for p in e.paths]
        area += rings[0] - sum(rings[1:])
plan = ezdxf.readfile(sys.argv[2]).entitydb['30']
print('%.2f|%.2f|%s' % (length, area, plan.plain_text() if plan.dxftype() == 'MTEXT' else plan.dxf.text))
)";

// The cell Prices!C3 as Excel shows it with its number format.
constexpr const char* kPrice = R"(
import sys, openpyxl
cell = openpyxl.load_workbook(sys.argv[1])['Prices']['C3']
assert cell.number_format == '#,##0.00', cell.number_format
print('{:,.2f}'.format(cell.value))
)";

struct PreviewCase {
  const char* what;
  std::string place;  // the pick: a handle, for a table followed by its cell
  std::vector<std::string> page;
  std::string preview;   // after "Preview: "
  std::string box = {};  // the message box that OK shows, empty for none
};

// One run's part of the command line for one FIELD command: from its start to the next.
std::string commandPart(const std::string& out, std::size_t index) {
  std::size_t at = 0;
  for (std::size_t i = 0; i <= index; ++i) {
    at = out.find("Command: FIELD", at);
    if (at == std::string::npos) return {};
    if (i < index) ++at;
  }
  const std::size_t end = out.find("Command: FIELD", at + 1);
  return out.substr(at, end == std::string::npos ? std::string::npos : end - at);
}

std::string previewIn(const std::string& part) {
  const std::size_t at = part.find("\nPreview: ");
  if (at == std::string::npos) return "(no preview)";
  const std::size_t start = at + 10;
  return part.substr(start, part.find('\n', start) - start);
}

TEST(FieldPreviews, EachFieldTypeOnTheExampleDrawing) {
  if (testing::pythonWithEzdxf().empty() || !testing::hasOpenpyxl()) GTEST_SKIP() << "no ezdxf or openpyxl";
  testing::RunFolder folder;
  for (const char* name : {"quantities.dxf", "prices.xlsx", "site-notes.txt", "site-plan.dxf"})
    fs::copy_file(kExamples / name, folder / name);
  const auto measured =
      testing::runPython(kMeasure, {(folder / "quantities.dxf").string(), (folder / "site-plan.dxf").string()}, folder);
  ASSERT_EQ(measured.exitCode, 0) << measured.out << measured.err;
  const std::string price = testing::runOpenpyxl(kPrice, {(folder / "prices.xlsx").string()});
  ASSERT_EQ(price.rfind("ERROR", 0), std::string::npos) << price;
  const std::string values = measured.out.substr(0, measured.out.find('\n'));
  const std::size_t bar1 = values.find('|'), bar2 = values.find('|', bar1 + 1);
  const std::string notes = testing::readWhole(folder / "site-notes.txt");

  // Text 149 and table 134 are the example's: the table's row 3 holds "Rebar B500, t",
  // 3.20 and 910.00, row 2 12.50, row 4 46.00; its cell (5,1) is empty. Three references of
  // "Door" and one of its anonymous variant lie on layer Doors.
  const PreviewCase cases[] = {
      {"length of the walls",
       "149",
       {"NAME VX Objects Length", "SPACE Model", "LAYERS Walls", "UNITS Decimal", "PRECISION 0.00"},
       values.substr(0, bar1)},
      {"area of the rooms",
       "149",
       {"NAME VX Objects Area", "SPACE Model", "LAYERS Rooms", "UNITS Decimal", "PRECISION 0.00"},
       values.substr(bar1 + 1, bar2 - bar1 - 1)},
      {"doors", "149", {"NAME VX Block Count", "BLOCKS Door", "NESTED No"}, "4"},
      {"site notes",
       "149",
       {"NAME VX Text File", "FILE site-notes.txt"},
       notes.substr(0, notes.find_last_not_of("\r\n") + 1)},
      {"rebar price",
       "149",
       {"NAME VX Excel Cell", "WORKBOOK prices.xlsx", "SHEET Prices", "CELL C3"},
       price.substr(0, price.find('\n'))},
      {"a cell of the table", "149", {"NAME VX Table Cell", "REFERENCE Table(<134>).$A$3"}, "Rebar B500, t"},
      {"the plot",
       "149",
       {"NAME VX Defined Object", "DRAWING site-plan.dxf", "OBJECT 30", "PROPERTY Contents"},
       values.substr(bar2 + 1, values.find_last_not_of("\r\n") - bar2)},
      // The formula of cell (1,3) edited: it reads the cells of its own table.
      {"a table's formula edited", "134\n1,3", {"EXPRESSION B3*C3"}, "2912.00"},
      // A formula made new for an empty cell reads the table it goes into.
      {"a new formula in a cell",
       "134\n5,1",
       {"NAME VX Formula", "EXPRESSION B2+B4", "UNITS Decimal", "PRECISION 0.00"},
       "58.50"},
      // A cell of a table the drawing does not have shows no value and makes no field.
      {"a cell of no table",
       "149",
       {"NAME VX Table Cell", "REFERENCE Table(<999>).$A$1"},
       "####",
       "Invalid field code"},
  };

  std::string script;
  for (const auto& c : cases) {
    script += "FIELD\n" + c.place + "\n";
    for (const auto& line : c.page) script += line + "\n";
    script += "PREVIEW\n";
    if (!c.box.empty()) script += "OK\n";
    script += "CANCEL\n";
  }
  testing::ScratchFolder::write(folder / "previews.scr", script);
  // The plot's text is defined in the site plan, as a user defines it there, for the page to offer.
  testing::ScratchFolder::write(folder / "define.scr", "Corvane_Define_Object\nAdd\n(handent \"30\")\nPlot\neXit\n");
  const auto defined = testing::runCorvaneWithOwnSettings(
      folder.path(), {"run", (folder / "site-plan.dxf").string(), "--script", (folder / "define.scr").string()});
  ASSERT_EQ(defined.exitCode, 0) << defined.out << defined.err;
  // The example's own fields first get their values, so that the table's formulas read back.
  const auto updated =
      testing::runCorvaneWithOwnSettings(folder.path(), {"update", (folder / "quantities.dxf").string()});
  ASSERT_EQ(updated.exitCode, 0) << updated.out << updated.err;
  const auto run = testing::runCorvaneWithOwnSettings(
      folder.path(), {"run", (folder / "quantities.dxf").string(), "--script", (folder / "previews.scr").string()});
  ASSERT_EQ(run.exitCode, 0) << run.out << run.err;

  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const PreviewCase& c = cases[i];
    const std::string part = commandPart(run.out, i);
    ASSERT_FALSE(part.empty()) << c.what << "\n" << run.out;
    EXPECT_EQ(previewIn(part), c.preview) << c.what << "\n" << part;
    if (c.box.empty()) {
      EXPECT_EQ(part.find("\n** "), std::string::npos) << c.what << ": no message box\n" << part;
    } else {
      EXPECT_NE(part.find("\n" + c.box), std::string::npos) << c.what << "\n" << part;
      EXPECT_EQ(part.find("Field placed"), std::string::npos) << c.what << ": nothing placed\n" << part;
    }
  }
}

// The example as shipped holds fields that were never evaluated: a page editing one still finds
// its expression and format, and previews what they give.
TEST(FieldPreviews, AFieldNeverEvaluatedOpensWithItsOwnExpressionAndFormat) {
  testing::RunFolder folder;
  fs::copy_file(kExamples / "quantities.dxf", folder / "quantities.dxf");
  testing::ScratchFolder::write(folder / "edit.scr", "FIELD\n134\n1,3\nPREVIEW\nCANCEL\n");
  const auto run = testing::runCorvaneWithOwnSettings(
      folder.path(), {"run", (folder / "quantities.dxf").string(), "--script", (folder / "edit.scr").string()});
  ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
  const std::string part = commandPart(run.out, 0);
  EXPECT_NE(part.find("Field code: %<\\VxExpr (B2*C2) \\f \"%lu2%pr2\">%"), std::string::npos) << part;
  // Row 1 of the table: 84.00 units at 12.50.
  EXPECT_EQ(previewIn(part), "1050.00") << part;
}

}  // namespace
}  // namespace corvane
