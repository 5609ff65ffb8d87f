// A workbook of a million cells (about 40 MB of sheet XML): opened and every cell's displayed
// text read; and, in a workbook already open, one cell changed and the workbook saved. The sheet mixes numbers under several formats,
// dates, shared and inline strings, booleans and formulas, as a real take-off sheet does.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "countingallocator.h"
#include "xlsx/book.h"
#include "xlsx/package/package.h"

namespace {

using namespace corvane;

constexpr int kColumns = 10;

std::string columnName(int column) { return std::string(1, static_cast<char>('A' + column)); }

// The sheet's XML, and the shared strings it points at.
std::string sheetXml(int rows, std::string& strings) {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
      "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
      "<dimension ref=\"A1:J" + std::to_string(rows) + "\"/><sheetData>";
  strings = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
            "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">";
  for (int i = 0; i < 1000; ++i) strings += "<si><t>Room " + std::to_string(i) + "</t></si>";
  strings += "</sst>";
  char number[32];
  for (int r = 1; r <= rows; ++r) {
    const std::string row = std::to_string(r);
    xml += "<row r=\"" + row + "\">";
    for (int c = 0; c < kColumns; ++c) {
      const std::string ref = columnName(c) + row;
      switch (c) {
        case 0: xml += "<c r=\"" + ref + "\" t=\"s\"><v>" + std::to_string(r % 1000) + "</v></c>"; break;
        case 1: xml += "<c r=\"" + ref + "\"><v>" + std::to_string(r) + "</v></c>"; break;
        case 2:
          std::snprintf(number, sizeof number, "%.6f", r * 1.37);
          xml += "<c r=\"" + ref + "\" s=\"1\"><v>" + number + "</v></c>";
          break;
        case 3: xml += "<c r=\"" + ref + "\" s=\"2\"><v>" + std::to_string(40000 + r % 5000) + "</v></c>"; break;
        case 4:
          std::snprintf(number, sizeof number, "%.4f", (r % 100) / 100.0);
          xml += "<c r=\"" + ref + "\" s=\"3\"><v>" + number + "</v></c>";
          break;
        case 5: xml += "<c r=\"" + ref + "\" t=\"b\"><v>" + std::to_string(r % 2) + "</v></c>"; break;
        case 6: xml += "<c r=\"" + ref + "\" t=\"inlineStr\"><is><t>Level " + std::to_string(r % 7) + "</t></is></c>"; break;
        case 7: xml += "<c r=\"" + ref + "\"><f>B" + row + "*2</f><v>" + std::to_string(2 * r) + "</v></c>"; break;
        case 8:
          std::snprintf(number, sizeof number, "%.9g", r / 7.0);
          xml += "<c r=\"" + ref + "\"><v>" + number + "</v></c>";
          break;
        default:
          std::snprintf(number, sizeof number, "%.3f", r * 1234.5);
          xml += "<c r=\"" + ref + "\" s=\"4\"><v>" + number + "</v></c>";
      }
    }
    xml += "</row>";
  }
  xml += "</sheetData></worksheet>";
  return xml;
}

constexpr const char* kStyles =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
    "<numFmts count=\"1\"><numFmt numFmtId=\"164\" formatCode=\"#,##0.00 &quot;m2&quot;\"/></numFmts>"
    "<fonts count=\"1\"><font><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts>"
    "<fills count=\"1\"><fill><patternFill patternType=\"none\"/></fill></fills>"
    "<borders count=\"1\"><border/></borders>"
    "<cellStyleXfs count=\"1\"><xf/></cellStyleXfs>"
    "<cellXfs count=\"5\"><xf numFmtId=\"0\"/><xf numFmtId=\"164\" applyNumberFormat=\"1\"/>"
    "<xf numFmtId=\"14\" applyNumberFormat=\"1\"/><xf numFmtId=\"10\" applyNumberFormat=\"1\"/>"
    "<xf numFmtId=\"11\" applyNumberFormat=\"1\"/></cellXfs></styleSheet>";

struct Workbook {
  std::filesystem::path path;
  std::size_t sheetBytes = 0;
};
std::filesystem::path madeFile;  // removed at the end, when a benchmark made it

// Made once per process: a package of the standard parts around the generated sheet.
const Workbook& bigWorkbook() {
  static const Workbook made = [] {
    Workbook book;
    book.path = std::filesystem::temp_directory_path() / ("corvane-bench-" + std::to_string(::getpid()) + ".xlsx");
    madeFile = book.path;
    xlsx::Package package;
    package.write("[Content_Types].xml",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                  "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
                  "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
                  "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
                  "<Override PartName=\"/xl/workbook.xml\" "
                  "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
                  "<Override PartName=\"/xl/worksheets/sheet1.xml\" "
                  "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
                  "<Override PartName=\"/xl/styles.xml\" "
                  "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>"
                  "<Override PartName=\"/xl/sharedStrings.xml\" "
                  "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sharedStrings+xml\"/>"
                  "</Types>");
    package.write("_rels/.rels",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                  "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                  "<Relationship Id=\"rId1\" "
                  "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" "
                  "Target=\"xl/workbook.xml\"/></Relationships>");
    package.write("xl/workbook.xml",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                  "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
                  "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
                  "<sheets><sheet name=\"Quantities\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>");
    package.write("xl/_rels/workbook.xml.rels",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                  "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                  "<Relationship Id=\"rId1\" "
                  "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" "
                  "Target=\"worksheets/sheet1.xml\"/>"
                  "<Relationship Id=\"rId2\" "
                  "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles\" "
                  "Target=\"styles.xml\"/>"
                  "<Relationship Id=\"rId3\" "
                  "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings\" "
                  "Target=\"sharedStrings.xml\"/></Relationships>");
    std::string strings;
    std::string sheet = sheetXml(1'000'000 / kColumns, strings);
    book.sheetBytes = sheet.size();
    package.write("xl/worksheets/sheet1.xml", std::move(sheet));
    package.write("xl/sharedStrings.xml", std::move(strings));
    package.write("xl/styles.xml", kStyles);
    std::string error;
    if (!package.saveAs(book.path, {}, error)) std::fprintf(stderr, "bench workbook: %s\n", error.c_str());
    return book;
  }();
  return made;
}

void WorkbookReadEveryText(benchmark::State& state) {
  const Workbook& book = bigWorkbook();
  std::size_t characters = 0;
  double peakRatio = 0;
  for (auto _ : state) {
    const std::size_t base = heldBytes.load();
    peakBytes = base;
    std::string error;
    auto open = xlsx::Book::open(book.path, error);
    xlsx::Worksheet* sheet = open ? open->sheet(0, error) : nullptr;
    if (!sheet) {
      state.SkipWithError(error.c_str());
      return;
    }
    characters = 0;
    sheet->visit([&](const xlsx::CellView& cell) { characters += open->displayText(*sheet, cell).size(); });
    peakRatio = std::max(peakRatio, static_cast<double>(peakBytes.load() - base) / static_cast<double>(book.sheetBytes));
    benchmark::DoNotOptimize(characters);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * book.sheetBytes));
  state.counters["sheet_MB"] = static_cast<double>(book.sheetBytes) / 1e6;
  state.counters["peak_x_sheet"] = peakRatio;
  state.counters["characters"] = static_cast<double>(characters);
}
BENCHMARK(WorkbookReadEveryText)->Unit(benchmark::kMillisecond);

void WorkbookSaveOneCell(benchmark::State& state) {
  const Workbook& book = bigWorkbook();
  const std::filesystem::path copy = book.path.string() + ".copy.xlsx";
  int round = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::copy_file(book.path, copy, std::filesystem::copy_options::overwrite_existing);
    std::string error;
    auto open = xlsx::Book::open(copy, error);
    xlsx::Worksheet* sheet = open ? open->sheet(0, error) : nullptr;
    state.ResumeTiming();
    if (!sheet || !sheet->setValue({500, 3}, xlsx::CellValue(static_cast<double>(++round))) ||
        (open->touch(), !open->save(error))) {
      state.SkipWithError(error.c_str());
      return;
    }
  }
  std::filesystem::remove(copy);
  std::filesystem::remove(copy.string() + ".bak");
}
BENCHMARK(WorkbookSaveOneCell)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (!madeFile.empty()) std::filesystem::remove(madeFile);
  return 0;
}
