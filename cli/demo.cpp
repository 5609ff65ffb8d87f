#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "core/crt.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "examplesources.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"
#include "headless/db/mtext.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/fields/fieldreferences.h"
#include "plugin/measure/tablecellreference.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane::cli {

namespace {

namespace fs = std::filesystem;

struct DemoOptions {
  std::string drawing;
  std::string output;
  std::string makeExample;
  bool force = false;
};

// The example as it sits in the source tree. The program is built from that tree, so the
// folder of this file leads there; from elsewhere the example is looked for below the
// current folder, as scripts run from the tree's root.
fs::path defaultExample() {
  const fs::path beside = fs::path(__FILE__).parent_path().parent_path() / "examples" / "quantities.dxf";
  if (beside.is_absolute() && fs::exists(beside)) return beside;
  return fs::path("examples") / "quantities.dxf";
}

// "quantities.dxf" -> "quantities-updated.dxf", in the same folder.
fs::path updatedPath(const fs::path& drawing) {
  return drawing.parent_path() / (drawing.stem().string() + "-updated" + drawing.extension().string());
}

// ---- the example drawing -------------------------------------------------------------------

// The R2018 drawing the example grows from: the symbol tables, model and paper space, the root
// dictionary, metric units and two decimals, and a small plan beside the bill of quantities:
// rooms, walls and doors on layers of their own.
constexpr std::string_view kSkeleton =
    "0\nSECTION\n2\nHEADER\n"
    "9\n$ACADVER\n1\nAC1032\n9\n$HANDSEED\n5\n30\n9\n$INSUNITS\n70\n6\n9\n$LUNITS\n70\n2\n9\n$LUPREC\n70\n2\n"
    "9\n$MEASUREMENT\n70\n1\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nTABLES\n"
    "0\nTABLE\n2\nLTYPE\n5\n5\n330\n0\n100\nAcDbSymbolTable\n70\n1\n"
    "0\nLTYPE\n5\n14\n330\n5\n100\nAcDbSymbolTableRecord\n100\nAcDbLinetypeTableRecord\n"
    "2\nContinuous\n70\n0\n3\nSolid line\n72\n65\n73\n0\n40\n0.0\n"
    "0\nENDTAB\n"
    "0\nTABLE\n2\nLAYER\n5\n2\n330\n0\n100\nAcDbSymbolTable\n70\n4\n"
    "0\nLAYER\n5\n10\n330\n2\n100\nAcDbSymbolTableRecord\n100\nAcDbLayerTableRecord\n2\n0\n70\n0\n62\n7\n"
    "6\nContinuous\n"
    "0\nLAYER\n5\n100\n330\n2\n100\nAcDbSymbolTableRecord\n100\nAcDbLayerTableRecord\n2\nRooms\n70\n0\n62\n3\n"
    "6\nContinuous\n"
    "0\nLAYER\n5\n101\n330\n2\n100\nAcDbSymbolTableRecord\n100\nAcDbLayerTableRecord\n2\nWalls\n70\n0\n62\n1\n"
    "6\nContinuous\n"
    "0\nLAYER\n5\n102\n330\n2\n100\nAcDbSymbolTableRecord\n100\nAcDbLayerTableRecord\n2\nDoors\n70\n0\n62\n4\n"
    "6\nContinuous\n"
    "0\nENDTAB\n"
    "0\nTABLE\n2\nSTYLE\n5\n3\n330\n0\n100\nAcDbSymbolTable\n70\n1\n"
    "0\nSTYLE\n5\n11\n330\n3\n100\nAcDbSymbolTableRecord\n100\nAcDbTextStyleTableRecord\n2\nStandard\n70\n0\n"
    "40\n0.0\n41\n1.0\n50\n0.0\n71\n0\n42\n2.5\n3\ntxt\n4\n\n"
    "0\nENDTAB\n"
    "0\nTABLE\n2\nAPPID\n5\n9\n330\n0\n100\nAcDbSymbolTable\n70\n3\n"
    "0\nAPPID\n5\n12\n330\n9\n100\nAcDbSymbolTableRecord\n100\nAcDbRegAppTableRecord\n2\nACAD\n70\n0\n"
    "0\nAPPID\n5\n11A\n330\n9\n100\nAcDbSymbolTableRecord\n100\nAcDbRegAppTableRecord\n2\nAcDbDynamicBlockGUID\n"
    "70\n0\n"
    "0\nAPPID\n5\n11B\n330\n9\n100\nAcDbSymbolTableRecord\n100\nAcDbRegAppTableRecord\n2\nAcDbBlockRepBTag\n70\n0\n"
    "0\nENDTAB\n"
    "0\nTABLE\n2\nBLOCK_RECORD\n5\n1\n330\n0\n100\nAcDbSymbolTable\n70\n4\n"
    "0\nBLOCK_RECORD\n5\n1F\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRecord\n2\n*Model_Space\n"
    "340\n0\n"
    "0\nBLOCK_RECORD\n5\n1B\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRecord\n2\n*Paper_Space\n"
    "340\n0\n"
    // A dynamic door and the variant a door with another leaf width inserts.
    "0\nBLOCK_RECORD\n5\n110\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRecord\n2\nDoor\n340\n0\n"
    "1001\nAcDbDynamicBlockGUID\n1000\n{6F1D5A2C-0B7E-4C35-9C1E-2D3B4A5F6E70}\n"
    "0\nBLOCK_RECORD\n5\n111\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRecord\n2\n*U2\n340\n0\n"
    "1001\nAcDbBlockRepBTag\n1070\n1\n1005\n110\n"
    "0\nENDTAB\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nBLOCKS\n"
    "0\nBLOCK\n5\n20\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockBegin\n2\n*Model_Space\n70\n0\n"
    "10\n0.0\n20\n0.0\n30\n0.0\n3\n*Model_Space\n1\n\n"
    "0\nENDBLK\n5\n21\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockEnd\n"
    "0\nBLOCK\n5\n1C\n330\n1B\n100\nAcDbEntity\n67\n1\n8\n0\n100\nAcDbBlockBegin\n2\n*Paper_Space\n70\n0\n"
    "10\n0.0\n20\n0.0\n30\n0.0\n3\n*Paper_Space\n1\n\n"
    "0\nENDBLK\n5\n1D\n330\n1B\n100\nAcDbEntity\n67\n1\n8\n0\n100\nAcDbBlockEnd\n"
    "0\nBLOCK\n5\n112\n330\n110\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockBegin\n2\nDoor\n70\n2\n"
    "10\n0.0\n20\n0.0\n30\n0.0\n3\nDoor\n1\n\n"
    "0\nLINE\n5\n114\n330\n110\n100\nAcDbEntity\n8\n0\n100\nAcDbLine\n10\n0.0\n20\n0.0\n30\n0.0\n"
    "11\n0.9\n21\n0.0\n31\n0.0\n"
    "0\nATTDEF\n5\n115\n330\n110\n100\nAcDbEntity\n8\n0\n100\nAcDbText\n10\n0.0\n20\n0.2\n30\n0.0\n40\n0.2\n"
    "1\n900\n100\nAcDbAttributeDefinition\n280\n0\n3\nLeaf width\n2\nWIDTH\n70\n0\n"
    "0\nENDBLK\n5\n113\n330\n110\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockEnd\n"
    "0\nBLOCK\n5\n116\n330\n111\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockBegin\n2\n*U2\n70\n3\n"
    "10\n0.0\n20\n0.0\n30\n0.0\n3\n*U2\n1\n\n"
    "0\nLINE\n5\n118\n330\n111\n100\nAcDbEntity\n8\n0\n100\nAcDbLine\n10\n0.0\n20\n0.0\n30\n0.0\n"
    "11\n1.0\n21\n0.0\n31\n0.0\n"
    "0\nATTDEF\n5\n119\n330\n111\n100\nAcDbEntity\n8\n0\n100\nAcDbText\n10\n0.0\n20\n0.2\n30\n0.0\n40\n0.2\n"
    "1\n1000\n100\nAcDbAttributeDefinition\n280\n0\n3\nLeaf width\n2\nWIDTH\n70\n0\n"
    "0\nENDBLK\n5\n117\n330\n111\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockEnd\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n"
    // Rooms: a 6 x 4 room, a 5 x 4 room whose east wall bows out in a half circle, and a
    // hatched 8 x 5 courtyard around a 2 x 2 light well.
    "0\nLWPOLYLINE\n5\n120\n330\n1F\n100\nAcDbEntity\n8\nRooms\n100\nAcDbPolyline\n90\n4\n70\n1\n43\n0.0\n"
    "10\n200.0\n20\n0.0\n10\n206.0\n20\n0.0\n10\n206.0\n20\n-4.0\n10\n200.0\n20\n-4.0\n"
    "0\nLWPOLYLINE\n5\n121\n330\n1F\n100\nAcDbEntity\n8\nRooms\n100\nAcDbPolyline\n90\n4\n70\n1\n43\n0.0\n"
    "10\n210.0\n20\n0.0\n10\n215.0\n20\n0.0\n42\n-1.0\n10\n215.0\n20\n-4.0\n10\n210.0\n20\n-4.0\n"
    "0\nHATCH\n5\n122\n330\n1F\n100\nAcDbEntity\n8\nRooms\n100\nAcDbHatch\n10\n0.0\n20\n0.0\n30\n0.0\n"
    "210\n0.0\n220\n0.0\n230\n1.0\n2\nSOLID\n70\n1\n71\n0\n91\n2\n"
    "92\n19\n72\n0\n73\n1\n93\n4\n10\n220.0\n20\n0.0\n10\n228.0\n20\n0.0\n10\n228.0\n20\n-5.0\n"
    "10\n220.0\n20\n-5.0\n97\n0\n"
    "92\n2\n72\n0\n73\n1\n93\n4\n10\n223.0\n20\n-1.5\n10\n225.0\n20\n-1.5\n10\n225.0\n20\n-3.5\n"
    "10\n223.0\n20\n-3.5\n97\n0\n"
    "75\n0\n76\n1\n98\n0\n"
    // Walls: a straight one and one with a half-round bay.
    "0\nLINE\n5\n123\n330\n1F\n100\nAcDbEntity\n8\nWalls\n100\nAcDbLine\n10\n200.0\n20\n2.0\n30\n0.0\n"
    "11\n230.0\n21\n2.0\n31\n0.0\n"
    "0\nLWPOLYLINE\n5\n124\n330\n1F\n100\nAcDbEntity\n8\nWalls\n100\nAcDbPolyline\n90\n4\n70\n0\n43\n0.0\n"
    "10\n200.0\n20\n-6.0\n10\n210.0\n20\n-6.0\n42\n1.0\n10\n214.0\n20\n-6.0\n10\n230.0\n20\n-6.0\n"
    // Doors with their leaf widths; the last one is the dynamic door made wider.
    "0\nINSERT\n5\n125\n330\n1F\n100\nAcDbEntity\n8\nDoors\n100\nAcDbBlockReference\n66\n1\n2\nDoor\n"
    "10\n202.0\n20\n0.0\n30\n0.0\n"
    "0\nATTRIB\n5\n126\n330\n125\n100\nAcDbEntity\n8\nDoors\n100\nAcDbText\n10\n202.0\n20\n0.2\n30\n0.0\n"
    "40\n0.2\n1\n900\n100\nAcDbAttribute\n280\n0\n2\nWIDTH\n70\n0\n"
    "0\nSEQEND\n5\n127\n330\n125\n100\nAcDbEntity\n8\nDoors\n"
    "0\nINSERT\n5\n128\n330\n1F\n100\nAcDbEntity\n8\nDoors\n100\nAcDbBlockReference\n66\n1\n2\nDoor\n"
    "10\n212.0\n20\n0.0\n30\n0.0\n"
    "0\nATTRIB\n5\n129\n330\n128\n100\nAcDbEntity\n8\nDoors\n100\nAcDbText\n10\n212.0\n20\n0.2\n30\n0.0\n"
    "40\n0.2\n1\n900\n100\nAcDbAttribute\n280\n0\n2\nWIDTH\n70\n0\n"
    "0\nSEQEND\n5\n12A\n330\n128\n100\nAcDbEntity\n8\nDoors\n"
    "0\nINSERT\n5\n12B\n330\n1F\n100\nAcDbEntity\n8\nDoors\n100\nAcDbBlockReference\n66\n1\n2\nDoor\n"
    "10\n222.0\n20\n0.0\n30\n0.0\n"
    "0\nATTRIB\n5\n12C\n330\n12B\n100\nAcDbEntity\n8\nDoors\n100\nAcDbText\n10\n222.0\n20\n0.2\n30\n0.0\n"
    "40\n0.2\n1\n800\n100\nAcDbAttribute\n280\n0\n2\nWIDTH\n70\n0\n"
    "0\nSEQEND\n5\n12D\n330\n12B\n100\nAcDbEntity\n8\nDoors\n"
    "0\nINSERT\n5\n12E\n330\n1F\n100\nAcDbEntity\n8\nDoors\n100\nAcDbBlockReference\n66\n1\n2\n*U2\n"
    "10\n226.0\n20\n0.0\n30\n0.0\n"
    "0\nATTRIB\n5\n12F\n330\n12E\n100\nAcDbEntity\n8\nDoors\n100\nAcDbText\n10\n226.0\n20\n0.2\n30\n0.0\n"
    "40\n0.2\n1\n1000\n100\nAcDbAttribute\n280\n0\n2\nWIDTH\n70\n0\n"
    "0\nSEQEND\n5\n130\n330\n12E\n100\nAcDbEntity\n8\nDoors\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nOBJECTS\n"
    "0\nDICTIONARY\n5\nC\n330\n0\n100\nAcDbDictionary\n281\n1\n"
    "0\nENDSEC\n"
    "0\nEOF\n";

// Money and measured quantities show two decimals.
constexpr std::wstring_view kTwoDecimals = L"%lu2%pr2";

std::wstring formula(std::wstring_view expression, bool twoDecimals = true) {
  std::wstring code = L"%<\\VxExpr (" + std::wstring(expression) + L")";
  if (twoDecimals) code += L" \\f \"" + std::wstring(kTwoDecimals) + L"\"";
  return code + L">%";
}

// A bill of quantities: items with quantity and unit price, an amount per item, totals below;
// one quantity is the area of the round pit drawn beside the table. Under the table a note
// reads the drawing's units, and a multiline text carries the total on.
int makeExample(const fs::path& out, bool force) {
  headless::HostApplication host;
  auto made = dxf::DrawingFile::read(std::string(kSkeleton), host, out);
  if (!made.drawing) {
    std::fprintf(stderr, "corvane demo: %s\n", made.error.c_str());
    return 1;
  }
  dxf::DrawingFile& drawing = *made.drawing;
  headless::Database& db = drawing.database();
  host.setWorkingDatabase(&db);

  const host::AcDbObjectId pit =
      db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{150.0, -30.0, 0.0}, 3.0));
  // The pit's area through an object-property field embedded in the formula, as the formula
  // dialog writes it: by handle, which survives saving, and kept apart from the formula's own
  // children.
  const std::wstring pitArea = FieldToFormulaArgument(
      host, core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).Area>%%", pit.asOldId()));

  // Rows and columns as formulas name them: row 1 is the heading, column D the amount.
  const std::vector<std::vector<std::wstring>> cells = {
      {L"Item", L"Quantity", L"Unit price", L"Amount"},
      {L"Concrete C30, m3", L"12.5", L"84", formula(L"B2*C2")},
      {L"Rebar B500, t", L"3.2", L"910", formula(L"B3*C3")},
      {L"Formwork, m2", L"46", L"23.5", formula(L"B4*C4")},
      {L"Pit lining, m2", formula(L"ROUND(" + pitArea + L",2)"), L"15", formula(L"B5*C5")},
      {L"Total", L"", L"", formula(L"SUM(D2:D5)")},
      {L"Average per item", L"", L"", formula(L"ROUND(AVG(D2,D3,D4,D5),1)")},
      {L"Largest amount", L"", L"", formula(L"MAX(D2:D5)")},
      {L"Budget", L"6000", L"", formula(L"IF(D6<=B9,'within budget','over budget')", false)},
      {L"Summary", L"", L"", formula(L"UCASE(A6) & ' ' & D6 & ' EUR'", false)},
  };
  const int rows = static_cast<int>(cells.size());
  const int columns = static_cast<int>(cells.front().size());
  auto newTable = std::make_unique<headless::Table>(rows, columns, 8.0, 25.0);
  newTable->setColumnWidth(0, 45.0);
  const host::AcDbObjectId tableId = db.appendEntity(std::move(newTable));
  auto& table = *db.get<headless::Table>(tableId);
  // Cells are filled row by row, so that every formula comes after the cells it reads and one
  // batch evaluates them in that order.
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      const std::wstring& text = cells[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)];
      if (text.empty()) continue;
      host::Acad::ErrorStatus es = host::Acad::eOk;
      if (r > 0 && c > 0 && text.find(L'%') == std::wstring::npos) {
        table.editCell(r, c).format.format = kTwoDecimals;
        es = table.putValue(r, c, host::AcValue(core::wtof(text)));
      } else {
        es = table.putTextString(r, c, text);
      }
      if (es != host::Acad::eOk) {
        std::fprintf(stderr, "corvane demo: cannot fill cell %d,%d of the example\n", r + 1, c + 1);
        return 1;
      }
    }
  }

  const std::wstring tableHandle = host.handle(tableId).text();
  const host::AcDbObjectId note =
      db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0.0, -90.0, 0.0}, 2.5, L""));
  headless::attachField(db, note, formula(L"'Drawing units: ' & IF(INSUNITS=6,'metres','other')", false));
  const host::AcDbObjectId carried =
      db.appendEntity(std::make_unique<headless::MText>(host::AcGePoint3d{0.0, -100.0, 0.0}, 2.5, L""));
  headless::attachField(
      db, carried,
      L"Carried to the cover sheet: %<\\TableCell " + TableCellReferenceText(tableHandle, 6, 4) + L">% EUR");

  // Under the plan: the floor area of the rooms (the pit on layer 0 left out), the length of the
  // walls and the doors at least 900 wide, the dynamic door's wider variant among them.
  const struct {
    double y;
    std::wstring text;
  } measures[] = {
      {-12.0, L"Floor area: %<\\AcArea Object(<*MSPObjects*>) \\objtype \"82\" \\layer \"Rooms\" \\f \"" +
                  std::wstring(kTwoDecimals) + L"\">% m2"},
      {-16.0, L"Wall length: %<\\AcLength Object(<*MSPObjects*>) \\objtype \"51\" \\layer \"Walls\" \\f \"" +
                  std::wstring(kTwoDecimals) + L"\">% m"},
      {-20.0, L"Doors 900 or wider: %<\\AcBlockCount \"Door\" \\layer \"Doors\" \\op \">=\" \\tag \"WIDTH\" "
              L"\\value \"900\">%"},
  };
  for (const auto& measure : measures) {
    const host::AcDbObjectId label =
        db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{200.0, measure.y, 0.0}, 1.0, L""));
    headless::attachField(db, label, measure.text);
  }

  // Beside the plan, what comes from outside the drawing: prices and the date they hold from out of
  // the supplier's workbook, its name cut to the company, the site notes and the plot's title from
  // the site plan. Paths are relative, so the example works wherever it lies.
  ExampleSources sources;
  if (!writeExampleSources(out.parent_path().empty() ? fs::path(".") : out.parent_path(), sources)) return 1;
  const std::wstring workbook = core::fromUtf8(ExampleSources::kWorkbook);
  const struct {
    double y;
    std::wstring text;
  } linked[] = {
      {-30.0, L"Rebar price: %<\\ExcelCell \"" + workbook + L":Prices:$C$3\">% EUR/t"},
      {-34.0, L"Supplier: %<\\ExcelCell \"" + workbook + L":Prices:Supplier\" \\MID(1,14)>%"},
      {-38.0, L"Prices hold from %<\\ExcelCell \"" + workbook + L":Prices:$C$5\">%"},
      {-42.0, L"Plot: %<\\AcDefinedObj " + core::fromUtf8(ExampleSources::kPlan) + L"|" + sources.planTitleHandle +
                  L".Contents>%"},
  };
  for (const auto& field : linked) {
    const host::AcDbObjectId label =
        db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{200.0, field.y, 0.0}, 1.0, L""));
    headless::attachField(db, label, field.text);
  }
  const host::AcDbObjectId notes =
      db.appendEntity(std::make_unique<headless::MText>(host::AcGePoint3d{200.0, -46.0, 0.0}, 1.0, L""));
  headless::attachField(db, notes, L"%<\\TextField " + core::fromUtf8(ExampleSources::kNotes) + L">%");

  const dxf::Status saved = drawing.save(saveOptions("demo", force));
  if (!saved) {
    reportSaveFailure("demo", saved);
    return 1;
  }
  std::printf("Wrote the example drawing %s\n", out.string().c_str());
  return 0;
}

