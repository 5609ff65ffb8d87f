// Updating a drawing whose table holds 10,000 formula fields, each reading cells and a range
// of its own table: the whole batch as the host runs it, file load and save left out.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "core/printf.h"
#include "headless/db/database.h"
#include "headless/db/table.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "host/acdbfield.h"
#include "host/acdbtable.h"
#include "plugin/shell/ccorvaneapp.h"

namespace {

using namespace corvane;

// A first row of numbers, then `rows` rows of formulas over them.
host::AcDbObjectId makeTable(headless::HostApplication& host, headless::Database& db, int rows, int columns) {
  auto made = std::make_unique<headless::Table>(rows + 1, columns, headless::Table::kDefaultRowHeight,
                                                headless::Table::kDefaultColumnWidth);
  const host::AcDbObjectId id = db.appendEntity(std::move(made));
  host::AcDbObjectPointer<host::AcDbTable> table(host, id, host::AcDb::kForWrite);
  for (int c = 0; c < columns; ++c) {
    table->setValue(0, c, core::format(L"%d.5", c + 1), host::AcValueOptions::kConvertTextToValue);
  }
  for (int r = 1; r <= rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      const std::wstring formula = core::format(L"%%<\\VxExpr (A1*%d+SUM(A1:C1)-B1) \\f \"%%lu2%%pr2\">%%", r);
      table->setValue(r, c, formula, host::AcValueOptions::kParseTextForFieldCode);
    }
  }
  return id;
}

void UpdateTenThousandFormulaCells(benchmark::State& state) {
  headless::HostApplication host;
  headless::Database db(host);
  host.setWorkingDatabase(&db);
  CCorvaneApp app(host);
  app.onInitialize();
  makeTable(host, db, 100, 100);
  host::AcFdFieldEngine::BatchResult batch;
  for (auto _ : state) {
    host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand, &batch);
    benchmark::DoNotOptimize(batch.evaluated);
  }
  state.counters["fields"] = batch.evaluated;
  state.counters["per_field_us"] =
      benchmark::Counter(static_cast<double>(batch.evaluated), benchmark::Counter::kIsIterationInvariantRate |
                                                                   benchmark::Counter::kInvert);
  app.onUnload();
}
BENCHMARK(UpdateTenThousandFormulaCells)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
