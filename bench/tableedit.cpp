// One cell edit in a table of 10,000 formula cells, recomputed through the editor reactors as
// the table-editing command ends: the cost a user waits for after each edit.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "core/printf.h"
#include "headless/db/database.h"
#include "headless/db/table.h"
#include "headless/editor/session.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "headless/settings/registryfile.h"
#include "plugin/shell/ccorvaneapp.h"

namespace {

using namespace corvane;

constexpr int kRows = 100;
constexpr int kColumns = 101;  // a column of numbers, then 100 columns of formulas

void TableCellEdit(benchmark::State& state) {
  headless::HostApplication host;
  host.setOutput([](std::wstring_view) {});
  headless::Database db(host);
  const std::filesystem::path settings =
      std::filesystem::temp_directory_path() / ("corvane-bench-" + std::to_string(::getpid()) + ".reg");
  headless::RegistryFile registry(settings, [](std::wstring_view) {});
  headless::Session::Options options;
  options.registry = &registry;
  options.progress = nullptr;
  options.notice = [](std::wstring_view) {};
  headless::Session session(host, headless::Script(L""), options);
  session.openDocument(&db);
  const host::AcDbObjectId tableId = db.appendEntity(std::make_unique<headless::Table>(kRows, kColumns));
  auto& table = *db.get<headless::Table>(tableId);
  for (int r = 0; r < kRows; ++r) {
    table.putValue(r, 0, host::AcValue(static_cast<double>(r + 1)));
    for (int c = 1; c < kColumns; ++c) table.putTextString(r, c, core::format(L"%%<\\VxExpr (A%d*%d+1)>%%", r + 1, c));
  }
  CCorvaneApp app(host, session);
  session.loadApplication(app);
  host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand);
  const std::wstring pick = L"(handent \"" + host.handle(tableId).text() + L"\")";
  int round = 0;
  for (auto _ : state) {
    session.script() = headless::Script(core::format(L"%s\n1\n1\n%d\n", pick, ++round));
    session.runCommand(L"TABLEDIT");
  }
  std::wstring last;
  table.textString(0, kColumns - 1, 0, last);
  if (last != std::to_wstring(round * (kColumns - 1) + 1)) state.SkipWithError("the formulas were not recomputed");
  session.unloadApplication(app);
  std::filesystem::remove(settings);
}
BENCHMARK(TableCellEdit)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