// ---- the demo ------------------------------------------------------------------------------

// Where a field stands, for the listing: the table cell, text or field that holds it.
std::wstring placeOf(headless::HostApplication& host, headless::Database& db, const headless::Field& field) {
  const host::AcDbObjectId owner = field.ownerId();
  if (const auto* table = db.get<headless::Table>(owner)) {
    int row = 0, column = 0;
    if (table->findField(field.objectId(), row, column)) {
      std::wstring cell = AbsoluteCellName(row + 1, column + 1);
      std::erase(cell, L'$');
      return core::format(L"table %s, cell %s", table->handle().text(), cell);
    }
    return core::format(L"table %s", table->handle().text());
  }
  // A text's field hangs from its extension dictionary: field -> dictionary -> dictionary -> text.
  const host::AcDbObject* holder = db.lookup(owner);
  for (int up = 0; holder && up < 2; ++up) holder = db.lookup(holder->ownerId());
  if (holder && dynamic_cast<const headless::TextHost*>(holder)) {
    const wchar_t* kind = holder->dxfName() == L"MTEXT" ? L"multiline text" : L"text";
    return core::format(L"%s %s", kind, host.handle(holder->objectId()).text());
  }
  return L"no holder";
}

// A field's place, code and value; the fields inside it follow, one line each.
void printField(headless::HostApplication& host, headless::Database& db, const headless::Field& field) {
  writeLine(core::format(L"%s (field %s)", placeOf(host, db, field), field.handle().text()));
  writeLine(L"  code:  " + field.getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers));
  writeLine(L"  value: " + field.getDisplayText());
  std::vector<const headless::Field*> parts{&field};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    for (const auto child : parts[i]->children())
      if (const auto* inner = db.get<headless::Field>(child)) parts.push_back(inner);
  }
  for (const auto* part : parts) {
    int errorCode = 0;
    const int status = part->evaluationStatus(&errorCode);
    // A text's own field only gathers the fields inside it; those tell what was evaluated.
    if (part->evaluatorId() == L"_text" && !part->children().empty()) continue;
    writeLine(core::format(L"  %s field %s: status %d, %s", part->evaluatorId(), part->handle().text(),
                           status, part->getDisplayText()));
  }
}

