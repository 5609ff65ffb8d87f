// The update of a workbook's noted cells from their drawing: 10,000 cells noted with the fields
// of one drawing of 10,000 fields, each reading the area of a circle of its own. Each iteration
// opens the workbook, reads the drawing, evaluates every field, writes the values and saves
// the workbook, as `corvane update-excel` does.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "generateddrawing.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/editor/osservices.h"
#include "headless/hostapplication.h"
#include "host/acdbfield.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/updatefieldsinexcel.h"
#include "xlsx/bookapplication.h"
#include "xlsx/bookautomation.h"

namespace {

namespace fs = std::filesystem;
using namespace corvane;

constexpr int kFields = 10000;

struct Files {
  fs::path folder, drawing, book;
  ~Files() {
    std::error_code ignored;
    if (!folder.empty()) fs::remove_all(folder, ignored);
  }
};

// The drawing from the example drawing, its fields' notes in column A of a new workbook.
const Files& files() {
  static const Files made = [] {
    Files f;
    f.folder = fs::temp_directory_path() / ("corvane-bench-workflows-" + std::to_string(::getpid()));
    fs::create_directories(f.folder);
    f.drawing = f.folder / "plan.dxf";
    f.book = f.folder / "book.xlsx";
    {
      std::FILE* out = std::fopen(f.drawing.c_str(), "wb");
      const std::string base = bench::DrawingGenerator().drawing(100);
      if (!out || std::fwrite(base.data(), 1, base.size(), out) != base.size())
        throw std::runtime_error("cannot write");
      std::fclose(out);
    }
    headless::HostApplication host;
    auto loaded = dxf::DrawingFile::load(f.drawing, host);
    if (!loaded.drawing) throw std::runtime_error(loaded.error);
    headless::Database& db = loaded.drawing->database();
    std::vector<std::wstring> notes;
    const std::wstring path = core::fromUtf8(f.drawing.string());
    for (int i = 0; i < kFields; ++i) {
      const auto circle =
          db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{i * 3.0, 0, 0}, 1.0 + i % 7));
      const auto label =
          db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{i * 3.0, 2, 0}, 0.2, L""));
      headless::attachField(
          db, label,
          core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).Area \\f \"%%lu2%%pr2\">%%", circle.asOldId()));
      notes.push_back(path + L"|%<\\AcObjProp Object(%<\\_ObjHandle " + host.handle(circle).text() +
                      L">%).Area \\f \"%lu2%pr2\">%");
    }
    if (!loaded.drawing->saveAs(f.drawing)) throw std::runtime_error("cannot save the drawing");
    xlsx::BookAutomation excel;
    auto book = *excel.start().addWorkbook();
    auto sheet = book->activeSheet();
    for (int i = 0; i < kFields; ++i) {
      auto cell = *sheet->range(core::format(L"A%d", i + 1));
      cell->setValues({{host::ExcelValue(std::wstring(L"old"))}});
      cell->addComment(notes[i]);
    }
    if (!book->saveAs(core::fromUtf8(f.book.string()))) throw std::runtime_error("cannot save the workbook");
    return f;
  }();
  return made;
}

void BM_UpdateExcelFromOneDrawing(benchmark::State& state) {
  const Files& f = files();
  for (auto _ : state) {
    headless::HostApplication host;
    host.setOutput([](std::wstring_view) {});
    headless::OsServices system(L"");
    xlsx::BookAutomation excel;
    auto book = *excel.start().openWorkbook(core::fromUtf8(f.book.string()), 0, 0);
    headless::Database idle(host);
    host.setWorkingDatabase(&idle);
    host.setDrawingReader([&host, &idle](std::wstring_view path, host::AcDbHostApplicationServices::DatabaseHolder& db,
                                         std::wstring& reason) {
      auto loaded = dxf::DrawingFile::load(headless::OsServices::localPath(path), host);
      if (!loaded.drawing) {
        reason = core::fromUtf8(loaded.error);
        return host::Acad::eBadDxfFile;
      }
      dxf::DrawingFile* drawing = loaded.drawing.release();
      host.setWorkingDatabase(&drawing->database());
      db = host::AcDbHostApplicationServices::DatabaseHolder(&drawing->database(),
                                                             [&host, &idle, drawing](host::AcDbDatabase*) {
                                                               host.setWorkingDatabase(&idle);
                                                               delete drawing;
                                                             });
      return host::Acad::eOk;
    });
    CCorvaneApp app(host, system, &excel);
    app.onInitialize();
    UpdateFieldsInExcel update(
        app.linkedSources(), nullptr, nullptr,
        {UpdateFieldsInExcel::OtherDrawings::kAll, UpdateFieldsInExcel::UnreadableDrawing::kMarkCells});
    if (!update.Update(*book, *book->activeSheet()) || update.summary().cellsWritten != kFields ||
        update.summary().fieldsFailed != 0) {
      state.SkipWithError("the update did not write every cell");
      break;
    }
    app.onUnload();
    if (!book->save()) {
      state.SkipWithError("the workbook was not saved");
      break;
    }
  }
}
BENCHMARK(BM_UpdateExcelFromOneDrawing)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// What an export pays per field for its temporary field in a big drawing: made, given a code,
// evaluated and destroyed again, with state.range(0) objects in the drawing. The cost per field
// should not grow with the drawing.
void BM_TemporaryFieldInBigDrawing(benchmark::State& state) {
  headless::HostApplication host;
  headless::Database db(host);
  host.setWorkingDatabase(&db);
  for (int i = 0; i < state.range(0); ++i) {
    db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{i * 3.0, 0, 0}, 1.0));
  }
  for (auto _ : state) {
    auto field = host.newField();
    if (!field || field->setFieldCode(L"%<\\AcVar LUPREC>% %<\\AcVar LUNITS>%") != host::Acad::eOk ||
        field->evaluate(host::AcDbField::kPreview, &db) != host::Acad::eOk) {
      state.SkipWithError("the temporary field did not evaluate");
      break;
    }
    benchmark::DoNotOptimize(field->getDisplayText());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TemporaryFieldInBigDrawing)->Arg(1000)->Arg(10000)->Arg(100000);

}  // namespace

BENCHMARK_MAIN();
