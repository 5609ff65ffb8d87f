#include "examplesources.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "core/atomicfile.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/mtext.h"
#include "headless/db/text.h"
#include "headless/hostapplication.h"
#include "xlsx/package/package.h"
#include "xlsx/sheet/newworkbook.h"

namespace corvane::cli {

namespace {

namespace fs = std::filesystem;

// 2026-03-02 12:00 UTC: the price list's date, kept fixed so that the example is the same every
// time it is made.
constexpr std::int64_t kPriceListMade = 1772452800;

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  const std::size_t at = text.find(from);
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

// The price list: a sheet "Prices" with a heading, unit prices shown with thousands separators and
// two decimals (style 1), the date the prices hold from shown as "d mmmm yyyy" (style 2), and the
// supplier's name under the defined name "Supplier".
struct PriceCell {
  const char* ref;
  const char* text;  // an inline string, or null for the number
  double number;
  int style;
};
constexpr PriceCell kPrices[] = {
    {"A1", "Item", 0, 0},
    {"B1", "Unit", 0, 0},
    {"C1", "Price, EUR", 0, 0},
    {"A2", "Concrete C30", 0, 0},
    {"B2", "m3", 0, 0},
    {"C2", nullptr, 84, 1},
    {"A3", "Rebar B500", 0, 0},
    {"B3", "t", 0, 0},
    {"C3", nullptr, 1234.5, 1},
    {"A4", "Formwork", 0, 0},
    {"B4", "m2", 0, 0},
    {"C4", nullptr, 23.5, 1},
    {"A5", "Prices hold from", 0, 0},
    {"C5", nullptr, 46082, 2},  // 1 March 2026
    {"A6", "Supplier", 0, 0},
    {"C6", "Nordbeton GmbH, Hamburg", 0, 0},
};

std::string pricesSheet() {
  std::string rows;
  char row = 0;
  for (const PriceCell& cell : kPrices) {
    if (cell.ref[1] != row) {
      if (row != 0) rows += "</row>";
      row = cell.ref[1];
      rows += std::string("<row r=\"") + row + "\">";
    }
    rows += std::string("<c r=\"") + cell.ref + "\"";
    if (cell.style != 0) rows += " s=\"" + std::to_string(cell.style) + "\"";
    if (cell.text) {
      rows += std::string(" t=\"inlineStr\"><is><t>") + cell.text + "</t></is></c>";
    } else {
      char number[32];
      std::snprintf(number, sizeof number, "%.15g", cell.number);
      rows += std::string("><v>") + number + "</v></c>";
    }
  }
  rows += "</row>";
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
         "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
         "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
         "<dimension ref=\"A1:C6\"/><sheetViews><sheetView tabSelected=\"1\" workbookViewId=\"0\"/></sheetViews>"
         "<sheetFormatPr defaultRowHeight=\"15\"/><cols><col min=\"1\" max=\"1\" width=\"28\" customWidth=\"1\"/>"
         "<col min=\"2\" max=\"3\" width=\"16\" customWidth=\"1\"/></cols><sheetData>" +
         rows +
         "</sheetData><pageMargins left=\"0.7\" right=\"0.7\" top=\"0.75\" bottom=\"0.75\" header=\"0.3\" "
         "footer=\"0.3\"/></worksheet>";
}

// The new workbook's styles with two cell formats added: the built-in "#,##0.00" and a date.
std::string pricesStyles(std::string styles) {
  styles = replaced(std::move(styles), "<fonts ",
                    "<numFmts count=\"1\"><numFmt numFmtId=\"164\" formatCode=\"d mmmm yyyy\"/></numFmts><fonts ");
  return replaced(std::move(styles),
                  "<cellXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/>",
                  "<cellXfs count=\"3\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/>"
                  "<xf numFmtId=\"4\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>"
                  "<xf numFmtId=\"164\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>");
}

bool writeWorkbook(const fs::path& path) {
  xlsx::Package package;
  for (auto& [name, bytes] : xlsx::newWorkbookParts(kPriceListMade)) {
    if (name == "xl/workbook.xml") {
      bytes = replaced(std::move(bytes), "<sheet name=\"Sheet1\"", "<sheet name=\"Prices\"");
      bytes = replaced(std::move(bytes), "</sheets>",
                       "</sheets><definedNames><definedName "
                       "name=\"Supplier\">Prices!$C$6</definedName>"
                       "</definedNames>");
    } else if (name == "docProps/app.xml") {
      bytes = replaced(std::move(bytes), "<vt:lpstr>Sheet1</vt:lpstr>", "<vt:lpstr>Prices</vt:lpstr>");
    } else if (name == "xl/worksheets/sheet1.xml") {
      bytes = pricesSheet();
    } else if (name == "xl/styles.xml") {
      bytes = pricesStyles(std::move(bytes));
    }
    package.write(name, std::move(bytes));
  }
  std::string error;
  if (!package.saveAs(path, {}, error)) {
    std::fprintf(stderr, "corvane demo: %s\n", error.c_str());
    return false;
  }
  return true;
}

bool writeNotes(const fs::path& path) {
  core::AtomicFile file(path);
  const std::string_view notes =
      "Site access from Nordstra\xC3\x9F"
      "e 12; deliveries 7\xE2\x80\x93"
      "16 h, Monday to Friday.";
  if (!file.open() || !file.write(notes) || !file.commit()) {
    std::fprintf(stderr, "corvane demo: %s\n", file.error().c_str());
    return false;
  }
  return true;
}

// The site plan: an empty drawing of the same units with the plot's title on it.
bool writePlan(const fs::path& path, std::wstring& titleHandle) {
  constexpr std::string_view kEmpty =
      "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1032\n9\n$HANDSEED\n5\n30\n9\n$"
      "INSUNITS\n70\n6\n0\nENDSEC\n"
      "0\nSECTION\n2\nTABLES\n"
      "0\nTABLE\n2\nLAYER\n5\n2\n330\n0\n100\nAcDbSymbolTable\n70\n1\n"
      "0\nLAYER\n5\n10\n330\n2\n100\nAcDbSymbolTableRecord\n100\nAcDbLayerTable"
      "Record\n2\n0\n70\n0\n62\n7\n"
      "6\nContinuous\n0\nENDTAB\n"
      "0\nTABLE\n2\nAPPID\n5\n9\n330\n0\n100\nAcDbSymbolTable\n70\n1\n"
      "0\nAPPID\n5\n12\n330\n9\n100\nAcDbSymbolTableRecord\n100\nAcDbRegAppTableRecord\n2\nACAD\n70\n0\n"
      "0\nENDTAB\n"
      "0\nTABLE\n2\nBLOCK_RECORD\n5\n1\n330\n0\n100\nAcDbSymbolTable\n70\n2\n"
      "0\nBLOCK_"
      "RECORD\n5\n1F\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRe"
      "cord\n2\n*Model_Space\n"
      "340\n0\n"
      "0\nBLOCK_"
      "RECORD\n5\n1B\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRe"
      "cord\n2\n*Paper_Space\n"
      "340\n0\n0\nENDTAB\n0\nENDSEC\n"
      "0\nSECTION\n2\nBLOCKS\n"
      "0\nBLOCK\n5\n20\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockBegin\n2"
      "\n*Model_Space\n70\n0\n"
      "10\n0.0\n20\n0.0\n30\n0.0\n3\n*Model_Space\n1\n\n"
      "0\nENDBLK\n5\n21\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockEnd\n"
      "0\nBLOCK\n5\n1C\n330\n1B\n100\nAcDbEntity\n67\n1\n8\n0\n100\nAcDbBlockBe"
      "gin\n2\n*Paper_Space\n70\n0\n"
      "10\n0.0\n20\n0.0\n30\n0.0\n3\n*Paper_Space\n1\n\n"
      "0\nENDBLK\n5\n1D\n330\n1B\n100\nAcDbEntity\n67\n1\n8\n0\n100\nAcDbBlockE"
      "nd\n"
      "0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nENDSEC\n"
      "0\nSECTION\n2\nOBJECTS\n0\nDICTIONARY\n5\nC\n330\n0\n100\nAcDbDictionary"
      "\n281\n1\n0\nENDSEC\n0\nEOF\n";
  headless::HostApplication host;
  auto made = dxf::DrawingFile::read(std::string(kEmpty), host, path);
  if (!made.drawing) {
    std::fprintf(stderr, "corvane demo: %s\n", made.error.c_str());
    return false;
  }
  headless::Database& db = made.drawing->database();
  const host::AcDbObjectId title = db.appendEntity(
      std::make_unique<headless::Text>(headless::Text::Point{0.0, 0.0, 0.0}, 5.0, L"Plot 14, Harbour district"));
  db.appendEntity(std::make_unique<headless::MText>(host::AcGePoint3d{0.0, -10.0, 0.0}, 2.5,
                                                    L"{\\fArial;Surveyed}\\P12 March 2026"));
  titleHandle = host.handle(title).text();
  dxf::SaveOptions options;
  options.keepBackup = false;
  const dxf::Status saved = made.drawing->save(options);
  if (!saved) {
    std::fprintf(stderr, "corvane demo: %s\n", saved.message().c_str());
    return false;
  }
  return true;
}

}  // namespace

bool writeExampleSources(const fs::path& folder, ExampleSources& made) {
  return writeWorkbook(folder / ExampleSources::kWorkbook) && writeNotes(folder / ExampleSources::kNotes) &&
         writePlan(folder / ExampleSources::kPlan, made.planTitleHandle);
}

}  // namespace corvane::cli
