// Excel cell fields in one update batch: a drawing with 1,000 of them over 10 workbooks of
// 10^4 cells each (numbers and texts, half of the numbers shown with two decimals). Each
// iteration starts without a workbook open, so loading them is part of the figure.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/printf.h"
#include "core/utf8.h"
#include "headless/db/database.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/editor/osservices.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "plugin/linked/excelutils.h"
#include "plugin/shell/ccorvaneapp.h"
#include "xlsx/bookautomation.h"

namespace {

namespace fs = std::filesystem;
using namespace corvane;

constexpr int kWorkbooks = 10;
constexpr int kRows = 100;
constexpr int kColumns = 100;
constexpr int kFields = 1000;

struct Books {
  fs::path folder;
  ~Books() {
    std::error_code ignored;
    if (!folder.empty()) fs::remove_all(folder, ignored);
  }
};

// Written once per process by the backend itself.
const Books& books() {
  static const Books made = [] {
    Books books;
    books.folder = fs::temp_directory_path() / ("corvane-bench-linked-" + std::to_string(::getpid()));
    fs::create_directories(books.folder);
    xlsx::BookAutomation excel;
    auto app = excel.createObject();
    for (int b = 0; b < kWorkbooks; ++b) {
      auto book = (*app)->addWorkbook();
      auto sheet = (*book)->worksheet(1);
      std::vector<std::vector<host::ExcelValue>> rows(kRows);
      for (int r = 0; r < kRows; ++r) {
        for (int c = 0; c < kColumns; ++c) {
          if (c % 4 == 3) {
            rows[r].push_back(core::format(L"item %d-%d", r + 1, c + 1));
          } else {
            rows[r].push_back((r + 1) * 1000.0 + (c + 1) + b / 8.0);
          }
        }
      }
      auto range = (*sheet)->range(L"A1");
      (*range)->setValues(rows);
      const std::string path = (books.folder / ("book" + std::to_string(b) + ".xlsx")).string();
      if (auto saved = (*book)->saveAs(core::fromUtf8(path)); !saved) {
        std::fprintf(stderr, "bench workbook: %s\n", core::toUtf8(saved.error().text).c_str());
      }
    }
    return books;
  }();
  return made;
}

// A drawing beside the workbooks whose texts hold the fields, spread over every workbook.
std::unique_ptr<headless::Database> drawingWithFields(headless::HostApplication& host, const fs::path& folder) {
  auto db = std::make_unique<headless::Database>(host);
  db->setFilename(core::fromUtf8((folder / "fields.dxf").string()));
  for (int i = 0; i < kFields; ++i) {
    const int row = 1 + (i * 37) % kRows;
    const int column = 1 + (i * 11) % kColumns;
    const std::wstring code = core::format(L"%%<\\ExcelCell \"book%d.xlsx:Sheet1:$%s$%d\">%%", i % kWorkbooks,
                                           ExcelUtils::ColumnLetters(column), row);
    const host::AcDbObjectId text =
        db->appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0.0, -i * 3.0, 0.0}, 2.5, L""));
    headless::attachField(*db, text, code);
  }
  return db;
}

void ExcelCellFieldsBatch(benchmark::State& state) {
  const Books& made = books();
  int failed = 0;
  for (auto _ : state) {
    state.PauseTiming();
    headless::HostApplication host;
    host.setOutput([](std::wstring_view) {});
    auto db = drawingWithFields(host, made.folder);
    host.setWorkingDatabase(db.get());
    state.ResumeTiming();

    headless::OsServices system(L"");
    xlsx::BookAutomation excel;
    CCorvaneApp app(host, system, &excel);
    app.onInitialize();
    host::AcFdFieldEngine::BatchResult batch;
    host.engine().evaluateFields(db.get(), {}, host::AcDbField::kDemand, &batch);
    app.onUnload();
    failed = static_cast<int>(batch.failed.size());
    state.PauseTiming();
    for (const auto id : db->objectIds()) {
      const auto* field = db->get<host::AcDbField>(id);
      if (field && field->evaluatorId() == L"ExcelCell" &&
          field->getDisplayText().find(L"not found") != std::wstring::npos)
        ++failed;
    }
    state.ResumeTiming();

    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  state.counters["failed"] = failed;
}
BENCHMARK(ExcelCellFieldsBatch)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
