// Load and save throughput of DXF files at the tag level and the memory a read file takes,
// on the generated drawings.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <string>

#include "countingallocator.h"
#include "dxf/tags/document.h"
#include "generateddrawing.h"

namespace {

using corvane::bench::CountingSink;
using corvane::dxf::Document;
using corvane::dxf::FileFormat;

const std::string& generated(std::size_t entities, FileFormat format) {
  static std::map<std::pair<std::size_t, FileFormat>, std::string> cache;
  auto& text = cache[{entities, format}];
  if (text.empty()) {
    using corvane::bench::DrawingGenerator;
    text = DrawingGenerator().drawing(entities, DrawingGenerator::Contents::EntitiesOnly);
    if (format == FileFormat::Binary) {
      auto read = Document::read(text);
      corvane::dxf::StringSink sink;
      (void)read.document->write(sink, FileFormat::Binary);
      text = std::move(sink.data);
    }
  }
  return text;
}


void load(benchmark::State& state, FileFormat format) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)), format);
  double peakRatio = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::size_t base = heldBytes.load();
    std::string copy = file;  // the bytes as read from disk; the document keeps them
    peakBytes = heldBytes.load();
    state.ResumeTiming();
    auto read = Document::read(std::move(copy));
    benchmark::DoNotOptimize(read.document.get());
    state.PauseTiming();
    if (!read.document) state.SkipWithError(read.error.c_str());
    peakRatio = std::max(peakRatio, static_cast<double>(peakBytes.load() - base) / static_cast<double>(file.size()));
    read.document.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.size()));
  state.counters["file_MB"] = static_cast<double>(file.size()) / 1e6;
  state.counters["peak_x_file"] = peakRatio;
}

void save(benchmark::State& state, FileFormat from, FileFormat to, bool edit) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)), from);
  auto read = Document::read(file);
  if (!read.document) {
    state.SkipWithError(read.error.c_str());
    return;
  }
  Document& doc = *read.document;
  if (edit) {
    // One record in a hundred gets a new value: the writer then mixes copied runs with
    // formatted tags, as after a field update.
    const auto& records = doc.sections()[*doc.findSection("ENTITIES")].records;
    for (std::size_t i = 0; i < records.size(); i += 100) doc.setText(records[i], 4, L"Layer-8");
  }
  std::size_t written = 0;
  for (auto _ : state) {
    CountingSink sink;
    const auto status = doc.write(sink, to);
    if (!status.ok()) state.SkipWithError(status.message().c_str());
    written = sink.written;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * written));
  state.counters["file_MB"] = static_cast<double>(written) / 1e6;
}

void BM_LoadAscii(benchmark::State& state) { load(state, FileFormat::Ascii); }
void BM_LoadBinary(benchmark::State& state) { load(state, FileFormat::Binary); }
void BM_SaveAsciiUnchanged(benchmark::State& state) { save(state, FileFormat::Ascii, FileFormat::Ascii, false); }
void BM_SaveAsciiEdited(benchmark::State& state) { save(state, FileFormat::Ascii, FileFormat::Ascii, true); }
void BM_SaveBinaryEdited(benchmark::State& state) { save(state, FileFormat::Binary, FileFormat::Binary, true); }
// Every tag spelt anew: the slowest path of the writer.
void BM_SaveAsciiAsBinary(benchmark::State& state) { save(state, FileFormat::Ascii, FileFormat::Binary, false); }
void BM_SaveBinaryAsAscii(benchmark::State& state) { save(state, FileFormat::Binary, FileFormat::Ascii, false); }

// From disk to disk: reading the file, and the atomic save with its flush to the disk.
void BM_FileRoundTrip(benchmark::State& state) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)), FileFormat::Ascii);
  const auto folder = std::filesystem::temp_directory_path() / ("corvane-bench-dxf-" + std::to_string(::getpid()));
  std::filesystem::create_directories(folder);
  const auto path = folder / "drawing.dxf";
  {
    std::unique_ptr<FILE, int (*)(FILE*)> out(std::fopen(path.c_str(), "wb"), &std::fclose);
    std::fwrite(file.data(), 1, file.size(), out.get());
  }
  for (auto _ : state) {
    auto read = Document::readFile(path);
    if (!read.document) {
      state.SkipWithError(read.error.c_str());
      break;
    }
    const auto status = read.document->save(path);
    if (!status.ok()) state.SkipWithError(status.message().c_str());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.size()));
  std::filesystem::remove_all(folder);
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}

}  // namespace

BENCHMARK(BM_LoadAscii)->Apply(sizes);
BENCHMARK(BM_LoadBinary)->Apply(sizes);
BENCHMARK(BM_SaveAsciiUnchanged)->Apply(sizes);
BENCHMARK(BM_SaveAsciiEdited)->Apply(sizes);
BENCHMARK(BM_SaveBinaryEdited)->Apply(sizes);
BENCHMARK(BM_SaveAsciiAsBinary)->Apply(sizes);
BENCHMARK(BM_SaveBinaryAsAscii)->Apply(sizes);
BENCHMARK(BM_FileRoundTrip)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