int runDemo(const DemoOptions& options) {
  const fs::path path = options.drawing.empty() ? defaultExample() : fs::path(options.drawing);
  const fs::path out = options.output.empty() ? updatedPath(path) : fs::path(options.output);

  // A save that cannot go ahead is told before the listing, not after it.
  const dxf::SaveOptions save = saveOptions("demo", options.force);
  if (!savePossible("demo", out, save)) return 1;
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(path, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane demo: %s\n", loaded.error.c_str());
    return 1;
  }
  dxf::DrawingFile& drawing = *loaded.drawing;
  headless::Database& db = drawing.database();
  host.setWorkingDatabase(&db);
  LinkedFiles linked(host);
  CCorvaneApp app(host, linked.system, &linked.excel);
  app.onInitialize();

  host::AcFdFieldEngine::BatchResult batch;
  host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand, &batch);
  app.onUnload();
  host.endLine();

  const int failed = static_cast<int>(batch.failed.size());
  writeLine(core::format(L"Evaluated %d of %d fields of %s in one batch, %d ended in an error.",
                         batch.evaluated - failed, batch.found, core::fromUtf8(path.string()), failed));
  for (const auto id : db.get<headless::FieldList>(db.fieldListId())->ids()) {
    const auto* field = db.get<headless::Field>(id);
    // Children are shown under their parents.
    if (!field || field->isErased() || db.get<headless::Field>(field->ownerId())) continue;
    writeLine(L"");
    printField(host, db, *field);
  }

  const dxf::Status saved = drawing.saveAs(out, save);
  if (!saved) {
    reportSaveFailure("demo", saved);
    return 1;
  }
  writeLine(L"");
  writeLine(L"Saved " + core::fromUtf8(out.string()));
  return 0;
}

}  // namespace

void addDemoCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<DemoOptions>();
  auto* demo = app.add_subcommand(
      "demo",
      "Update every field of a drawing in one batch, print each field with its value and save the result "
      "beside it with \"-updated\" added to its name; without DRAWING, the embedded example "
      "examples/quantities.dxf, a bill of quantities with formula and table cell fields");
  demo->add_option("DRAWING", options->drawing, "Run on this drawing (DXF) instead of the example");
  demo->add_option("-o,--output", options->output, "Save the updated drawing here instead")->check(outputFile());
  demo->add_option("--make-example", options->makeExample,
                   "Write the example drawing afresh to this file, fields not yet evaluated, and stop")
      ->check(outputFile());
  addForceFlag(*demo, options->force);
  demo->callback([&action, options] {
    action = [options] {
      return options->makeExample.empty() ? runDemo(*options) : makeExample(options->makeExample, options->force);
    };
  });
}

}  // namespace corvane::cli
