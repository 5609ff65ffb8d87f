// The host's number display: real-to-text and the value formatter, as every numeric field
// pays for them on each evaluation.
#include <benchmark/benchmark.h>

#include "headless/format/rtos.h"
#include "headless/format/valueformatter.h"

namespace {

using corvane::headless::DrawingUnits;
using corvane::headless::formatValue;
using corvane::headless::rtos;
using corvane::host::AcValue;

void RealToText(benchmark::State& state) {
  const int units = static_cast<int>(state.range(0));
  double value = 1234.56789;
  for (auto _ : state) {
    benchmark::DoNotOptimize(rtos(value, {units, 4, 0, 0}));
    value += 0.001;
  }
}
BENCHMARK(RealToText)->DenseRange(1, 5)->ArgName("units");

void FormatArea(benchmark::State& state) {
  const AcValue value(98765.4321);
  const DrawingUnits drawing;
  for (auto _ : state) benchmark::DoNotOptimize(formatValue(value, L"%lu2%pr2%ct4%qf1%th44 SQ. FT.", drawing));
}
BENCHMARK(FormatArea);

void FormatCurrentUnitsArchitectural(benchmark::State& state) {
  const AcValue value(139.3125);
  const DrawingUnits drawing{4, 4, 0, 0};
  for (auto _ : state) benchmark::DoNotOptimize(formatValue(value, L"%lu6", drawing));
}
BENCHMARK(FormatCurrentUnitsArchitectural);

void FormatEmpty(benchmark::State& state) {
  const AcValue value(6.6875);
  const DrawingUnits drawing;
  for (auto _ : state) benchmark::DoNotOptimize(formatValue(value, L"", drawing));
}
BENCHMARK(FormatEmpty);

}  // namespace

BENCHMARK_MAIN();
