// Load and save throughput of DXF drawings and the memory a loaded drawing takes, on generated
// drawings of 10^4 to 10^6 entities (lines, polylines, circles, texts, multiline texts and
// block references with attributes), written the way the host writes R2018 files.
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
#include "dxf/document.h"

namespace {

using corvane::dxf::ByteSink;
using corvane::dxf::Document;
using corvane::dxf::FileFormat;

// --- the generated drawings

class Generator {
 public:
  std::string drawing(std::size_t entities) {
    out_.clear();
    handle_ = 0x100;
    tag(0, "SECTION");
    tag(2, "HEADER");
    tag(9, "$ACADVER");
    tag(1, "AC1032");
    tag(9, "$DWGCODEPAGE");
    tag(3, "ANSI_1252");
    tag(9, "$HANDSEED");
    tag(5, hex(0x100 + entities * 8));
    tag(0, "ENDSEC");
    tag(0, "SECTION");
    tag(2, "ENTITIES");
    for (std::size_t i = 0; i < entities; ++i) entity(i);
    tag(0, "ENDSEC");
    tag(0, "EOF");
    return std::move(out_);
  }

 private:
  void tag(int code, std::string_view value) {
    char line[16];
    const int n = std::snprintf(line, sizeof line, "%3d\r\n", code);
    out_.append(line, static_cast<std::size_t>(n));
    out_.append(value);
    out_.append("\r\n");
  }
  void real(int code, double value) {
    char text[32];
    const int n = std::snprintf(text, sizeof text, "%.10g", value);
    tag(code, std::string_view(text, static_cast<std::size_t>(n)));
  }
  void integer(int code, long value) {
    char text[16];
    const int n = std::snprintf(text, sizeof text, "%6ld", value);
    tag(code, std::string_view(text, static_cast<std::size_t>(n)));
  }
  static std::string hex(std::size_t value) {
    char text[20];
    std::snprintf(text, sizeof text, "%zX", value);
    return text;
  }
  void common(std::string_view type, std::string_view subclass) {
    tag(0, type);
    tag(5, hex(handle_++));
    tag(330, "1F");
    tag(100, "AcDbEntity");
    tag(8, "Layer-7");
    tag(100, subclass);
  }
  void point(int code, double x, double y, double z) {
    real(code, x);
    real(code + 10, y);
    real(code + 20, z);
  }

  void entity(std::size_t i) {
    const double x = static_cast<double>(i % 1000) * 12.5 + 0.123456789;
    const double y = static_cast<double>(i / 1000) * 7.25 + 3.14159265;
    switch (i % 6) {
      case 0:
        common("LINE", "AcDbLine");
        point(10, x, y, 0);
        point(11, x + 10.5, y + 3.75, 0);
        break;
      case 1:
        common("LWPOLYLINE", "AcDbPolyline");
        integer(90, 5);
        integer(70, 1);
        real(43, 0);
        for (int v = 0; v < 5; ++v) {
          real(10, x + v * 2.5);
          real(20, y + (v % 2) * 1.25);
        }
        break;
      case 2:
        common("CIRCLE", "AcDbCircle");
        point(10, x, y, 0);
        real(40, 2.75 + static_cast<double>(i % 7));
        break;
      case 3:
        common("TEXT", "AcDbText");
        point(10, x, y, 0);
        real(40, 2.5);
        tag(1, "Room " + std::to_string(i));
        tag(100, "AcDbText");
        break;
      case 4:
        common("MTEXT", "AcDbMText");
        point(10, x, y, 0);
        real(40, 2.5);
        real(41, 60);
        integer(71, 1);
        tag(1, "{\\fArial|b0|i0;Area\\P" + std::to_string(i) + " m\\U+00B2}");
        tag(7, "Standard");
        break;
      default:
        common("INSERT", "AcDbBlockReference");
        integer(66, 1);
        tag(2, "DOOR");
        point(10, x, y, 0);
        for (const char* name : {"TAG", "WIDTH"}) {
          common("ATTRIB", "AcDbText");
          point(10, x, y, 0);
          real(40, 1.5);
          tag(1, std::string(name) + "-" + std::to_string(i));
          tag(100, "AcDbAttribute");
          tag(2, name);
          integer(70, 0);
        }
        common("SEQEND", "AcDbSequenceEnd");
        break;
    }
  }

  std::string out_;
  std::size_t handle_ = 0x100;
};

const std::string& generated(std::size_t entities, FileFormat format) {
  static std::map<std::pair<std::size_t, FileFormat>, std::string> cache;
  auto& text = cache[{entities, format}];
  if (text.empty()) {
    text = Generator().drawing(entities);
    if (format == FileFormat::Binary) {
      auto read = Document::read(text);
      corvane::dxf::StringSink sink;
      (void)read.document->write(sink, FileFormat::Binary);
      text = std::move(sink.data);
    }
  }
  return text;
}

// Takes the bytes and forgets them, as a disk that is never full would.
class CountingSink : public ByteSink {
 public:
  bool write(std::string_view bytes) override {
    written += bytes.size();
    benchmark::DoNotOptimize(bytes.data());
    return true;
  }
  std::size_t written = 0;
};

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
