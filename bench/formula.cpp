// The whole per-evaluation path of a formula field: a fresh engine, tokenize, postfix and
// evaluate, as a field does on every update.
#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <string_view>

#include "plugin/formula/exprbinding.h"
#include "plugin/formula/exprengine.h"

namespace {

class BenchBinding : public corvane::ExprBinding {
 public:
  std::optional<std::wstring> SystemVariable(std::wstring_view name) override {
    if (name == L"X") return L"12";
    return std::nullopt;
  }
};

void evaluateFormula(benchmark::State& state, const wchar_t* formula, const wchar_t* expected) {
  BenchBinding binding;
  std::wstring result;
  for (auto _ : state) {
    corvane::ExprEngine engine(formula, binding);
    engine.Evaluate(result);
    benchmark::DoNotOptimize(result);
  }
  if (result != expected) state.SkipWithError("unexpected result");
  state.SetLabel(std::to_string(std::wstring_view(formula).size()) + " characters");
}

}  // namespace

BENCHMARK_CAPTURE(evaluateFormula, Round, L"ROUND((12.5*4+7.25)/3,2) & ' m'", L"19.08 m");
BENCHMARK_CAPTURE(evaluateFormula, IfBound, L"IF(x>=10,'big','small')", L"big");
BENCHMARK_CAPTURE(evaluateFormula, Sum, L"SUM(1,2,3,4,5)", L"15");
BENCHMARK_CAPTURE(evaluateFormula, Substitute, L"SUBSTITUTE(UCASE('a-b-c'),'-','+')", L"A+B+C");
BENCHMARK_CAPTURE(evaluateFormula, Short, L"1+2*3", L"7");
BENCHMARK_CAPTURE(evaluateFormula, Fifty, L"ROUND(x*2.5+SUM(1,2,3)/4,2) & ' m2 ' & UCASE('ok')",
                  L"31.5 m2 OK");

BENCHMARK_MAIN();
