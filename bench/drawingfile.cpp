// Drawings loaded into the headless database and saved back through it, on generated drawings
// of 10^4 to 10^6 entities (lines, polylines, circles, texts, multiline texts and block
// references with attributes) with the tables, blocks and objects a drawing has: throughput
// of both ways and the memory a loaded drawing takes, against the tag layer alone.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "countingallocator.h"
#include "dxf/model/drawingfile.h"
#include "dxf/tags/document.h"
#include "generateddrawing.h"
#include "headless/db/database.h"
#include "headless/db/mtext.h"
#include "headless/db/text.h"
#include "headless/hostapplication.h"

namespace {

using corvane::bench::CountingSink;
using corvane::dxf::Document;
using corvane::dxf::DrawingFile;

const std::string& generated(std::size_t entities) {
  static std::map<std::size_t, std::string> cache;
  auto& text = cache[entities];
  if (text.empty()) text = corvane::bench::DrawingGenerator().drawing(entities);
  return text;
}


// Loading: the tag layer's read plus the objects made of the records. The counters say how
// much memory the loaded drawing holds at its peak, for the whole and for the tag layer alone.
void BM_Load(benchmark::State& state) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)));
  double peakRatio = 0;
  double documentRatio = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::size_t base = heldBytes.load();
    {
      // The tag layer alone, for comparison; not timed.
      std::string copy = file;
      peakBytes = heldBytes.load();
      auto read = Document::read(std::move(copy));
      documentRatio = std::max(documentRatio, static_cast<double>(peakBytes.load() - base) / static_cast<double>(file.size()));
    }
    auto host = std::make_unique<corvane::headless::HostApplication>();
    std::string copy = file;  // the bytes as read from disk; the document keeps them
    peakBytes = heldBytes.load();
    const std::size_t start = heldBytes.load();
    state.ResumeTiming();
    auto loaded = DrawingFile::read(std::move(copy), *host);
    benchmark::DoNotOptimize(loaded.drawing.get());
    state.PauseTiming();
    if (!loaded.drawing) state.SkipWithError(loaded.error.c_str());
    peakRatio = std::max(peakRatio, static_cast<double>(peakBytes.load() - start + file.size()) /
                                        static_cast<double>(file.size()));
    loaded.drawing.reset();
    host.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.size()));
  state.counters["file_MB"] = static_cast<double>(file.size()) / 1e6;
  state.counters["peak_x_file"] = peakRatio;
  state.counters["tags_x_file"] = documentRatio;
}

// Saving: the database's changes written into the records, then the bytes. Unchanged, or
// with one text in a hundred changed before each save.
void save(benchmark::State& state, bool edit) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)));
  corvane::headless::HostApplication host;
  auto loaded = DrawingFile::read(file, host);
  if (!loaded.drawing) {
    state.SkipWithError(loaded.error.c_str());
    return;
  }
  corvane::headless::Database& db = loaded.drawing->database();
  std::vector<corvane::headless::TextHost*> texts;
  if (edit) {
    const auto ids = db.objectIds();
    for (std::size_t i = 0; i < ids.size(); ++i) {
      auto* text = dynamic_cast<corvane::headless::TextHost*>(db.lookup(ids[i]));
      if (text && i % 100 == 0) texts.push_back(text);
    }
  }
  std::size_t written = 0;
  int round = 0;
  for (auto _ : state) {
    ++round;
    for (auto* text : texts) text->setHostText(L"Edited " + std::to_wstring(round));
    CountingSink sink;
    const auto status = loaded.drawing->write(sink);
    if (!status.ok()) state.SkipWithError(status.message().c_str());
    written = sink.written;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * written));
  state.counters["file_MB"] = static_cast<double>(written) / 1e6;
  state.counters["edited"] = static_cast<double>(texts.size());
}

void BM_SaveUnchanged(benchmark::State& state) { save(state, false); }
void BM_SaveEdited(benchmark::State& state) { save(state, true); }

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}

}  // namespace

BENCHMARK(BM_Load)->Apply(sizes);
BENCHMARK(BM_SaveUnchanged)->Apply(sizes);
BENCHMARK(BM_SaveEdited)->Apply(sizes);

BENCHMARK_MAIN();
